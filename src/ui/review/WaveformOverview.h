#pragma once

#include "ui/review/ViewWindow.h"

#include <QWidget>

#include <cstdint>
#include <functional>
#include <vector>

namespace waxline::ui {

// A track boundary on the overview: the first frame of the next track, side-relative, and how
// sure the splitter was of it (a user's own marker is sure).
struct SplitMarker {
    int64_t frame = 0;
    float confidence = 1;

    bool doubtful() const { return confidence < kDoubtful; }
    bool operator==(const SplitMarker&) const = default;

    static constexpr float kDoubtful = 0.5f;
};

// The whole side as a waveform (a minimum and maximum per column, filled in piece by piece)
// with the track boundaries as markers: click selects, drag moves (snapped through `snap`
// unless Shift is held), double-click adds, Delete removes, arrows move the selected marker by
// 0.1 s (Shift: 1 s), Space asks to play around it. The wheel and + / − zoom in and out (Shift
// with the wheel, or a sideways wheel, scrolls); the ruler follows. Markers stay rising, at least a
// second apart and inside the side. Main thread only.
class WaveformOverview : public QWidget {
    Q_OBJECT
public:
    static constexpr double kMinSpacingSeconds = 1.0;
    static constexpr double kFineStepSeconds = 0.1;
    static constexpr double kCoarseStepSeconds = 1.0;
    // How close (logical pixels) a press must land to take hold of a marker.
    static constexpr double kGrabDistance = 6.0;
    // The closest view: this many seconds across the waveform.
    static constexpr double kClosestViewSeconds = 10.0;

    explicit WaveformOverview(QWidget* parent = nullptr);

    // The side's length; forgets the waveform, keeps nothing of the markers.
    void setSide(int64_t frames, unsigned sampleRate);
    int64_t sideFrames() const { return frames; }
    unsigned sampleRate() const { return rate; }

    // The waveform in `columns` equal stretches of the side; columns [first, first + n) given
    // as their lowest and highest sample (full scale 1).
    void setColumnCount(int columns);
    void setColumns(int first, const std::vector<float>& lows, const std::vector<float>& highs);
    int columnCount() const { return int(lows.size()); }
    int columnsFilled() const { return filled; }
    // Shown over the part of the waveform not yet in ("reading the side"); empty: nothing.
    void setPendingText(const QString& text);
    QString pendingText() const { return pending; }

    void setMarkers(std::vector<SplitMarker> markers);
    const std::vector<SplitMarker>& markers() const { return marks; }
    // Boundaries only suggested: a faint dotted line each, no handle.
    void setSuggestions(std::vector<int64_t> frames);
    int selectedMarker() const { return selected; }
    void selectMarker(int index);

    // Where a marker dropped at a frame ends up: the quietest moment nearby. Unset: as dropped.
    std::function<int64_t(int64_t frame)> snap;

    // The editing steps the mouse, the keys and the dialog's buttons share. False when nothing
    // changed (no room there, nothing selected).
    bool addMarker(int64_t frame, bool snapped);
    bool removeSelected();
    bool moveSelectedBy(int64_t frames);
    bool moveSelectedTo(int64_t frame, bool snapped);

    // The frame under a point and the point of a frame, in widget coordinates.
    int64_t frameAt(double x) const;
    double xOf(int64_t frame) const;
    QRectF waveRect() const;
    // The stretch shown; the whole side until zoomed.
    ViewWindow view() const { return shown; }
    // `factor` times closer around `anchor` (a frame), within the side and the closest view.
    void zoomBy(double factor, int64_t anchor);
    // The frame under the mouse, -1 when it is not over the waveform.
    int64_t hoverFrame() const { return hover; }

    QSize sizeHint() const override { return {672, 170}; }

Q_SIGNALS:
    void markersChanged();
    void selectionChanged(int index);
    void playRequested(int64_t frame);
    void hoverChanged(int64_t frame);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    int markerNear(double x) const;
    int64_t spacing() const;
    // The frame nearest `frame` that marker `index` may take between its neighbours.
    int64_t clampFor(int index, int64_t frame) const;
    bool roomFor(int64_t frame) const;
    void setHover(int64_t frame);
    void setView(ViewWindow view);

    int64_t frames = 0;
    unsigned rate = 44100;
    std::vector<float> lows;
    std::vector<float> highs;
    std::vector<bool> known;
    int filled = 0;
    std::vector<SplitMarker> marks;
    std::vector<int64_t> suggestions;
    int selected = -1;
    int dragging = -1;
    bool dragMoved = false;
    int64_t hover = -1;
    QString pending;
    ViewWindow shown;
};

// "m:ss.s" for a side-relative frame, e.g. 192.44 s -> "3:12.4".
QString formatSideTime(int64_t frame, unsigned sampleRate);

} // namespace waxline::ui
