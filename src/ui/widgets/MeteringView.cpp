#include "ui/widgets/MeteringView.h"

#include "util/Decibels.h"

#include <QMouseEvent>
#include <QPainter>

#include <chrono>
#include <cmath>
#include <limits>

namespace waxline::ui {

namespace {

QColor grey(double white) {
    return QColor::fromRgbF(float(white), float(white), float(white));
}

const QColor standardRed = QColor::fromRgbF(1.0f, 0.0f, 0.0f);
const QColor standardGreen = QColor::fromRgbF(0.0f, 1.0f, 0.0f);
const QColor darkRed = QColor::fromRgbF(0.75f, 0.18f, 0.18f, 1.0f);

std::uint64_t steadyNanos() {
    return std::uint64_t(std::chrono::duration_cast<std::chrono::nanoseconds>(
                             std::chrono::steady_clock::now().time_since_epoch())
                             .count());
}

void line(QPainter& painter, const QColor& colour, QPointF from, QPointF to) {
    painter.setPen(QPen(colour, 1.0));
    painter.drawLine(from, to);
}

void fill(QPainter& painter, const QColor& colour, double x, double y, double w, double h) {
    painter.fillRect(QRectF(x, y, w, h), colour);
}

} // namespace

MeteringView::MeteringView(QWidget* parent)
    : QWidget(parent)
    , mMinDB(-std::numeric_limits<double>::infinity())
    , clock(steadyNanos) {}

void MeteringView::setNumChannels(int n) {
    if (n == mNumChannels)
        return;
    mNumChannels = n;
    const auto entries = std::size_t(std::max(0, 2 * n));
    mMeterValues.assign(entries, 0.0f);
    mOldMeterValues.assign(entries, 0.0f);
    mClipValues.assign(entries, 0);
    mTimeOfOversNanos.assign(entries, 0);
    drawsMetersOnly = false;
    firstTrackOffset = float(std::floor((width() - (14 * n - 3)) * 0.5));
    update();
}

void MeteringView::setMinValue(double v) {
    if (v == mMinValue)
        return;
    mMinValue = v;
    mMinDB = 20.0 * std::log10(v);
    drawsMetersOnly = false;
    update();
}

void MeteringView::setMaxValue(double v) {
    if (v == mMaxValue)
        return;
    mMaxValue = v;
    mMaxDB = 20.0 * std::log10(v);
    drawsMetersOnly = false;
    update();
}

void MeteringView::setMinDB(double d) {
    if (d == mMinDB)
        return;
    mMinDB = d;
    mMinValue = dbamp(d);
    drawsMetersOnly = false;
    update();
}

void MeteringView::setMaxDB(double d) {
    if (d == mMaxDB)
        return;
    mMaxDB = d;
    mMaxValue = dbamp(d);
    drawsMetersOnly = false;
    update();
}

void MeteringView::setHasClipIndicator(bool flag) {
    if (flag == mHasClip)
        return;
    mHasClip = flag;
    drawsMetersOnly = false;
    update();
}

void MeteringView::setDirty(bool flag) {
    drawsMetersOnly = !flag;
}

void MeteringView::setClock(Clock newClock) {
    clock = std::move(newClock);
}

float MeteringView::pixelForValue(double amplitude, int size) const {
    return float((amplitude - mMinValue) / (mMaxValue - mMinValue) * size);
}

void MeteringView::updateMeters(const float* values) {
    // A fixed-size borderless window never live-resizes, so every update is taken.
    const int height = this->height();
    const float limit = float(height - (mHasClip ? 10 : 2));
    for (int i = 0; i < 2 * mNumChannels; ++i) {
        const float amplitude = float(dbamp(double(values[i])));
        mOldMeterValues[i] = mMeterValues[i];
        float p = pixelForValue(amplitude, height);
        if (p < 0.0f)
            p = 0.0f;
        else if (p > limit)
            p = limit;
        mMeterValues[i] = p;
        if (mHasClip && amplitude > mMaxValue) {
            mClipValues[i] = 1;
            mTimeOfOversNanos[i] = clock();
        }
    }
    if (mNumChannels > 0)
        lastLevelDb = double(values[0]);
    update();
}

void MeteringView::mousePressEvent(QMouseEvent* event) {
    // Clicks on a meter are swallowed, never passed to the panel behind.
    event->accept();
}

void MeteringView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    update();
}

