#include "ui/review/WaveformOverview.h"

#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace waxline::ui {

namespace {

const QColor wellColour(0x2A, 0x23, 0x20);
const QColor waveColour(0xD9, 0x89, 0x2B);
const QColor pendingColour(0x6B, 0x5A, 0x4E);
const QColor markerColour(0xF4, 0xEC, 0xDD);
const QColor doubtfulColour(0xF0, 0x7A, 0x5A);
const QColor selectedColour(0x4F, 0xC3, 0xD9);
const QColor rulerColour(0x5E, 0x4A, 0x3B);

constexpr double handleHeight = 12;
constexpr double rulerHeight = 18;

} // namespace

QString formatSideTime(int64_t frame, unsigned sampleRate) {
    const int64_t tenths =
        sampleRate ? (frame * 10 + int64_t(sampleRate) / 2) / int64_t(sampleRate) : 0;
    // The tenths follow the language's decimal sign: "5:53.1", "5:53,1".
    return QString::asprintf("%lld:%02lld", static_cast<long long>(tenths / 600),
                             static_cast<long long>(tenths / 10 % 60)) +
           QLocale().decimalPoint() + QString::number(tenths % 10);
}

WaveformOverview::WaveformOverview(QWidget* parent)
    : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setMinimumHeight(120);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void WaveformOverview::setSide(int64_t sideFrames, unsigned sampleRate) {
    frames = std::max<int64_t>(sideFrames, 0);
    rate = sampleRate ? sampleRate : 44100;
    lows.clear();
    highs.clear();
    known.clear();
    filled = 0;
    marks.clear();
    selected = -1;
    dragging = -1;
    shown = {0, frames};
    update();
}

void WaveformOverview::setColumnCount(int columns) {
    columns = std::max(columns, 0);
    lows.assign(size_t(columns), 0.0f);
    highs.assign(size_t(columns), 0.0f);
    known.assign(size_t(columns), false);
    filled = 0;
    update();
}

void WaveformOverview::setColumns(int first, const std::vector<float>& low,
                                  const std::vector<float>& high) {
    const size_t n = std::min(low.size(), high.size());
    for (size_t i = 0; i < n; ++i) {
        const size_t column = size_t(first) + i;
        if (first < 0 || column >= lows.size())
            break;
        lows[column] = low[i];
        highs[column] = high[i];
        if (!known[column]) {
            known[column] = true;
            ++filled;
        }
    }
    update();
}

void WaveformOverview::setPendingText(const QString& text) {
    pending = text;
    update();
}

void WaveformOverview::setMarkers(std::vector<SplitMarker> markers) {
    std::sort(markers.begin(), markers.end(),
              [](const SplitMarker& a, const SplitMarker& b) { return a.frame < b.frame; });
    marks = std::move(markers);
    selected = marks.empty() ? -1 : std::min(selected, int(marks.size()) - 1);
    dragging = -1;
    update();
    emit markersChanged();
    emit selectionChanged(selected);
}

void WaveformOverview::setSuggestions(std::vector<int64_t> frames) {
    suggestions = std::move(frames);
    update();
}

void WaveformOverview::selectMarker(int index) {
    if (index < -1 || index >= int(marks.size()))
        index = -1;
    if (index == selected)
        return;
    selected = index;
    update();
    emit selectionChanged(selected);
}

int64_t WaveformOverview::spacing() const {
    return std::max<int64_t>(1, int64_t(std::llround(kMinSpacingSeconds * rate)));
}

int64_t WaveformOverview::clampFor(int index, int64_t frame) const {
    const int64_t gap = spacing();
    const int64_t lowest = index > 0 ? marks[size_t(index) - 1].frame + gap : gap;
    const int64_t highest =
        index + 1 < int(marks.size()) ? marks[size_t(index) + 1].frame - gap : frames - gap;
    if (lowest > highest)
        return marks[size_t(index)].frame;
    return std::clamp(frame, lowest, highest);
}

