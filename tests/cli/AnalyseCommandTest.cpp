// waxline-cli analyse and make-demo-side, run as a user would run them.
#include "cli/CliRun.h"
#include "filters/AudioFilter.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <vector>

using namespace waxline::test;

namespace {

std::vector<double> eventTimes(const std::string& output, const std::string& what) {
    std::vector<double> times;
    std::regex line(R"(\s*([0-9.]+) s  )" + what);
    for (std::sregex_iterator it(output.begin(), output.end(), line), end; it != end; ++it)
        times.push_back(std::stod((*it)[1]));
    return times;
}

class AnalyseDemoSide : public testing::Test {
protected:
    static void SetUpTestSuite() {
        dir = new TempDir;
        side = dir->file("side.wav");
        ASSERT_EQ(
            runCommand(cli("make-demo-side " + side + " --tracks 4 --seed 11"), layout, false), 0)
            << layout;
    }
    static void TearDownTestSuite() { delete dir; }
    // What `analyse` prints for the side with `args`.
    static std::string analyse(const std::string& args) {
        std::string out;
        EXPECT_EQ(runCommand(cli("analyse " + side + " " + args), out, false), 0) << out;
        return out;
    }
    static TempDir* dir;
    static std::string side, layout;
};
TempDir* AnalyseDemoSide::dir;
std::string AnalyseDemoSide::side;
std::string AnalyseDemoSide::layout;

TEST_F(AnalyseDemoSide, FindsEveryGapAndTheEndOfTheSide) {
    const auto gaps = gapsIn(layout);
    ASSERT_EQ(gaps.size(), 3u) << layout;
    for (const char* preset : {"riaa", "none", "chrome"}) {
        SCOPED_TRACE(preset);
        const std::string out = analyse(std::string("--preset ") + preset);
        const auto started = eventTimes(out, "silence started");
        // One gap start per gap between tracks, plus the run-out groove.
        ASSERT_EQ(started.size(), gaps.size() + 1) << out;
        for (size_t i = 0; i < gaps.size(); ++i)
            EXPECT_NEAR(started[i], (gaps[i].start + gaps[i].end) / 2, 2.5) << "gap " << i + 1;
        EXPECT_EQ(eventTimes(out, "album ended").size(), 1u) << out;
    }
}

TEST_F(AnalyseDemoSide, ProposesOneTrackPerSongSplitInTheGaps) {
    const std::string out = analyse("--preset riaa --tracks");
    std::regex line(R"(track (\d+)\s+start\s+([0-9.]+) s\s+length\s+([0-9.]+) s)");
    std::vector<double> starts;
    for (std::sregex_iterator it(out.begin(), out.end(), line), end; it != end; ++it)
        starts.push_back(std::stod((*it)[2]));
    const auto gaps = gapsIn(layout);
    ASSERT_EQ(starts.size(), gaps.size() + 1) << out;
    EXPECT_EQ(starts[0], 0);
    for (size_t i = 0; i < gaps.size(); ++i)
        EXPECT_NEAR(starts[i + 1], (gaps[i].start + gaps[i].end) / 2, 2.5);
}

TEST_F(AnalyseDemoSide, OutputIsTheEqualisedStream) {
    const std::string out = dir->file("eq.wav");
    analyse("--preset riaa --output " + out);
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

TEST(MakeDemoSide, SameSeedSameSideOtherSeedOtherSide) {
    TempDir dir;
    std::string printed[3];
    const char* made[] = {"a.wav --seed 5", "b.wav --seed 5", "c.wav --seed 6"};
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(runCommand(cli("make-demo-side " + dir.file(made[i]) + " --tracks 2"), printed[i],
                             false),
                  0);
    std::string ignored;
    EXPECT_EQ(runCommand("cmp " + dir.file("a.wav") + " " + dir.file("b.wav"), ignored), 0);
    EXPECT_NE(runCommand("cmp -s " + dir.file("a.wav") + " " + dir.file("c.wav"), ignored), 0);
    // The layout printed after the first line (which names the file) is the same too.
    EXPECT_EQ(printed[0].substr(printed[0].find('\n')), printed[1].substr(printed[1].find('\n')));
}

} // namespace
