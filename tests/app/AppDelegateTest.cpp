#include "app/AppRig.h"
#include "support/MediaFiles.h"
#include "ui/review/SplitReviewDialog.h"

#include <QLabel>
#include <QPushButton>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using waxline::test::App;
using waxline::test::count;

TEST(AppDelegate, StartUpMakesTwelveItemsLoadsThreePanelsAndShowsPanelOne) {
    App app;
    app.start();
    waxline::app::PanelTabs& tabs = app.controller->tabs();
    EXPECT_EQ(tabs.numberOfTabItems(), 12);
    EXPECT_EQ(tabs.label(3), "Tab3");
    EXPECT_EQ(tabs.label(10), "Tab10");
    EXPECT_EQ(tabs.label(11), "SelectDevice");
    EXPECT_EQ(tabs.label(12), "SelectTape");
    for (unsigned n = 2; n <= 12; ++n)
        EXPECT_EQ(tabs.view(n) != nullptr, n == 6 || n == 11 || n == 12) << n;
    EXPECT_EQ(app.shown(), 1u);
    ASSERT_TRUE(tabs.view(1));
    EXPECT_EQ(app.window.contentView(), tabs.view(1));
    EXPECT_EQ(app.capture.delegate, app.controller.get());
    EXPECT_TRUE(app.alerts.shown.empty());
}

// The Close button, Ctrl+Q and the window manager's close all ask; only Yes stops the recording
// and empties the folder (the confirmed Close button is walked by CloseWhileRecording).
// Nothing unsaved (the file holds no audio): the plain question, Quit its default.
TEST(AppDelegate, EveryCloseAsksAndOnlyQuitStopsAndEmptiesTheFolder) {
    App app;
    app.start();
    std::ofstream(app.folder.file("WXRTTmpFile.1.wav")) << "a track";
    app.alerts.answers = {false, false, false, true};
    app.press("doCloseButton:");
    EXPECT_TRUE(app.window.isVisible());
    app.window.close();
    EXPECT_TRUE(app.window.isVisible());
    app.window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&app.window));
    QTest::keyClick(app.view(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(app.window.isVisible());
    EXPECT_EQ(count(app.capture, "stopRecording"), 0);
    EXPECT_TRUE(fs::exists(app.folder.file("WXRTTmpFile.1.wav")));

    app.window.close();
    EXPECT_FALSE(app.window.isVisible());
    ASSERT_EQ(app.alerts.shown.size(), 4u);
    for (const auto& shown : app.alerts.shown) {
        EXPECT_EQ(shown.title, "IDS_QUIT_QUESTION");
        EXPECT_EQ(shown.text, "");
        EXPECT_EQ(shown.button, "IDS_QUIT|IDS_CANCEL");
    }
    EXPECT_EQ(count(app.capture, "stopRecording"), 1);
    // Emptied but for the folder's lock file, which stays by design.
    EXPECT_EQ(waxline::test::entriesBesidesLock(app.folder.path()), std::vector<std::string>{});
}

TEST(AppDelegate, HelpOpensTheBundledPageFromAFile) {
    App app;
    app.start();
    app.press("showHelp:");
    ASSERT_EQ(app.opened.size(), 1u);
    ASSERT_TRUE(app.opened[0].isLocalFile());
    std::ifstream page(app.opened[0].toLocalFile().toStdString());
    const std::string html((std::istreambuf_iterator<char>(page)), {});
    EXPECT_NE(html.find("<html"), std::string::npos);
    EXPECT_NE(html.find("id=\"connect\""), std::string::npos);
}

TEST(AppDelegate, RecordPressedWhileAnExportRunsWaitsForItBeforeEmptyingTheFolder) {
    App app;
    app.start();
    app.capture.turntableOrTape = false;
    app.capture.detectionCodes = {1};
    app.press("doNextButton1:");
    ASSERT_EQ(app.shown(), 2u);
    app.press("doRecordButton:");
    app.capture.tracks = 3;
    for (int i = 1; i <= 3; ++i)
        ASSERT_TRUE(waxline::test::writeToneWav(app.capture.fileNameForTrack(i), 2.0, 0.3));
    app.press("doNextButton3:");
    ASSERT_EQ(app.shown(), 7u);
    app.type(51, QStringLiteral("Busy"));
    app.type(52, QStringLiteral("Export"));
    app.press("doNextButton7:");
    ASSERT_EQ(app.shown(), 5u);
    // Done, then Yes and Record at once, while the tracks are still being encoded.
    app.press("doNextButton5:");
    app.press("doNextButton6:");
    ASSERT_EQ(app.shown(), 2u);
    app.press("doRecordButton:");
    EXPECT_EQ(app.shown(), 3u);
    EXPECT_EQ(waxline::test::filesBelow(app.music.file("Music")).size(), 3u);
    QTest::qWait(700);
    EXPECT_EQ(app.shown(), 3u) << "the finished export moves no panel any more";
}

TEST(AppDelegate, ARecordingThatEndsByItselfIsExplainedAndItsTracksNamedWhenThere) {
    using waxline::RecordingStopReason;
    struct Row {
        RecordingStopReason reason;
        const char* key;
        int arguments;
    };
    const std::vector<Row> table = {
        {RecordingStopReason::DeviceGone, "IDS_STOP_DEVICE_GONE", 0},
        {RecordingStopReason::ServerGone, "IDS_STOP_SERVER_GONE", 0},
        {RecordingStopReason::DiskFull, "IDS_STOP_DISK_FULL", 1},
        {RecordingStopReason::FolderGone, "IDS_STOP_FOLDER_GONE", 1},
        {RecordingStopReason::WriteFailed, "IDS_STOP_WRITE_FAILED", 2},
        {RecordingStopReason::FileNotCreated, "IDS_STOP_WRITE_FAILED", 2},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.key);
        App app;
        app.start();
        app.capture.detectionCodes = {1};
        app.press("doNextButton1:");
        app.press("doRecordButton:");
        ASSERT_EQ(app.shown(), 3u);
        const std::string file = app.capture.fileNameForTrack(1);
        ASSERT_TRUE(waxline::test::writeToneWav(file, 1.0, 0.3));
        const bool gone = row.reason == RecordingStopReason::FolderGone;
        if (gone)
            fs::remove_all(app.folder.path());
        app.capture.endRecording({row.reason, file, "No space left on device"});
        ASSERT_EQ(app.alerts.shown.size(), 1u);
        EXPECT_EQ(app.alerts.shown[0].text, row.key);
        ASSERT_EQ(app.alerts.shown[0].arguments.size(), row.arguments);
        if (row.arguments == 1) {
            EXPECT_EQ(app.alerts.shown[0].arguments[0].toStdString(), app.folder.path());
        }
        if (row.arguments == 2) {
            EXPECT_EQ(app.alerts.shown[0].arguments,
                      (QStringList{QString::fromStdString(file), "No space left on device"}));
        }
        // The track recorded so far is named; gone with its folder, there is none to name.
        EXPECT_EQ(app.shown(), gone ? 2u : 4u);
    }
}

