// waxline-cli export on track files laid out as a recording leaves them, and digitize, the whole
// job in one command.
#include "cli/CliRun.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

namespace waxline {
namespace {

namespace fs = std::filesystem;
using test::shellQuote;

void tones(const std::string& exports, int count) {
    for (int i = 1; i <= count; ++i)
        ASSERT_TRUE(
            test::writeToneWav(exports + "/WXRTTmpFile." + std::to_string(i) + ".wav", 0.8, 0.5));
}

struct CliCase {
    const char* name;
    int tones;             // track files 1..tones, each holding a tone
    const char* count;     // the count file's text; null: no count file
    std::string arguments; // after "export --export-dir ..."; {LIB} stands for the library folder
    int expectedStatus;
    std::vector<std::string> expectedOutput; // pieces that must appear
    std::vector<std::string> expectedFiles;  // the library's files afterwards
    // Anything else the case needs in the export folder or beside it.
    std::function<void(const std::string& exports, const test::TempDir& dir)> prepare = nullptr;
    std::string environment = ""; // prefixed to the command
};

void PrintTo(const CliCase& c, std::ostream* os) {
    *os << c.name;
}

class ExportCommand : public testing::TestWithParam<CliCase> {};

TEST_P(ExportCommand, ReportsPerTrackAndExitsWithTheRightStatus) {
    const CliCase& c = GetParam();
    test::TempDir dir;
    // A quote in the export folder's path must not matter to anything.
    const std::string exports = dir.file("rock'n'roll exports");
    const std::string library = dir.file("Music");
    fs::create_directories(exports);
    tones(exports, c.tones);
    if (c.count)
        std::ofstream(exports + "/WXRTTmpFile.count") << c.count;
    if (c.prepare)
        c.prepare(exports, dir);
    std::string arguments = c.arguments;
    if (const auto at = arguments.find("{LIB}"); at != std::string::npos)
        arguments.replace(at, 5, shellQuote(library));
    std::string output;
    const int status = test::runCommand(
        c.environment + " " +
            test::cli("export --export-dir " + shellQuote(exports) + " " + arguments),
        output);
    EXPECT_EQ(status, c.expectedStatus) << output;
    for (const auto& piece : c.expectedOutput)
        EXPECT_NE(output.find(piece), std::string::npos) << "missing '" << piece << "' in\n"
                                                         << output;
    EXPECT_EQ(test::filesBelow(library), c.expectedFiles) << output;
    // No output may carry a bare error number instead of words.
    EXPECT_EQ(output.find("err ="), std::string::npos) << output;
    EXPECT_EQ(output.find("-1753"), std::string::npos) << output;
}

// Run-out groove: faint hiss with a click every revolution (1.8 s), no music.
bool grooveNoise(const std::string& path, double seconds) {
    const size_t frames = static_cast<size_t>(seconds * 44100);
    std::vector<float> left(frames), right(frames);
    uint32_t state = 12345;
    for (size_t i = 0; i < frames; ++i) {
        state = state * 1664525u + 1013904223u;
        const float hiss = (static_cast<float>(state >> 8) / 16777216.0f - 0.5f) * 0.004f;
        const float click = i % 79380 < 20 ? 0.2f : 0.0f;
        left[i] = hiss + click;
        right[i] = hiss + click;
    }
    return test::writeStereoWav(path, left, right);
}

const char* const kFinished2 = "2\nfinished\n";
const std::string kAB = "--artist A --album B --library {LIB}";

const CliCase kCases[] = {
    {"CountedTracksOnlyRunOutLeftOut",
     3,
     kFinished2,
     "--artist 'Sam & Co' --album \"Live '79\" --title 'A \"b\" $(echo x)' --library {LIB}",
     0,
     {"track 1/2", "track 2/2", "Library files made:"},
     {"Sam & Co/Live '79/01 A \"b\" $(echo x).mp3", "Sam & Co/Live '79/02 Unknown.mp3"}},
    {"InterruptedRecordingLeavesOutATrailingRunOut",
     2,
     "2\n",
     kAB,
     0,
     {"was interrupted", "3 track files", "Track file 3 holds nothing but groove noise",
      "track 2/2"},
     {"A/B/01 Unknown.mp3", "A/B/02 Unknown.mp3"},
     [](const std::string& e, const test::TempDir&) {
         ASSERT_TRUE(grooveNoise(e + "/WXRTTmpFile.3.wav", 4.0));
     }},
    {"TracksOptionOverridesTheCount",
     2,
     kFinished2,
     kAB + " --tracks 1",
     0,
     {"track 1/1"},
     {"A/B/01 Unknown.mp3"}},
    {"EmptyTrackFailsTheRunButNotTheOthers",
     3,
     "3\nfinished\n",
     kAB,
     1,
     {"track 2/3  #2  FAILED: track file WXRTTmpFile.2.wav is empty", "1 of 3 tracks failed"},
     {"A/B/01 Unknown.mp3", "A/B/03 Unknown.mp3"},
     [](const std::string& e, const test::TempDir&) {
         std::ofstream(e + "/WXRTTmpFile.2.wav", std::ios::trunc).close();
     }},
    {"EncoderMissingFromPath",
     1,
     nullptr,
     kAB,
     1,
     {"exit status 127", "ffmpeg", "1 of 1 tracks failed"},
     {},
     nullptr,
     "PATH=/nonexistent"},
    {"UnwritableLibrary",
     1,
     nullptr,
     kAB + "/Sub",
     1,
     {"the music folder", "cannot be written (Not a directory)",
      "choose another with --library DIR", "nothing was exported"},
     {},
     [](const std::string&, const test::TempDir& dir) {
         std::ofstream(dir.file("Music")) << "a file where the folder should be";
     }},
    {"MoreTitlesThanTracksNamesTheUnusedOnes",
     2,
     kFinished2,
     kAB + " --title One --title Two --title 'Three Left'",
     1,
     {"warning: 3 titles for 2 tracks: not used \"Three Left\""},
     {"A/B/01 One.mp3", "A/B/02 Two.mp3"}},
    {"FewerTitlesThanTracksIsSaidButFine",
     3,
     "3\nfinished\n",
     kAB + " --title One",
     0,
     {"1 title for 3 tracks: tracks 2 to 3 will have no title"},
     {"A/B/01 One.mp3", "A/B/02 Unknown.mp3", "A/B/03 Unknown.mp3"}},
    {"NothingToExport", 0, nullptr, kAB, 2, {"No recorded tracks"}, {}},
    {"ArtistIsRequired",
     1,
     nullptr,
     "--album B --library {LIB}",
     2,
     {"--artist and --album are needed"},
     {}},
};

INSTANTIATE_TEST_SUITE_P(Cases, ExportCommand, testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

// Unicode names read back as typed with --unicode-tags, and as Latin-1 bytes without it.
TEST(ExportCommandTags, UnicodeTagsKeepTheNamesAsTyped) {
    const std::string cafe = "Caf\xC3\xA9";
    for (const bool unicode : {false, true}) {
        SCOPED_TRACE(unicode);
        test::TempDir dir;
        fs::create_directories(dir.file("exports"));
        tones(dir.file("exports"), 1);
        std::string output;
        ASSERT_EQ(
            test::runCommand(test::cli("export --export-dir " + shellQuote(dir.file("exports")) +
                                       " --library " + shellQuote(dir.file("Music")) +
                                       " --artist " + shellQuote(cafe) + " --album B --title " +
                                       shellQuote(cafe) + (unicode ? " --unicode-tags" : "")),
                             output),
            0)
            << output;
        const auto tags = test::probeTags(dir.file("Music/" + cafe + "/B/01 " + cafe + ".mp3"));
        const std::string expected = unicode ? cafe : test::latin1BytesAsUtf8(cafe);
        EXPECT_EQ(tags.at("title"), expected);
        EXPECT_EQ(tags.at("artist"), expected);
    }
}

// The whole job headless: a synthetic side played by the virtual turntable is recorded, split at
// its gaps and exported; the run-out groove after the album end is not.
TEST(DigitizeCommand, RecordsAndExportsASideIntoTheLibrary) {
    test::TempDir dir;
    const std::string side = test::makeDemoSideFile(dir, 2, 5);
    std::string output;
    ASSERT_EQ(
        test::runCommand(
            test::cli("digitize --virtual-device " +
                      shellQuote("usb=08bb:2900,name=USB Audio CODEC ,file=" + side + ",speed=40") +
                      " --export-dir " + shellQuote(dir.file("exports")) + " --library " +
                      shellQuote(dir.file("Music")) + " --artist Deck --album Side --title First"),
            output),
        0)
        << output;
    EXPECT_EQ(test::filesBelow(dir.file("Music")),
              (std::vector<std::string>{"Deck/Side/01 First.mp3", "Deck/Side/02 Unknown.mp3"}))
        << output;
    const auto tags = test::probeTags(dir.file("Music/Deck/Side/02 Unknown.mp3"));
    EXPECT_EQ(tags.at("track"), "2");
    EXPECT_EQ(tags.at("artist"), "Deck");
}

// Ctrl-C during digitize: the tracks so far are kept, nothing reaches the library (the cut-off
// track would carry its full title), and the user is told how to export them.
TEST(DigitizeCommand, InterruptedKeepsTheTracksButExportsNothing) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    const std::string log = dir.file("output.txt");
    // The shell waits for the track file, interrupts the program 1.5 s later, and reports its
    // exit status.
    std::string status;
    ASSERT_EQ(test::runCommand(
                  test::cli("digitize" +
                            test::deckArgs(test::makeDemoSideFile(dir, 2, 5), "10", exports) +
                            " --library " + shellQuote(dir.file("Music")) +
                            " --artist Deck --album Side --title One --title Two >" +
                            shellQuote(log) + " 2>&1") +
                      " & pid=$!; until [ -s " + shellQuote(exports + "/WXRTTmpFile.1.wav") +
                      " ]; do sleep 0.1; done; sleep 1.5; kill -INT $pid; wait $pid; echo $?",
                  status, false),
              0);
    const std::string output = test::readFile(log);
    EXPECT_EQ(status, "130\n") << output;
    EXPECT_NE(output.find("interrupted"), std::string::npos) << output;
    EXPECT_NE(output.find("waxline-cli export --export-dir " + exports), std::string::npos)
        << output;
    EXPECT_FALSE(fs::exists(dir.file("Music"))) << output;
    EXPECT_TRUE(fs::exists(exports + "/WXRTTmpFile.1.wav"));
    EXPECT_FALSE(fs::exists(exports + "/WXRTTmpFile.1.mp3"));
}

} // namespace
} // namespace waxline
