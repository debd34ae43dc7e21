#pragma once

#include "ui/widgets/Picture.h"

#include <QAbstractButton>
#include <QImage>

class QPainter;

namespace waxline::ui {

class WXTextView;

// Whether a point (in the picture's logical pixels, rows from the top) lands on the picture:
// its alpha byte is 128 or more. Pictures without alpha, or not 8 bits a sample, hit
// everywhere inside the bounds; outside the bounds nothing hits.
bool shapedHit(const QImage& bitmap, QPointF point, QSize bounds);

// Where a point of a button stretched to `width` lies in its picture `pictureWidth` wide: the
// rounded ends (half the height each) keep their place, the middle maps to the picture's middle.
double pointInPicture(double x, int width, int pictureWidth, int height);

// Draws a pill picture at the given logical size, its ends unstretched.
void drawStretchedPill(QPainter& painter, const QImage& picture, QSize size);

// A button drawn from a picture of any shape: only its opaque pixels take clicks, a
// click elsewhere falls through to the panel. The pressed picture follows the palette's
// highlight colour ("Aqua", or "Graphite" when that colour is a grey); a localised caption
// lies over it. Main thread only.
class SKShapedButton : public QAbstractButton {
    Q_OBJECT
    Q_PROPERTY(QString image READ imageName WRITE setImageName)
    Q_PROPERTY(QString alternateImage READ alternateImageName WRITE setAlternateImageName)
public:
    explicit SKShapedButton(QWidget* parent = nullptr);

    Picture image() const { return normal; }
    void setImage(const Picture& picture);
    Picture alternateImage() const { return alternate; }
    void setAlternateImage(const Picture& picture);

    QString imageName() const { return normal.name(); }
    void setImageName(const QString& name);
    QString alternateImageName() const { return alternate.name(); }
    void setAlternateImageName(const QString& name);

    QString imageBaseName() const { return baseName; }
    void setImageBaseName(const QString& name);
    void updateImageBaseName();

    // Once the form has set its properties: the tint and the caption.
    void awakeFromNib();
    // Shows the catalogue text of another "IDS_BUTTON_" key as the caption.
    void setCaptionKey(const QString& key);
    bool graphiteTint() const;
    void controlTintChanged();

    WXTextView* caption() const { return captionView; }
    // The picture the button shows in its present state, at the given device-pixel ratio.
    QImage pictureToDraw(qreal dpr) const;

    // The picture's size, or wider when the caption needs it; at least the caption's room.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QImage hitBitmap() const;
    QRect captionFrame() const;
    int captionRoom() const;

    Picture normal;
    Picture alternate;
    QString baseName;
    WXTextView* captionView = nullptr;
    bool focusFromKeyboard = false;
    mutable QImage hitCache;
};

} // namespace waxline::ui
