#include "app/AppRig.h"
#include "exporting/ExportFolders.h"
#include "support/MediaFiles.h"

#include <QCheckBox>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using waxline::test::TempDir;

// Two demo sides one after the other, each ending in its run-out groove: the deck plays the
// second when the wizard comes back to panel 2.
std::string twoSides(const TempDir& dir) {
    const std::string first = waxline::test::makeDemoSideFile(dir, 2, 11);
    fs::rename(first, dir.file("first.wav"));
    const auto a = waxline::test::readStereoWav(dir.file("first.wav"));
    const auto b = waxline::test::readStereoWav(waxline::test::makeDemoSideFile(dir, 2, 12));
    std::vector<float> left = a.channel(0), right = a.channel(1);
    const auto bl = b.channel(0), br = b.channel(1);
    left.insert(left.end(), bl.begin(), bl.end());
    right.insert(right.end(), br.begin(), br.end());
    EXPECT_TRUE(waxline::test::writeStereoWav(dir.file("both.wav"), left, right));
    return dir.file("both.wav");
}

// Records one side with automatic split and names it on panel 7 with key events.
void recordAndName(waxline::test::DeckApp& road, const QStringList& titles) {
    auto split = road.view()->findChild<QCheckBox*>(QStringLiteral("automaticallySplitTracks"));
    ASSERT_TRUE(split);
    if (!split->isChecked())
        QTest::mouseClick(split, Qt::LeftButton, {}, QPoint(9, split->height() / 2));
    ASSERT_TRUE(split->isChecked());
    road.press("doRecordButton:");
    ASSERT_EQ(road.shown(), 3u);
    ASSERT_TRUE(QTest::qWaitFor([&] { return road.shown() != 3u; }, 120000)) << "no album end";
    ASSERT_EQ(road.shown(), 7u);
    ASSERT_EQ(road.audio->numRecordedTracks(), titles.size());
    road.type(51, QStringLiteral("Road Artist"));
    road.type(52, QStringLiteral("Road Album"));
    for (int i = 0; i < titles.size(); ++i)
        road.type(61 + i, titles[i]);
    road.press("doNextButton7:");
    ASSERT_TRUE(QTest::qWaitFor([&] { return road.shown() == 6u; }, 120000));
}

TEST(WholeRoad, TwoSidesOnTheVirtualTurntableEndAsNumberedTaggedTracks) {
    waxline::test::DeckApp road;
    road.open(twoSides(road.dir));
    road.press("doNextButton1:");
    ASSERT_EQ(road.shown(), 11u);
    road.press("doNextButtonSelectDevice:");
    ASSERT_EQ(road.shown(), 2u);

    recordAndName(road, {QStringLiteral("First"), QStringLiteral("Second")});
    // The track files stay until the next Record: each MP3 lasts as long as its track.
    for (int i = 1; i <= 2; ++i) {
        const std::string wav = road.audio->fileNameForTrack(i);
        const std::string mp3 = waxline::exporting::mp3PathFor(wav);
        EXPECT_NEAR(waxline::test::probeDuration(mp3), waxline::test::soundInfo(wav).seconds(), 0.1)
            << i;
    }

    road.press("doNextButton6:"); // Yes is chosen at first
    ASSERT_EQ(road.shown(), 2u);
    // Record at once, while the first side's run-out still plays: the silence heard before
    // Record does not count towards the second side's album end.
    recordAndName(road, {QStringLiteral("Third"), QStringLiteral("Fourth")});

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
