#include "ui/window/CustomWindow.h"

#include "ui/panels/CustomView.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>

namespace waxline::ui {

namespace {

constexpr QSize panelSize{720, 480};

QSettings frameSettings() {
    return QSettings(QSettings::UserScope, QStringLiteral("Waxline"), QStringLiteral("waxline"));
}

bool onSomeScreen(const QRect& frame) {
    const auto screens = QGuiApplication::screens();
    for (const QScreen* screen : screens)
        if (screen->geometry().intersects(frame))
            return true;
    return false;
}

} // namespace

QPoint windowOriginForDrag(QPointF mouseGlobal, QPointF pressOffset, QRect screen) {
    // Screen coordinates count y downwards, so "above the top" is a y below the screen's.
    QPointF origin = mouseGlobal - pressOffset;
    if (origin.y() < screen.top())
        origin.setY(screen.top());
    return origin.toPoint();
}

QRegion shapeOfPicture(const QImage& picture) {
    if (picture.isNull())
        return {};
    const QImage alpha = picture.convertToFormat(QImage::Format_RGBA8888);
    // Index 1 is colour1 (black), which a bitmap region takes as inside.
    QImage mask(alpha.size(), QImage::Format_Mono);
    mask.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    mask.fill(0);
    for (int y = 0; y < alpha.height(); ++y) {
        const uchar* row = alpha.constScanLine(y);
        for (int x = 0; x < alpha.width(); ++x)
            mask.setPixel(x, y, row[4 * x + 3] >= 128 ? 1 : 0);
    }
    return QRegion(QBitmap::fromImage(mask));
}

CustomWindow::CustomWindow(QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint) {
    // The picture's transparent parts are outside the window; the normal window level.
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    setWindowOpacity(1.0);
    setFixedSize(panelSize);
    saveTimer.setSingleShot(true);
    saveTimer.setInterval(300);
    connect(&saveTimer, &QTimer::timeout, this, &CustomWindow::saveFrame);
    restoreFrame();
}

void CustomWindow::setContentView(QWidget* view) {
    if (content == view)
        return;
    if (content)
        content->hide();
    content = view;
    if (!view)
        return;
    view->setParent(this);
    view->move(0, 0);
    view->show();
    if (auto panel = qobject_cast<CustomView*>(view))
        connect(panel, &CustomView::backgroundImageChanged, this, &CustomWindow::updateShape,
                Qt::UniqueConnection);
    updateShape();
}

void CustomWindow::updateShape() {
    // The offscreen platform (screenshots, tests) has no window shapes to set.
    if (QGuiApplication::platformName() == QLatin1String("offscreen"))
        return;
    auto panel = qobject_cast<CustomView*>(content.data());
    if (!panel || panel->backgroundImage().isNull()) {
        clearMask();
        return;
    }
    setMask(shapeOfPicture(panel->backgroundImage().image(1.0)));
}

void CustomWindow::saveFrame() const {
    frameSettings().setValue(QLatin1String(frameKey), geometry());
}

void CustomWindow::restoreFrame() {
    const QRect frame = frameSettings().value(QLatin1String(frameKey)).toRect();
    if (frame.isValid() && onSomeScreen(frame))
        move(frame.topLeft());
}

void CustomWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    saveTimer.start();
}

void CustomWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // Without a window manager nobody gives a new window the keyboard: it asks for it
    // itself, so that Tab and the focus ring work from the first key.
    activateWindow();
}

void CustomWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    saveTimer.stop();
    saveFrame();
}

} // namespace waxline::ui
