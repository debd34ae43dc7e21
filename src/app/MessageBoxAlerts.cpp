#include "app/MessageBoxAlerts.h"

#include "ui/Catalogue.h"

#include <QMessageBox>
#include <QPushButton>

namespace waxline::app {

QString alertText(const QString& key, const QStringList& arguments) {
    if (key.isEmpty())
        return {};
    QString text = ui::localizedKey(key);
    if (text.isEmpty())
        // A key without a text keeps its placeholder; anything else is a sentence as it came.
        return key.startsWith(QLatin1String("IDS_")) ? key : key.toHtmlEscaped();
    // A path or a reason may hold "<" or "&": put in as text, never as markup.
    for (const QString& argument : arguments)
        text = text.arg(argument.toHtmlEscaped());
    return text;
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
    QMessageBox box(parent);
    prepare(box, QStringLiteral("IDS_APP_NAME"));
    box.setText(alertText(messageKey, arguments));
    if (!informativeKey.isEmpty())
        box.setInformativeText(alertText(informativeKey, arguments));
    QPushButton* yes = box.addButton(buttonText(defaultButtonKey), QMessageBox::YesRole);
    QPushButton* no = box.addButton(buttonText(alternateButtonKey), QMessageBox::NoRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

} // namespace waxline::app
