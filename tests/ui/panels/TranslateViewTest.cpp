#include "ui/panels/TranslateView.h"

#include "ui/panels/ImageForView.h"
#include "ui/widgets/CenterTextField.h"

#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QWidget>

#include <gtest/gtest.h>

using namespace waxline::ui;

namespace {

QString catalogueText(const char* key) {
    return QCoreApplication::translate("Localizable", key);
}

} // namespace

TEST(TranslateView, ReplacesKeysAtEveryDepthAndKeepsTheRest) {
    QWidget root;
    auto top = new QLabel(QStringLiteral("IDS_BUTTON_NEXT"), &root);
    auto group = new QWidget(&root);
    auto inner = new QWidget(group);
    auto nested = new QLabel(QStringLiteral("IDS_PANEL1_TITLE"), inner);
    auto plain = new QLabel(QStringLiteral("Plain words"), inner);
    auto unknown = new QLabel(QStringLiteral("IDS_NO_SUCH_KEY_ANYWHERE"), group);
    auto field = new QLineEdit(QStringLiteral("IDS_UNKNOWN_ARTIST"), group);
    auto inField = new QLabel(QStringLiteral("IDS_BUTTON_BACK"), field);

    TranslateView(&root);

    ASSERT_NE(catalogueText("IDS_BUTTON_NEXT"), QStringLiteral("IDS_BUTTON_NEXT"));
    EXPECT_EQ(top->text(), catalogueText("IDS_BUTTON_NEXT"));
    EXPECT_EQ(nested->text(), catalogueText("IDS_PANEL1_TITLE"));
    EXPECT_EQ(plain->text(), QStringLiteral("Plain words"));
    EXPECT_EQ(unknown->text(), QStringLiteral("IDS_NO_SUCH_KEY_ANYWHERE"))
        << "a key without a translation keeps its placeholder";
    EXPECT_EQ(field->text(), catalogueText("IDS_UNKNOWN_ARTIST"));
    EXPECT_EQ(inField->text(), QStringLiteral("IDS_BUTTON_BACK")) << "fields are not descended";
    TranslateView(nullptr);
}

TEST(CenterTextField, FitsTheTextAndKeepsTheCentre) {
    struct Case {
        QRect frame;
        QString text;
    };
    const Case cases[] = {
        {{100, 50, 300, 60}, QStringLiteral("Hi")},
        {{10, 10, 40, 20}, QStringLiteral("A much longer caption than the frame")},
        {{0, 0, 144, 44}, QStringLiteral("<b>Next</b>")},
    };
    for (const Case& c : cases) {
        QWidget parent;
        QLabel label(c.text, &parent);
        label.setGeometry(c.frame);
        CenterTextField(&label);
        EXPECT_EQ(label.size(), label.sizeHint()) << qPrintable(c.text);
        const QPointF oldCentre = QRectF(c.frame).center();
        const QPointF newCentre = QRectF(label.geometry()).center();
        EXPECT_NEAR(newCentre.x(), oldCentre.x(), 0.51) << qPrintable(c.text);
        EXPECT_NEAR(newCentre.y(), oldCentre.y(), 0.51) << qPrintable(c.text);
    }
}

TEST(ImageForView, PanelNumbersToBackgrounds) {
    for (unsigned panel = 0; panel <= 13; ++panel) {
        const Picture picture = ImageForView(panel);
        if (panel == 0 || panel == 13) {
            EXPECT_TRUE(picture.isNull()) << panel;
            continue;
        }
        const char* expected = panel == 2    ? "dlg_StartRecording"
                               : panel == 3  ? "dlg_Recording"
                               : panel == 6  ? "dlg_Question"
                               : panel == 12 ? "dlg_Tape"
                                             : "dlg_PlainBackgroundWithButtons";
        ASSERT_FALSE(picture.isNull()) << panel;
        EXPECT_EQ(picture.name(), QLatin1String(expected)) << panel;
        EXPECT_EQ(picture.size(), QSize(720, 480)) << panel;
    }
}
