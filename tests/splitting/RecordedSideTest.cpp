// Opening a recorded side from its track files and reading it back joined, against the samples
// the test wrote with libsndfile itself.
#include "splitting/RecordedSide.h"
#include "splitting/SideFolder.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace waxline {
namespace {

// 16-bit sample k reads back as the float k / 32768, exactly.
std::vector<float> asFloats(const std::vector<int32_t>& pcm) {
    std::vector<float> out;
    for (int32_t v : pcm)
        out.push_back(static_cast<float>(v) / 32768.0f);
    return out;
}

TEST(RecordedSide, SaysWhatKeepsASideFromOpening) {
    constexpr int kPcm16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    struct Case {
        const char* name;
        int tracks;
        int replaced;                 // the track file replaced by `other` or by text; 0: none
        const test::SideShape* other; // null: the file is replaced by text
        SideProblem problem;
        const char* path; // the file named, relative to the folder; empty for none
    };
    const test::SideShape rate48k{{10}, kPcm16, 2, 48000},
        floats{{10}, SF_FORMAT_WAV | SF_FORMAT_FLOAT}, mono{{10}, kPcm16, 1};
    const Case cases[] = {
        {"no tracks asked for", 0, 0, nullptr, SideProblem::NoTracks, ""},
        {"more tracks than files", 4, 0, nullptr, SideProblem::MissingFile, "WXRTTmpFile.4.wav"},
        {"a file that is no WAV", 3, 2, nullptr, SideProblem::UnreadableFile, "WXRTTmpFile.2.wav"},
        {"another sample rate", 3, 3, &rate48k, SideProblem::FormatsDiffer, "WXRTTmpFile.3.wav"},
        {"another encoding", 3, 2, &floats, SideProblem::FormatsDiffer, "WXRTTmpFile.2.wav"},
        {"mono among stereo", 3, 3, &mono, SideProblem::FormatsDiffer, "WXRTTmpFile.3.wav"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        test::writeSideFolder(dir.path(), {{100, 200, 300}});
        const std::string replaced = dir.file("WXRTTmpFile." + std::to_string(c.replaced) + ".wav");
        if (c.replaced && c.other) {
            test::writeSideFolder(dir.file("other"), *c.other);
            std::filesystem::rename(dir.file("other/WXRTTmpFile.1.wav"), replaced);
        } else if (c.replaced) {
            std::ofstream(replaced) << "not audio";
        }
        const SideOpen open = openRecordedSide(dir.path(), c.tracks);
        EXPECT_EQ(open.problem, c.problem);
        EXPECT_EQ(open.path, *c.path ? dir.file(c.path) : std::string());
    }
}

TEST(RecordedSide, OpensTheTrackFilesAsOneSideAndReadsThemJoinedFrameForFrame) {
    test::TempDir dir;
    const auto stored = test::writeSideFolder(dir.path(), {{20000, 1, 40000, 7}});
    const SideOpen open = openRecordedSide(dir.path(), 4);
    ASSERT_EQ(open.problem, SideProblem::None);
    EXPECT_EQ(open.side.sampleRate, 44100u);
    EXPECT_EQ(open.side.channels, 2u);
    EXPECT_EQ(open.side.tracks(), 4);
    EXPECT_EQ(open.side.frames(), 60008);
    EXPECT_EQ(open.side.trackFrames, (std::vector<int64_t>{20000, 1, 40000, 7}));
    EXPECT_EQ(open.side.liveBoundaries(), (std::vector<int64_t>{20000, 20001, 60001}));
    std::vector<float> joined;
    size_t calls = 0;
    ASSERT_TRUE(readSide(open.side, [&](const float* s, size_t frames) {
        joined.insert(joined.end(), s, s + frames * 2);
        ++calls;
    }));
    EXPECT_EQ(joined, asFloats(stored));
    EXPECT_GT(calls, 4u); // blocks, not whole files
}

TEST(RecordedSide, ReadSideStopsWhenCancelledOrAFileIsShort) {
    test::TempDir dir;
    test::writeSideFolder(dir.path(), {{50000, 50000}});
    SideOpen open = openRecordedSide(dir.path(), 2);
    ASSERT_EQ(open.problem, SideProblem::None);

    std::atomic<bool> cancel{false};
    size_t frames = 0;
    EXPECT_FALSE(readSide(
        open.side,
        [&](const float*, size_t n) {
            frames += n;
            cancel = true;
        },
        &cancel));
    EXPECT_LT(frames, 50000u);

    // The header read earlier promised more than the file now holds.
    open.side.trackFrames[1] = 60000;
    EXPECT_FALSE(readSide(open.side, [](const float*, size_t) {}));
}

TEST(RecordedSide, ReadSideRangeCutsAcrossFiles) {
    test::TempDir dir;
    const auto stored = asFloats(test::writeSideFolder(dir.path(), {{300, 5, 700}}));
    const SideOpen open = openRecordedSide(dir.path(), 3);
    ASSERT_EQ(open.problem, SideProblem::None);
    struct Case {
        int64_t first;
        int64_t count;
        int64_t expectFirst; // the frames expected, -1 for none
        int64_t expectCount;
    };
    const Case cases[] = {
        {0, 10, 0, 10},     {290, 20, 290, 20},  {299, 7, 299, 7},     {303, 2, 303, 2},
        {0, 1005, 0, 1005}, {1000, 50, 1000, 5}, {1004, 1, 1004, 1},   {1005, 1, -1, 0},
        {-1, 10, -1, 0},    {10, 0, -1, 0},      {0, 100000, 0, 1005},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.first) + "+" + std::to_string(c.count));
        const std::vector<float> got = readSideRange(open.side, c.first, c.count);
        std::vector<float> expected;
        if (c.expectFirst >= 0)
            expected.assign(stored.begin() + c.expectFirst * 2,
                            stored.begin() + (c.expectFirst + c.expectCount) * 2);
        EXPECT_EQ(got, expected);
    }
}

} // namespace
} // namespace waxline
