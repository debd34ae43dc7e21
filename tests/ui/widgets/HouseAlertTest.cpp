#include "ui/widgets/HouseAlert.h"

#include "ui/Catalogue.h"

#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using waxline::ui::HouseAlert;

namespace {

QString catalogue(const char* key) {
    return waxline::ui::plainTextOf(waxline::ui::localizedKey(QString::fromLatin1(key)));
}

} // namespace

// Each button gets a key of its own: words' first letters first, a caption's own kept.
TEST(HouseAlert, GivesEveryButtonItsOwnMnemonic) {
    struct Row {
        QStringList captions;
        QStringList expected;
    };
    const std::vector<Row> rows = {
        {{"Quit, keep for later", "Quit and discard", "Don't quit"},
         {"&Quit, keep for later", "Quit &and discard", "&Don't quit"}},
        {{"Skip", "&Save", "Stop"}, {"S&kip", "&Save", "S&top"}},
        {{"ok", "OK"}, {"&ok", "O&K"}},
        {{"Rock & Roll"}, {"&Rock && Roll"}},
        {{"A", "a"}, {"&A", "a"}},
        {{"Beenden, aufheben", "Beenden und verwerfen", "Nicht beenden"},
         {"&Beenden, aufheben", "Beenden &und verwerfen", "&Nicht beenden"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.captions.join(QLatin1Char('|')).toStdString());
        EXPECT_EQ(waxline::ui::withMnemonics(row.captions), row.expected);
    }
}

// The answer is the button pressed; Return the default one; Esc and the window's close the
// escape one, or none when there is no escape button.
TEST(HouseAlert, AnswersWithTheButtonChosen) {
    enum class Act { Click, Return, Escape, Close };
    struct Row {
        Act act;
        int clicked, defaultButton, escapeButton, expected;
    };
    const std::vector<Row> rows = {
        {Act::Click, 1, 0, 2, 1},   {Act::Click, 2, 0, 2, 2},     {Act::Return, -1, 0, 2, 0},
        {Act::Return, -1, 2, 0, 2}, {Act::Escape, -1, 0, 2, 2},   {Act::Escape, -1, 0, 1, 1},
        {Act::Close, -1, 0, 1, 1},  {Act::Escape, -1, 0, -1, -1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(int(row.act) * 100 + row.clicked * 10 + row.defaultButton);
        HouseAlert alert(HouseAlert::Kind::Question, "Waxline", "Quit?", QString(),
                         {"Quit", "Keep", "Cancel"}, row.defaultButton, row.escapeButton);
        alert.show();
        switch (row.act) {
        case Act::Click:
            QTest::mouseClick(alert.buttonList()[size_t(row.clicked)], Qt::LeftButton);
            break;
        case Act::Return:
            QTest::keyClick(&alert, Qt::Key_Return);
            break;
        case Act::Escape:
            QTest::keyClick(&alert, Qt::Key_Escape);
            break;
        case Act::Close:
            alert.close();
            break;
        }
        EXPECT_EQ(alert.chosen(), row.expected);
        EXPECT_FALSE(alert.isVisible());
    }
}

// In both languages every caption fits its pill, the wrapped message shows all its lines, and a
// screen reader hears each button's caption without the mnemonic mark.
TEST(HouseAlert, ShowsItsWholeTextInBothLanguages) {
    for (const char* language : {"en", "de"}) {
        SCOPED_TRACE(language);
        waxline::ui::installCatalogue(QLocale(QString::fromLatin1(language)));
        const QStringList captions = {catalogue("IDS_QUIT_KEEP"), catalogue("IDS_QUIT_DISCARD"),
                                      catalogue("IDS_DONT_QUIT")};
        HouseAlert alert(HouseAlert::Kind::Question, "Waxline",
                         waxline::ui::localizedKey("IDS_CLOSE_UNSAVED"), QString(), captions, 0, 2);
        alert.show();
        for (size_t i = 0; i < alert.buttonList().size(); ++i) {
            const QPushButton* button = alert.buttonList()[i];
            EXPECT_GE(button->width(), button->sizeHint().width()) << i;
            EXPECT_EQ(button->accessibleName(), captions[qsizetype(i)]);
        }
        const auto message = alert.findChild<QLabel*>(QStringLiteral("message"));
        ASSERT_TRUE(message);
        EXPECT_GE(message->height(), message->heightForWidth(message->width()));
        EXPECT_FALSE(alert.windowFlags() &
                     (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint));
    }
    waxline::ui::installCatalogue(QLocale(QLocale::English));
}
