#include "ui/widgets/SKShapedButton.h"

#include "ui/panels/CustomView.h"
#include "ui/widgets/WXTextView.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using waxline::ui::CustomView;
using waxline::ui::Picture;
using waxline::ui::shapedHit;
using waxline::ui::SKShapedButton;

namespace {

// 4 × 4, opaque except: (3, 3) fully transparent, (1, 1) alpha 128, (2, 1) alpha 127.
QImage hitPicture() {
    QImage image(4, 4, QImage::Format_RGBA8888);
    image.fill(QColor(200, 120, 40, 255));
    image.setPixelColor(3, 3, QColor(0, 0, 0, 0));
    image.setPixelColor(1, 1, QColor(200, 120, 40, 128));
    image.setPixelColor(2, 1, QColor(200, 120, 40, 127));
    return image;
}

} // namespace

TEST(SKShapedButton, HitTestReadsTheAlphaByte) {
    const QImage picture = hitPicture();
    const QSize bounds(4, 4);
    struct Case {
        QPointF point;
        bool hit;
        const char* what;
    };
    const Case cases[] = {
        {{1.5, 1.9}, true, "alpha 128 hits"},
        {{2.2, 1.0}, false, "alpha 127 misses"},
        {{3.4, 3.9}, false, "transparent corner misses"},
        {{0.1, 0.0}, true, "opaque pixel"},
        {{4.0, 1.0}, false, "right of the bounds"},
        {{-0.5, 1.0}, false, "left of the bounds"},
        {{1.0, 4.0}, false, "below the bounds"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(shapedHit(picture, c.point, bounds), c.hit) << c.what;
}

TEST(SKShapedButton, PicturesItCannotReadHitEverywhereInside) {
    QImage opaque(4, 4, QImage::Format_RGB32);
    opaque.fill(Qt::black);
    QImage wide(4, 4, QImage::Format_RGBA64);
    wide.fill(Qt::transparent);
    for (const QImage& picture : {QImage(), opaque, wide}) {
        EXPECT_TRUE(shapedHit(picture, {0.5, 0.5}, {4, 4}));
        EXPECT_FALSE(shapedHit(picture, {5.0, 0.5}, {4, 4}));
    }
}

TEST(SKShapedButton, ClickOnATransparentCornerReachesThePanel) {
    CustomView panel;
    panel.resize(100, 100);
    panel.show();
    auto button = new SKShapedButton(&panel);
    button->setImage(Picture::fromImage(hitPicture()));
    button->setGeometry(10, 10, 4, 4);
    QSignalSpy clicks(button, &SKShapedButton::clicked);

    // (QTest takes a null point for "the centre", so no test clicks at (0, 0).)
    QTest::mousePress(button, Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_FALSE(button->isDown());
    EXPECT_EQ(panel.dragInitialLocation(), QPointF(panel.mapToGlobal(QPoint(13, 13)) - panel.pos()))
        << "the panel took the press and began a drag";
    QTest::mouseRelease(button, Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_EQ(clicks.count(), 0);

    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(0, 2));
    EXPECT_EQ(clicks.count(), 1);
}

TEST(SKShapedButton, RoundArtworkLetsItsCornersThrough) {
    SKShapedButton help;
    help.setImageName(QStringLiteral("btn_Help"));
    help.resize(help.sizeHint());
    help.show();
    ASSERT_EQ(help.size(), QSize(36, 36));
    QSignalSpy clicks(&help, &SKShapedButton::clicked);
    QTest::mouseClick(&help, Qt::LeftButton, {}, QPoint(1, 1));
    EXPECT_EQ(clicks.count(), 0) << "corner of the circle";
    QTest::mouseClick(&help, Qt::LeftButton, {}, QPoint(18, 18));
    EXPECT_EQ(clicks.count(), 1) << "centre of the circle";
}

TEST(SKShapedButton, PressedPictureFollowsTheTint) {
    SKShapedButton button;
    button.setImageName(QStringLiteral("btn_Wide"));
    button.setAlternateImageName(QStringLiteral("btn_WideAqua"));
    EXPECT_EQ(button.imageBaseName(), QStringLiteral("btn_Wide"));

    QPalette aqua = button.palette();
    aqua.setColor(QPalette::Highlight, QColor(0x2F, 0x8F, 0xA3));
    button.setPalette(aqua);
    EXPECT_FALSE(button.graphiteTint());
    EXPECT_EQ(button.alternateImage().name(), QStringLiteral("btn_WideAqua"));

    QPalette graphite = button.palette();
    graphite.setColor(QPalette::Highlight, QColor(0x7B, 0x7F, 0x86));
    button.setPalette(graphite);
    EXPECT_TRUE(button.graphiteTint());
    EXPECT_EQ(button.alternateImage().name(), QStringLiteral("btn_WideGraphite"));
    EXPECT_EQ(button.imageBaseName(), QStringLiteral("btn_Wide")) << "the base name stays";
}

TEST(SKShapedButton, MissingTintedPictureFallsBackToTheDarkenedNormalOne) {
    SKShapedButton button;
    QImage orange(2, 2, QImage::Format_RGBA8888);
    orange.fill(QColor(200, 100, 50, 255));
    button.setImage(Picture::fromImage(orange));
    button.setImageBaseName(QStringLiteral("no_such_picture"));
    QPalette palette = button.palette();
    palette.setColor(QPalette::Highlight, QColor::fromRgbF(1, 0, 1));
    button.setPalette(palette);
    const QImage pressed = button.alternateImage().image(1.0);
    ASSERT_FALSE(pressed.isNull());
    EXPECT_EQ(QColor::fromRgba(pressed.pixel(0, 0)), QColor(199, 0, 49, 255));
}

TEST(SKShapedButton, StatePictures) {
    QImage normalImage(1, 1, QImage::Format_RGBA8888);
    normalImage.fill(QColor(90, 60, 30, 255));
    QImage alternateImage(1, 1, QImage::Format_RGBA8888);
    alternateImage.fill(QColor(40, 140, 160, 255));
    SKShapedButton button;
    button.setImage(Picture::fromImage(normalImage));
    button.setAlternateImage(Picture::fromImage(alternateImage));
    QPalette palette = button.palette();
    palette.setColor(QPalette::Highlight, QColor::fromRgbF(1, 1, 1));
    button.setPalette(palette);
    auto colour = [&] { return QColor::fromRgba(button.pictureToDraw(1.0).pixel(0, 0)); };

    EXPECT_EQ(colour(), QColor(90, 60, 30)) << "normal";
    button.setDown(true);
    EXPECT_EQ(colour(), QColor(40, 140, 160)) << "pressed, no state: the alternate picture";
    button.setCheckable(true);
    EXPECT_EQ(colour(), QColor(39, 139, 159)) << "pressed with a state: darkened alternate";
    button.setDown(false);
    button.setChecked(true);
    EXPECT_EQ(colour(), QColor(40, 140, 160)) << "on";
    button.setEnabled(false);
    EXPECT_EQ(colour(), QColor(40, 140, 160)) << "disabled and on";
    button.setChecked(false);
    // (90 + 60 + 30 - 3) / 3 = 59
    EXPECT_EQ(colour(), QColor(59, 59, 59)) << "disabled: grey";
}

TEST(SKShapedButton, CaptionComesFromButtonKeysOnlyAndNeverTakesClicks) {
    struct Case {
        QString title;
        bool translated;
        bool bottomHalf;
    };
    const Case cases[] = {
        {QStringLiteral("IDS_BUTTON_NEXT"), true, false},
        {QStringLiteral("IDS_BUTTON_BOTTOM_NOTHING"), false, true},
        {QStringLiteral("Next"), false, false},
    };
    for (const Case& c : cases) {
        SKShapedButton button;
        button.setImageName(QStringLiteral("btn_WideDefault"));
        button.resize(144, 44);
        button.setText(c.title);
        button.awakeFromNib();
        ASSERT_NE(button.caption(), nullptr) << qPrintable(c.title);
        const QString expected = c.translated
                                     ? QCoreApplication::translate("Localizable", "IDS_BUTTON_NEXT")
                                     : QString();
        EXPECT_EQ(button.caption()->text(), expected) << qPrintable(c.title);
        EXPECT_TRUE(button.caption()->testAttribute(Qt::WA_TransparentForMouseEvents));
        if (c.bottomHalf) {
            EXPECT_GE(button.caption()->geometry().top(), 22) << "the bottom half";
        }
    }
    SKShapedButton untitled;
    untitled.awakeFromNib();
    EXPECT_EQ(untitled.caption(), nullptr);
}

TEST(SKShapedButton, KeyboardFocusShowsARingOnThePicture) {
    QWidget window;
    window.resize(200, 100);
    auto first = new SKShapedButton(&window);
    first->setImageName(QStringLiteral("btn_Wide"));
    first->setGeometry(0, 0, 144, 44);
    auto second = new SKShapedButton(&window);
    second->setImageName(QStringLiteral("btn_Wide"));
    second->setGeometry(0, 50, 144, 44);
    QPalette palette = window.palette();
    palette.setColor(QPalette::Highlight, QColor(0x2F, 0x8F, 0xA3));
    window.setPalette(palette);
    window.show();
    QApplication::setActiveWindow(&window);

    auto ringPixel = [](SKShapedButton* button) {
        return button->grab().toImage().pixelColor(72, 1);
    };
    const QColor unfocused = ringPixel(second);
    second->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(second->hasFocus());
    EXPECT_EQ(ringPixel(second), QColor(0x2F, 0x8F, 0xA3)) << "ring along the top edge";
    EXPECT_NE(unfocused, QColor(0x2F, 0x8F, 0xA3));
    first->setFocus(Qt::MouseFocusReason);
    EXPECT_EQ(ringPixel(first), unfocused) << "a click gives focus without a ring";
}
