#include "ui/window/PanelScreenshots.h"

#include "ui/Catalogue.h"
#include "ui/panels/CustomView.h"
#include "ui/panels/PanelForms.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/widgets/WXTextView.h"
#include "ui/window/CustomWindow.h"

#include <QAbstractSlider>
#include <QCheckBox>
#include <QDir>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProcess>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace waxline::ui;

namespace {

// Puts the English catalogue back however a test ends.
struct Language {
    explicit Language(const char* code) {
        installed = installCatalogue(QLocale(QString::fromLatin1(code)));
    }
    ~Language() { installCatalogue(QLocale(QLocale::English)); }
    QString installed;
};

// The size the label's text needs, laid out as the label lays it out: wrapped to its
// width when it wraps, on one line otherwise; a label naming a control shows no "&" mark.
QSizeF textNeeds(const QLabel* label) {
    QTextDocument document;
    document.setDefaultFont(label->font());
    document.setDocumentMargin(0);
    if (Qt::mightBeRichText(label->text()))
        document.setHtml(label->text());
    else if (label->buddy())
        document.setPlainText(withoutMnemonic(label->text()));
    else
        document.setPlainText(label->text());
    if (label->wordWrap())
        document.setTextWidth(label->contentsRect().width());
    return QSizeF(document.idealWidth(), document.size().height());
}

// Every label with text lies inside its panel and has room for its text.
std::vector<std::string> clippedTexts(const CustomView& view) {
    std::vector<std::string> problems;
    const auto labels = view.findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        if (label->text().isEmpty() || !label->isVisibleTo(&view))
            continue;
        const QSizeF needs = textNeeds(label);
        const QRect room = label->contentsRect();
        const std::string name =
            label->objectName().toStdString() + " \"" + label->text().left(40).toStdString() + "\"";
        if (needs.width() > room.width() + 0.5 || needs.height() > room.height() + 0.5)
            problems.push_back(name + " needs " + std::to_string(int(needs.width())) + "x" +
                               std::to_string(int(needs.height())) + " in " +
                               std::to_string(room.width()) + "x" + std::to_string(room.height()));
        const QRect inPanel(label->mapTo(&view, QPoint(0, 0)), label->size());
        if (!view.rect().contains(inPanel))
            problems.push_back(name + " sticks out of the panel");
        if (auto caption = qobject_cast<const WXTextView*>(label)) {
            const QWidget* button = caption->parentWidget();
            const int left = std::max(8, button->property("captionInset").toInt());
            if (!button->rect().adjusted(left, 0, -8, 0).contains(caption->geometry()))
                problems.push_back(name + " is wider than its button or covers its glyph");
        }
    }
    return problems;
}

// The panel's controls: its own children, and those of the rows it lays out.
void collectControls(const CustomView& view, const QWidget* parent, std::vector<QWidget*>& out) {
    const auto children = parent->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    for (QWidget* child : children) {
        if (!child->isVisibleTo(&view))
            continue;
        if (child->layout() && !qobject_cast<SKShapedButton*>(child)) {
            collectControls(view, child, out);
            continue;
        }
        if (auto label = qobject_cast<QLabel*>(child);
            label && label->text().isEmpty() && label->pixmap().isNull())
            continue;
        out.push_back(child);
    }
}

// Controls of the panel that must not overlap; a label inside a button is that button's caption.
std::vector<std::string> overlaps(const CustomView& view) {
    std::vector<std::string> problems;
    std::vector<QWidget*> controls;
    collectControls(view, &view, controls);
    auto inPanel = [&view](const QWidget* w) {
        return QRect(w->mapTo(&view, QPoint(0, 0)), w->size());
    };
    for (std::size_t i = 0; i < controls.size(); ++i)
        for (std::size_t j = i + 1; j < controls.size(); ++j) {
            const QRect a = inPanel(controls[i]);
            const QRect b = inPanel(controls[j]);
            if (!a.intersects(b))
                continue;
            const bool captionOnCard =
                (qobject_cast<QLabel*>(controls[i]) && qobject_cast<SKShapedButton*>(controls[j]) &&
                 b.contains(a)) ||
                (qobject_cast<QLabel*>(controls[j]) && qobject_cast<SKShapedButton*>(controls[i]) &&
                 a.contains(b));
            if (!captionOnCard)
                problems.push_back(controls[i]->objectName().toStdString() + " overlaps " +
                                   controls[j]->objectName().toStdString());
        }
    return problems;
}

} // namespace