bool WaveformOverview::roomFor(int64_t frame) const {
    const int64_t gap = spacing();
    if (frame < gap || frame > frames - gap)
        return false;
    return std::none_of(marks.begin(), marks.end(),
                        [&](const SplitMarker& m) { return std::llabs(m.frame - frame) < gap; });
}

bool WaveformOverview::addMarker(int64_t frame, bool snapped) {
    if (snapped && snap)
        frame = snap(frame);
    if (!roomFor(frame))
        return false;
    const auto at = std::lower_bound(marks.begin(), marks.end(), frame,
                                     [](const SplitMarker& m, int64_t f) { return m.frame < f; });
    const int index = int(at - marks.begin());
    marks.insert(at, SplitMarker{frame, 1.0f});
    selected = index;
    update();
    emit markersChanged();
    emit selectionChanged(selected);
    return true;
}

bool WaveformOverview::removeSelected() {
    if (selected < 0)
        return false;
    marks.erase(marks.begin() + selected);
    // The next marker to the right takes the selection, so Delete can be pressed again.
    if (selected >= int(marks.size()))
        selected = int(marks.size()) - 1;
    dragging = -1;
    update();
    emit markersChanged();
    emit selectionChanged(selected);
    return true;
}

bool WaveformOverview::moveSelectedTo(int64_t frame, bool snapped) {
    if (selected < 0)
        return false;
    if (snapped && snap)
        frame = snap(frame);
    frame = clampFor(selected, frame);
    SplitMarker& marker = marks[size_t(selected)];
    const bool moved = marker.frame != frame;
    marker.frame = frame;
    // A marker the user placed is no longer the splitter's guess.
    marker.confidence = 1.0f;
    update();
    if (moved)
        emit markersChanged();
    return moved;
}

bool WaveformOverview::moveSelectedBy(int64_t delta) {
    if (selected < 0)
        return false;
    return moveSelectedTo(marks[size_t(selected)].frame + delta, false);
}

QRectF WaveformOverview::waveRect() const {
    return QRectF(rect()).adjusted(1, handleHeight + 2, -1, -rulerHeight);
}

int64_t WaveformOverview::frameAt(double x) const {
    const QRectF r = waveRect();
    if (frames <= 0 || r.width() <= 0)
        return 0;
    const double share = std::clamp((x - r.left()) / r.width(), 0.0, 1.0);
    return std::clamp<int64_t>(shown.start + int64_t(std::llround(share * double(shown.length))), 0,
                               frames);
}

double WaveformOverview::xOf(int64_t frame) const {
    const QRectF r = waveRect();
    if (frames <= 0 || shown.length <= 0)
        return r.left();
    return r.left() + r.width() * double(frame - shown.start) / double(shown.length);
}

void WaveformOverview::setView(ViewWindow view) {
    if (view == shown)
        return;
    shown = view;
    update();
}

void WaveformOverview::zoomBy(double factor, int64_t anchor) {
    setView(shown.zoomed(factor, anchor, frames, int64_t(kClosestViewSeconds * rate)));
}

void WaveformOverview::wheelEvent(QWheelEvent* event) {
    const QPoint delta = event->angleDelta();
    const bool sideways = delta.x() != 0 || (event->modifiers() & Qt::ShiftModifier);
    const double notches = double(delta.x() != 0 ? delta.x() : delta.y()) / 120.0;
    if (frames <= 0 || notches == 0) {
        event->ignore();
        return;
    }
    if (sideways)
        // A notch moves a tenth of the view; rolling away moves on through the side.
        setView(shown.scrolled(-int64_t(notches * double(shown.length) / 10), frames));
    else
        // Two notches double the zoom, around the moment under the mouse.
        zoomBy(std::pow(2.0, notches / 2), frameAt(event->position().x()));
    event->accept();
}

