#include "ui/widgets/SKDarkenedImage.h"

#include <QDebug>

#include <cmath>

namespace waxline::ui {

namespace {

bool isRgbaBitmap(const QImage& image) {
    const auto format = image.format();
    return !image.isNull() &&
           (format == QImage::Format_RGBA8888 || format == QImage::Format_RGBA8888_Premultiplied);
}

struct Amounts {
    int r, g, b;
};

Amounts amountsFor(const QColor& colour) {
    const QColor rgb = colour.toRgb();
    auto amount = [](float c) { return int(std::trunc(256.0f - c * 255.0f)); };
    return {amount(rgb.redF()), amount(rgb.greenF()), amount(rgb.blueF())};
}

int floorAtZero(int value) {
    return value < 1 ? 0 : value;
}

template <typename PixelOp> QImage mapPixels(const QImage& source, PixelOp op) {
    if (!isRgbaBitmap(source)) {
        qWarning("not a bitmap image rep");
        return {};
    }
    QImage result(source.size(), source.format());
    result.setDevicePixelRatio(source.devicePixelRatio());
    for (int y = 0; y < source.height(); ++y) {
        const uchar* in = source.constScanLine(y);
        uchar* out = result.scanLine(y);
        for (int x = 0; x < source.width(); ++x)
            op(in + 4 * x, out + 4 * x);
    }
    return result;
}

} // namespace

QImage darkenedImageWithColor(const QImage& source, const QColor& colour) {
    const Amounts d = amountsFor(colour);
    return mapPixels(source, [d](const uchar* in, uchar* out) {
        out[0] = uchar(floorAtZero(in[0] - d.r));
        out[1] = uchar(floorAtZero(in[1] - d.g));
        out[2] = uchar(floorAtZero(in[2] - d.b));
        out[3] = in[3];
    });
}

QImage grayImageWithColor(const QImage& source, const QColor& colour) {
    const Amounts d = amountsFor(colour);
    return mapPixels(source, [d](const uchar* in, uchar* out) {
        const int grey = floorAtZero((in[0] + in[1] + in[2] - (d.r + d.g + d.b)) / 3);
        out[0] = out[1] = out[2] = uchar(grey);
        out[3] = in[3];
    });
}

} // namespace waxline::ui
