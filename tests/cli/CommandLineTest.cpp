// What waxline-cli says to a person at its command line: help on every command, bad values
// refused in one line, and an analysis that would overwrite its own input.
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

using waxline::test::runCommand;
using waxline::test::shellQuote;
using waxline::test::TempDir;

namespace {

std::string cli(const std::string& args) {
    return waxline::test::cliPath() + " " + args;
}

long lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

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

// Each bad value: exit 2 and one line on standard error that names the option, no usage dump.
TEST(CommandLine, BadValuesAreRefusedInOneLine) {
    TempDir dir;
    const std::string out = shellQuote(dir.file("side.wav"));
    const std::string side = shellQuote(dir.file("none.wav"));
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
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        std::string printed;
        EXPECT_EQ(runCommand(cli(c.args) + " 2>&1 >/dev/null", printed, false), 2) << printed;
        EXPECT_EQ(lines(printed), 1) << printed;
        EXPECT_NE(printed.find(c.mentioned), std::string::npos) << printed;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("side.wav")));
}

TEST(CommandLine, AnalyseRefusesToWriteOverItsInput) {
    TempDir dir;
    const std::string side = waxline::test::makeDemoSideFile(dir, 1, 3);
    std::filesystem::create_symlink(side, dir.file("link.wav"));
    std::filesystem::create_hard_link(side, dir.file("hard.wav"));
    std::filesystem::create_directory(dir.file("sub"));
    const auto before = std::filesystem::file_size(side);
    const auto original = waxline::test::readStereoWav(side);
    ASSERT_EQ(original.error, "");
    const std::string outputs[] = {side, dir.file("link.wav"), dir.file("hard.wav"),
                                   dir.file("sub/../side.wav"), dir.path() + "//side.wav"};
    for (const auto& output : outputs) {
        SCOPED_TRACE(output);
        std::string printed;
        EXPECT_EQ(runCommand(cli("analyse " + shellQuote(side) + " --output " + shellQuote(output)),
                             printed),
                  2)
            << printed;
        EXPECT_NE(printed.find("is the input file"), std::string::npos) << printed;
        EXPECT_EQ(std::filesystem::file_size(side), before);
    }
    EXPECT_EQ(waxline::test::readStereoWav(side).samples, original.samples);

    // Reading through a link and writing elsewhere stays allowed.
    std::string printed;
    EXPECT_EQ(runCommand(cli("analyse " + shellQuote(dir.file("link.wav")) + " --output " +
                             shellQuote(dir.file("eq.wav"))),
                         printed),
              0)
        << printed;
}

} // namespace
