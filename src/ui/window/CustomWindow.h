#pragma once

#include <QPointer>
#include <QRegion>
#include <QTimer>
#include <QWidget>

namespace waxline::ui {

// Where a dragged window goes: the mouse position minus the offset taken at the press,
// except that its top edge stays at or below the top of the screen. The other edges are
// not limited, so the window may be pushed partly off the screen sideways and downwards.
QPoint windowOriginForDrag(QPointF mouseGlobal, QPointF pressOffset, QRect screen);

// The inside of a picture: its pixels of alpha 128 or more, in the picture's logical pixels.
QRegion shapeOfPicture(const QImage& picture);

// The one main window: borderless, translucent, shaped by the shown panel's picture, its
// frame kept between runs under "WXAudioConverter". Shows one panel view at a time.
// Main thread only.
class CustomWindow : public QWidget {
    Q_OBJECT
public:
    static constexpr const char* frameKey = "WXAudioConverter";

    explicit CustomWindow(QWidget* parent = nullptr);

    // Shows this view (made a child of the window), hiding the one shown before.
    void setContentView(QWidget* view);
    QWidget* contentView() const { return content; }
    // Re-shapes the window from the shown panel's background picture.
    void updateShape();

    void saveFrame() const;
    void restoreFrame();

protected:
    void moveEvent(QMoveEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QPointer<QWidget> content;
    QTimer saveTimer;
};

} // namespace waxline::ui
