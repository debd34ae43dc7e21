#include "app/AppRig.h"
#include "exportfolder/ExportFolder.h"
#include "exportfolder/ExportFolderLock.h"
#include "support/MediaFiles.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

// The window and the export folder: a recording cut off by a crash is offered back at
// start-up, and the folder's lock keeps another run's files from being recorded over.
namespace {

namespace fs = std::filesystem;
using waxline::ExportFolderLock;
using waxline::FolderUse;
using waxline::test::App;
using waxline::test::count;
using waxline::test::entriesBesidesLock;

// A 16-bit stereo track of `seconds` of tone as the recorder writes it, whose header then says
// only `announcedSeconds` (a crash before the header caught up); -1 leaves it right.
void writeTrack(const std::string& path, double seconds, double announcedSeconds = -1) {
    ASSERT_TRUE(waxline::test::writeToneWav(path, seconds, 0.3, 330));
    if (announcedSeconds < 0)
        return;
    const auto bytes = uint32_t(int64_t(announcedSeconds * 44100) * 4);
    std::fstream out(path, std::ios::binary | std::ios::in | std::ios::out);
    const auto put = [&](std::streamoff at, uint32_t v) {
        const char b[4] = {char(v), char(v >> 8), char(v >> 16), char(v >> 24)};
        out.seekp(at);
        out.write(b, 4);
    };
    put(4, 36 + bytes);
    put(40, bytes);
}

void writeCount(const std::string& folder, const std::string& text) {
    std::ofstream(waxline::trackCountPath(folder)) << text;
}

TEST(InterruptedRecording, OfferedAtStartUpWhenNotAllInTheLibrary) {
    enum Also { nothing, exportMark, firstSaved, otherRunRecording };
    struct Case {
        const char* name;
        std::vector<std::pair<double, double>> tracks; // seconds held and announced (-1: right)
        const char* countFile;                         // nullptr: none
        Also also;
        const char* text;    // the question's text key; nullptr: nothing offered
        QStringList offered; // tracks, length and tracks not saved
    };
    const Case cases[] = {
        {"empty folder", {}, nullptr, nothing, nullptr, {}},
        {"clean stop, not yet exported",
         {{2, -1}, {1.5, -1}},
         "2\nfinished\n",
         nothing,
         "IDS_RECOVER_UNSAVED_TEXT",
         {"2", "0:00:04", "2"}},
        {"clean stop, half exported",
         {{2, -1}, {1.5, -1}},
         "2\nfinished\n",
         firstSaved,
         "IDS_RECOVER_HALF_TEXT",
         {"2", "0:00:04", "1"}},
        // The lengths come from the file sizes: a crash leaves the headers behind.
        {"crash in the second track",
         {{62, -1}, {3, 2}},
         "1\n",
         nothing,
         "IDS_RECOVER_TEXT",
         {"2", "0:01:05", "2"}},
        {"crash before any count or header",
         {{3.725, 0}},
         nullptr,
         nothing,
         "IDS_RECOVER_TEXT",
         {"1", "0:00:04", "1"}},
        {"an empty file after the last",
         {{2.4, 1}, {0, -1}},
         "1\n",
         nothing,
         "IDS_RECOVER_TEXT",
         {"1", "0:00:02", "1"}},
        {"exported already", {{2, 1}}, nullptr, exportMark, nullptr, {}},
        {"another run still recording there", {{2, 1}}, nullptr, otherRunRecording, nullptr, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        App app;
        for (size_t i = 0; i < c.tracks.size(); ++i)
            writeTrack(app.track(int(i) + 1), c.tracks[i].first, c.tracks[i].second);
        if (c.countFile)
            writeCount(app.folder.path(), c.countFile);
        if (c.also == exportMark)
            std::ofstream(waxline::exportedMarkPath(app.folder.path())) << "exported\n";
        if (c.also == firstSaved)
            std::ofstream(waxline::savedTracksPath(app.folder.path())) << "1 /music/A/B/01 T.mp3\n";
        ExportFolderLock other;
        if (c.also == otherRunRecording) {
            ASSERT_EQ(other.tryLock(app.folder.path(), FolderUse::Recording, "waxline-cli"),
                      ExportFolderLock::Outcome::Taken);
        }
        const auto before = entriesBesidesLock(app.folder.path());
        app.alerts.choices = {QStringLiteral("IDS_RECOVER_DISCARD")};
        app.start();
        EXPECT_EQ(app.shown(), 1u);
        if (!c.text) {
            // Another run's side is left to it, and this window says whose it is.
            EXPECT_EQ(app.alerts.texts(), c.also == otherRunRecording
                                              ? QStringList{"IDS_FOLDER_BUSY_START"}
                                              : QStringList{});
            EXPECT_EQ(entriesBesidesLock(app.folder.path()), before)
                << "nothing is removed unasked";
            continue;
        }
        ASSERT_EQ(app.alerts.shown.size(), 1u);
        EXPECT_EQ(app.alerts.shown[0].title, "IDS_RECOVER_TITLE");
        EXPECT_EQ(app.alerts.shown[0].text, c.text);
        // Saving is Return's answer, Later Esc's; discarding is never a key away.
        EXPECT_EQ(app.alerts.shown[0].button,
                  "*IDS_RECOVER_EXPORT|^IDS_RECOVER_LATER|IDS_RECOVER_DISCARD");
        EXPECT_EQ(app.alerts.shown[0].arguments, c.offered);
        EXPECT_TRUE(entriesBesidesLock(app.folder.path()).empty()) << "Discard empties the folder";
    }
}

// One track is named on panel 4, several on panel 7; every MP3 has all of its file's audio,
// not only what the header had announced.
TEST(InterruptedRecording, YesNamesAndExportsAllOfEveryTrack) {
    const std::vector<std::pair<double, double>> sides[] = {{{2.5, 1.0}}, {{1.5, 1.5}, {2.5, 0.5}}};
    for (const auto& side : sides) {
        const int n = int(side.size());
        const bool one = n == 1;
        SCOPED_TRACE(n);
        App app;
        for (int i = 0; i < n; ++i)
            writeTrack(app.track(i + 1), side[size_t(i)].first, side[size_t(i)].second);
        writeCount(app.folder.path(), std::to_string(n - 1) + "\n");
        app.start();
        ASSERT_EQ(app.alerts.shown.size(), 1u);
        ASSERT_EQ(app.shown(), one ? 4u : 7u);
        EXPECT_EQ(app.capture.tracks, n);
        EXPECT_EQ(count(app.capture, "adoptRecordedTracks(" + std::to_string(n) + ")"), 1);

        app.type(one ? 10 : 51, QStringLiteral("Found Artist"));
        app.type(one ? 11 : 52, QStringLiteral("Found Album"));
        for (int i = 0; i < n; ++i)
            app.type(one ? 12 : 61 + i, QStringLiteral("Track %1").arg(i + 1));
        app.press(one ? "doNextButton4:" : "doNextButton7:");
        ASSERT_TRUE(QTest::qWaitFor([&] { return app.shown() == 6u; }, 60000));
        for (int i = 0; i < n; ++i) {
            const std::string mp3 = app.music.file("Music") + "/Found Artist/Found Album/0" +
                                    std::to_string(i + 1) + " Track " + std::to_string(i + 1) +
                                    ".mp3";
            ASSERT_TRUE(fs::exists(mp3)) << mp3;
            EXPECT_NEAR(waxline::test::probeDuration(mp3), side[size_t(i)].first, 0.1) << mp3;
        }
        EXPECT_EQ(app.alerts.shown.size(), 1u) << app.alerts.texts().join(", ").toStdString();
        // Another side after a recovered one starts by finding the deck.
        app.press("doNextButton6:");
        EXPECT_EQ(app.shown(), 1u);
    }
}

// A lock the test holds stands for another run (the command line) working in the folder.
TEST(FolderLock, RecordAndExportSayTheFolderIsBusyAndLeaveItAlone) {
    App app;
    app.start();
    app.capture.detectionCodes = {1};
    app.press("doNextButton1:");
    ASSERT_EQ(app.shown(), 2u);
    writeTrack(app.track(1), 1.0);

    {
        ExportFolderLock other;
        ASSERT_EQ(other.tryLock(app.folder.path(), FolderUse::Recording, "waxline-cli"),
                  ExportFolderLock::Outcome::Taken);
        app.press("doRecordButton:");
        ASSERT_EQ(app.alerts.shown.size(), 1u);
        EXPECT_EQ(app.alerts.shown[0].text, "IDS_FOLDER_BUSY");
        EXPECT_EQ(app.alerts.shown[0].arguments,
                  QStringList{QStringLiteral("waxline-cli, %1").arg(::getpid())});
        EXPECT_EQ(app.shown(), 2u);
        EXPECT_EQ(count(app.capture, "newTrack"), 0);
        EXPECT_EQ(count(app.capture, "resetTrackCounter"), 0);
        EXPECT_TRUE(fs::exists(app.track(1))) << "nothing is emptied";
    }

    // Free again: the window asks about the side left there, records over it when told to,
    // and holds the lock while it does.
    app.alerts.choices = {QStringLiteral("IDS_RECORD_DISCARD")};
    app.press("doRecordButton:");
    ASSERT_EQ(app.shown(), 3u);
    ASSERT_EQ(app.alerts.shown.size(), 2u);
    EXPECT_EQ(app.alerts.shown[1].title, "IDS_RECORD_OVER");
    EXPECT_EQ(app.alerts.shown[1].button, "*^IDS_SAVE_FIRST|IDS_RECORD_DISCARD");
    ExportFolderLock probe;
    EXPECT_EQ(probe.tryLock(app.folder.path(), FolderUse::Exporting, "test"),
              ExportFolderLock::Outcome::Held);
    EXPECT_EQ(probe.holder().program, "waxline");
    EXPECT_EQ(probe.holder().use, FolderUse::Recording);
    app.capture.tracks = 2;
    writeTrack(app.track(1), 1.0);
    writeTrack(app.track(2), 1.0);
    app.press("doNextButton3:");
    ASSERT_EQ(app.shown(), 7u);
    // Stopped, the side is still held while it is named: nobody else empties or re-cuts it.
    EXPECT_EQ(probe.tryLock(app.folder.path(), FolderUse::Exporting, "waxline-cli"),
              ExportFolderLock::Outcome::Held);

    app.type(61, QStringLiteral("Kept"));
    app.press("doNextButton7:");
    ASSERT_TRUE(QTest::qWaitFor([&] { return app.shown() == 6u; }, 60000));
    EXPECT_EQ(app.alerts.shown.size(), 2u);
    EXPECT_EQ(waxline::test::filesBelow(app.music.file("Music")).size(), 2u);
    // The export has ended: the folder is free for the next run.
    EXPECT_EQ(probe.tryLock(app.folder.path(), FolderUse::Recording, "waxline-cli"),
              ExportFolderLock::Outcome::Taken);
}

TEST(FolderLock, ClosingLeavesAFolderAnotherRunHoldsAlone) {
    App app;
    app.start();
    writeTrack(app.track(1), 1.0);
    ExportFolderLock other;
    ASSERT_EQ(other.tryLock(app.folder.path(), FolderUse::Recording, "waxline-cli"),
              ExportFolderLock::Outcome::Taken);
    app.alerts.choices = {QStringLiteral("IDS_QUIT_DISCARD")};
    app.press("doCloseButton:");
    EXPECT_FALSE(app.window.isVisible());
    EXPECT_TRUE(fs::exists(app.track(1)));
}

} // namespace
