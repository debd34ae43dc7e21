#include "ui/widgets/MeterScale.h"

#include "ui/widgets/MeteringView.h"
#include "util/Decibels.h"

#include <QLocale>
#include <QPainter>

#include <cmath>

namespace waxline::ui {

namespace {

const QColor tickColour(0x8C, 0x74, 0x58);
const QColor figureColour(0x5E, 0x4A, 0x3B);
constexpr double tickLength = 5.0;
// A meter's bar stands on its 1 px frame and ends a pixel above its mapped height.
constexpr double barBase = 2.0;
// Below this a meter shows nothing: the read-out says silence.
constexpr double silenceDb = -99.9;

QString withTypographicMinus(QString text) {
    return text.replace(QLatin1Char('-'), QChar(0x2212));
}

} // namespace

double meterScaleY(double db, double minValue, double maxValue, int height) {
    const double amplitude = dbamp(db);
    return height - (amplitude - minValue) / (maxValue - minValue) * height;
}

QString formatPeak(double db) {
    if (!std::isfinite(db) || db < silenceDb)
        return QStringLiteral("\u2212\u221E");
    const double tenths = std::round(db * 10.0) / 10.0;
    return withTypographicMinus(QLocale().toString(tenths == 0.0 ? 0.0 : tenths, 'f', 1));
}

MeterScale::MeterScale(QWidget* parent)
    : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void MeterScale::setMeter(MeteringView* newMeter) {
    meter = newMeter;
    update();
}

double MeterScale::yForMark(double db) const {
    if (!meter)
        return 0.0;
    return meter->y() - y() +
           meterScaleY(db, meter->minValue(), meter->maxValue(), meter->height()) - barBase;
}

void MeterScale::paintEvent(QPaintEvent*) {
    if (!meter)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont figures = font();
    figures.setPixelSize(9);
    figures.setBold(true);
    painter.setFont(figures);
    const double w = width();
    for (double db : meterScaleMarks) {
        const double y = std::round(yForMark(db)) + 0.5;
        painter.setPen(QPen(tickColour, 1.0));
        painter.drawLine(QPointF(0, y), QPointF(tickLength, y));
        painter.drawLine(QPointF(w - tickLength, y), QPointF(w, y));
        painter.setPen(figureColour);
        const QString figure = withTypographicMinus(QLocale().toString(int(db)));
        painter.drawText(QRectF(tickLength, y - 6, w - 2 * tickLength, 12), Qt::AlignCenter,
                         figure);
    }
}

double PeakHold::update(double db) {
    if (db >= held || ++age > holdTicks) {
        held = db;
        age = 0;
    }
    return held;
}

} // namespace waxline::ui
