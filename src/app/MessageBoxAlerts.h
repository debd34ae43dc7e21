#pragma once

#include "app/Alerts.h"

#include <QPointer>
#include <QWidget>

namespace waxline::app {

// Alerts as modal house-style alerts over the window, in the catalogue's words (rich text).
class MessageBoxAlerts : public Alerts {
public:
    explicit MessageBoxAlerts(QWidget* parent = nullptr)
        : parent(parent) {}

    void setParent(QWidget* window) { parent = window; }

    void alert(const QString& titleKey, const QString& textKey, const QStringList& arguments = {},
               const QString& buttonKey = QStringLiteral("IDS_OK")) override;
    bool ask(const QString& messageKey, const QString& informativeKey,
             const QString& defaultButtonKey, const QString& alternateButtonKey,
             const QStringList& arguments) override;
    int choose(const QString& messageKey, const QString& informativeKey,
               const QStringList& buttonKeys, int defaultButton, int escapeButton,
               const QStringList& arguments) override;
    void inform(const QString& titleKey, const QString& textKey,
                const QStringList& arguments) override;

private:
    QPointer<QWidget> parent;
};

// The catalogue's text of a key with the arguments put in, escaped for rich text; the key
// itself when the catalogue has no text for it, so that a gap shows rather than hides.
QString alertText(const QString& key, const QStringList& arguments = {});

// `text` with "%1" to "%9" replaced by the arguments in order; a number with no argument, or an
// argument with no number, is left alone (no warning, unlike QString::arg).
QString fillArguments(QString text, const QStringList& arguments);

} // namespace waxline::app
