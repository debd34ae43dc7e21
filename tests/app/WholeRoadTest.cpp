#include "app/AppDelegate.h"
#include "app/PanelDriving.h"
#include "capture/Audio.h"
#include "exporting/ExportFolders.h"
#include "support/FakeAlerts.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"
#include "ui/panels/CustomView.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/window/CustomWindow.h"

#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using waxline::test::TempDir;

// Two demo sides one after the other, each ending in its run-out groove: the deck plays the
// second when the wizard comes back to panel 2.
std::string twoSides(const TempDir& dir, int64_t& firstSideFrames) {
    const std::string first = waxline::test::makeDemoSideFile(dir, 2, 11);
    fs::rename(first, dir.file("first.wav"));
    const std::string second = waxline::test::makeDemoSideFile(dir, 2, 12);
    const auto a = waxline::test::readStereoWav(dir.file("first.wav"));
    const auto b = waxline::test::readStereoWav(second);
    firstSideFrames = int64_t(a.frames());
    std::vector<float> left = a.channel(0), right = a.channel(1);
    const auto bl = b.channel(0), br = b.channel(1);
    left.insert(left.end(), bl.begin(), bl.end());
    right.insert(right.end(), br.begin(), br.end());
    const std::string both = dir.file("both.wav");
    EXPECT_TRUE(waxline::test::writeStereoWav(both, left, right));
    return both;
}

// The application on a virtual deck that may be a turntable or a cassette player, walked as a user
// would: buttons clicked, names typed with key events. With WAXLINE_ROAD_SHOTS set, each panel is
// saved there as a picture.
struct Road {
    TempDir dir;
    std::string exports = dir.file("Exports");
    std::string music = dir.file("Music");
    waxline::platform::Platform platform;
    std::unique_ptr<waxline::Audio> audio;
    waxline::Audio* capture = nullptr;
    waxline::test::FakeAlerts alerts;
    waxline::ui::CustomWindow window;
    std::unique_ptr<waxline::app::AppDelegate> controller;
    QString shots = qEnvironmentVariable("WAXLINE_ROAD_SHOTS");
    int shot = 0;

    void open(const std::string& side) {
        ::setenv("WAXLINE_EXPORT_DIR", exports.c_str(), 1);
        platform = waxline::platform::openPlatform(
            "usb=0d8c:0121,name=USB PnP Audio Device,file=" + side + ",speed=20");
        audio = std::make_unique<waxline::Audio>(platform);
        ::unsetenv("WAXLINE_EXPORT_DIR");
        capture = audio.get();
        controller = std::make_unique<waxline::app::AppDelegate>(*capture, window, alerts, music);
        controller->awakeFromNib();
        window.show();
        snap();
    }
    unsigned shown() { return controller->tabs().selectedPanel(); }
    waxline::ui::CustomView* view() { return controller->tabs().view(shown()); }
    void snap() {
        if (shots.isEmpty())
            return;
        QDir().mkpath(shots);
        window.grab().save(QStringLiteral("%1/road-%2-panel-%3.png")
                               .arg(shots)
                               .arg(++shot, 2, 10, QLatin1Char('0'))
                               .arg(shown()));
    }
    void press(const char* action) {
        waxline::test::pressButton(view(), shown(), action);
        snap();
    }
    void type(int tag, const QString& text) { waxline::test::typeInto(view(), tag, text); }
    // Records one side with automatic split and names it on panel 7.
    void recordAndName(const QStringList& titles) {
        auto split = view()->findChild<QCheckBox*>(QStringLiteral("automaticallySplitTracks"));
        ASSERT_TRUE(split);
        if (!split->isChecked())
            QTest::mouseClick(split, Qt::LeftButton, {}, QPoint(9, split->height() / 2));
        ASSERT_TRUE(split->isChecked());
        press("doRecordButton:");
        ASSERT_EQ(shown(), 3u);
        if (!shots.isEmpty()) {
            // A look at panel 3 while it records: clock, track count and meters moving.
            QTest::qWait(2500);
            snap();
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return shown() != 3u; }, 120000)) << "no album end";
        snap();
        ASSERT_EQ(shown(), 7u);
        ASSERT_EQ(capture->numRecordedTracks(), titles.size());
        type(51, QStringLiteral("Road Artist"));
        type(52, QStringLiteral("Road Album"));
        for (int i = 0; i < titles.size(); ++i)
            type(61 + i, titles[i]);
        snap();
        press("doNextButton7:");
        ASSERT_TRUE(QTest::qWaitFor([&] { return shown() == 6u; }, 120000));
        snap();
    }
};

TEST(WholeRoad, TwoSidesOnTheVirtualTurntableEndAsNumberedTaggedTracks) {
    Road road;
    int64_t firstSideFrames = 0;
    road.open(twoSides(road.dir, firstSideFrames));
    road.press("doNextButton1:");
    ASSERT_EQ(road.shown(), 11u);
    road.press("doNextButtonSelectDevice:");
    ASSERT_EQ(road.shown(), 2u);

    road.recordAndName({QStringLiteral("First"), QStringLiteral("Second")});
    // The track files stay until the next Record: each MP3 lasts as long as its track.
    for (int i = 1; i <= 2; ++i) {
        const std::string wav = road.capture->fileNameForTrack(i);
        const std::string mp3 = waxline::exporting::mp3PathFor(wav);
        EXPECT_NEAR(waxline::test::probeDuration(mp3), waxline::test::soundInfo(wav).seconds(), 0.1)
            << i;
    }

    road.press("doNextButton6:"); // Yes is chosen at first
    ASSERT_EQ(road.shown(), 2u);
    // Record at once, while the first side's run-out still plays: the silence heard before
    // Record does not count towards the second side's album end.
    road.recordAndName({QStringLiteral("Third"), QStringLiteral("Fourth")});

    const std::string album = road.music + "/Road Artist/Road Album/";
    EXPECT_EQ(waxline::test::filesBelow(road.music),
              (std::vector<std::string>{
                  "Road Artist/Road Album/01 First.mp3", "Road Artist/Road Album/02 Second.mp3",
                  "Road Artist/Road Album/03 Third.mp3", "Road Artist/Road Album/04 Fourth.mp3"}));
    const auto tags = waxline::test::probeTags(album + "04 Fourth.mp3");
    EXPECT_EQ(tags.at("artist"), "Road Artist");
    EXPECT_EQ(tags.at("album"), "Road Album");
    EXPECT_EQ(tags.at("title"), "Fourth");
    EXPECT_EQ(tags.at("track"), "4");
    for (const char* file : {"01 First.mp3", "02 Second.mp3", "03 Third.mp3"})
        EXPECT_GT(waxline::test::probeDuration(album + file), 30.0) << file;
    EXPECT_TRUE(road.alerts.shown.empty()) << road.alerts.texts().join(", ").toStdString();
}

} // namespace