void MeteringView::paintEvent(QPaintEvent*) {
    const qreal dpr = devicePixelRatioF();
    const QSize pixels = size() * dpr;
    bool incremental = drawsMetersOnly;
    if (canvas.size() != pixels || canvas.devicePixelRatio() != dpr) {
        canvas = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        canvas.setDevicePixelRatio(dpr);
        incremental = false;
    }
    if (!incremental)
        canvas.fill(Qt::transparent);
    {
        QPainter painter(&canvas);
        // The arithmetic counts y upwards from the bottom edge, as the meter grows.
        painter.translate(0, height());
        painter.scale(1, -1);
        drawMeters(painter, incremental);
    }
    drawsMetersOnly = false;
    QPainter(this).drawImage(0, 0, canvas);
}

void MeteringView::drawMeters(QPainter& painter, bool incremental) {
    const double H = height();
    const double k = mHasClip ? 8.0 : 0.0;
    if (mNumChannels < 1)
        return;
    for (int c = 0; c < mNumChannels; ++c) {
        const double x0 = firstTrackOffset + 0.5 + 14.0 * c;
        const double meterX = x0 + 0.5;
        if (!incremental) {
            line(painter, grey(0.37), {x0, 0}, {x0, H - 0.5 - k});
            line(painter, grey(0.37), {x0, H - 0.5 - k}, {x0 + 10, H - 0.5 - k});
            line(painter, grey(0.53), {x0 + 10, H - 0.5 - k}, {x0 + 10, 0});
            line(painter, grey(0.53), {x0 + 10, 0}, {x0, 0});
            if (mHasClip) {
                line(painter, grey(0.53), {x0 + 10, H - 0.5}, {x0 + 10, H - 5.5});
                line(painter, grey(0.53), {x0 + 10, H - 5.5}, {x0, H - 5.5});
                line(painter, grey(0.37), {x0, H - 5.5}, {x0, H - 0.5});
                line(painter, grey(0.37), {x0, H - 0.5}, {x0 + 10, H - 0.5});
            }
            const double level = std::round(mMeterValues[2 * c]);
            fill(painter, grey(0.4), meterX, level + 1, 9, H - 2 - level - k);
            if (mHasClip) {
                int& state = mClipValues[c];
                std::uint64_t& overTime = mTimeOfOversNanos[c];
                const QColor lamp = state == 0 ? grey(0.4) : state < 10 ? standardRed : darkRed;
                if (state != 0 && overTime != 0 && double(clock() - overTime) * 1e-9 >= 1.5) {
                    state = 0;
                    overTime = 0;
                }
                fill(painter, lamp, meterX, H + 3 - k, 9, 4.5);
            }
            fill(painter, standardGreen, meterX, 1, 9, level + 1);
            continue;
        }
        const double oldLevel = std::round(mOldMeterValues[2 * c]);
        const double newLevel = std::round(mMeterValues[2 * c]);
        const double oldLine = std::round(mOldMeterValues[2 * c + 1]) + 0.5;
        const double newLine = std::round(mMeterValues[2 * c + 1]) + 0.5;
        if (oldLine != newLine)
            line(painter, grey(0.4), {x0 + 0.5, oldLine}, {x0 + 9.5, oldLine});
        if (newLevel > oldLevel)
            fill(painter, standardGreen, meterX, std::max(1.0, oldLevel), 9, newLevel - oldLevel);
        else if (newLevel < oldLevel)
            fill(painter, grey(0.4), meterX, newLevel + 1, 9, oldLevel - newLevel);
        int& state = mClipValues[c];
        if (oldLine != newLine || state == 1)
            line(painter, state == 1 ? standardRed : grey(0.8), {x0 + 0.5, newLine},
                 {x0 + 9.5, newLine});
        if (mHasClip) {
            if (state == 1) {
                fill(painter, standardRed, meterX, H + 3 - k, 9, 4.5);
                state = 2;
            } else if (state >= 2 && state <= 9) {
                ++state;
            } else if (state == 10) {
                fill(painter, darkRed, meterX, H + 3 - k, 9, 4.5);
                state = 11;
            }
        }
    }
}

} // namespace waxline::ui
