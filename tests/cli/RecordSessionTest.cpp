#include "cli/RecordSession.h"
#include "demoside/DemoSide.h"
#include "exporting/EarlyEncoder.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace waxline {
namespace {

// Plays a synthetic side through the virtual deck faster than real time and records it with
// automatic splitting, as `waxline-cli record` does; with the closed tracks encoded to MP3
// behind the recording, and without.
class RecordSession : public testing::TestWithParam<bool> {};

TEST_P(RecordSession, NothingIsLostAtASplit) {
    const bool encodeBehind = GetParam();
    exporting::EarlyEncoder early;
    test::TempDir dir;
    const std::string side = dir.file("side.wav");
    demoside::DemoSideOptions demo;
    demo.tracks = 3;
    demo.seed = 11;
    demo.lengthSeconds = 170; // tracks of about half a minute: long enough for the detector
    demoside::DemoSideGenerator generator(demo);
    const demoside::DemoSideLayout layout = generator.layout();
    std::vector<float> left(generator.totalFrames()), right(generator.totalFrames());
    for (size_t at = 0; size_t n = generator.render(left.data() + at, right.data() + at, 4096);)
        at += n;
    ASSERT_TRUE(test::writeStereoWav(side, left, right));
    // The side as the deck plays it: 16-bit values.
    const test::WavContents sideWav = test::readStereoWav(side);
    ASSERT_EQ(sideWav.channels, 2);
    const std::vector<float>& input = sideWav.samples;
    const size_t inputFrames = input.size() / 2;

    cli::RecordOptions options;
    // Faster than real time, yet slow enough for a loaded machine: a split is made on the main
    // thread, and each millisecond it waits there moves the split by `speed` ms of audio.
    options.virtualDevice = "file=" + side + ",speed=12";
    options.exportDir = dir.file("exports");
    options.gainDb = -3;
    options.showStatus = false;
    if (encodeBehind)
        options.early = &early;
    cli::RecordResult result;
    ASSERT_EQ(cli::recordSide(options, result), 0);
    early.finish();
    for (int track = 1; track <= result.countedTracks; ++track)
        EXPECT_EQ(exporting::earlyMp3Ready(result.files[size_t(track) - 1].path), encodeBehind)
            << "track " << track;

    EXPECT_EQ(result.endedBy, "album end");
    EXPECT_EQ(result.countedTracks, demo.tracks);
    ASSERT_EQ(result.files.size(), static_cast<size_t>(demo.tracks) + 1);
    EXPECT_EQ(result.droppedBuffers, 0u);
    std::ifstream countFile(options.exportDir + "/WXRTTmpFile.count");
    int counted = -1;
    countFile >> counted;
    EXPECT_EQ(counted, demo.tracks);

    std::vector<float> recorded;
    std::vector<size_t> fileStarts;
    for (const auto& f : result.files) {
        fileStarts.push_back(recorded.size() / 2);
        const test::WavContents track = test::readStereoWav(f.path);
        EXPECT_EQ(track.error, "");
        EXPECT_EQ(track.channels, 2);
        EXPECT_EQ(track.rate, 44100);
        recorded.insert(recorded.end(), track.samples.begin(), track.samples.end());
    }
    const size_t recordedFrames = recorded.size() / 2;
    ASSERT_GT(recordedFrames, 44100u * 60);

    // The recorder joined the deck's timeline a little after the start: find where, from a
    // stretch of music in the first file, then demand a frame-for-frame match everywhere.
    const double gain = std::pow(10.0, -3.0 / 20.0);
    const double tolerance = 1.5 / 32768;
    auto matchesAt = [&](size_t offset, size_t from, size_t count) {
        for (size_t i = from; i < from + count; ++i)
            for (int c = 0; c < 2; ++c)
                if (std::fabs(recorded[2 * i + c] - input[2 * (offset + i) + c] * gain) > tolerance)
                    return false;
        return true;
    };
    const size_t probe = static_cast<size_t>(layout.tracks[0].start * 44100) + 44100;
    std::optional<size_t> offset;
    for (size_t k = 0; k < 44100 * 5 && !offset; ++k)
        if (matchesAt(k, probe - k, 64))
            offset = k;
    ASSERT_TRUE(offset.has_value()) << "the recording does not contain the side";

    size_t mismatches = 0, firstMismatch = 0;
    for (size_t i = 0; i < recordedFrames; ++i) {
        const size_t src = *offset + i;
        for (int c = 0; c < 2; ++c) {
            const double expected = src < inputFrames ? input[2 * src + c] * gain : 0.0;
            if (std::fabs(recorded[2 * i + c] - expected) > tolerance && mismatches++ == 0)
                firstMismatch = i;
        }
    }
    EXPECT_EQ(mismatches, 0u) << "first at recorded frame " << firstMismatch;

    // Each split falls near the middle of the gap it belongs to.
    for (size_t g = 0; g < layout.gaps.size(); ++g) {
        const double boundary = static_cast<double>(*offset + fileStarts[g + 1]) / 44100;
        const double middle = (layout.gaps[g].start + layout.gaps[g].end) / 2;
        EXPECT_NEAR(boundary, middle, 2.5) << "split " << g + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(EncodingBehind, RecordSession, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                             return info.param ? "On" : "Off";
                         });

} // namespace
} // namespace waxline
