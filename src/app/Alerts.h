#pragma once

#include <QString>
#include <QStringList>

namespace waxline::app {

// The application's modal message boxes. Every text is an "IDS_" key that the front end
// looks up; `arguments` fill its "%1", "%2" in order (paths and reasons, inserted as plain
// text). The real one blocks until answered; tests install one that answers as scripted.
// Main thread only.
class Alerts {
public:
    virtual ~Alerts() = default;

    // A warning with one button.
    virtual void alert(const QString& titleKey, const QString& textKey,
                       const QStringList& arguments = {},
                       const QString& buttonKey = QStringLiteral("IDS_OK")) = 0;

    // A question with a default and an alternate button; true when the default was chosen.
    virtual bool ask(const QString& messageKey, const QString& informativeKey,
                     const QString& defaultButtonKey, const QString& alternateButtonKey,
                     const QStringList& arguments = {}) = 0;

    // A question with several ways out, one button per key in order; the answer is the index
    // of the button chosen. `defaultButton` is what Return presses and `escapeButton` what
    // Esc or closing the box gives: both are to be the safe answer.
    virtual int choose(const QString& messageKey, const QString& informativeKey,
                       const QStringList& buttonKeys, int defaultButton, int escapeButton,
                       const QStringList& arguments = {}) = 0;

    // A warning that does not wait for its answer: what it says has happened already.
    virtual void inform(const QString& titleKey, const QString& textKey,
                        const QStringList& arguments = {}) {
        alert(titleKey, textKey, arguments);
    }
};

} // namespace waxline::app