int WaveformOverview::markerNear(double x) const {
    int best = -1;
    double bestDistance = kGrabDistance;
    for (size_t i = 0; i < marks.size(); ++i) {
        const double distance = std::abs(xOf(marks[i].frame) - x);
        if (distance <= bestDistance) {
            best = int(i);
            bestDistance = distance;
        }
    }
    return best;
}

void WaveformOverview::setHover(int64_t frame) {
    if (frame == hover)
        return;
    hover = frame;
    update();
    emit hoverChanged(hover);
}

void WaveformOverview::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF well = QRectF(rect()).adjusted(0.5, handleHeight + 1.5, -0.5, -rulerHeight + 0.5);
    p.setPen(QPen(rulerColour, 1));
    p.setBrush(wellColour);
    p.drawRoundedRect(well, 6, 6);

    const QRectF r = waveRect().adjusted(0, 4, 0, -4);
    const double mid = r.center().y();
    const double half = r.height() / 2;
    // One line per device pixel: the columns under it, lowest and highest.
    const qreal dpr = devicePixelRatioF();
    const int pixels = int(std::ceil(r.width() * dpr));
    const int columns = int(lows.size());
    p.setRenderHint(QPainter::Antialiasing, false);
    for (int px = 0; px < pixels && columns > 0; ++px) {
        // The frames under this pixel, then the columns holding them.
        const int64_t from = shown.start + int64_t(px) * shown.length / pixels;
        const int64_t to = shown.start + int64_t(px + 1) * shown.length / pixels;
        const int first = int(std::min<int64_t>(from * columns / frames, columns - 1));
        const int last = std::max(first + 1, int(to * columns / frames));
        float low = 1, high = -1;
        bool any = false;
        for (int c = first; c < last && c < columns; ++c) {
            if (!known[size_t(c)])
                continue;
            any = true;
            low = std::min(low, lows[size_t(c)]);
            high = std::max(high, highs[size_t(c)]);
        }
        const double x = r.left() + (px + 0.5) / dpr;
        if (!any) {
            p.setPen(QPen(pendingColour, 1.0 / dpr));
            p.drawLine(QPointF(x, mid - 0.5), QPointF(x, mid + 0.5));
            continue;
        }
        p.setPen(QPen(waveColour, 1.0 / dpr));
        const double top = mid - std::clamp(double(high), -1.0, 1.0) * half;
        const double bottom = mid - std::clamp(double(low), -1.0, 1.0) * half;
        p.drawLine(QPointF(x, top), QPointF(x, std::max(bottom, top + 1.0 / dpr)));
    }
    p.setRenderHint(QPainter::Antialiasing);

    // The time ruler: ticks at a round step that leaves room for the labels; the last label
    // is left out when it would run past the end.
    QFont small = font();
    small.setPixelSize(10);
    p.setFont(small);
    const double seconds = rate ? double(shown.length) / rate : 0;
    const double labelWidth = p.fontMetrics().horizontalAdvance(QStringLiteral("00:00")) + 14;
    int step = 3600;
    for (int candidate : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800}) {
        if (seconds <= 0 || r.width() * candidate / seconds >= labelWidth) {
            step = candidate;
            break;
        }
    }
    p.setPen(rulerColour);
    const int firstSecond = rate ? int((shown.start + rate - 1) / rate) : 0;
    const int lastSecond = rate ? int((shown.start + shown.length) / rate) : 0;
    for (int s = (firstSecond + step - 1) / step * step; s <= lastSecond && frames > 0; s += step) {
        const double x = xOf(int64_t(s) * rate);
        const QString label = QString::asprintf("%d:%02d", s / 60, s % 60);
        const double width = p.fontMetrics().horizontalAdvance(label);
        QRectF box(x - width / 2, well.bottom() + 4, width, rulerHeight - 4);
        if (s == 0)
            box.moveLeft(x);
        // A tick at an edge without room for its time would read as unlabelled.
        if (box.right() > well.right() || box.left() < well.left())
            continue;
        p.drawLine(QPointF(x, well.bottom()), QPointF(x, well.bottom() + 4));
        p.drawText(box, Qt::AlignLeft | Qt::AlignTop, label);
    }

    // Over the part not yet read: what is going on.
    if (!pending.isEmpty() && filled < columns) {
        int firstPending = 0;
        while (firstPending < columns && known[size_t(firstPending)])
            ++firstPending;
        const double left =
            std::max(r.left(), xOf(int64_t(firstPending) * frames / std::max(columns, 1)));
        QFont note = font();
        note.setPixelSize(13);
        p.setFont(note);
        p.setPen(markerColour);
        p.drawText(QRectF(left, r.top(), r.right() - left, r.height() / 2 - 6),
                   Qt::AlignCenter | Qt::AlignBottom, pending);
        p.setFont(small);
    }

    // Track numbers in the handles' row, right of each track's start.
    p.setPen(rulerColour);
    int64_t start = 0;
    for (size_t t = 0; t <= marks.size() && frames > 0; ++t) {
        const int64_t end = t < marks.size() ? marks[t].frame : frames;
        const double left = std::max(xOf(start) + (t ? 8 : 2), r.left() + 2);
        const double right = std::min(xOf(end) - 8, r.right() - 2);
        if (right - left > 10)
            p.drawText(QRectF(left, 0, right - left, handleHeight + 1),
                       Qt::AlignLeft | Qt::AlignVCenter, QString::number(t + 1));
        start = end;
    }

    // Suggestions under the markers: dotted, with a hollow handle, so they read as not in force.
    // Only what is in view: a marker beyond the edges is drawn when scrolled to.
    const auto outside = [&](double x) { return x < well.left() || x > well.right(); };
    for (int64_t frame : suggestions) {
        const double x = std::round(xOf(frame) * dpr) / dpr;
        if (outside(x))
            continue;
        p.setPen(QPen(doubtfulColour, 1.5, Qt::DotLine));
        p.drawLine(QPointF(x, well.top() + 1), QPointF(x, well.bottom() - 1));
        p.setPen(QPen(doubtfulColour, 1.2));
        p.setBrush(Qt::NoBrush);
        p.drawPolygon(
            QPolygonF({QPointF(x - 5, 1.5), QPointF(x + 5, 1.5), QPointF(x, handleHeight - 1)}));
    }

    // The markers: a line across the waveform and a handle above it. Doubtful ones dashed.
    for (size_t i = 0; i < marks.size(); ++i) {
        const SplitMarker& m = marks[i];
        const bool isSelected = int(i) == selected;
        const QColor colour = isSelected     ? selectedColour
                              : m.doubtful() ? doubtfulColour
                                             : markerColour;
        const double x = std::round(xOf(m.frame) * dpr) / dpr;
        if (outside(x))
            continue;
        QPen line(colour, isSelected ? 2.0 : 1.5);
        if (m.doubtful())
            line.setStyle(Qt::DashLine);
        p.setPen(line);
        p.drawLine(QPointF(x, well.top() + 1), QPointF(x, well.bottom() - 1));
        QPainterPath handle;
        handle.moveTo(x - 6, 1);
        handle.lineTo(x + 6, 1);
        handle.lineTo(x, handleHeight);
        handle.closeSubpath();
        // Above the well the handle sits on the light body: a cream one would vanish.
        p.setPen(QPen(wellColour, 1));
        p.setBrush(colour == markerColour ? wellColour : colour);
        p.drawPath(handle);
        p.setBrush(Qt::NoBrush);
    }

    // The time under the mouse.
    if (hover >= 0 && frames > 0) {
        const double x = xOf(hover);
        p.setPen(QPen(QColor(255, 255, 255, 90), 1));
        p.drawLine(QPointF(x, well.top() + 1), QPointF(x, well.bottom() - 1));
        const QString label = formatSideTime(hover, rate);
        const double width = p.fontMetrics().horizontalAdvance(label) + 10;
        QRectF box(x + 4, well.bottom() - 18, width, 15);
        if (box.right() > well.right() - 2)
            box.moveRight(x - 4);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x1E, 0x1B, 0x19, 220));
        p.drawRoundedRect(box, 3, 3);
        p.setPen(markerColour);
        p.drawText(box, Qt::AlignCenter, label);
    }

    if (hasFocus()) {
        p.setPen(QPen(selectedColour, 1.5));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(well.adjusted(1, 1, -1, -1), 5, 5);
    }
}

