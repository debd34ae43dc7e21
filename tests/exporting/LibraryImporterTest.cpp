#include "exporting/LibraryImporter.h"

#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace waxline::exporting {
namespace {

namespace fs = std::filesystem;

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(LibraryImporter, SafeComponents) {
    struct Case {
        std::string in;
        std::string out;
    };
    const Case cases[] = {
        {"Abbey Road", "Abbey Road"},
        {"AC/DC", "AC-DC"},
        {"..", "__"},
        {".hidden", "_hidden"},
        {"../../x", "__-..-x"},
        {"tab\there\nnew", "tab_here_new"},
        {"  padded  ", "padded"},
        {"", "FALLBACK"},
        {"   ", "FALLBACK"},
        {"\x7f", "_"},
        {"Ünïcödé", "Ünïcödé"},
        {"a.b.", "a.b."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LibraryImporter::safeComponent(c.in, "FALLBACK"), c.out) << c.in;
}

TEST(LibraryImporter, LongNamesAreCutOnCharacterBoundaries) {
    std::string name;
    for (int i = 0; i < 200; ++i)
        name += "\xC3\xA9"; // é, two bytes each: 400 bytes
    const std::string safe = LibraryImporter::safeComponent(name, "x");
    EXPECT_EQ(safe.size(), 254u); // 127 whole characters
    const LibraryImporter importer("/music");
    const std::string file =
        fs::path(importer.destinationFor(name, name, name, 3)).filename().string();
    EXPECT_LE(file.size(), 255u);
    EXPECT_EQ(file.substr(0, 3), "03 ");
    EXPECT_EQ(file.substr(file.size() - 4), ".mp3");
}

TEST(LibraryImporter, DestinationsStayInsideTheMusicFolder) {
    const LibraryImporter importer("/music");
    struct Case {
        std::string artist, album, title;
        int number;
        std::string expected;
        bool worded = false; // the stand-ins come from a catalogue
    };
    const Case cases[] = {
        {"Artist", "Album", "Song", 1, "/music/Artist/Album/01 Song.mp3"},
        {"Artist", "Album", "Song", 12, "/music/Artist/Album/12 Song.mp3"},
        {"../../x", "..", "../../etc/passwd", 2, "/music/__-..-x/__/02 __-..-etc-passwd.mp3"},
        {"", "", "", 5, "/music/IDS_UNKNOWN_ARTIST/IDS_UNKNOWN_ALBUM/05 Unknown.mp3"},
        {" ", "  ", "   ", 6, "/music/Wer/Was/06 Unknown.mp3", true},
    };
    const LibraryImporter worded("/music", [](const std::string& key) -> std::string {
        return key == "IDS_UNKNOWN_ARTIST"  ? "Wer"
               : key == "IDS_UNKNOWN_ALBUM" ? "Was"
                                            : "Stück %1";
    });
    for (const auto& c : cases) {
        const std::string path =
            (c.worded ? worded : importer).destinationFor(c.artist, c.album, c.title, c.number);
        EXPECT_EQ(path, c.expected);
        EXPECT_EQ(fs::path(path).lexically_normal().string().rfind("/music/", 0), 0u) << path;
    }
}

TEST(LibraryImporter, ProbeSucceedsOnlyWhereAFileCanBeMade) {
    test::TempDir dir;
    std::ofstream(dir.file("plain-file")) << "x";
    struct Case {
        std::string folder;
        int expected;
    };
    const Case cases[] = {
        {dir.path(), 0},
        {dir.file("made/on/demand"), 0},
        // Under a regular file nothing can be made, not even by root.
        {dir.file("plain-file/Music"), LibraryImporter::kLibraryUnavailable},
        {dir.file("plain-file"), LibraryImporter::kLibraryUnavailable},
        {"", LibraryImporter::kLibraryUnavailable},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LibraryImporter(c.folder).probe(), c.expected) << c.folder;
    EXPECT_TRUE(fs::is_directory(dir.file("made/on/demand")));
    EXPECT_EQ(test::filesBelow(dir.path()), std::vector<std::string>{"plain-file"});
}

TEST(LibraryImporter, ReplacesAnExistingTrackWithACompleteCopy) {
    test::TempDir dir;
    const LibraryImporter importer(dir.file("Music"));
    const std::string first = dir.file("first.mp3"), second = dir.file("second.mp3");
    std::ofstream(first) << std::string(100000, 'a');
    std::ofstream(second) << std::string(70000, 'b');

    const auto a = importer.importTrack(first, "Art", "Alb", "Song", 1);
    ASSERT_TRUE(a.ok) << a.problem.path;
    EXPECT_EQ(fileBytes(a.path), fileBytes(first));
    const auto b = importer.importTrack(second, "Art", "Alb", "Song", 1);
    ASSERT_TRUE(b.ok) << b.problem.path;
    EXPECT_EQ(b.path, a.path);
    EXPECT_EQ(fileBytes(b.path), fileBytes(second));

    // A source that cannot be read leaves the existing copy as it was and no leftovers.
    const auto c = importer.importTrack(dir.file("missing.mp3"), "Art", "Alb", "Song", 1);
    EXPECT_FALSE(c.ok);
    EXPECT_EQ(c.problem.kind, ExportProblem::Kind::ImportCannotRead);
    EXPECT_NE(c.problem.path.find("missing.mp3"), std::string::npos) << c.problem.path;
    EXPECT_EQ(fileBytes(b.path), fileBytes(second));
    EXPECT_EQ(test::filesBelow(dir.file("Music")), std::vector<std::string>{"Art/Alb/01 Song.mp3"});
}

} // namespace
} // namespace waxline::exporting
