#include "ui/widgets/SKShapedButton.h"

#include "ui/Catalogue.h"
#include "ui/widgets/CenterTextField.h"
#include "ui/widgets/SKDarkenedImage.h"
#include "ui/widgets/WXTextView.h"

#include <QApplication>
#include <QFocusEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace waxline::ui {

namespace {

// The dissolve fraction 0.9 as the single-precision value it has always been drawn with.
constexpr double dissolveFraction = double(0.9f);

QColor highlightColour(const QWidget* widget) {
    return widget->palette().color(QPalette::Active, QPalette::Highlight);
}

QColor withAlpha(QColor colour, double alpha) {
    colour.setAlphaF(float(alpha));
    return colour;
}

} // namespace

bool shapedHit(const QImage& bitmap, QPointF point, QSize bounds) {
    if (point.x() < 0 || point.y() < 0 || point.x() >= bounds.width() ||
        point.y() >= bounds.height())
        return false;
    if (bitmap.isNull() || !bitmap.hasAlphaChannel())
        return true;
    const int bitsPerPixel = bitmap.depth();
    constexpr int samplesPerPixel = 4;
    if (bitsPerPixel / samplesPerPixel != 8) {
        qWarning("Bits per Pixel/Samples per Pixel != 8: %i/%i", bitsPerPixel, samplesPerPixel);
        return true;
    }
    const auto x = qint64(std::trunc(point.x()));
    const auto y = qint64(std::trunc(point.y()));
    const qint64 bytesPerRow = bitmap.bytesPerLine();
    const qint64 offset = bytesPerRow * y + bitsPerPixel * x / 8 + 3;
    // The last byte of the data is the limit: reading at bytes per row × rows would overrun.
    if (offset < 0 || offset >= bytesPerRow * bitmap.height())
        return true;
    return bitmap.constBits()[offset] >= 128;
}

SKShapedButton::SKShapedButton(QWidget* parent)
    : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
}

void SKShapedButton::setImage(const Picture& picture) {
    normal = picture;
    hitCache = {};
    update();
    updateGeometry();
}

void SKShapedButton::setAlternateImage(const Picture& picture) {
    alternate = picture;
    updateImageBaseName();
    update();
}

void SKShapedButton::setImageName(const QString& name) {
    setImage(Picture::named(name));
}

void SKShapedButton::setAlternateImageName(const QString& name) {
    setAlternateImage(Picture::named(name));
}

void SKShapedButton::setImageBaseName(const QString& name) {
    if (name == baseName)
        return;
    baseName = name;
}

void SKShapedButton::updateImageBaseName() {
    const QString name = alternate.name();
    const auto at = name.indexOf(QLatin1String("Aqua"));
    if (at >= 0)
        setImageBaseName(name.left(at));
}

void SKShapedButton::awakeFromNib() {
    updateImageBaseName();
    controlTintChanged();
    const QString title = text();
    if (title.isEmpty())
        return;
    QRect frame = rect();
    if (title.startsWith(QLatin1String("IDS_BUTTON_BOTTOM_")))
        frame = QRect(0, height() / 2, width(), height() / 2);
    // Pictures with a glyph at their left end (Record, Stop) centre the caption beside it.
    frame.setLeft(frame.left() + property("captionInset").toInt());
    delete captionView;
    captionView = new WXTextView(this);
    captionView->setObjectName(QStringLiteral("caption"));
    captionView->setGeometry(frame);
    captionView->setAlignment(Qt::AlignCenter);
    captionView->setEnabled(isEnabled());
    captionView->setAutoFillBackground(false);
    if (title.startsWith(QLatin1String("IDS_BUTTON_"))) {
        const QString value = localizedKey(title);
        if (!value.isNull())
            captionView->setText(value);
        CenterTextField(captionView);
    }
    captionView->show();
}

bool SKShapedButton::graphiteTint() const {
    return highlightColour(this).hsvSaturationF() < 0.2f;
}

void SKShapedButton::controlTintChanged() {
    if (baseName.isEmpty())
        return;
    Picture tinted = Picture::named(
        baseName + (graphiteTint() ? QStringLiteral("Graphite") : QStringLiteral("Aqua")));
    if (tinted.isNull() && !normal.isNull()) {
        const QImage darker = darkenedImageWithColor(normal.image(devicePixelRatioF()),
                                                     withAlpha(highlightColour(this), 0.5));
        tinted = Picture::fromImage(darker, baseName);
    }
    // Set directly: the base name stays as it is.
    alternate = tinted;
    update();
}

QImage SKShapedButton::pictureToDraw(qreal dpr) const {
    const bool showsState = isCheckable();
    const bool on = showsState && isChecked();
    const QImage normalImage = normal.image(dpr);
    const QImage alternateImage = alternate.isNull() ? normalImage : alternate.image(dpr);
    if (!isEnabled())
        return on ? alternateImage
                  : grayImageWithColor(normalImage, withAlpha(highlightColour(this), 1.0));
    if (on || isDown()) {
        if (isDown() && showsState)
            return darkenedImageWithColor(alternateImage, withAlpha(highlightColour(this), 0.5));
        return alternateImage;
    }
    return normalImage;
}

void SKShapedButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(dissolveFraction);
    const QImage picture = pictureToDraw(devicePixelRatioF());
    if (!picture.isNull())
        painter.drawImage(QPointF(0, 0), picture);
    painter.setOpacity(1.0);
    if (hasFocus() && focusFromKeyboard) {
        // The focus ring follows the picture's outline: a pill, a circle or a rounded card.
        const QRectF ring = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
        const double radius = height() <= 50 ? ring.height() / 2 : 14.0;
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(highlightColour(this), 3.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(ring, radius, radius);
    }
}

// Rendered at one pixel a point, so that a point's coordinates are its pixel's at any scale.
QImage SKShapedButton::hitBitmap() const {
    if (hitCache.isNull() && !normal.isNull())
        hitCache = normal.image(1.0);
    return hitCache;
}

bool SKShapedButton::hitButton(const QPoint& pos) const {
    return shapedHit(hitBitmap(), QPointF(pos), size());
}

void SKShapedButton::changeEvent(QEvent* event) {
    QAbstractButton::changeEvent(event);
    switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::ApplicationPaletteChange:
        controlTintChanged();
        break;
    case QEvent::EnabledChange:
        if (captionView)
            captionView->setEnabled(isEnabled());
        break;
    default:
        break;
    }
}

void SKShapedButton::focusInEvent(QFocusEvent* event) {
    focusFromKeyboard = event->reason() != Qt::MouseFocusReason;
    QAbstractButton::focusInEvent(event);
}

void SKShapedButton::focusOutEvent(QFocusEvent* event) {
    focusFromKeyboard = false;
    QAbstractButton::focusOutEvent(event);
}

QSize SKShapedButton::sizeHint() const {
    return normal.isNull() ? QSize(144, 44) : normal.size();
}

} // namespace waxline::ui
