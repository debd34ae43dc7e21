#include "exportfolder/ExportFolder.h"
#include "exporting/EarlyEncoder.h"
#include "support/MediaFiles.h"
#include "support/StandInEncoder.h"
#include "support/WizardRig.h"

#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace waxline::test {
namespace {

using app::elapsedText;

// Panel 3 gets a meter only when panel 2 had one running (here: without split).
TEST(RecordingControl, RecordEmptiesTheFolderThenStartsTrackOneOnPanelThree) {
    for (bool split : {false, true}) {
        SCOPED_TRACE(split);
        WizardRig r;
        std::ofstream(r.folder.file("WXRTTmpFile.1.wav")) << "an older recording";
        std::filesystem::create_directory(r.folder.file("leftover"));
        r.machine.setPanel(2);
        if (!split)
            r.machine.startMetering(2);
        r.capture.tracks = 7; // the last side's count
        r.capture.calls.clear();
        r.views.split = split;

        r.recording.doRecordButton(false, false);

        EXPECT_TRUE(std::filesystem::is_empty(r.folder.path()));
        EXPECT_EQ(besidesMonitor(r.capture),
                  (std::vector<std::string>{"resetTrackCounter",
                                            split ? "setAutomaticTrackSplit(true)"
                                                  : "setAutomaticTrackSplit(false)",
                                            "newTrack"}));
        EXPECT_EQ(count(r.capture, "startPlayThru"), 1) << "panel 3 keeps the monitor on";
        EXPECT_EQ(count(r.capture, "stopPlayThru"), 0);
        EXPECT_EQ(r.views.shown, 3u);
        EXPECT_EQ(r.views.splitButtonVisible, !split) << "automatic split hides New Track";
        EXPECT_EQ(r.views.metersStarted,
                  (split ? std::vector<unsigned>{} : std::vector<unsigned>{2, 3}));
        EXPECT_EQ(r.machine.meterRunning(), !split);
        EXPECT_EQ(r.capture.tracks, 1);
        EXPECT_TRUE(r.recording.elapsedTimerRunning());
        EXPECT_EQ(r.views.texts.at({3, 22}), "1");
        EXPECT_EQ(r.views.texts.at({3, 21}), "00:00:00");
    }
}

TEST(RecordingControl, NewTrackWarnsAtThirtyNineAndStopsAtForty) {
    struct Row {
        int tracks;
        const char* alert;
        int tracksAfter;
        bool stopped;
        std::vector<unsigned> panels;
    };
    const std::vector<Row> table = {
        {5, "", 6, false, {}},
        {38, "", 39, false, {}},
        {39, "IDS_LASTTRACK", 40, false, {}},
        {40, "IDS_LIMIT", 40, true, {7}},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.tracks);
        WizardRig r;
        r.views.shown = 3;
        r.capture.tracks = row.tracks;
        int tracksWhenWarned = -1;
        r.alerts.onAlert = [&] { tracksWhenWarned = r.capture.tracks; };
        r.recording.doNewTrackButton();
        if (*row.alert) {
            ASSERT_EQ(r.alerts.shown.size(), 1u);
            EXPECT_EQ(r.alerts.shown[0].title, "IDS_WARNING");
            EXPECT_EQ(r.alerts.shown[0].text, row.alert);
            // Track 40 has started when its warning shows, which holds nothing up.
            EXPECT_EQ(tracksWhenWarned, row.tracksAfter);
            EXPECT_EQ(r.alerts.shown[0].button == "(not waiting)", !row.stopped);
        } else {
            EXPECT_TRUE(r.alerts.shown.empty());
        }
        EXPECT_EQ(r.capture.tracks, row.tracksAfter);
        EXPECT_EQ(count(r.capture, "stopRecording"), row.stopped ? 1 : 0);
        EXPECT_EQ(count(r.capture, "newTrack"), row.stopped ? 0 : 1);
        EXPECT_EQ(r.views.switches, row.panels);
        EXPECT_EQ(r.recording.elapsedTimerRunning(), !row.stopped);
    }
}

// A kill while recording leaves a count of the tracks closed so far, final only after Stop.
TEST(RecordingControl, TheCountFileFollowsTheClosedTracksWhileRecording) {
    const std::pair<int, const char*> rows[] = {{1, nullptr}, {2, "1\n"}, {4, "3\n"}};
    for (const auto& [tracks, count] : rows) {
        SCOPED_TRACE(tracks);
        WizardRig r;
        r.views.shown = 2;
        r.recording.doRecordButton(false, false);
        r.capture.tracks = tracks;
        r.recording.elaspedTimerFired();
        std::ifstream file(waxline::trackCountPath(r.folder.path()));
        const std::string text((std::istreambuf_iterator<char>(file)), {});
        EXPECT_EQ(text, count ? count : "");
    }
}

TEST(RecordingControl, AlbumEndStopsWithTracksAndGoesBackWithout) {
    struct Row {
        int tracks;
        unsigned panel;
        bool stopped;
    };
    for (const Row& row : {Row{0, 2, false}, Row{1, 4, true}, Row{3, 7, true}}) {
        SCOPED_TRACE(row.tracks);
        WizardRig r;
        r.views.shown = 3;
        r.machine.startMetering(3);
        r.capture.tracks = row.tracks;
        r.recording.audioDetectedAlbumEnd();
        EXPECT_EQ(r.views.switches, std::vector<unsigned>{row.panel});
        EXPECT_EQ(count(r.capture, "stopRecording"), row.stopped ? 1 : 0);
        EXPECT_EQ(r.machine.meterRunning(), !row.stopped) << "Back moves the meter to panel 2";
    }
}

