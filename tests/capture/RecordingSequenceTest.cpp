#include "capture/RecordingSequence.h"
#include "capture/chain/InputChain.h"
#include "support/FakeCapture.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <vector>

namespace waxline {
namespace {

using Calls = std::vector<std::string>;

// Raises the overall peak cell to `peak` through the input chain, as a captured buffer does.
void raisePeak(float peak) {
    std::vector<float> left(4, peak), right(4, 0.0f);
    AudioBufferList list;
    list.mNumberBuffers = 2;
    list.mBuffers[0].mData = left.data();
    list.mBuffers[1].mData = right.data();
    InputProcCallback(&list, 4, 0);
}

int countLeftIn(const std::string& folder) {
    std::ifstream in(folder + "/WXRTTmpFile.count");
    int count = -1;
    in >> count;
    return count;
}

TEST(RecordingSequence, PresetIsChosenAsTheWizardChoosesIt) {
    struct Case {
        const char* name;
        bool turntableOrTape;
        PresetChoice choice;
        Calls byDevice;
    };
    const Case cases[] = {
        {"a device that can only be one thing", false, PresetChoice::Chosen, {"setNoFilter"}},
        {"a device that might be either", true, PresetChoice::AskUser, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        test::FakeCapture capture;
        capture.turntableOrTape = c.turntableOrTape;
        EXPECT_EQ(choosePresetByDevice(capture), c.choice);
        EXPECT_EQ(capture.calls, c.byDevice);
    }

    const std::map<PlaybackDevice, Calls> byAnswer = {
        {PlaybackDevice::Turntable, {"setRIAAFilter"}},
        {PlaybackDevice::NormalTape, {"setNoFilter"}},
        {PlaybackDevice::ChromeTape, {"setChromeFilter"}},
    };
    for (const auto& [device, expected] : byAnswer) {
        test::FakeCapture capture;
        capture.turntableOrTape = true;
        choosePresetFor(capture, device);
        EXPECT_EQ(capture.calls, expected) << static_cast<int>(device);
    }
}

// The Record steps in their order: the folder is emptied first, the counter reset while the old
// peak still stands, the peak reset before the split setting, and track 1 opened last. A first
// track that cannot be made is reported, and nothing records.
TEST(RecordingSequence, RecordStepsRunInTheirOrder) {
    for (const auto& [split, opens] : {std::pair{true, true}, {false, true}, {true, false}}) {
        SCOPED_TRACE(testing::Message() << split << opens);
        test::TempDir dir;
        test::FakeCapture capture;
        capture.folder = dir.path();
        capture.tracks = 7;
        if (!opens)
            capture.newTrackResults = {false};
        std::map<std::string, float> peakAt;
        capture.onCall = [&](const std::string& call) { peakAt[call] = GetVUMax(); };
        RecordingSequence sequence(capture, [&](const std::string& folder) {
            capture.calls.push_back("emptyFolder " + folder);
            peakAt["emptyFolder"] = GetVUMax();
        });
        raisePeak(0.75f);

        sequence.prepare(split);
        EXPECT_EQ(sequence.openFirstTrack(), opens);
        const std::string splitCall =
            std::string("setAutomaticTrackSplit(") + (split ? "true" : "false") + ")";
        EXPECT_EQ(capture.calls,
                  (Calls{"emptyFolder " + dir.path(), "resetTrackCounter", splitCall, "newTrack"}));
        EXPECT_EQ(peakAt["emptyFolder"], 0.75f);
        EXPECT_EQ(peakAt["resetTrackCounter"], 0.75f);
        EXPECT_EQ(peakAt[splitCall], 0.0f);
        EXPECT_EQ(capture.recording, opens);
        if (opens) {
            EXPECT_EQ(capture.numRecordedTracks(), 1);
        }
    }
}

// The count left beside the files is the number of counted tracks at the end, however the
// recording ended; an album end also says where the wizard goes next.
TEST(RecordingSequence, CountIsLeftAndAlbumEndChoosesTheNextPanel) {
    using After = RecordingSequence::AfterAlbumEnd;
    struct Case {
        const char* name;
        int tracksOpened;
        bool albumEnd;
        int counted;
        After after; // for an album end
    };
    const Case cases[] = {
        {"stopped during track 3", 3, false, 3, After::NameTracks},
        {"album end after three gaps", 4, true, 3, After::NameTracks},
        {"album end after one gap", 2, true, 1, After::NameTracks},
        {"album end straight after the first track", 1, true, 0, After::BackToReady},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        test::FakeCapture capture;
        capture.folder = dir.path();
        RecordingSequence sequence(capture, {});
        sequence.prepare(true);
        for (int n = 0; n < c.tracksOpened; ++n)
            ASSERT_TRUE(capture.newTrack());
        if (c.albumEnd) {
            capture.endAlbum();
            EXPECT_EQ(sequence.albumEnded(), c.after);
        } else {
            sequence.stop();
            EXPECT_EQ(capture.calls.back(), "stopRecording");
        }
        EXPECT_FALSE(capture.recording);
        EXPECT_EQ(countLeftIn(dir.path()), c.counted);
    }
}

} // namespace
} // namespace waxline
