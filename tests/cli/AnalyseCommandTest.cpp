// waxline-cli analyse and make-demo-side, run as a user would run them.
#include "filters/AudioFilter.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <vector>

using waxline::test::readStereoWav;
using waxline::test::runCommand;
using waxline::test::TempDir;
using waxline::test::WavContents;

namespace {

struct Span {
    double start, end;
};

// The layout make-demo-side prints: its gap lines.
std::vector<Span> gapsIn(const std::string& layout) {
    std::vector<Span> gaps;
    std::regex line(R"(gap\s+([0-9.]+) s \.\.\s+([0-9.]+) s)");
    for (std::sregex_iterator it(layout.begin(), layout.end(), line), end; it != end; ++it)
        gaps.push_back({std::stod((*it)[1]), std::stod((*it)[2])});
    return gaps;
}

std::vector<double> eventTimes(const std::string& output, const std::string& what) {
    std::vector<double> times;
    std::regex line(R"(\s*([0-9.]+) s  )" + what);
    for (std::sregex_iterator it(output.begin(), output.end(), line), end; it != end; ++it)
        times.push_back(std::stod((*it)[1]));
    return times;
}

void writeWav(const std::string& path, int channels, int rate, size_t frames) {
    SF_INFO info{};
    info.channels = channels;
    info.samplerate = rate;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(f, nullptr);
    std::vector<float> zeros(frames * static_cast<size_t>(channels), 0.1f);
    sf_writef_float(f, zeros.data(), static_cast<sf_count_t>(frames));
    sf_close(f);
}

class AnalyseDemoSide : public testing::Test {
protected:
    static void SetUpTestSuite() {
        dir = new TempDir;
        side = dir->file("side.wav");
        ASSERT_EQ(runCommand(waxline::test::cliPath() + " make-demo-side " + side +
                                 " --tracks 4 --seed 11",
                             layout, false),
                  0)
            << layout;
    }
    static void TearDownTestSuite() { delete dir; }
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
        std::string out;
        ASSERT_EQ(runCommand(waxline::test::cliPath() + " analyse " + side + " --preset " + preset,
                             out, false),
                  0);
        const auto started = eventTimes(out, "silence started");
        // One gap start per gap between tracks, plus the run-out groove.
        ASSERT_EQ(started.size(), gaps.size() + 1) << out;
        for (size_t i = 0; i < gaps.size(); ++i) {
            const double middle = (gaps[i].start + gaps[i].end) / 2;
            EXPECT_NEAR(started[i], middle, 2.5) << "gap " << i + 1;
        }
        EXPECT_EQ(eventTimes(out, "album ended").size(), 1u) << out;
    }
}

TEST_F(AnalyseDemoSide, ProposesOneTrackPerSongSplitInTheGaps) {
    std::string out;
    ASSERT_EQ(runCommand(waxline::test::cliPath() + " analyse " + side + " --preset riaa --tracks",
                         out, false),
              0);
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
    std::string printed;
    ASSERT_EQ(
        runCommand(waxline::test::cliPath() + " analyse " + side + " --preset riaa --output " + out,
                   printed),
        0)
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

TEST(AnalyseCommand, RefusesFilesItCannotUse) {
    TempDir dir;
    writeWav(dir.file("mono.wav"), 1, 44100, 1000);
    writeWav(dir.file("six.wav"), 6, 44100, 1000);
    writeWav(dir.file("low.wav"), 2, 22050, 1000);
    std::ofstream(dir.file("text.wav")) << "not a sound file\n";
    const std::pair<std::string, std::string> cases[] = {
        {dir.file("missing.wav"), "cannot read"},
        {dir.file("text.wav"), "cannot read"},
        {dir.file("mono.wav"), "1 channel; a stereo file is needed"},
        {dir.file("six.wav"), "6 channels; a stereo file is needed"},
        {dir.file("low.wav"), "22050 Hz"},
    };
    for (const auto& [file, message] : cases) {
        std::string out;
        EXPECT_EQ(runCommand(waxline::test::cliPath() + " analyse " + file, out), 2) << file;
        EXPECT_NE(out.find(message), std::string::npos) << out;
        EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1) << "one line: " << out;
    }
}

TEST(AnalyseCommand, BadUsageExitsTwoWithTheUsage) {
    const char* cases[] = {"analyse",
                           "analyse a.wav b.wav",
                           "analyse x.wav --preset loud",
                           "analyse x.wav --bogus",
                           "make-demo-side",
                           "frobnicate"};
    for (const char* args : cases) {
        std::string out;
        EXPECT_EQ(runCommand(waxline::test::cliPath() + " " + args, out), 2) << args;
        EXPECT_NE(out.find("Usage"), std::string::npos) << args << ": " << out;
    }
}

TEST(MakeDemoSide, SameSeedSameSideOtherSeedOtherSide) {
    TempDir dir;
    std::string a, b, c;
    ASSERT_EQ(runCommand(waxline::test::cliPath() + " make-demo-side " + dir.file("a.wav") +
                             " --seed 5 --tracks 2",
                         a, false),
              0);
    ASSERT_EQ(runCommand(waxline::test::cliPath() + " make-demo-side " + dir.file("b.wav") +
                             " --seed 5 --tracks 2",
                         b, false),
              0);
    ASSERT_EQ(runCommand(waxline::test::cliPath() + " make-demo-side " + dir.file("c.wav") +
                             " --seed 6 --tracks 2",
                         c, false),
              0);
    std::string cmpSame, cmpOther;
    EXPECT_EQ(runCommand("cmp " + dir.file("a.wav") + " " + dir.file("b.wav"), cmpSame), 0);
    EXPECT_NE(runCommand("cmp -s " + dir.file("a.wav") + " " + dir.file("c.wav"), cmpOther), 0);
    EXPECT_EQ(a.substr(a.find('\n')), b.substr(b.find('\n')));
}

} // namespace
