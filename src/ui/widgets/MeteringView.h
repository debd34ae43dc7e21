#pragma once

#include <QImage>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace waxline::ui {

// Vertical bar meters with a peak line and a clip lamp, one per channel, side by side.
// Main thread only. Drawing happens into a kept canvas so that the incremental path can
// repaint only what changed, as a view that keeps its pixels would.
class MeteringView : public QWidget {
    Q_OBJECT
public:
    // Monotonic time in nanoseconds; tests inject their own to age the clip lamp.
    using Clock = std::function<std::uint64_t()>;

    explicit MeteringView(QWidget* parent = nullptr);

    int numChannels() const { return mNumChannels; }
    void setNumChannels(int n);
    void setMinValue(double v);
    void setMaxValue(double v);
    void setMinDB(double d);
    void setMaxDB(double d);
    void setHasClipIndicator(bool flag);
    void setDirty(bool flag);
    void setClock(Clock clock);

    double minValue() const { return mMinValue; }
    double maxValue() const { return mMaxValue; }
    double minDB() const { return mMinDB; }
    double maxDB() const { return mMaxDB; }
    bool hasClipIndicator() const { return mHasClip; }
    float firstTrackOffsetValue() const { return firstTrackOffset; }

    // (amplitude - min) / (max - min) * size: linear in amplitude.
    float pixelForValue(double amplitude, int size) const;

    // values: 2 per channel in dB, the bar then the peak line of each channel.
    void updateMeters(const float* values);

    // Read-outs for tests and the panel: pixel heights and lamp state at a value index.
    float meterValue(int index) const { return mMeterValues.at(index); }
    int clipState(int index) const { return mClipValues.at(index); }
    std::uint64_t timeOfOver(int index) const { return mTimeOfOversNanos.at(index); }
    // The level of the last update in dB (its first bar), for assistive tools.
    double levelDb() const { return lastLevelDb; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void drawMeters(QPainter& painter, bool incremental);

    int mNumChannels = 0;
    double mMinDB;
    double mMaxDB = 0.0;
    double mMinValue = 0.0;
    double mMaxValue = 0.9999;
    std::vector<float> mMeterValues;
    std::vector<float> mOldMeterValues;
    std::vector<int> mClipValues;
    float firstTrackOffset = 0.0f;
    bool drawsMetersOnly = false;
    bool mHasClip = false;
    [[maybe_unused]] bool mFirstTime = true;
    std::vector<std::uint64_t> mTimeOfOversNanos;

    double lastLevelDb = -std::numeric_limits<double>::infinity();

    Clock clock;
    QImage canvas;
};

} // namespace waxline::ui
