// waxline-cli analyse --output writes the equalised stream; the rest of analyse and
// make-demo-side is in cli/transcripts/analyse.t.
#include "cli/CliRun.h"
#include "filters/AudioFilter.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <vector>

using namespace waxline::test;

namespace {

TEST(AnalyseCommand, OutputIsTheEqualisedStream) {
    TempDir dir;
    const std::string side = makeDemoSideFile(dir, 4, 11);
    const std::string out = dir.file("eq.wav");
    std::string printed;
    ASSERT_EQ(runCommand(cli("analyse " + side + " --preset riaa --output " + out), printed), 0)
        << printed;
    const WavContents input = readStereoWav(side);
    const WavContents equalised = readStereoWav(out);
    ASSERT_EQ(input.error, "");
    ASSERT_EQ(equalised.error, "");
    ASSERT_EQ(equalised.format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    ASSERT_EQ(equalised.frames(), input.frames());

    // The same preset run here on the whole file at once.
    std::vector<float> left = input.channel(0), right = input.channel(1);
    Sonra::Audio::Filters::AudioFilter f;
    f.Set(Sonra::Audio::Filters::AudioFilter::RIAAPlayback);
    f(left.data(), right.data(), left.size());
    size_t differing = 0;
    for (size_t i = 0; i < left.size(); ++i)
        differing +=
            left[i] != equalised.samples[2 * i] || right[i] != equalised.samples[2 * i + 1];
    EXPECT_EQ(differing, 0u);
}

} // namespace
