#include "ui/widgets/SKShapedButton.h"

#include "ui/Catalogue.h"
#include "ui/widgets/CenterTextField.h"
#include "ui/widgets/FocusRing.h"
#include "ui/widgets/SKDarkenedImage.h"
#include "ui/widgets/WXTextView.h"

#include <QApplication>
#include <QFocusEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
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

double pointInPicture(double x, int width, int pictureWidth, int height) {
    if (width == pictureWidth)
        return x;
    const double end = height / 2.0;
    if (x < end)
        return x;
    if (x >= width - end)
        return x - (width - pictureWidth);
    // The middle of a stretched pill is its picture's middle column, repeated.
    return pictureWidth / 2.0;
}

void drawStretchedPill(QPainter& painter, const QImage& picture, QSize size) {
    const qreal dpr = picture.devicePixelRatio();
    const QSizeF logical = QSizeF(picture.size()) / dpr;
    if (qFuzzyCompare(logical.width(), qreal(size.width()))) {
        painter.drawImage(QPointF(0, 0), picture);
        return;
    }
    // The rounded ends keep their shape; the straight middle is stretched to the width.
    const qreal end = std::min(logical.height() / 2.0, logical.width() / 2.0);
    const qreal h = logical.height();
    const qreal w = size.width();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(0, 0, end, h), picture, QRectF(0, 0, end * dpr, h * dpr));
    painter.drawImage(QRectF(end, 0, w - 2 * end, h), picture,
                      QRectF(end * dpr, 0, (logical.width() - 2 * end) * dpr, h * dpr));
    painter.drawImage(QRectF(w - end, 0, end, h), picture,
                      QRectF((logical.width() - end) * dpr, 0, end * dpr, h * dpr));
}

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
    // In a row of buttons: no wider than it wants, narrower down to its caption's room.
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
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
    delete captionView;
    captionView = new WXTextView(this);
    captionView->setObjectName(QStringLiteral("caption"));
    captionView->setGeometry(captionFrame());
    captionView->setAlignment(Qt::AlignCenter);
    captionView->setEnabled(isEnabled());
    captionView->setAutoFillBackground(false);
    if (title.startsWith(QLatin1String("IDS_BUTTON_"))) {
        const QString value = localizedKey(title);
        if (!value.isNull())
            captionView->setText(value);
        // The caption's "&" mark underlines a letter; with the button as its buddy, Alt and
        // that letter press the button.
        captionView->setBuddy(this);
        CenterTextField(captionView);
    }
    captionView->show();
    updateGeometry();
}

void SKShapedButton::setCaptionKey(const QString& key) {
    if (key == text())
        return;
    setText(key);
    awakeFromNib();
}

QRect SKShapedButton::captionFrame() const {
    QRect frame = rect();
    if (text().startsWith(QLatin1String("IDS_BUTTON_BOTTOM_")))
        frame = QRect(0, height() / 2, width(), height() / 2);
    // Pictures with a glyph at their left end (Record, Stop) centre the caption beside it.
    frame.setLeft(frame.left() + property("captionInset").toInt());
    return frame;
}

// The width the caption needs with the pill's rounded ends and any glyph beside it.
int SKShapedButton::captionRoom() const {
    if (!captionView)
        return 0;
    constexpr int endPadding = 14;
    return captionView->sizeHint().width() + property("captionInset").toInt() + 2 * endPadding;
}

void SKShapedButton::resizeEvent(QResizeEvent* event) {
    QAbstractButton::resizeEvent(event);
    hitCache = {};
    if (captionView) {
        captionView->setGeometry(captionFrame());
        CenterTextField(captionView);
    }
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
        drawStretchedPill(painter, picture, size());
    painter.setOpacity(1.0);
    if (hasFocus() && focusFromKeyboard) {
        // The focus ring follows the picture's outline: a pill, a circle or a rounded card.
        const QRectF ring = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
        const double radius = height() <= 50 ? ring.height() / 2 : 14.0;
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(focusRingColour(), 3.0));
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
    const QImage bitmap = hitBitmap();
    const int pictureWidth = bitmap.isNull() ? width() : bitmap.width();
    const QPointF inPicture(pointInPicture(pos.x(), width(), pictureWidth, height()), pos.y());
    if (pos.x() < 0 || pos.x() >= width())
        return false;
    return shapedHit(bitmap, inPicture, QSize(pictureWidth, height()));
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
    const QSize picture = normal.isNull() ? QSize(144, 44) : normal.size();
    return QSize(std::max(picture.width(), captionRoom()), picture.height());
}

QSize SKShapedButton::minimumSizeHint() const {
    const QSize picture = normal.isNull() ? QSize(144, 44) : normal.size();
    if (!captionView)
        return picture;
    return QSize(std::max(picture.height(), captionRoom()), picture.height());
}

} // namespace waxline::ui
