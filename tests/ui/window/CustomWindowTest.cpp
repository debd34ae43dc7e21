#include "ui/window/CustomWindow.h"

#include "ui/panels/CustomView.h"
#include "ui/panels/ImageForView.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace waxline::ui;

TEST(CustomWindow, BorderlessAndTranslucent) {
    CustomWindow window;
    EXPECT_TRUE(window.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_TRUE(window.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_EQ(window.size(), QSize(720, 480));
}

TEST(CustomWindow, FrameIsKeptBetweenRuns) {
    QTemporaryDir settingsDir;
    ASSERT_TRUE(settingsDir.isValid());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir.path());
    {
        CustomWindow first;
        first.move(123, 77);
        first.saveFrame();
    }
    const QRect stored =
        QSettings(QSettings::UserScope, QStringLiteral("Waxline"), QStringLiteral("waxline"))
            .value(QLatin1String(CustomWindow::frameKey))
            .toRect();
    EXPECT_EQ(stored.topLeft(), QPoint(123, 77));
    EXPECT_EQ(stored.size(), QSize(720, 480));
    CustomWindow second;
    EXPECT_EQ(second.pos(), QPoint(123, 77)) << "restored from \"WXAudioConverter\"";

    // A frame on no screen any more (a monitor unplugged) is not restored.
    QSettings(QSettings::UserScope, QStringLiteral("Waxline"), QStringLiteral("waxline"))
        .setValue(QLatin1String(CustomWindow::frameKey), QRect(90000, 90000, 720, 480));
    CustomWindow third;
    EXPECT_NE(third.pos(), QPoint(90000, 90000));
}

TEST(CustomWindow, ShapeIsThePicturesOpaquePart) {
    QImage picture(3, 1, QImage::Format_RGBA8888);
    picture.setPixelColor(0, 0, QColor(10, 10, 10, 127));
    picture.setPixelColor(1, 0, QColor(10, 10, 10, 128));
    picture.setPixelColor(2, 0, QColor(10, 10, 10, 255));
    const QRegion shape = shapeOfPicture(picture);
    EXPECT_FALSE(shape.contains(QPoint(0, 0))) << "alpha 127 is outside";
    EXPECT_TRUE(shape.contains(QPoint(1, 0))) << "alpha 128 is inside";
    EXPECT_TRUE(shape.contains(QPoint(2, 0)));

    // Every background: rounded body inside, corners and margins outside.
    for (unsigned panel : {1u, 2u, 3u, 6u}) {
        const QRegion body = shapeOfPicture(ImageForView(panel).image(1.0));
        EXPECT_TRUE(body.contains(QPoint(360, 240))) << panel;
        EXPECT_TRUE(body.contains(QPoint(360, 12))) << panel << ": header";
        EXPECT_TRUE(body.contains(QPoint(12, 240))) << panel << ": left edge";
        EXPECT_FALSE(body.contains(QPoint(2, 2))) << panel << ": margin";
        EXPECT_FALSE(body.contains(QPoint(12, 12))) << panel << ": rounded corner";
        EXPECT_FALSE(body.contains(QPoint(716, 476))) << panel;
    }
}

TEST(CustomWindow, ShowsOnePanelAtATime) {
    CustomWindow window;
    CustomView first;
    CustomView second;
    window.setContentView(&first);
    EXPECT_EQ(first.parentWidget(), &window);
    window.setContentView(&second);
    EXPECT_TRUE(first.isHidden());
    EXPECT_FALSE(second.isHidden());
    EXPECT_EQ(window.contentView(), &second);
    window.setContentView(nullptr);
    second.setParent(nullptr);
    first.setParent(nullptr);
}
