// Faults during a recording made as `waxline-cli record` makes it: the deck vanishing, a stalled
// writer, an export folder that cannot be made. Each must end cleanly, say why, and keep what was
// recorded.
#include "capture/Audio.h"
#include "cli/RecordSession.h"
#include "platform/virtual/VirtualAudioSystem.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>

namespace waxline {
namespace {

// Records the side as `options` say, with what it printed on standard output and error.
int recordCapturing(const cli::RecordOptions& options, cli::RecordResult& result,
                    std::string& text) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = cli::recordSide(options, result);
    text = testing::internal::GetCapturedStdout();
    text += testing::internal::GetCapturedStderr();
    return status;
}

// Options that record a demo side of `tracks` tracks from the virtual deck at `speed`.
cli::RecordOptions deckOptions(const test::TempDir& dir, int tracks, int seed, int speed) {
    cli::RecordOptions options;
    options.virtualDevice =
        "file=" + test::makeDemoSideFile(dir, tracks, seed) + ",speed=" + std::to_string(speed);
    options.exportDir = dir.file("exports");
    options.showStatus = false;
    return options;
}

long long framesIn(const cli::RecordResult& result) {
    long long frames = 0;
    for (const auto& f : result.files) {
        const test::SoundInfo info = test::soundInfo(f.path);
        EXPECT_EQ(info.channels, 2) << f.path;
        EXPECT_GE(info.frames, 0) << f.path << " does not open";
        frames += std::max(0LL, info.frames);
    }
    return frames;
}

// The export folder is deleted during the recording: within a second the recording stops and
// says that the tracks went with the folder, instead of writing on into deleted files and
// claiming they were kept.
TEST(RecordSessionFaults, DeletedExportFolderStopsTheRecordingWithinASecond) {
    test::TempDir dir;
    cli::RecordOptions options = deckOptions(dir, 2, 5, 2);
    std::chrono::steady_clock::time_point deletedAt;
    options.onTick = [&](Audio& audio, platform::Platform&) {
        if (deletedAt == std::chrono::steady_clock::time_point() &&
            audio.recorderCounters().capturedFrames > 2 * 44100) {
            std::filesystem::remove_all(options.exportDir);
            deletedAt = std::chrono::steady_clock::now();
        }
    };
    cli::RecordResult result;
    std::string text;
    const int status = recordCapturing(options, result, text);
    const auto stoppedAt = std::chrono::steady_clock::now();

    ASSERT_NE(deletedAt, std::chrono::steady_clock::time_point()) << text;
    EXPECT_EQ(status, 1) << text;
    EXPECT_LT(std::chrono::duration<double>(stoppedAt - deletedAt).count(), 1.0) << text;
    EXPECT_NE(text.find("was removed while recording, and every track recorded into it went with "
                        "it"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("is kept"), std::string::npos) << text;
    EXPECT_EQ(text.find("are kept"), std::string::npos) << text;
}

// The deck is pulled out during the second track: the recording ends as if Stop had been
// pressed, both tracks stay, and nothing the recorder had received is missing from them.
TEST(RecordSessionFaults, VanishedDeckEndsTheRecordingAndKeepsTheTracks) {
    test::TempDir dir;
    cli::RecordOptions options = deckOptions(dir, 3, 5, 40);
    uint64_t capturedAtUnplug = 0;
    bool unplugged = false;
    uint64_t capturedInTrack2 = 0; // seen at the first tick of track 2
    options.onTick = [&](Audio& audio, platform::Platform& platform) {
        const uint64_t captured = audio.recorderCounters().capturedFrames;
        if (audio.numRecordedTracks() != 2 || unplugged)
            return;
        if (!capturedInTrack2)
            capturedInTrack2 = captured;
        else if (captured > capturedInTrack2 + 3 * 44100) {
            capturedAtUnplug = captured;
            unplugged = platform::unplugVirtualDeck(platform);
        }
    };
    cli::RecordResult result;
    std::string text;
    const int status = recordCapturing(options, result, text);

    ASSERT_TRUE(unplugged) << text;
    EXPECT_EQ(status, 1) << text;
    EXPECT_NE(result.endedBy.find("disconnected"), std::string::npos) << result.endedBy;
    EXPECT_NE(text.find("waxline-cli record: The recording device was disconnected"),
              std::string::npos)
        << text;
    EXPECT_EQ(result.countedTracks, 2) << text;
    ASSERT_EQ(result.files.size(), 2u) << text;
    EXPECT_TRUE(result.files[0].counted && result.files[1].counted);
    EXPECT_GT(result.files[0].seconds, 40.0) << text; // the whole first track of 46 s or more
    EXPECT_GT(result.files[1].seconds, 3.0);
    const long long written = framesIn(result);
    EXPECT_GE(written, static_cast<long long>(capturedAtUnplug)) << text;
    EXPECT_EQ(result.droppedBuffers, 0u) << text;
    EXPECT_EQ(written, static_cast<long long>(result.capturedFrames)) << text;
}

// The writer stalls as on a blocked disk: once the queue is full every further buffer is
// dropped, counted, and the count is shown on the live line and in the summary. Whatever was not
// dropped reaches the file.
TEST(RecordSessionFaults, StalledWriterDropsAreCountedAndShown) {
    test::TempDir dir;
    // Slow enough that the live line (every five seconds when not on a terminal) appears.
    cli::RecordOptions options = deckOptions(dir, 1, 8, 10);
    options.showStatus = true;
    options.automaticSplit = false;
    options.preset = "none";
    options.maxSeconds = 70;
    bool held = false, released = false;
    options.onTick = [&](Audio& audio, platform::Platform&) {
        RecorderEngine* engine = audio.recorderEngine();
        if (!engine)
            return;
        const auto c = engine->counters();
        if (!held && c.capturedFrames > 2 * 44100) {
            engine->holdWriter(true);
            held = true;
        } else if (held && !released && c.droppedBuffers >= 3) {
            engine->holdWriter(false);
            released = true;
        }
    };
    cli::RecordResult result;
    std::string text;
    const int status = recordCapturing(options, result, text);

    EXPECT_EQ(status, 0) << text;
    ASSERT_TRUE(released) << text;
    EXPECT_EQ(result.endedBy, "time limit");
    EXPECT_GE(result.droppedBuffers, 3u);
    ASSERT_EQ(result.files.size(), 1u);
    EXPECT_EQ(framesIn(result) + static_cast<long long>(result.droppedFrames),
              static_cast<long long>(result.capturedFrames));

    std::smatch m;
    const std::regex summary(R"(Recording ended \(time limit\): 1 track, (\d+) dropped buffers)");
    ASSERT_TRUE(std::regex_search(text, m, summary)) << text;
    EXPECT_EQ(std::stoull(m[1]), result.droppedBuffers);
    // Live lines count up to the final figure; at least one comes after the drops began.
    const std::regex live(R"(track 1  \d\d:\d\d:\d\d  L .* dBFS  R .* dBFS.*  dropped (\d+))");
    uint64_t shown = 0;
    for (std::sregex_iterator it(text.begin(), text.end(), live), end; it != end; ++it) {
        const uint64_t n = std::stoull((*it)[1]);
        EXPECT_GE(n, shown);
        shown = n;
    }
    EXPECT_GT(shown, 0u) << text;
    EXPECT_LE(shown, result.droppedBuffers);
}

// An export folder that cannot exist (its parent is a regular file, which root cannot get past
// either) is refused at the first track with a clear message; nothing is left behind.
TEST(RecordSessionFaults, ExportFolderThatCannotBeMadeIsRefused) {
    test::TempDir dir;
    std::ofstream(dir.file("plain")) << "not a folder\n";
    cli::RecordOptions options = deckOptions(dir, 1, 2, 40);
    options.exportDir = dir.file("plain/exports");
    cli::RecordResult result;
    std::string text;
    const int status = recordCapturing(options, result, text);

    EXPECT_EQ(status, 1) << text;
    EXPECT_TRUE(result.files.empty());
    EXPECT_NE(text.find("There was a problem creating the audio file"), std::string::npos) << text;
    EXPECT_NE(text.find("waxline-cli record: cannot record into " + options.exportDir),
              std::string::npos)
        << text;
}

} // namespace
} // namespace waxline
