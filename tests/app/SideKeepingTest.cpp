#include "app/AppRig.h"
#include "exportfolder/ExportFolder.h"
#include "support/MediaFiles.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

// Every way the window was found to lose a side, walked through the controller: afterwards the
// tracks are in the library or still in the export folder, and the window has said so.
namespace {

namespace fs = std::filesystem;
using waxline::test::App;

int wavsIn(const std::string& folder) {
    int n = 0;
    while (fs::exists(waxline::trackFilePath(folder, n + 1)))
        ++n;
    return n;
}

void writeTracks(App& app, int n) {
    for (int i = 1; i <= n; ++i)
        ASSERT_TRUE(waxline::test::writeToneWav(app.track(i), 1.5, 0.3, 220 + 110 * i));
}

void startRecording(App& app, int tracks) {
    app.capture.detectionCodes = {1};
    app.press("doNextButton1:");
    app.press("doRecordButton:");
    app.capture.tracks = tracks;
    writeTracks(app, tracks);
}

void nameAndExport(App& app) {
    app.type(51, QStringLiteral("Artist"));
    app.press("doNextButton7:");
    ASSERT_TRUE(QTest::qWaitFor([&] { return app.shown() != 5u; }, 60000));
}

TEST(SideKeeping, NoWayOfUsingTheWindowLosesAnUnsavedSide) {
    struct Row {
        const char* name;
        int leftBehind;    // tracks a run that ended on a naming panel left, before the start
        const char* saved; // of them, noted as in the library by an export cut short
        std::function<void(App&)> act;
        unsigned panelAfter; // 0: the window was closed
        int kept;            // track files left in the export folder
        int inLibrary;
        const char* said; // a key the user was shown
    };
    const Row rows[] = {
        {"a track that fails to save, then Close", 0, nullptr,
         [](App& app) {
             const std::string path = std::getenv("PATH");
             ::setenv("PATH", "", 1); // no encoder to be found, behind the recording neither
             startRecording(app, 3);
             app.press("doNextButton3:");
             nameAndExport(app);
             ::setenv("PATH", path.c_str(), 1);
             EXPECT_TRUE(app.controller->tabs().text(6, 46).contains("3 of 3 tracks"));
             app.press("doCloseButton:"); // Return's answer: stay
             app.alerts.choices = {QStringLiteral("IDS_QUIT_KEEP")};
             app.press("doCloseButton:");
         },
         0, 3, 0, "IDS_CLOSE_UNSAVED"},
        {"a clean stop never exported, at start-up", 2, nullptr, nameAndExport, 6, 2, 2,
         "IDS_RECOVER_UNSAVED_TEXT"},
        {"a side half exported, at start-up", 3, "1 /elsewhere/01 First.mp3\n", nameAndExport, 6, 3,
         2, "IDS_RECOVER_HALF_TEXT"},
        {"a second window on the same folder", 0, nullptr,
         [](App& app) {
             startRecording(app, 2);
             app.press("doNextButton3:");
             {
                 App second;
                 second.capture.folder = app.folder.path();
                 second.start();
                 second.press("doCloseButton:");
                 app.alerts.shown.insert(app.alerts.shown.end(), second.alerts.shown.begin(),
                                         second.alerts.shown.end());
             }
             nameAndExport(app);
         },
         6, 2, 2, "IDS_FOLDER_BUSY_START"},
        {"Esc, then Return, while recording", 0, nullptr,
         [](App& app) {
             startRecording(app, 3);
             QTest::keyClick(app.view(), Qt::Key_Escape);
             QTest::keyClick(app.view(), Qt::Key_Return);
         },
         7, 3, 0, nullptr},
        {"Back, then Return, while recording", 0, nullptr,
         [](App& app) {
             startRecording(app, 3);
             app.press("doBackButton3:");
             QTest::keyClick(app.view(), Qt::Key_Return);
         },
         3, 3, 0, "IDS_RECORD_RESTART"},
        {"a music folder that cannot be written", 0, nullptr,
         [](App& app) {
             startRecording(app, 1);
             app.press("doNextButton3:");
             const std::string music = app.music.file("Music");
             std::ofstream(music) << "in the way";
             // Asked again and again without a way out, the user fixes it in the end.
             app.alerts.onAlert = [&app, music] {
                 if (app.alerts.shown.size() == 4)
                     fs::remove(music), fs::create_directory(music);
             };
             app.alerts.choices = {QStringLiteral("IDS_KEEP_LATER")};
             app.press("doNextButton4:");
             EXPECT_TRUE(QTest::qWaitFor(
                 [&] { return !app.window.isVisible() || app.shown() == 6u; }, 60000));
         },
         0, 1, 0, "IDS_LIBRARY_UNWRITABLE"},
        {"the export folder removed while recording", 0, nullptr,
         [](App& app) {
             startRecording(app, 3);
             fs::remove_all(app.folder.path());
             app.capture.endRecording({waxline::RecordingStopReason::FolderGone, app.track(3), ""});
         },
         2, 0, 0, "IDS_STOP_FOLDER_GONE"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        App app;
        writeTracks(app, row.leftBehind);
        if (row.leftBehind)
            std::ofstream(waxline::trackCountPath(app.folder.path()))
                << row.leftBehind << "\nfinished\n";
        if (row.saved)
            std::ofstream(app.folder.path() + "/WXRTTmpFile.saved") << row.saved;
        app.start();
        row.act(app);
        QStringList heard = app.alerts.texts();
        for (const auto& shown : app.alerts.shown)
            heard << shown.title;
        if (row.panelAfter)
            EXPECT_EQ(app.shown(), row.panelAfter);
        else
            EXPECT_FALSE(app.window.isVisible());
        EXPECT_EQ(wavsIn(app.folder.path()), row.kept);
        const std::string music = app.music.file("Music");
        EXPECT_EQ(fs::is_directory(music) ? int(waxline::test::filesBelow(music).size()) : 0,
                  row.inLibrary);
        EXPECT_TRUE(!row.said || heard.contains(row.said)) << heard.join(", ").toStdString();
    }
}

} // namespace
