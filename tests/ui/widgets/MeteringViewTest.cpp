#include "ui/widgets/MeteringView.h"

#include "ui/widgets/MeterScale.h"

#include <QImage>
#include <QLocale>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

using waxline::ui::MeteringView;

namespace {

constexpr int meterWidth = 24;
constexpr int meterHeight = 240;
const float minusInfinity = -std::numeric_limits<float>::infinity();

// What the view paints, on a transparent picture and without any window background.
QImage render(MeteringView& view) {
    QImage picture(view.size(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    view.render(&picture, {}, {}, QWidget::DrawChildren);
    return picture;
}

// A one-channel meter as the recording panels have it, on a clock the test moves.
struct Meter {
    MeteringView view;
    std::uint64_t now = 1'000'000'000;

    explicit Meter(bool lamp = true) {
        view.resize(meterWidth, meterHeight);
        view.setClock([this] { return now; });
        view.setNumChannels(1);
        view.setHasClipIndicator(lamp);
    }
    void show(float db) {
        const float values[2] = {db, db};
        view.updateMeters(values);
    }
    QImage draw() { return render(view).convertToFormat(QImage::Format_RGB32); }
};

float dbOf(double peak) {
    return float(20.0 * std::log10(peak));
}

} // namespace

TEST(MeteringView, PeaksBecomeClampedPixelHeightsAndOvers) {
    // Heights worked out as peak / 0.9999 * 240, then clamped to 230 (lamp) or 238 (no lamp).
    struct Case {
        const char* what;
        double peak;
        bool lamp;
        float height;
        int clipState;
    };
    const Case cases[] = {
        {"silence", 0.0, true, 0.0f, 0},
        {"half scale", 0.5, true, 120.012f, 0},
        {"a tenth", 0.1, true, 24.0024f, 0},
        {"full scale lights the lamp", 1.0, true, 230.0f, 1},
        {"full scale without a lamp", 1.0, false, 238.0f, 0},
        {"just below the top of the scale", 0.99, true, 230.0f, 0},
    };
    for (const Case& c : cases) {
        Meter meter(c.lamp);
        meter.show(c.peak == 0.0 ? minusInfinity : dbOf(c.peak));
        EXPECT_NEAR(meter.view.meterValue(0), c.height, 0.01) << c.what;
        EXPECT_NEAR(meter.view.meterValue(1), c.height, 0.01) << c.what;
        EXPECT_EQ(meter.view.clipState(0), c.clipState) << c.what;
        EXPECT_EQ(meter.view.timeOfOver(0), c.clipState ? meter.now : 0u) << c.what;
    }
}

TEST(MeteringView, PixelForValueIsLinearInAmplitude) {
    MeteringView view;
    EXPECT_FLOAT_EQ(view.pixelForValue(0.0, 200), 0.0f);
    EXPECT_NEAR(view.pixelForValue(0.25, 200), 50.005, 1e-3);
    view.setMaxDB(0.0); // unchanged: 0 dB is already the stored value, so max stays 0.9999
    EXPECT_DOUBLE_EQ(view.maxValue(), 0.9999);
    view.setMaxDB(-6.0);
    EXPECT_NEAR(view.maxValue(), 0.501187, 1e-6);
    view.setMaxValue(1.0);
    EXPECT_DOUBLE_EQ(view.maxDB(), 0.0);
    EXPECT_FLOAT_EQ(view.pixelForValue(0.25, 200), 50.0f);
}

TEST(MeteringView, ChannelCountKeepsOrClearsHeights) {
    Meter meter;
    meter.show(dbOf(0.5));
    meter.view.setNumChannels(1);
    EXPECT_NEAR(meter.view.meterValue(0), 120.012f, 0.01) << "same count keeps the heights";
    meter.view.setNumChannels(2);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(meter.view.meterValue(i), 0.0f) << "a new count clears entry " << i;
    // Two meters of 14 points less 3, centred in 24: floor((24 - 25) / 2) = -1.
    EXPECT_EQ(meter.view.firstTrackOffsetValue(), -1.0f);
}

TEST(MeteringView, ZeroChannelsDrawNothing) {
    MeteringView view;
    view.resize(meterWidth, meterHeight);
    const QImage picture = render(view);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ASSERT_EQ(qAlpha(picture.pixel(x, y)), 0) << x << "," << y;
}

TEST(MeteringView, RenderedPixels) {
    // One meter centred in 24 points: frame lines at x 6 and 16, the bar in x 7..15.
    // Half scale is 120 points high: lit rows 118..239 from the top, unlit above, lamp at the top.
    Meter meter;
    meter.show(dbOf(0.5));
    const QImage picture = meter.draw();
    const QRgb green = qRgb(0, 255, 0);
    const QRgb unlit = qRgb(102, 102, 102); // grey 0.4
    struct Point {
        int x, y;
        QRgb colour;
        const char* what;
    };
    const Point points[] = {
        {11, 200, green, "lit bar"},
        {8, 130, green, "lit bar near its top"},
        {11, 50, unlit, "unlit bar"},
        {14, 100, unlit, "unlit bar below the lamp"},
        {6, 100, qRgb(94, 94, 94), "left frame, grey 0.37"},
        {16, 100, qRgb(135, 135, 135), "right frame, grey 0.53"},
        {11, 3, unlit, "lamp out"},
    };
    for (const Point& p : points)
        EXPECT_EQ(picture.pixel(p.x, p.y), p.colour) << p.what;
    EXPECT_EQ(qAlpha(render(meter.view).pixel(2, 100)), 0) << "left of the frame";
}

TEST(MeteringView, ClipLampGoesOutAtTheFirstFullDrawOneAndAHalfSecondsLater) {
    Meter meter;
    meter.show(0.0f);
    ASSERT_EQ(meter.view.clipState(0), 1);
    const QRgb red = qRgb(255, 0, 0);

    meter.now += 1'499'000'000;
    EXPECT_EQ(meter.draw().pixel(11, 3), red);
    EXPECT_EQ(meter.view.clipState(0), 1) << "1.499 s: still lit";

    meter.now += 1'000'000;
    EXPECT_EQ(meter.draw().pixel(11, 3), red) << "painted in the colour chosen before the reset";
    EXPECT_EQ(meter.view.clipState(0), 0);
    EXPECT_EQ(meter.view.timeOfOver(0), 0u);

    EXPECT_EQ(meter.draw().pixel(11, 3), qRgb(102, 102, 102)) << "out at the next draw";
}

TEST(MeteringView, IncrementalDrawRepaintsOnlyWhatChanged) {
    Meter meter;
    meter.show(dbOf(0.5));
    meter.draw();
    // A quarter: 60 points. The bar shrinks by greying rows 61..120 from the bottom, and the
    // peak line moves from 120.5 to 60.5 (row 179 from the top), drawn in grey 0.8.
    meter.show(dbOf(0.25));
    meter.view.setDirty(false);
    const QImage picture = meter.draw();
    EXPECT_EQ(picture.pixel(11, 150), qRgb(102, 102, 102)) << "greyed where the bar was";
    EXPECT_EQ(picture.pixel(11, 200), qRgb(0, 255, 0)) << "the lower bar kept";
    EXPECT_EQ(picture.pixel(11, 179), qRgb(204, 204, 204)) << "the new peak line";
    EXPECT_EQ(picture.pixel(6, 100), qRgb(94, 94, 94)) << "frame kept from the full draw";
}

TEST(MeteringView, IncrementalDrawAgesTheLamp) {
    Meter meter;
    meter.show(0.0f);
    meter.draw();
    ASSERT_EQ(meter.view.clipState(0), 1) << "full draws do not age the lamp";
    int expected[] = {2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 11};
    for (int state : expected) {
        meter.view.setDirty(false);
        meter.draw();
        EXPECT_EQ(meter.view.clipState(0), state);
    }
    meter.now += 5'000'000'000;
    meter.view.setDirty(false);
    meter.draw();
    EXPECT_EQ(meter.view.clipState(0), 11) << "the incremental path never resets";
}

TEST(MeterScale, MarksSitWhereTheMeterDrawsTheirLevel) {
    // The panel's places: the meter at y 120, 212 px tall, the scale from y 110. Heights from
    // the top worked out as 212 - 10^(dB/20) / 0.9999 * 212, plus the scale's 10 px offset,
    // less the 2 px the bar stands on.
    struct Case {
        double db;
        double y;
    };
    const Case cases[] = {{-40, 217.880}, {-24, 206.622}, {-12, 166.743},
                          {-6, 113.738},  {-3, 69.900},   {0, 7.979}};
    QWidget panel;
    auto meter = new MeteringView(&panel);
    meter->setGeometry(540, 120, meterWidth, 212);
    meter->setNumChannels(1);
    meter->setHasClipIndicator(true);
    auto scale = new waxline::ui::MeterScale(&panel);
    scale->setGeometry(568, 110, 60, 228);
    scale->setMeter(meter);
    for (const Case& c : cases) {
        EXPECT_NEAR(scale->yForMark(c.db), c.y, 0.001) << c.db << " dB";
        const float values[2] = {float(c.db), float(c.db)};
        meter->updateMeters(values);
        // Below the lamp the painted bar ends at the mark, within the pixel it rounds to.
        if (meter->meterValue(0) < 212 - 10) {
            const QImage picture = render(*meter).convertToFormat(QImage::Format_RGB32);
            const int x = int(meter->firstTrackOffsetValue()) + 5;
            int top = 0;
            while (top < picture.height() && picture.pixel(x, top) != qRgb(0, 255, 0))
                ++top;
            EXPECT_NEAR(meter->y() - scale->y() + top, c.y, 1.0) << c.db << " dB";
        }
    }
}

TEST(MeterScale, PeakFiguresHoldAndReadInTheLanguage) {
    struct Case {
        const char* locale;
        double db;
        const char* text;
    } cases[] = {
        {"en", -12.34, "\u221212.3"},
        {"de", -12.34, "\u221212,3"},
        {"de", -0.04, "0,0"},
        {"en", minusInfinity, "\u2212\u221E"},
    };
    for (const Case& c : cases) {
        QLocale::setDefault(QLocale(QString::fromLatin1(c.locale)));
        EXPECT_EQ(waxline::ui::formatPeak(c.db), QString::fromUtf8(c.text)) << c.text;
    }
    QLocale::setDefault(QLocale(QLocale::English));
    // A peak stays for three updates, then the level of the moment shows again.
    waxline::ui::PeakHold hold(3);
    const double levels[] = {-20, -6, -30, -30, -30, -30, -12, -3};
    const double shown[] = {-20, -6, -6, -6, -6, -30, -12, -3};
    for (std::size_t i = 0; i < std::size(levels); ++i)
        EXPECT_EQ(hold.update(levels[i]), shown[i]) << "update " << i;
}
