#include "ui/widgets/SKDarkenedImage.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using waxline::ui::darkenedImageWithColor;
using waxline::ui::grayImageWithColor;

namespace {

using Rgba = std::array<int, 4>;

QImage imageOf(const std::vector<Rgba>& pixels, QImage::Format format = QImage::Format_RGBA8888) {
    QImage image(int(pixels.size()), 1, format);
    uchar* row = image.scanLine(0);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        for (int c = 0; c < 4; ++c)
            row[4 * i + c] = uchar(pixels[i][c]);
    return image;
}

std::vector<Rgba> pixelsOf(const QImage& image) {
    std::vector<Rgba> pixels;
    const uchar* row = image.constScanLine(0);
    for (int i = 0; i < image.width(); ++i)
        pixels.push_back({row[4 * i], row[4 * i + 1], row[4 * i + 2], row[4 * i + 3]});
    return pixels;
}

const std::vector<Rgba> source = {{200, 100, 50, 255}, {0, 10, 255, 128}, {1, 1, 0, 7}};

} // namespace

// Darkening takes trunc(256 - 255c) from each colour component, c = 1 taking 1 and c = 0 taking
// 256, and keeps alpha; grey averages the darkened channels, truncated toward zero.
TEST(SKDarkenedImage, DarkenSubtractsPerChannelAndGreyAveragesTheResult) {
    struct Case {
        const char* what;
        QColor colour;
        std::vector<Rgba> darkened;
        std::vector<Rgba> grey; // empty: not checked
    };
    const Case cases[] = {
        // (350 - 3) / 3 = 115; (265 - 3) / 3 = 87; (2 - 3) / 3 = 0.
        {"white still darkens by one",
         QColor::fromRgbF(1, 1, 1),
         {{199, 99, 49, 255}, {0, 9, 254, 128}, {0, 0, 0, 7}},
         {{115, 115, 115, 255}, {87, 87, 87, 128}, {0, 0, 0, 7}}},
        // (350 - 258) / 3 = 30; (265 - 258) / 3 = 2; (2 - 258) / 3 is negative, so 0.
        {"magenta empties green",
         QColor::fromRgbF(1, 0, 1),
         {{199, 0, 49, 255}, {0, 0, 254, 128}, {0, 0, 0, 7}},
         {{30, 30, 30, 255}, {2, 2, 2, 128}, {0, 0, 0, 7}}},
        {"black empties every channel",
         QColor::fromRgbF(0, 0, 0),
         {{0, 0, 0, 255}, {0, 0, 0, 128}, {0, 0, 0, 7}},
         {}},
        {"the colour's alpha plays no part",
         QColor::fromRgbF(1, 1, 1, 0.5f),
         {{199, 99, 49, 255}, {0, 9, 254, 128}, {0, 0, 0, 7}},
         {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(pixelsOf(darkenedImageWithColor(imageOf(source), c.colour)), c.darkened)
            << c.what;
        if (!c.grey.empty()) {
            EXPECT_EQ(pixelsOf(grayImageWithColor(imageOf(source), c.colour)), c.grey) << c.what;
        }
    }
}

TEST(SKDarkenedImage, ResultKeepsFormatAndScale) {
    QImage premultiplied = imageOf({{10, 20, 30, 255}}, QImage::Format_RGBA8888_Premultiplied);
    premultiplied.setDevicePixelRatio(2.0);
    const QImage result = darkenedImageWithColor(premultiplied, Qt::white);
    EXPECT_EQ(result.format(), QImage::Format_RGBA8888_Premultiplied);
    EXPECT_EQ(result.devicePixelRatio(), 2.0);
    EXPECT_EQ(pixelsOf(result), (std::vector<Rgba>{{9, 19, 29, 255}}));
}

TEST(SKDarkenedImage, NonBitmapPicturesGiveNothing) {
    QImage rgb32(2, 2, QImage::Format_RGB32);
    rgb32.fill(Qt::red);
    QImage indexed(2, 2, QImage::Format_Indexed8);
    for (const QImage& image : {QImage(), rgb32, indexed}) {
        EXPECT_TRUE(darkenedImageWithColor(image, Qt::white).isNull());
        EXPECT_TRUE(grayImageWithColor(image, Qt::white).isNull());
    }
}