void WaveformOverview::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    const int near = markerNear(event->position().x());
    selectMarker(near);
    dragging = near;
    dragMoved = false;
    event->accept();
}

void WaveformOverview::mouseMoveEvent(QMouseEvent* event) {
    const double x = event->position().x();
    const QRectF r = waveRect();
    setHover(x >= r.left() && x <= r.right() ? frameAt(x) : -1);
    if (dragging >= 0 && (event->buttons() & Qt::LeftButton)) {
        // While dragging the marker follows the mouse; it snaps when it is let go.
        dragMoved = moveSelectedTo(frameAt(x), false) || dragMoved;
        event->accept();
    }
}

void WaveformOverview::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && dragging >= 0) {
        if (dragMoved) {
            const bool exact = event->modifiers() & Qt::ShiftModifier;
            moveSelectedTo(frameAt(event->position().x()), !exact);
        }
        dragging = -1;
        event->accept();
        return;
    }
    QWidget::mouseReleaseEvent(event);
}

void WaveformOverview::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || markerNear(event->position().x()) >= 0) {
        QWidget::mouseDoubleClickEvent(event);
        return;
    }
    const bool exact = event->modifiers() & Qt::ShiftModifier;
    addMarker(frameAt(event->position().x()), !exact);
    dragging = -1;
    event->accept();
}

