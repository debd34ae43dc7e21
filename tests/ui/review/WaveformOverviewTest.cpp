#include "ui/review/WaveformOverview.h"
#include "ui/review/SplitReviewDialog.h"

#include <QApplication>
#include <QLayout>
#include <QLocale>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <cmath>

using namespace waxline::ui;

namespace {

// One frame a millisecond keeps the expected positions easy to work out by hand: a minute-long
// side of 60000 frames over a 600 px waveform is 100 frames a pixel.
constexpr unsigned rate = 1000;
constexpr int64_t sideFrames = 60000;

struct Overview {
    WaveformOverview view;
    std::vector<int64_t> snapAsked;

    Overview(std::vector<SplitMarker> markers) {
        view.setSide(sideFrames, rate);
        view.setMarkers(std::move(markers));
        // 600 px of waveform between the 1 px borders.
        view.resize(602, 170);
        view.show();
        EXPECT_DOUBLE_EQ(view.waveRect().width(), 600.0);
        // A stand-in for the quietest moment nearby: always 25 s.
        view.snap = [this](int64_t frame) {
            snapAsked.push_back(frame);
            return int64_t(25000);
        };
    }
    QPoint at(int64_t frame) const {
        return QPoint(int(std::lround(view.xOf(frame))), int(view.waveRect().center().y()));
    }
    std::vector<int64_t> frames() const {
        std::vector<int64_t> f;
        for (const SplitMarker& m : view.markers())
            f.push_back(m.frame);
        return f;
    }
};

} // namespace

TEST(WaveformOverview, FramesAndPointsMapBothWays) {
    Overview o({});
    const double left = o.view.waveRect().left();
    EXPECT_DOUBLE_EQ(o.view.xOf(0), left);
    EXPECT_DOUBLE_EQ(o.view.xOf(30000), left + 300);
    EXPECT_EQ(o.view.frameAt(left + 150), 15000);
    EXPECT_EQ(o.view.frameAt(left - 40), 0) << "left of the waveform is the side's start";
    EXPECT_EQ(o.view.frameAt(left + 9999), sideFrames);
}

