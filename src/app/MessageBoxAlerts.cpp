#include "app/MessageBoxAlerts.h"

#include "ui/Catalogue.h"

#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <vector>

namespace waxline::app {

QString alertText(const QString& key, const QStringList& arguments) {
    if (key.isEmpty())
        return {};
    QString text = ui::localizedKey(key);
    if (text.isEmpty())
        // A key without a text keeps its placeholder; anything else is a sentence as it came.
        return key.startsWith(QLatin1String("IDS_")) ? key : key.toHtmlEscaped();
    // A path or a reason may hold "<" or "&": put in as text, never as markup.
    QStringList escaped;
    for (const QString& argument : arguments)
        escaped << argument.toHtmlEscaped();
    return fillArguments(text, escaped);
}

QString fillArguments(QString text, const QStringList& arguments) {
    QString filled;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('%') && i + 1 < text.size() && text.at(i + 1) >= QLatin1Char('1') &&
            text.at(i + 1) <= QLatin1Char('9')) {
            const int n = text.at(i + 1).digitValue();
            if (n <= arguments.size()) {
                filled += arguments.at(n - 1);
                ++i;
                continue;
            }
        }
        filled += c;
    }
    return filled;
}

namespace {

QString buttonText(const QString& key) {
    return ui::plainTextOf(alertText(key));
}

void prepare(QMessageBox& box, const QString& titleKey) {
    box.setIcon(QMessageBox::Warning);
    box.setTextFormat(Qt::RichText);
    box.setWindowTitle(ui::plainTextOf(alertText(titleKey)));
}

} // namespace

void MessageBoxAlerts::alert(const QString& titleKey, const QString& textKey,
                             const QStringList& arguments, const QString& buttonKey) {
    QMessageBox box(parent);
    // The title doubles as the message's heading: a window manager may not show the title.
    prepare(box, titleKey);
    box.setText(QStringLiteral("<b>%1</b><br><br>%2")
                    .arg(ui::plainTextOf(alertText(titleKey)).toHtmlEscaped(),
                         alertText(textKey, arguments)));
    box.addButton(buttonText(buttonKey), QMessageBox::AcceptRole);
    box.exec();
}

bool MessageBoxAlerts::ask(const QString& messageKey, const QString& informativeKey,
                           const QString& defaultButtonKey, const QString& alternateButtonKey,
                           const QStringList& arguments) {
    // Return gives the default button, Esc the alternate one.
    return choose(messageKey, informativeKey, {defaultButtonKey, alternateButtonKey}, 0, 1,
                  arguments) == 0;
}

int MessageBoxAlerts::choose(const QString& messageKey, const QString& informativeKey,
                             const QStringList& buttonKeys, int defaultButton, int escapeButton,
                             const QStringList& arguments) {
    QMessageBox box(parent);
    prepare(box, QStringLiteral("IDS_APP_NAME"));
    box.setText(alertText(messageKey, arguments));
    if (!informativeKey.isEmpty())
        box.setInformativeText(alertText(informativeKey, arguments));
    std::vector<QPushButton*> buttons;
    for (const QString& key : buttonKeys)
        buttons.push_back(box.addButton(buttonText(key), QMessageBox::ActionRole));
    if (defaultButton >= 0 && size_t(defaultButton) < buttons.size())
        box.setDefaultButton(buttons[size_t(defaultButton)]);
    if (escapeButton >= 0 && size_t(escapeButton) < buttons.size())
        box.setEscapeButton(buttons[size_t(escapeButton)]);
    box.exec();
    const auto chosen = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    return chosen == buttons.end() ? escapeButton : int(chosen - buttons.begin());
}

void MessageBoxAlerts::inform(const QString& titleKey, const QString& textKey,
                              const QStringList& arguments) {
    // Shown beside the window and left to the user; the box deletes itself when closed.
    auto box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    prepare(*box, titleKey);
    box->setText(QStringLiteral("<b>%1</b><br><br>%2")
                     .arg(ui::plainTextOf(alertText(titleKey)).toHtmlEscaped(),
                          alertText(textKey, arguments)));
    box->addButton(buttonText(QStringLiteral("IDS_OK")), QMessageBox::AcceptRole);
    box->setModal(false);
    box->show();
}

} // namespace waxline::app