void WaveformOverview::keyPressEvent(QKeyEvent* event) {
    const bool coarse = event->modifiers() & Qt::ShiftModifier;
    const int64_t step =
        int64_t(std::llround((coarse ? kCoarseStepSeconds : kFineStepSeconds) * rate));
    switch (event->key()) {
    case Qt::Key_Left:
        moveSelectedBy(-step);
        break;
    case Qt::Key_Right:
        moveSelectedBy(step);
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        removeSelected();
        break;
    case Qt::Key_Space:
        if (selected >= 0)
            emit playRequested(marks[size_t(selected)].frame);
        break;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        QWidget::keyPressEvent(event);
        return;
    case Qt::Key_Home:
        selectMarker(marks.empty() ? -1 : 0);
        break;
    case Qt::Key_End:
        selectMarker(int(marks.size()) - 1);
        break;
    case Qt::Key_Up:
    case Qt::Key_PageUp:
        // Up and Down step through the markers.
        selectMarker(std::max(selected - 1, marks.empty() ? -1 : 0));
        break;
    case Qt::Key_Down:
    case Qt::Key_PageDown:
        selectMarker(std::min(selected + 1, int(marks.size()) - 1));
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_Minus: {
        // Around the selected marker when it is in view, else around the middle.
        const int64_t middle = shown.start + shown.length / 2;
        const int64_t marker = selected >= 0 ? marks[size_t(selected)].frame : -1;
        const bool inView = marker >= shown.start && marker <= shown.start + shown.length;
        zoomBy(event->key() == Qt::Key_Minus ? 0.5 : 2.0, inView ? marker : middle);
        event->accept();
        return;
    }
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    // The marker the keys work on stays in sight.
    if (selected >= 0)
        setView(shown.showing(marks[size_t(selected)].frame, frames));
    event->accept();
}

void WaveformOverview::leaveEvent(QEvent* event) {
    setHover(-1);
    QWidget::leaveEvent(event);
}

} // namespace waxline::ui
