#include "app/ExportDriver.h"
#include "app/CaptureCalls.h"
#include "app/FakePanelViews.h"
#include "support/FakeAlerts.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using waxline::app::ExportDriver;
using waxline::test::count;
using waxline::test::FakeAlerts;
using waxline::test::FakeCapture;
using waxline::test::FakePanelViews;
using waxline::test::TempDir;

// A catalogue of our own, so that the texts are seen to come from the lookup.
std::string testText(const std::string& key) {
    static const std::map<std::string, std::string> texts = {
        {"IDS_UNKNOWN_TRACK", "Stück %1"},       {"IDS_UNKNOWN_ARTIST", "Niemand"},
        {"IDS_UNKNOWN_ALBUM", "Ohne Titel"},     {"IDS_EXPORT_READY_SOME", "Fertig: %1 / %2"},
        {"IDS_EXPORT_READY_ALL", "Alle fertig"}, {"IDS_EXPORT_READY_NONE", "Keiner fertig"}};
    const auto it = texts.find(key);
    return it == texts.end() ? key : it->second;
}

struct Exporter {
    TempDir folder;
    TempDir music;
    std::string library = music.file("Music");
    FakeCapture capture = waxline::test::captureIn(folder.path());
    FakePanelViews views;
    FakeAlerts alerts;
    std::vector<unsigned> panels;
    ExportDriver driver{capture,  views,  alerts, [this](unsigned n) { panels.push_back(n); },
                        testText, library};

    // A side of `tracks` short tracks, as the recorder leaves it.
    void record(int tracks) {
        for (const auto& entry : fs::directory_iterator(folder.path()))
            fs::remove_all(entry.path());
        for (int i = 1; i <= tracks; ++i)
            ASSERT_TRUE(waxline::test::writeToneWav(capture.fileNameForTrack(i), 0.5 + 0.1 * i, 0.3,
                                                    220.0 * i));
        capture.tracks = tracks;
    }
    void name(const QString& artist, const QString& album, const std::vector<QString>& titles) {
        if (titles.size() == 1) {
            views.texts[{4, 10}] = artist;
            views.texts[{4, 11}] = album;
            views.texts[{4, 12}] = titles[0];
            return;
        }
        views.texts[{7, 51}] = artist;
        views.texts[{7, 52}] = album;
        for (size_t i = 0; i < titles.size(); ++i) {
            views.texts[{7 + unsigned(i) / 10, int(i) + 61}] = titles[i];
        }
    }
    // Starts the export as Next does and waits for the poll to move on.
    bool exportAndWait() {
        const size_t before = panels.size();
        driver.processAudioFiles();
        return QTest::qWaitFor([&] { return panels.size() > before; }, 60000);
    }
    std::vector<std::string> libraryFiles() const {
        return fs::exists(library) ? waxline::test::filesBelow(library)
                                   : std::vector<std::string>{};
    }
};

TEST(ExportDriver, OneTrackIsNamedFromPanelFourAndTheRunEndsOnPanelSix) {
    Exporter e;
    e.record(1);
    e.name("Solo", "Single", {"Only Song"});
    e.views.texts[{7, 51}] = "not this";
    ASSERT_TRUE(e.exportAndWait());
    EXPECT_EQ(e.panels, std::vector<unsigned>{6});
    EXPECT_EQ(e.libraryFiles(), std::vector<std::string>{"Solo/Single/01 Only Song.mp3"});
    const auto tags = waxline::test::probeTags(e.library + "/Solo/Single/01 Only Song.mp3");
    EXPECT_EQ(tags.at("artist"), "Solo");
    EXPECT_EQ(tags.at("album"), "Single");
    EXPECT_EQ(tags.at("title"), "Only Song");
    EXPECT_EQ(tags.at("track"), "1");
    EXPECT_TRUE(e.alerts.shown.empty());
}

