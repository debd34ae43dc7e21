// What waxline-cli says to a person at its command line: help on every command, usage on a bad
// command line, bad values refused in one line, and an analysis that would overwrite its input.
#include "cli/CliRun.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace waxline::test;

namespace {

TEST(CommandLine, HelpOnEveryCommandAndTheProgram) {
    const struct {
        const char* args;
        const char* mentioned; // an option only that command's help explains
    } cases[] = {
        {"-h", "make-demo-side"},
        {"--help", "digitize"},
        {"analyse -h", "--output"},
        {"analyse side.wav --help", "--tracks"},
        {"make-demo-side --help", "--length"},
        {"devices -h", "--latency"},
        {"record -h", "--max-seconds"},
        {"record --preset none --help", "--split"},
        {"export -h", "--library"},
        {"digitize --help", "--artist"},
        {"splits -h", "--apply"},
        {"record --help", "--durations"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        std::string out;
        // Help goes to standard output and is not an error.
        EXPECT_EQ(runCommand(cli(c.args), out, false), 0) << out;
        EXPECT_NE(out.find("Usage: waxline-cli"), std::string::npos) << out;
        EXPECT_NE(out.find(c.mentioned), std::string::npos) << out;
        EXPECT_EQ(out.find("unknown"), std::string::npos) << out;
    }
}

TEST(CommandLine, BadUsageExitsTwoWithTheUsage) {
    for (const char* args : {"analyse", "analyse a.wav b.wav", "analyse x.wav --preset loud",
                             "analyse x.wav --bogus", "make-demo-side", "frobnicate"}) {
        std::string out;
        EXPECT_EQ(runCommand(cli(args), out), 2) << args;
        EXPECT_NE(out.find("Usage"), std::string::npos) << args << ": " << out;
    }
}

// Each bad value or unusable file: exit 2 and one line on standard error that names what is
// wrong, no usage dump, nothing made.
TEST(CommandLine, BadValuesAreRefusedInOneLine) {
    TempDir dir;
    const std::string out = shellQuote(dir.file("side.wav"));
    const std::string side = shellQuote(dir.file("none.wav"));
    const std::string exports = " --export-dir " + shellQuote(dir.file("exports"));
    ASSERT_TRUE(writeWav(dir.file("mono.wav"), std::vector<float>(1000, 0.1f), 1));
    ASSERT_TRUE(writeWav(dir.file("six.wav"), std::vector<float>(6000, 0.1f), 6));
    ASSERT_TRUE(writeWav(dir.file("low.wav"), std::vector<float>(2000, 0.1f), 2, 22050));
    std::ofstream(dir.file("text.wav")) << "not a sound file\n";
    const struct {
        std::string args;
        const char* mentioned;
    } cases[] = {
        {"make-demo-side " + out + " --length 0", "--length"},
        {"make-demo-side " + out + " --length -30", "--length"},
        {"make-demo-side " + out + " --length nan", "--length"},
        {"make-demo-side " + out + " --length inf", "--length"},
        {"make-demo-side " + out + " --length 14401", "--length"},
        {"make-demo-side " + out + " --tracks 0", "--tracks"},
        {"make-demo-side " + out + " --tracks 8 --length 200", "too short"},
        {"record --virtual-device speed=0,file=" + side, "speed=0"},
        {"record --virtual-device speed=-3,file=" + side, "speed=-3"},
        {"devices --virtual-device speed=0", "speed=0"},
        {"digitize --artist A --album B --virtual-device speed=0,file=" + side, "speed=0"},
        {"record --max-seconds -1", "--max-seconds"},
        {"record --max-seconds nan", "--max-seconds"},
        {"record --gain nan", "--gain"},
        {"record --gain inf", "--gain"},
        {"record --tracks 0" + exports, "--tracks"},
        {"record --tracks 41" + exports, "--tracks"},
        {"record --durations 3:1x" + exports, "3:1x"},
        {"digitize --artist A --album B --tracks 0" + exports, "--tracks"},
        {"digitize --artist A --album B --durations A5-A1" + exports, "A5-A1"},
        {"analyse " + dir.file("missing.wav"), "cannot read"},
        {"analyse " + dir.file("text.wav"), "cannot read"},
        {"analyse " + dir.file("mono.wav"), "1 channel; a stereo file is needed"},
        {"analyse " + dir.file("six.wav"), "6 channels; a stereo file is needed"},
        {"analyse " + dir.file("low.wav"), "22050 Hz"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        std::string printed;
        EXPECT_EQ(runCommand(cli(c.args) + " 2>&1 >/dev/null", printed, false), 2) << printed;
        EXPECT_EQ(lines(printed), 1) << printed;
        EXPECT_NE(printed.find(c.mentioned), std::string::npos) << printed;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("side.wav")));
    EXPECT_FALSE(std::filesystem::exists(dir.file("exports")));
}

TEST(CommandLine, AnalyseRefusesToWriteOverItsInput) {
    TempDir dir;
    const std::string side = makeDemoSideFile(dir, 1, 3);
    std::filesystem::create_symlink(side, dir.file("link.wav"));
    std::filesystem::create_hard_link(side, dir.file("hard.wav"));
    std::filesystem::create_directory(dir.file("sub"));
    const std::string original = readFile(side);
    for (const auto& output : {side, dir.file("link.wav"), dir.file("hard.wav"),
                               dir.file("sub/../side.wav"), dir.path() + "//side.wav"}) {
        SCOPED_TRACE(output);
        std::string printed;
        EXPECT_EQ(runCommand(cli("analyse " + shellQuote(side) + " --output " + shellQuote(output)),
                             printed),
                  2)
            << printed;
        EXPECT_NE(printed.find("is the input file"), std::string::npos) << printed;
        EXPECT_EQ(readFile(side), original);
    }
    // Reading through a link and writing elsewhere stays allowed.
    std::string printed;
    EXPECT_EQ(runCommand(cli("analyse " + shellQuote(dir.file("link.wav")) + " --output " +
                             shellQuote(dir.file("eq.wav"))),
                         printed),
              0)
        << printed;
}

} // namespace