TEST(WaveformOverview, ADraggedMarkerSnapsUnlessShiftIsHeld) {
    struct Case {
        const char* what;
        Qt::KeyboardModifiers modifiers;
        int64_t expected;
        bool snapped;
    };
    // Dropped at 23 s: the stand-in says 25 s is the quietest; Shift keeps the drop point.
    const Case cases[] = {
        {"plain drag", Qt::NoModifier, 25000, true},
        {"Shift drag", Qt::ShiftModifier, 23000, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Overview o({{20000, 1.0f}, {40000, 0.3f}});
        QTest::mousePress(&o.view, Qt::LeftButton, c.modifiers, o.at(20000));
        EXPECT_EQ(o.view.selectedMarker(), 0);
        QTest::mouseMove(&o.view, o.at(21500));
        QTest::mouseMove(&o.view, o.at(23000));
        QTest::mouseRelease(&o.view, Qt::LeftButton, c.modifiers, o.at(23000));
        ASSERT_EQ(o.view.markers().size(), 2u);
        // A pixel is 100 frames: the drop point is known to within one.
        EXPECT_NEAR(double(o.view.markers()[0].frame), double(c.expected), c.snapped ? 0 : 100);
        EXPECT_EQ(o.snapAsked.empty(), !c.snapped);
        if (c.snapped) {
            EXPECT_NEAR(double(o.snapAsked.back()), 23000, 100);
        }
        EXPECT_EQ(o.view.markers()[1].frame, 40000) << "the other marker stays";
    }
}

TEST(WaveformOverview, APressAwayFromEveryMarkerSelectsNothingAndMovesNothing) {
    Overview o({{20000, 1.0f}});
    QTest::mousePress(&o.view, Qt::LeftButton, {}, o.at(30000));
    QTest::mouseMove(&o.view, o.at(35000));
    QTest::mouseRelease(&o.view, Qt::LeftButton, {}, o.at(35000));
    EXPECT_EQ(o.view.selectedMarker(), -1);
    EXPECT_EQ(o.frames(), std::vector<int64_t>{20000});
}

TEST(WaveformOverview, KeysMoveDeleteAndPlayTheSelectedMarker) {
    struct Case {
        const char* what;
        std::vector<std::pair<Qt::Key, Qt::KeyboardModifiers>> keys;
        std::vector<int64_t> expected;
        int plays;
    };
    // Markers at 20 s and 22.5 s, the first selected; markers keep a second between them and
    // from the ends of the side.
    const Case cases[] = {
        {"Right", {{Qt::Key_Right, Qt::NoModifier}}, {20100, 22500}, 0},
        {"Left twice", {{Qt::Key_Left, {}}, {Qt::Key_Left, {}}}, {19800, 22500}, 0},
        {"Shift+Right", {{Qt::Key_Right, Qt::ShiftModifier}}, {21000, 22500}, 0},
        {"Shift+Right stops a second before the next",
         {{Qt::Key_Right, Qt::ShiftModifier}, {Qt::Key_Right, Qt::ShiftModifier}},
         {21500, 22500},
         0},
        {"Delete", {{Qt::Key_Delete, {}}}, {22500}, 0},
        {"Delete twice", {{Qt::Key_Delete, {}}, {Qt::Key_Delete, {}}}, {}, 0},
        {"Space plays", {{Qt::Key_Space, {}}}, {20000, 22500}, 1},
        {"Down then Right moves the second",
         {{Qt::Key_Down, {}}, {Qt::Key_Right, {}}},
         {20000, 22600},
         0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Overview o({{20000, 1.0f}, {22500, 1.0f}});
        o.view.selectMarker(0);
        QSignalSpy plays(&o.view, &WaveformOverview::playRequested);
        for (const auto& [key, modifiers] : c.keys)
            QTest::keyClick(&o.view, key, modifiers);
        EXPECT_EQ(o.frames(), c.expected);
        ASSERT_EQ(plays.count(), c.plays);
        if (c.plays) {
            EXPECT_EQ(plays.at(0).at(0).value<int64_t>(), 20000);
        }
        EXPECT_TRUE(o.snapAsked.empty()) << "keys place exactly";
    }
}

TEST(WaveformOverview, DoubleClickAddsASnappedMarkerWhereThereIsRoom) {
    struct Case {
        const char* what;
        int64_t at;
        Qt::KeyboardModifiers modifiers;
        std::vector<int64_t> expected;
    };
    const Case cases[] = {
        {"snapped", 24000, Qt::NoModifier, {10000, 25000, 40000}},
        {"exact with Shift", 33000, Qt::ShiftModifier, {10000, 33000, 40000}},
        {"not in the first second", 500, Qt::ShiftModifier, {10000, 40000}},
        {"not within a second of another", 40500, Qt::ShiftModifier, {10000, 40000}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Overview o({{10000, 1.0f}, {40000, 1.0f}});
        QTest::mouseDClick(&o.view, Qt::LeftButton, c.modifiers, o.at(c.at));
        const auto frames = o.frames();
        ASSERT_EQ(frames.size(), c.expected.size());
        for (size_t i = 0; i < frames.size(); ++i)
            EXPECT_NEAR(double(frames[i]), double(c.expected[i]), 100) << i;
    }
}

TEST(WaveformOverview, SideTimesReadAsMinutesSecondsAndTenths) {
    const struct {
        int64_t frame;
        unsigned rate;
        const char* locale;
        const char* text;
    } cases[] = {
        {0, 44100, "en", "0:00.0"},
        {int64_t(192.44 * 44100), 44100, "en", "3:12.4"},
        {int64_t(59.96 * 48000), 48000, "en", "1:00.0"},
        {3600 * 44100, 44100, "en", "60:00.0"},
        {int64_t(353.1 * 44100), 44100, "de", "5:53,1"},
    };
    for (const auto& c : cases) {
        QLocale::setDefault(QLocale(QString::fromLatin1(c.locale)));
        EXPECT_EQ(formatSideTime(c.frame, c.rate), QLatin1String(c.text)) << c.text;
    }
    QLocale::setDefault(QLocale(QLocale::English));
}

TEST(SplitReviewDialog, ApplyFollowsTheMarkersAndDoubtfulOnesAreListed) {
    SplitReviewDialog dialog;
    dialog.setSide(sideFrames, rate, {10000, 30000});
    QSignalSpy counts(&dialog, &SplitReviewDialog::trackCountChosen);
    EXPECT_FALSE(dialog.applyButton().isEnabled()) << "the live splits change nothing";
    EXPECT_EQ(dialog.trackCountBox().value(), 3);
    EXPECT_TRUE(dialog.noticeText().isEmpty());

    dialog.setProposal({{12000, 0.9f}, {30000, 0.2f}, {45000, 0.45f}});
    EXPECT_TRUE(dialog.applyButton().isEnabled());
    EXPECT_EQ(dialog.trackCountBox().value(), 4);
    EXPECT_EQ(counts.count(), 0) << "the count follows the markers without asking again";
    const QString notice = dialog.noticeText();
    EXPECT_TRUE(notice.contains(QLatin1String("0:30.0"))) << qPrintable(notice);
    EXPECT_TRUE(notice.contains(QLatin1String("0:45.0"))) << qPrintable(notice);
    EXPECT_FALSE(notice.contains(QLatin1String("0:12.0"))) << qPrintable(notice);

    // A doubtful marker moved by hand is the user's own.
    dialog.overview().selectMarker(1);
    dialog.overview().moveSelectedBy(100);
    EXPECT_FALSE(dialog.noticeText().contains(QLatin1String("0:30")));

    dialog.trackCountBox().setValue(7);
    ASSERT_EQ(counts.count(), 1);
    EXPECT_EQ(counts.at(0).at(0).toInt(), 7);

    // Back to the live splits: nothing to apply.
    dialog.setProposal({{10000, 1.0f}, {30000, 1.0f}});
    EXPECT_FALSE(dialog.applyButton().isEnabled());
    EXPECT_EQ(dialog.boundaries(), (std::vector<int64_t>{10000, 30000}));
}

TEST(SplitReviewDialog, AddSplitHalvesTheLongestTrack) {
    SplitReviewDialog dialog;
    dialog.setSide(sideFrames, rate, {10000, 20000});
    dialog.addButton().click();
    EXPECT_EQ(dialog.boundaries(), (std::vector<int64_t>{10000, 20000, 40000}));
    EXPECT_EQ(dialog.overview().selectedMarker(), 2);
    dialog.removeButton().click();
    EXPECT_EQ(dialog.boundaries(), (std::vector<int64_t>{10000, 20000}));
}

// Return applies from the waveform, only confirms a typed count, and does nothing while there
// is nothing to apply.
TEST(SplitReviewDialog, ReturnAppliesFromAnywhereButTheCount) {
    struct Row {
        bool edited, onCount;
        int applied;
    };
    for (const Row& row : {Row{true, false, 1}, Row{false, false, 0}, Row{true, true, 0}}) {
        SplitReviewDialog dialog;
        dialog.setSide(sideFrames, rate, {10000, 30000});
        if (row.edited)
            dialog.setProposal({{12000, 1.0f}, {30000, 1.0f}});
        QSignalSpy applied(&dialog, &SplitReviewDialog::applyRequested);
        dialog.show();
        dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
        QWidget* target = row.onCount ? static_cast<QWidget*>(&dialog.trackCountBox())
                                      : static_cast<QWidget*>(&dialog.overview());
        target->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        EXPECT_EQ(applied.count(), row.applied) << row.edited << row.onCount;
    }
}

// The selected split is called by the number its marker carries (the track it starts), and
// the waveform keeps its height from reading to ready, notice or none.
TEST(SplitReviewDialog, NamesTheSplitAsShownAndKeepsItsLayout) {
    const std::vector<std::pair<std::vector<SplitMarker>, const char*>> rows = {
        {{{12000, 1.0f}}, "Split 2 at 0:12.0"},
        {{{12000, 1.0f}, {30000, 0.2f}}, "Split 3 at 0:30.0"}};
    for (const auto& [proposal, expected] : rows) {
        SplitReviewDialog dialog;
        dialog.setSide(sideFrames, rate, {10000});
        dialog.setReading(true);
        dialog.show();
        const int reading = dialog.overview().height();
        dialog.setReading(false);
        dialog.setProposal(proposal);
        dialog.overview().selectMarker(int(proposal.size()) - 1);
        dialog.layout()->activate();
        EXPECT_EQ(dialog.overview().height(), reading) << expected;
        EXPECT_EQ(dialog.positionText().toStdString(), expected);
    }
}

// Zooming keeps the anchor's place on the screen, stops at the closest view (10000 frames) and
// the side's ends; scrolling and showing a frame stay inside the side.
TEST(ViewWindow, ZoomsScrollsAndShowsWithinTheSide) {
    struct Row {
        ViewWindow from;
        char step;
        double factor;
        int64_t frame;
        ViewWindow expected;
    };
    const Row rows[] = {
        {{0, 60000}, 'z', 2, 30000, {15000, 30000}},
        {{0, 60000}, 'z', 2, 60000, {30000, 30000}},
        {{0, 60000}, 'z', 8, 30000, {25000, 10000}},
        {{12000, 20000}, 'z', 2, 17000, {14500, 10000}},
        {{50000, 10000}, 'z', 0.5, 55000, {40000, 20000}},
        {{0, 60000}, 'z', 0.5, 0, {0, 60000}},
        {{10000, 20000}, 's', 0, -20000, {0, 20000}},
        {{10000, 20000}, 's', 0, 5000, {15000, 20000}},
        {{10000, 20000}, 'v', 0, 20000, {10000, 20000}},
        {{10000, 20000}, 'v', 0, 55000, {40000, 20000}},
    };
    for (const Row& row : rows) {
        const ViewWindow got = row.step == 'z'
                                   ? row.from.zoomed(row.factor, row.frame, sideFrames, 10000)
                               : row.step == 's' ? row.from.scrolled(row.frame, sideFrames)
                                                 : row.from.showing(row.frame, sideFrames);
        EXPECT_EQ(got, row.expected) << row.step << row.from.start << " " << row.frame;
    }
}

// + zooms around the selected marker, the wheel around the mouse; the ruler's mapping follows,
// so the anchor stays under the same pixel.
TEST(WaveformOverview, KeysAndTheWheelZoomAroundTheirAnchor) {
    struct Row {
        int wheel;
        int64_t anchor;
        ViewWindow expected;
    };
    for (const Row& row : {Row{0, 20000, {10000, 30000}}, Row{240, 15000, {7500, 30000}}}) {
        Overview o({{20000, 1.0f}});
        o.view.selectMarker(0);
        const double before = o.view.xOf(row.anchor);
        const QPointF point(before, o.view.waveRect().center().y());
        QWheelEvent wheel(point, o.view.mapToGlobal(point), QPoint(), QPoint(0, row.wheel),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        if (row.wheel)
            QApplication::sendEvent(&o.view, &wheel);
        else
            QTest::keyClick(&o.view, Qt::Key_Plus);
        EXPECT_EQ(o.view.view(), row.expected) << row.wheel;
        EXPECT_EQ(o.view.frameAt(before), row.anchor) << row.wheel;
    }
}
