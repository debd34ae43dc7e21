#pragma once

#include <QPointer>
#include <QWidget>

#include <array>

namespace waxline::ui {

class MeteringView;

// The decibel marks written beside the meters.
inline constexpr std::array<double, 6> meterScaleMarks{-40.0, -24.0, -12.0, -6.0, -3.0, 0.0};

// Where a level in dB lies on a meter `height` pixels tall, counted from its top edge: the
// meter's linear mapping from amplitude (minValue at the bottom, maxValue at the top).
double meterScaleY(double db, double minValue, double maxValue, int height);

// A level as the read-out under a meter shows it: "-12,3" in German, "−∞" for silence.
QString formatPeak(double db);

// The labelled scale between the two meters: a tick towards each meter and the figure
// between them, at the heights the meter's own mapping gives. Main thread only.
class MeterScale : public QWidget {
    Q_OBJECT
public:
    explicit MeterScale(QWidget* parent = nullptr);

    // The meter whose mapping and place the scale follows; the scale must be a sibling.
    void setMeter(MeteringView* meter);
    // The scale's own y for a mark: where the top of the meter's bar is at that level.
    double yForMark(double db) const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPointer<MeteringView> meter;
};

// Holds the highest level for a while, so that a peak stays readable: a higher level
// replaces it at once, a lower one only after `holdTicks` updates.
class PeakHold {
public:
    explicit PeakHold(int holdTicks)
        : holdTicks(holdTicks) {}
    double update(double db);

private:
    int holdTicks;
    int age = 0;
    double held = -1.0e9;
};

} // namespace waxline::ui
