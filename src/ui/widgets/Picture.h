#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <memory>

class QSvgRenderer;

namespace waxline::ui {

// A named picture of the artwork (an SVG under :/waxline/artwork), rendered at whatever
// device-pixel ratio the screen asks for, or a bitmap made in code. Main thread only.
class Picture {
public:
    Picture() = default;

    // The artwork of that name, or a null picture when there is none.
    static Picture named(const QString& name);
    // A picture that is this bitmap at every scale (its own device-pixel ratio decides its size).
    static Picture fromImage(const QImage& image, const QString& name = {});

    bool isNull() const { return !renderer && bitmap.isNull(); }
    QString name() const { return pictureName; }
    // Size in logical pixels.
    QSize size() const;
    // Rendered at size() × dpr, in RGBA8888 (premultiplied) byte order, carrying dpr.
    QImage image(qreal dpr) const;

    bool operator==(const Picture& other) const;

private:
    QString pictureName;
    std::shared_ptr<QSvgRenderer> renderer;
    QImage bitmap;
};

// True when the artwork holds a picture of that name.
bool artworkExists(const QString& name);

} // namespace waxline::ui
