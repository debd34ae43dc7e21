#include "ui/widgets/HouseAlert.h"

#include "ui/Catalogue.h"

#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using waxline::ui::HouseAlert;

// Each button gets a key of its own: words' first letters first, a caption's own kept.
TEST(HouseAlert, GivesEveryButtonItsOwnMnemonic) {
    const std::vector<std::pair<QStringList, QStringList>> rows = {
        {{"Quit, keep for later", "Quit and discard", "Don't quit"},
         {"&Quit, keep for later", "Quit &and discard", "&Don't quit"}},
        {{"Skip", "&Save", "Stop"}, {"S&kip", "&Save", "S&top"}},
        {{"Rock & Roll"}, {"&Rock && Roll"}},
    };
    for (const auto& [captions, expected] : rows)
        EXPECT_EQ(waxline::ui::withMnemonics(captions), expected)
            << captions.join('|').toStdString();
}

// Return gives the default button, Esc the escape one, or none when there is none.
TEST(HouseAlert, AnswersReturnAndEscape) {
    struct Row {
        int key, defaultButton, escapeButton, expected;
    };
    for (const Row& row : {Row{Qt::Key_Return, 0, 2, 0}, Row{Qt::Key_Return, 2, 0, 2},
                           Row{Qt::Key_Escape, 0, 1, 1}, Row{Qt::Key_Escape, 0, -1, -1}}) {
        HouseAlert alert(HouseAlert::Kind::Question, "Waxline", "Quit?", QString(),
                         {"Quit", "Keep", "Cancel"}, row.defaultButton, row.escapeButton);
        alert.show();
        QTest::keyClick(&alert, Qt::Key(row.key));
        EXPECT_EQ(alert.chosen(), row.expected) << row.key << " " << row.defaultButton;
    }
}

// In both languages every caption fits its pill and the wrapped message shows all its lines;
// a screen reader hears each caption without its mnemonic mark.
TEST(HouseAlert, ShowsItsWholeTextInBothLanguages) {
    for (const char* language : {"en", "de"}) {
        waxline::ui::installCatalogue(QLocale(QString::fromLatin1(language)));
        QStringList captions;
        for (const char* key : {"IDS_QUIT_KEEP", "IDS_QUIT_DISCARD", "IDS_DONT_QUIT"})
            captions << waxline::ui::localizedKey(QString::fromLatin1(key));
        HouseAlert alert(HouseAlert::Kind::Question, "Waxline",
                         waxline::ui::localizedKey("IDS_CLOSE_UNSAVED"), QString(), captions, 0, 2);
        alert.show();
        for (size_t i = 0; i < alert.buttonList().size(); ++i) {
            const QPushButton& button = *alert.buttonList()[i];
            EXPECT_GE(button.width(), button.sizeHint().width()) << language << i;
            EXPECT_EQ(button.accessibleName(), captions[qsizetype(i)]) << language;
        }
        const auto message = alert.findChild<QLabel*>(QStringLiteral("message"));
        EXPECT_GE(message->height(), message->heightForWidth(message->width())) << language;
    }
    waxline::ui::installCatalogue(QLocale(QLocale::English));
}
