#include "app/MessageBoxAlerts.h"

#include "ui/Catalogue.h"
#include "ui/widgets/HouseAlert.h"

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

QString titleText(const QString& key) {
    return ui::plainTextOf(alertText(key)).toHtmlEscaped();
}

} // namespace

void MessageBoxAlerts::alert(const QString& titleKey, const QString& textKey,
                             const QStringList& arguments, const QString& buttonKey) {
    ui::HouseAlert box(ui::HouseAlert::Kind::Warning, titleText(titleKey),
                       alertText(textKey, arguments), QString(), {buttonText(buttonKey)}, 0, 0,
                       parent);
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
    QStringList captions;
    for (const QString& key : buttonKeys)
        captions << buttonText(key);
    ui::HouseAlert box(ui::HouseAlert::Kind::Question, titleText(QStringLiteral("IDS_APP_NAME")),
                       alertText(messageKey, arguments),
                       informativeKey.isEmpty() ? QString() : alertText(informativeKey, arguments),
                       captions, defaultButton, escapeButton, parent);
    box.exec();
    return box.chosen();
}

void MessageBoxAlerts::inform(const QString& titleKey, const QString& textKey,
                              const QStringList& arguments) {
    // Shown beside the window and left to the user; the alert deletes itself when closed.
    auto box = new ui::HouseAlert(ui::HouseAlert::Kind::Notice, titleText(titleKey),
                                  alertText(textKey, arguments), QString(),
                                  {buttonText(QStringLiteral("IDS_OK"))}, 0, 0, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    box->show();
}

} // namespace waxline::app