TEST(AppDelegate, TheNamingPanelsReviewRecutsTheSideAndNamesTheNewCount) {
    App app;
    app.start();
    app.capture.detectionCodes = {1};
    app.press("doNextButton1:");
    app.press("doRecordButton:");
    app.capture.tracks = 2;
    for (int i = 1; i <= 2; ++i)
        ASSERT_TRUE(waxline::test::writeToneWav(app.capture.fileNameForTrack(i), 3.0, 0.3));
    app.press("doNextButton3:");
    ASSERT_EQ(app.shown(), 7u);
    waxline::app::SplitReview& review = app.controller->splitReview();
    EXPECT_NE(review.state(), waxline::app::SplitReview::State::Idle)
        << "the side is read as soon as the recording ends";

    app.press("doReviewSplits:");
    waxline::ui::SplitReviewDialog* dialog = review.dialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->boundaries(), std::vector<int64_t>{3 * 44100});
    ASSERT_TRUE(review.waitUntilRead(60000));
    auto notice = app.view()->findChild<QLabel*>(QStringLiteral("splitsNotice"));
    ASSERT_TRUE(notice);
    EXPECT_EQ(notice->isVisible(), review.proposalDiffers());

    // One tone is one track: every marker goes.
    dialog->overview().selectMarker(0);
    while (!dialog->overview().markers().empty())
        QTest::keyClick(&dialog->overview(), Qt::Key_Delete);
    QTest::mouseClick(&dialog->applyButton(), Qt::LeftButton);
    EXPECT_EQ(review.dialog(), nullptr);
    EXPECT_EQ(app.shown(), 4u);
    EXPECT_EQ(count(app.capture, "adoptRecordedTracks(1)"), 1);
    EXPECT_TRUE(app.alerts.shown.empty());
}

} // namespace
