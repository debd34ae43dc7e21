// waxline-cli lookup and digitize --lookup against the replay server, as a person runs them.
#include "cli/CliRun.h"
#include "demoside/DemoSide.h"
#include "support/MediaFiles.h"
#include "support/ReplayServer.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace waxline::test {
namespace {

const char* const kRelease = "7e57ab1e-0000-4000-8000-00000000d1a1";

// The environment that points waxline-cli at the replay server.
std::string at(const ReplayServer& server) {
    return "WAXLINE_MUSICBRAINZ_URL=" + server.url() + " WAXLINE_COVERART_URL=" + server.url() +
           " ";
}

// The side played by the virtual turntable at `speed` times real time, its tracks into `exports`.
std::string deckArgs(const std::string& side, const std::string& speed,
                     const std::string& exports) {
    return " --virtual-device " + shellQuote("file=" + side + ",speed=" + speed) +
           " --export-dir " + shellQuote(exports);
}

TEST(LookupCommand, listsCandidatesOrSaysWhyNot) {
    TempDir dir;
    writeReleaseFixture(dir.path(), kRelease, "Harbour Lights", "Night Ferry", "5012345678900",
                        "HL 1001", {{"12\" Vinyl", {{"A1", "Lantern", 253000}}}});
    ReplayServer server(dir.path());
    ASSERT_TRUE(server.running());
    struct Row {
        std::string args;
        int status;
        std::string said;
    };
    const std::string empty = " --export-dir " + shellQuote(dir.file("none"));
    const std::vector<Row> rows = {
        {"--barcode 5012345678900", 0, kRelease},
        {"--catno 'HL 1001'", 0, "12\" Vinyl"},
        {"--artist 'harbour lights' --album 'night ferry'", 0, "Harbour Lights - Night Ferry"},
        {"--artist Nobody", 1, "found no release"},
        {"--release 7e57ab1e-0000-4000-8000-000000000000", 1, "knows no such release"},
        {std::string("--release ") + kRelease, 0, "A1     4:13  Lantern"},
        {"--barcode 1 --side A", 2, "--side and --apply go with --release"},
        {"--barcode 1 --catno 2", 2, "give one of"},
    };
    for (const Row& row : rows) {
        std::string output;
        EXPECT_EQ(runCommand(at(server) + cli("lookup " + row.args + empty), output), row.status)
            << row.args << "\n"
            << output;
        EXPECT_NE(output.find(row.said), std::string::npos) << row.args << "\n" << output;
    }
    std::string output;
    EXPECT_EQ(runCommand("WAXLINE_MUSICBRAINZ_URL=http://127.0.0.1:9 " +
                             cli("lookup --barcode 1" + empty),
                         output),
              1);
    EXPECT_NE(output.find("cannot be reached"), std::string::npos) << output;
}

// The sleeve lists the demo side as side B, after a side A of other lengths: B1 of it is the
// listing's fourth track.
TEST(LookupCommand, digitizeLooksTheSideUpAndNamesEveryTrack) {
    TempDir dir;
    const int tracks = 4, seed = 11;
    const std::string side = makeDemoSideFile(dir, tracks, seed);
    demoside::DemoSideOptions options;
    options.tracks = tracks;
    options.seed = seed;
    const auto layout = demoside::DemoSideGenerator(options).layout();
    std::vector<FixtureTrack> listing = {
        {"A1", "Opening", 201000}, {"A2", "Second", 187000}, {"A3", "Third", 243000}};
    for (int i = 0; i < tracks; ++i) {
        const auto& t = layout.tracks[static_cast<size_t>(i)];
        const double end = i + 1 < tracks ? layout.tracks[static_cast<size_t>(i) + 1].start : t.end;
        listing.push_back({"B" + std::to_string(i + 1), "Song \xC3\xA9 " + std::to_string(i + 1),
                           static_cast<int>((end - t.start) * 1000)});
    }
    writeReleaseFixture(dir.path(), kRelease, "Harbour Lights", "Night Ferry", "1", "HL 1",
                        {{"12\" Vinyl", listing}});
    // The same album on CD, found first: records go before it, and the first fits.
    writeReleaseFixture(dir.path(), "0000cd00-0000-4000-8000-000000000001", "Harbour Lights",
                        "Night Ferry", "2", "HLCD 1", {{"CD", listing}});
    std::filesystem::create_directories(dir.file("covers"));
    std::string output;
    ASSERT_EQ(runCommand("ffmpeg -loglevel error -f lavfi -i color=red:s=1600x1000 -frames:v 1 " +
                             shellQuote(dir.file("covers/") + kRelease + ".jpg"),
                         output),
              0)
        << output;
    ReplayServer server(dir.path());
    ASSERT_TRUE(server.running());

    const std::string library = dir.file("library");
    const int status = runCommand(
        at(server) +
            cli("digitize --lookup 'Harbour Lights - Night Ferry' --unicode-tags" +
                deckArgs(side, "20", dir.file("exports")) + " --library " + shellQuote(library)),
        output);
    ASSERT_EQ(status, 0) << output;
    EXPECT_NE(output.find("side B (B1-B4)"), std::string::npos) << output;
    // One search, one release (the record, which fits), the cover's redirect and the picture.
    EXPECT_EQ(server.requests().size(), 4u);

    // The export again, now without a name typed: the names the lookup kept are taken.
    const std::string again = dir.file("again");
    ASSERT_EQ(runCommand(cli("export --unicode-tags --export-dir " +
                             shellQuote(dir.file("exports")) + " --library " + shellQuote(again)),
                         output),
              0)
        << output;
    for (const std::string& root : {library, again}) {
        for (int i = 1; i <= tracks; ++i) {
            const std::string title = "Song \xC3\xA9 " + std::to_string(i);
            const std::string mp3 = root + "/Harbour Lights/Night Ferry/0" + std::to_string(i + 3) +
                                    " " + title + ".mp3";
            const auto tags = probeTags(mp3);
            ASSERT_FALSE(tags.empty()) << mp3;
            EXPECT_EQ(tags.at("title"), title);
            EXPECT_EQ(tags.at("track"), std::to_string(i + 3));
            EXPECT_EQ(tags.at("album_artist"), "Harbour Lights");
            EXPECT_EQ(tags.at("date"), "1979-10-05");
            EXPECT_EQ(tags.at("musicbrainz album id"), kRelease);
            std::string picture;
            runCommand("ffprobe -v error -select_streams v -show_entries stream=width,height -of "
                       "csv=p=0 " +
                           shellQuote(mp3),
                       picture);
            EXPECT_EQ(picture, "1200,750\n") << mp3;
        }
    }
}

} // namespace
} // namespace waxline::test