TEST(PanelScreenshots, TwelvePanelsInEachLanguageWithNothingClipped) {
    for (const char* code : {"en", "de"}) {
        Language language(code);
        ASSERT_EQ(language.installed, QLatin1String(code));
        CustomWindow window;
        for (unsigned panel = firstPanel; panel <= lastPanel; ++panel) {
            SCOPED_TRACE(std::string(code) + " panel " + std::to_string(panel));
            std::unique_ptr<CustomView> view = loadPanelForLooking(panel);
            ASSERT_TRUE(view);
            const QImage picture = grabPanel(window, *view);
            ASSERT_EQ(picture.size(), QSize(720, 480));
            EXPECT_EQ(qAlpha(picture.pixel(1, 1)), 0) << "outside the body";
            EXPECT_EQ(qAlpha(picture.pixel(360, 240)), 255) << "the body";
            for (const std::string& problem : clippedTexts(*view))
                ADD_FAILURE() << problem;
            for (const std::string& problem : overlaps(*view))
                ADD_FAILURE() << problem;
            const auto labels = view->findChildren<QLabel*>();
            for (const QLabel* label : labels)
                EXPECT_FALSE(label->text().startsWith(QLatin1String("IDS_")))
                    << qPrintable(label->text()) << " has no text";
            window.setContentView(nullptr);
        }
    }
}

TEST(PanelScreenshots, MeasuringFindsAClippedLabel) {
    // The measure itself: a text too long for its label is reported, one that fits is not.
    CustomView view;
    view.resize(720, 480);
    auto label = new QLabel(QStringLiteral("A caption far too long for forty pixels"), &view);
    label->setGeometry(10, 10, 40, 20);
    auto wrapped = new QLabel(QStringLiteral("word ").repeated(60), &view);
    wrapped->setWordWrap(true);
    wrapped->setGeometry(10, 40, 200, 30);
    auto fits = new QLabel(QStringLiteral("Fits"), &view);
    fits->setGeometry(10, 100, 200, 30);
    EXPECT_EQ(clippedTexts(view).size(), 2u);
    auto overlapping = new QLabel(QStringLiteral("Here"), &view);
    overlapping->setGeometry(20, 110, 100, 30);
    EXPECT_FALSE(overlaps(view).empty());
}

TEST(PanelScreenshots, CommandWritesTwelvePicturesAtTheAskedScale) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    for (const char* scale : {"1", "2"}) {
        const QString out = dir.filePath(QString::fromLatin1(scale));
        QProcess waxline;
        waxline.setProgram(QStringLiteral(WAXLINE_APP));
        waxline.setArguments({QStringLiteral("--screenshot-panels"), out,
                              QStringLiteral("--locale"), QStringLiteral("de"),
                              QStringLiteral("--scale"), QString::fromLatin1(scale)});
        waxline.start();
        ASSERT_TRUE(waxline.waitForFinished(60000));
        EXPECT_EQ(waxline.exitCode(), 0) << waxline.readAllStandardError().toStdString();
        const int factor = QByteArray(scale).toInt();
        for (unsigned panel = firstPanel; panel <= lastPanel; ++panel) {
            QImageReader reader(QDir(out).filePath(QStringLiteral("panel-%1.png").arg(panel)));
            EXPECT_EQ(reader.size(), QSize(720, 480) * factor) << scale << " panel " << panel;
        }
    }
    QProcess wrong;
    wrong.start(QStringLiteral(WAXLINE_APP), {QStringLiteral("--no-such-option")});
    ASSERT_TRUE(wrong.waitForFinished(60000));
    EXPECT_EQ(wrong.exitCode(), 2);
}
