#pragma once

#include <QColor>
#include <QImage>

// The darkened and grey variants of a button picture.
namespace waxline::ui {

// Pictures must be bitmaps of 4 bytes a pixel in the order red, green, blue, alpha
// (QImage::Format_RGBA8888 or its premultiplied form); anything else logs
// "not a bitmap image rep" and gives a null image. Results keep the source's format,
// size and device-pixel ratio; alpha is copied unchanged.

// Each colour channel loses trunc(256 - c * 255) for the colour's component c; results
// below 1 become 0. A component of 1.0 still darkens by 1.
QImage darkenedImageWithColor(const QImage& source, const QColor& colour);

// (r + g + b - (dr + dg + db)) / 3 with the same amounts, truncated toward zero, written to
// all three channels; results below 1 become 0.
QImage grayImageWithColor(const QImage& source, const QColor& colour);

} // namespace waxline::ui
