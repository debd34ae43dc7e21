#include "ui/widgets/Picture.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>

namespace waxline::ui {

namespace {

QString artworkPath(const QString& name) {
    return QStringLiteral(":/waxline/artwork/%1.svg").arg(name);
}

QHash<QString, std::shared_ptr<QSvgRenderer>>& renderers() {
    static QHash<QString, std::shared_ptr<QSvgRenderer>> cache;
    return cache;
}

struct RenderKey {
    QString name;
    int dprPercent;
    bool operator==(const RenderKey&) const = default;
};

size_t qHash(const RenderKey& key, size_t seed = 0) {
    return qHashMulti(seed, key.name, key.dprPercent);
}

QHash<RenderKey, QImage>& renders() {
    static QHash<RenderKey, QImage> cache;
    return cache;
}

} // namespace

bool artworkExists(const QString& name) {
    return !name.isEmpty() && QFile::exists(artworkPath(name));
}

Picture Picture::named(const QString& name) {
    Picture picture;
    if (name.isEmpty())
        return picture;
    auto& cache = renderers();
    auto found = cache.find(name);
    if (found == cache.end()) {
        auto renderer = std::make_shared<QSvgRenderer>(artworkPath(name));
        if (!renderer->isValid())
            return picture;
        found = cache.insert(name, renderer);
    }
    picture.pictureName = name;
    picture.renderer = *found;
    return picture;
}

Picture Picture::fromImage(const QImage& image, const QString& name) {
    Picture picture;
    picture.pictureName = name;
    picture.bitmap = image;
    return picture;
}

QSize Picture::size() const {
    if (renderer)
        return renderer->defaultSize();
    return (QSizeF(bitmap.size()) / bitmap.devicePixelRatio()).toSize();
}

QImage Picture::image(qreal dpr) const {
    if (!renderer)
        return bitmap;
    const RenderKey key{pictureName, int(std::lround(dpr * 100))};
    auto& cache = renders();
    if (auto found = cache.find(key); found != cache.end())
        return *found;
    // Rendered from the vectors at the device resolution, never scaled from a bitmap.
    const QSize pixels = (QSizeF(renderer->defaultSize()) * dpr).toSize();
    QImage image(pixels, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer->render(&painter, QRectF(QPointF(0, 0), QSizeF(pixels)));
    }
    image.setDevicePixelRatio(dpr);
    cache.insert(key, image);
    return image;
}

bool Picture::operator==(const Picture& other) const {
    return pictureName == other.pictureName && renderer == other.renderer &&
           bitmap.cacheKey() == other.bitmap.cacheKey();
}

} // namespace waxline::ui
