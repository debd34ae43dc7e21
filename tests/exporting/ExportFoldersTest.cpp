#include "exporting/ExportFolders.h"
#include "exportfolder/ExportFolderLock.h"

#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

namespace waxline::exporting {
namespace {

namespace fs = std::filesystem;

TEST(ExportFolders, CountFileIsReadOnlyWhenItHoldsACount) {
    struct Case {
        const char* content; // nullptr: no file
        std::optional<int> expected;
    };
    const Case cases[] = {{"3\n", 3},
                          {"0", 0},
                          {"12 tracks", 12},
                          {"", std::nullopt},
                          {"abc", std::nullopt},
                          {"-1", std::nullopt},
                          {nullptr, std::nullopt}};
    for (const auto& c : cases) {
        test::TempDir dir;
        if (c.content)
            std::ofstream(dir.file("WXRTTmpFile.count")) << c.content;
        EXPECT_EQ(countedTracks(dir.path()), c.expected) << (c.content ? c.content : "(none)");
    }
}

TEST(ExportFolders, TrackFilesAreCountedInARowFromOne) {
    test::TempDir dir;
    EXPECT_EQ(trackFilesPresent(dir.path()), 0);
    for (int n : {1, 2, 3, 5})
        std::ofstream(dir.file("WXRTTmpFile." + std::to_string(n) + ".wav")) << "x";
    EXPECT_EQ(trackFilesPresent(dir.path()), 3);
    EXPECT_EQ(trackFileName("/e", 12), "/e/WXRTTmpFile.12.wav");
    EXPECT_EQ(mp3PathFor("/e/it's.dir/WXRTTmpFile.2.wav"), "/e/it's.dir/WXRTTmpFile.2.mp3");
}

// Emptying the folder under a held lock must not remove the lock file: a second program would
// make a new one, lock that, and both would work in the folder at once.
TEST(ExportFolders, ClearTmpFolderEmptiesItButKeepsTheFolderAndTheHeldLock) {
    test::TempDir dir;
    const std::string exports = dir.file("Exports");
    fs::create_directories(exports + "/sub/deeper");
    ExportFolderLock lock;
    ASSERT_EQ(lock.tryLock(exports, FolderUse::Recording, "waxline-cli"),
              ExportFolderLock::Outcome::Taken);
    std::ofstream(exports + "/WXRTTmpFile.1.wav") << "x";
    std::ofstream(exports + "/.hidden") << "x";
    std::ofstream(exports + "/sub/deeper/f") << "x";
    std::ofstream(dir.file("beside")) << "x";
    clearTmpFolder(exports);
    EXPECT_TRUE(fs::is_directory(exports));
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(exports))
        left.push_back(entry.path().filename().string());
    EXPECT_EQ(left, std::vector<std::string>{ExportFolderLock::lockFileName()});
    EXPECT_TRUE(fs::exists(dir.file("beside")));
    ExportFolderLock other;
    EXPECT_EQ(other.tryLock(exports, FolderUse::Exporting, "waxline-cli"),
              ExportFolderLock::Outcome::Held);
    clearTmpFolder(dir.file("missing")); // nothing to do, no failure
}

// What a new recording would throw away: track files no full export has put in the library.
TEST(ExportFolders, UnexportedRecordingIsOneWithTrackFilesAndNoExportedNote) {
    const struct {
        const char* name;
        int files;         // WXRTTmpFile.1.wav on, each holding a second of audio
        const char* count; // the count file's text, or null for none
        bool exported;
        bool expected;
    } cases[] = {
        {"empty folder", 0, nullptr, false, false},
        {"counted tracks", 2, "2\n", false, true},
        {"no count (a crash)", 1, nullptr, false, true},
        {"exported", 2, "2\n", true, false},
        {"nothing counted, header only", -1, "0\n", false, false},
        {"nothing counted, but audio", 1, "0\n", false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        if (c.files < 0) {
            ASSERT_TRUE(test::writeToneWav(dir.file("WXRTTmpFile.1.wav"), 0.0, 0.5));
        }
        for (int n = 1; n <= c.files; ++n)
            ASSERT_TRUE(test::writeToneWav(trackFileName(dir.path(), n), 1.0, 0.5));
        if (c.count)
            std::ofstream(dir.file("WXRTTmpFile.count")) << c.count;
        if (c.exported)
            markExported(dir.path());
        EXPECT_EQ(holdsUnexportedRecording(dir.path()), c.expected);
    }
}

TEST(ExportFolders, EnvironmentOverridesTheStandardLocations) {
    setenv("WAXLINE_EXPORT_DIR", "/somewhere/exports", 1);
    setenv("WAXLINE_MUSIC_DIR", "/somewhere/music", 1);
    EXPECT_EQ(exportFolder(), "/somewhere/exports");
    EXPECT_EQ(musicFolder(), "/somewhere/music");
    unsetenv("WAXLINE_EXPORT_DIR");
    unsetenv("WAXLINE_MUSIC_DIR");
    const std::string standard = exportFolder();
    EXPECT_EQ(standard.size() >= 16 ? standard.substr(standard.size() - 16) : standard,
              "/Waxline/Exports");
    EXPECT_FALSE(musicFolder().empty());
}

} // namespace
} // namespace waxline::exporting