// The naming panel's two choices decide what the run files: MP3s alone, or with the FLACs of
// the recording and the side's sheets beside them.
TEST(ExportDriver, TheNamingPanelsChoicesDecideWhatIsFiled) {
    const struct {
        const char* name;
        bool clean, lossless;
        std::vector<std::string> files;
    } rows[] = {
        {"neither", false, false, {"A/B/01 x.mp3", "A/B/02 y.mp3"}},
        {"cleaned only", true, false, {"A/B/01 x.mp3", "A/B/02 y.mp3"}},
        {"both",
         true,
         true,
         {"A/B/01 x.flac", "A/B/01 x.mp3", "A/B/01-02 B.cue", "A/B/01-02 B.txt", "A/B/02 y.flac",
          "A/B/02 y.mp3"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Exporter e;
        e.record(2);
        e.name("A", "B", {"x", "y"});
        e.views.cleanChoice = row.clean;
        e.views.losslessChoice = row.lossless;
        ASSERT_TRUE(e.exportAndWait());
        EXPECT_EQ(e.libraryFiles(), row.files);
        if (row.lossless) {
            EXPECT_EQ(waxline::test::decodedPcm(e.library + "/A/B/01 x.flac"),
                      waxline::test::decodedPcm(e.capture.fileNameForTrack(1)));
        }
    }
}

// Artist and album left empty and track 11 unnamed: the catalogue's words stand in.
TEST(ExportDriver, SeveralTracksAreNamedFromPanelsSevenToTenWithProgressToTheEnd) {
    Exporter e;
    e.record(12);
    std::vector<QString> titles;
    for (int i = 1; i <= 12; ++i)
        titles.push_back(QStringLiteral("Song %1").arg(i));
    titles[10].clear(); // on panel 8
    e.name("", "", titles);
    ASSERT_TRUE(e.exportAndWait());

    std::vector<std::string> expected;
    for (int i = 1; i <= 12; ++i)
        expected.push_back(
            "Niemand/Ohne Titel/" + std::string(i < 10 ? "0" : "") + std::to_string(i) + " " +
            (i == 11 ? std::string("Stück 11") : "Song " + std::to_string(i)) + ".mp3");
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(e.libraryFiles(), expected);
    const auto tags = waxline::test::probeTags(e.library + "/Niemand/Ohne Titel/11 Stück 11.mp3");
    EXPECT_EQ(tags.at("artist"), "Niemand");
    EXPECT_EQ(tags.at("album"), "Ohne Titel");
    // The tag writer stores each UTF-8 byte as one Latin-1 character, as it always has.
    EXPECT_EQ(tags.at("title"), waxline::test::latin1BytesAsUtf8("Stück 11"));

    EXPECT_EQ(e.views.progressMaximum, 12);
    ASSERT_FALSE(e.views.progress.empty());
    EXPECT_EQ(e.views.progress.front(), 0);
    EXPECT_EQ(e.views.progress.back(), 12);
    EXPECT_TRUE(std::is_sorted(e.views.progress.begin(), e.views.progress.end()));
    EXPECT_FALSE(e.views.busy);
    EXPECT_EQ(count(e.capture, "resetTrackCounter"), 1);
    EXPECT_EQ(e.capture.tracks, 0);
}

TEST(ExportDriver, NumberingGoesOnUnderTheSameNamesAndRestartsForANewAlbum) {
    Exporter e;
    e.record(2);
    e.name("A", "B", {"one", "two"});
    ASSERT_TRUE(e.exportAndWait());
    e.record(3);
    e.name("A", "B", {"three", "four", "five"});
    ASSERT_TRUE(e.exportAndWait());
    // A third side numbers on from the second side's own count (3), not from 5.
    e.record(2);
    e.name("A", "B", {"six", "seven"});
    ASSERT_TRUE(e.exportAndWait());
    e.record(2);
    e.name("A", "C", {"first", "second"});
    ASSERT_TRUE(e.exportAndWait());
    EXPECT_EQ(e.libraryFiles(), (std::vector<std::string>{
                                    "A/B/01 one.mp3", "A/B/02 two.mp3", "A/B/03 three.mp3",
                                    "A/B/04 four.mp3", "A/B/04 six.mp3", "A/B/05 five.mp3",
                                    "A/B/05 seven.mp3", "A/C/01 first.mp3", "A/C/02 second.mp3"}));
    EXPECT_EQ(e.panels, (std::vector<unsigned>{6, 6, 6, 6}));
}

// Panel 5 says in the catalogue's words which tracks were encoded while recording: those
// whose early MP3 fits the track file when the export starts.
TEST(ExportDriver, PanelFiveSaysWhichTracksWereEncodedWhileRecording) {
    const struct {
        std::vector<int> early;
        QString note;
    } cases[] = {
        {{}, "Keiner fertig"},
        {{1, 2, 3, 4, 5}, "Alle fertig"},
        {{1, 2, 4}, "Fertig: 1\u20132, 4 / 5"},
        {{3}, "Fertig: 3 / 5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.note.toStdString());
        Exporter e;
        e.record(5);
        e.name("A", "B", {"1", "2", "3", "4", "5"});
        // Every track encoded behind the recording, then the others' stamps taken away.
        waxline::exporting::EarlyEncoder early;
        early.begin(e.folder.path());
        early.tracksClosed(5);
        early.finish();
        for (int track = 1; track <= 5; ++track)
            if (std::find(c.early.begin(), c.early.end(), track) == c.early.end())
                fs::remove(waxline::exporting::earlyStampPath(e.capture.fileNameForTrack(track)));
        e.driver.setEarlyEncoder(&early);
        ASSERT_TRUE(e.exportAndWait());
        EXPECT_EQ(e.views.text(5, 32), c.note);
        EXPECT_EQ(e.libraryFiles().size(), 5u);
    }
}

// Made writable while asked, Try again saves there; or another folder is chosen and used.
TEST(ExportDriver, AnUnwritableLibraryIsAskedAboutAndTriedAgainOrChangedFor) {
    for (const bool choose : {false, true}) {
        SCOPED_TRACE(choose);
        Exporter e;
        // A file where the music folder should be: no folder can be made there.
        std::ofstream(e.library) << "in the way";
        const std::string other = e.music.file("Other");
        if (choose) {
            e.alerts.choices = {QStringLiteral("IDS_CHOOSE_FOLDER")};
            e.driver.chooseFolder = [&](const QString&) { return QString::fromStdString(other); };
        } else {
            e.alerts.onAlert = [&] { fs::remove(e.library), fs::create_directory(e.library); };
        }
        e.record(1);
        e.name("X", "Y", {"Z"});
        testing::internal::CaptureStderr();
        ASSERT_TRUE(e.exportAndWait());
        const std::string log = testing::internal::GetCapturedStderr();
        ASSERT_EQ(e.alerts.shown.size(), 1u);
        EXPECT_EQ(e.alerts.shown[0].title, "IDS_LIBRARY_UNWRITABLE");
        EXPECT_EQ(e.alerts.shown[0].arguments, QStringList{QString::fromStdString(e.library)});
        // Try again is what Return gives; Esc keeps the tracks.
        EXPECT_EQ(e.alerts.shown[0].button, "IDS_CHOOSE_FOLDER|*IDS_TRY_AGAIN|^IDS_KEEP_LATER");
        EXPECT_NE(log.find("SimpleRunAppleScript err = -1753\n"), std::string::npos) << log;
        const std::string saved = (choose ? other : e.library) + "/X/Y/01 Z.mp3";
        EXPECT_TRUE(fs::exists(saved)) << saved;
    }
}

// waxline --unicode-tags: the window's names are stored as the text they are.
TEST(ExportDriver, TagsTakeTheNamesAsTheWindowWasToldTo) {
    const std::string cafe = "Caf\xC3\xA9";
    struct Row {
        waxline::TagText text;
        std::string stored;
    };
    for (const Row& row :
         {Row{waxline::TagText::Latin1Bytes, waxline::test::latin1BytesAsUtf8(cafe)},
          Row{waxline::TagText::Unicode, cafe}}) {
        Exporter e;
        e.driver.setTagText(row.text);
        e.record(1);
        e.name("Band", "Album", {QString::fromStdString(cafe)});
        ASSERT_TRUE(e.exportAndWait());
        const auto tags = waxline::test::probeTags(e.library + "/Band/Album/01 " + cafe + ".mp3");
        EXPECT_EQ(tags.at("title"), row.stored);
    }
}

} // namespace
