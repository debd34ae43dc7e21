// waxline-cli clean on one file, and export's archive options.
#include "cli/CliRun.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace waxline {
namespace {

using test::shellQuote;

struct ArchiveCase {
    const char* name;
    std::string arguments; // {IN}, {OUT}, {EXP}, {LIB} stand for the paths
    int expectedStatus;
    std::vector<std::string> expectedOutput;
    std::vector<std::string> expectedLibrary; // below {LIB}/A/B
    int changedSamples;                       // at most, in OUT against IN; -1: OUT not written
};

std::string filled(std::string text, const test::TempDir& dir) {
    for (auto [key, value] : {std::pair{"{IN}", dir.file("in.wav")},
                              {"{OUT}", dir.file("out.wav")},
                              {"{EXP}", dir.file("exp")},
                              {"{LIB}", dir.file("lib")}})
        for (size_t at; (at = text.find(key)) != std::string::npos;)
            text.replace(at, std::string(key).size(), shellQuote(value));
    return text;
}

TEST(ArchiveCommands, CleanAndExportAsAsked) {
    const ArchiveCase cases[] = {
        {"clean clicks: only the four clicks and a few samples beside each change",
         "clean {IN} --output {OUT} --clicks",
         0,
         {"clicks repaired: 4 ("},
         {},
         20},
        {"clean hum on a side without hum",
         "clean {IN} --output {OUT} --hum 50",
         0,
         {"hum: none found, nothing notched"},
         {},
         0},
        {"clean in place is refused",
         "clean {IN} --output {IN} --clicks",
         2,
         {"never cleaned in place"},
         {},
         -1},
        {"clean with nothing to do", "clean {IN} --output {OUT}", 2, {"nothing to do"}, {}, -1},
        {"clean with a wrong hum",
         "clean {IN} --output {OUT} --hum 55",
         2,
         {"--hum takes 50, 60 or auto"},
         {},
         -1},
        {"export both, cleaned, measured",
         "export --export-dir {EXP} --library {LIB} --artist A --album B --title T --format both "
         "--clean clicks,hum --loudness",
         0,
         {"clicks repaired: 4", "hum: none found", "loudness: ", "01 T.flac"},
         {"01 T.flac", "01 T.mp3", "01-01 B.cue", "01-01 B.txt"},
         -1},
        {"export with a wrong format",
         "export --export-dir {EXP} --artist A --album B --format ogg",
         2,
         {"--format takes mp3, flac or both"},
         {},
         -1},
        {"export cleaning the FLAC without cleaning",
         "export --export-dir {EXP} --artist A --album B --clean-flac",
         2,
         {"--clean-flac needs --clean"},
         {},
         -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        // A stereo tone with two clicks a channel: one sample of each changes.
        std::vector<float> left = test::sine(440, 0.3, 44100, 44100 * 2);
        std::vector<float> right = test::sine(550, 0.3, 44100, 44100 * 2);
        for (size_t at : {20000u, 60000u}) {
            left[at] += 0.4f;
            right[at + 77] -= 0.4f;
        }
        ASSERT_TRUE(test::writeStereoWav(dir.file("in.wav"), left, right));
        std::filesystem::create_directories(dir.file("exp"));
        std::filesystem::copy_file(dir.file("in.wav"), dir.file("exp/WXRTTmpFile.1.wav"));
        std::string output;
        EXPECT_EQ(test::runCommand(test::cli(filled(c.arguments, dir)), output), c.expectedStatus)
            << output;
        for (const auto& piece : c.expectedOutput)
            EXPECT_NE(output.find(piece), std::string::npos) << piece << " in\n" << output;
        if (!c.expectedLibrary.empty()) {
            EXPECT_EQ(test::filesBelow(dir.file("lib/A/B")), c.expectedLibrary);
        }
        if (c.changedSamples < 0) {
            EXPECT_FALSE(std::filesystem::exists(dir.file("out.wav")));
            continue;
        }
        const auto before = test::readStereoWav(dir.file("in.wav"));
        const auto after = test::readStereoWav(dir.file("out.wav"));
        ASSERT_EQ(after.samples.size(), before.samples.size());
        int changed = 0;
        for (size_t i = 0; i < before.samples.size(); ++i)
            changed += before.samples[i] != after.samples[i];
        EXPECT_GE(changed, c.changedSamples > 0 ? 4 : 0);
        EXPECT_LE(changed, c.changedSamples);
    }
}

} // namespace
} // namespace waxline