TEST(RecordingControl, ElapsedTimeIsTheCurrentTracksLengthRoundedInSinglePrecision) {
    struct Row {
        uint64_t nanos;
        const char* shown;
    };
    const std::vector<Row> table = {
        {0, "00:00:00"},
        {3'725'400'000'000, "01:02:05"},
        {59'400'000'000, "00:00:59"},
        {59'500'000'000, "00:01:00"},
        {7'199'000'000'000, "01:59:59"},
        // The hours round up before the rest does: 3,599.6 s is 1 h and -0.4 s, shown as 0.
        {3'599'600'000'000, "01:00:00"},
        {36'000'000'000'000 + 61'000'000'000, "10:01:01"},
    };
    for (const Row& row : table)
        EXPECT_EQ(elapsedText(row.nanos), row.shown) << row.nanos;

    WizardRig r;
    r.capture.tracks = 12;
    r.capture.trackLengthNanos = 3'725'400'000'000;
    r.recording.elaspedTimerFired();
    EXPECT_EQ(r.views.texts.at({3, 21}), "01:02:05");
    EXPECT_EQ(r.views.texts.at({3, 22}), "12");
}

TEST(RecordingControl, StopEndsTheClockAndTheMeter) {
    WizardRig r;
    r.machine.setPanel(2);
    r.machine.startMetering(2);
    r.recording.doRecordButton(false, false);
    r.recording.doNewTrackButton();
    r.recording.doNextButton3();
    EXPECT_FALSE(r.recording.elapsedTimerRunning());
    EXPECT_FALSE(r.machine.meterRunning());
    EXPECT_EQ(r.views.metersStopped, std::vector<unsigned>{3});
    EXPECT_EQ(r.views.shown, 7u);
    EXPECT_EQ(count(r.capture, "stopPlayThru"), 1);
}

TEST(RecordingControl, BackFromPanelThreeKeepsRecording) {
    WizardRig r;
    r.machine.setPanel(2);
    r.machine.startMetering(2);
    r.recording.doRecordButton(false, false);
    r.recording.doBackButton3();
    EXPECT_EQ(r.views.shown, 2u);
    EXPECT_EQ(count(r.capture, "stopRecording"), 0);
    EXPECT_TRUE(r.recording.elapsedTimerRunning());
    EXPECT_EQ(r.views.metersStarted, (std::vector<unsigned>{2, 3, 2}));
}

TEST(RecordingControl, GainAndOptionsPassUnchanged) {
    for (float gain : {2.3f, -7.5f, 0.1f, 12.0f}) {
        WizardRig r;
        r.recording.setRecordingGainDb(gain);
        EXPECT_EQ(r.capture.gainDb, gain);
    }
    WizardRig r;
    r.recording.doRecordButton(true, false);
    EXPECT_TRUE(r.recording.applyNormalization());
    r.recording.doRecordButton(false, true);
    EXPECT_FALSE(r.recording.applyNormalization());
}

// A split closes track 1; at the next tick its MP3 is being made behind the recording. Record
// on a new side then stops that encoder before the folder is emptied: no ffmpeg is left on
// the folder and no file of its comes back.
TEST(RecordingControl, RecordStopsTheBackgroundEncoderBeforeEmptyingTheFolder) {
    waxline::test::WizardRig r;
    r.machine.setPanel(2);
    r.recording.doRecordButton(false, false);
    const std::string track1 = r.capture.fileNameForTrack(1);
    ASSERT_TRUE(waxline::test::writeToneWav(track1, 0.5, 0.4));
    TempDir tools;
    StandInEncoder never(tools.file("bin"), kEncoderThatNeverEnds);
    r.recording.doNewTrackButton();
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return std::filesystem::exists(waxline::exporting::earlyPartialPath(track1)); },
        20000))
        << "the tick should have handed the closed track to the encoder";
    ASSERT_FALSE(waxline::test::processesMentioning(r.folder.path()).empty());

    r.recording.doRecordButton(false, false);
    EXPECT_EQ(waxline::test::processesMentioning(r.folder.path()), std::vector<std::string>{});
    QTest::qWait(300);
    EXPECT_TRUE(std::filesystem::is_empty(r.folder.path()));
    EXPECT_EQ(r.recording.earlyEncoder().finishedCount(), 0);
}

// Stop hands the last track over too: every counted track gets its MP3 behind the recording.
TEST(RecordingControl, StopHandsEveryCountedTrackToTheEncoder) {
    waxline::test::WizardRig r;
    r.machine.setPanel(2);
    r.recording.doRecordButton(false, false);
    r.recording.doNewTrackButton();
    for (int track = 1; track <= 2; ++track)
        ASSERT_TRUE(waxline::test::writeToneWav(r.capture.fileNameForTrack(track), 1, 0.4));
    r.recording.doNextButton3();
    r.recording.earlyEncoder().finish();
    EXPECT_EQ(r.recording.earlyEncoder().finishedCount(), 2);
    for (int track = 1; track <= 2; ++track)
        EXPECT_TRUE(waxline::exporting::earlyMp3Ready(r.capture.fileNameForTrack(track)));
}

} // namespace
} // namespace waxline::test
