#pragma once

#include "app/Alerts.h"

#include <functional>
#include <vector>

namespace waxline::test {

// Alerts that never block: each is written down with its keys, and a question is answered
// from `answers` in turn (the default button when they run out). `onAlert` runs inside each
// alert, as the user would act while it is shown.
class FakeAlerts : public app::Alerts {
public:
    struct Shown {
        QString title;
        QString text;
        QStringList arguments;
        QString button; // the alternate button of a question after a "|"
    };

    std::vector<Shown> shown;
    std::vector<bool> answers;
    // The buttons chosen in the questions with several ways out, by key; the default button
    // when they run out.
    std::vector<QString> choices;
    std::function<void()> onAlert;

    void alert(const QString& titleKey, const QString& textKey, const QStringList& arguments,
               const QString& buttonKey) override {
        shown.push_back({titleKey, textKey, arguments, buttonKey});
        if (onAlert)
            onAlert();
    }

    bool ask(const QString& messageKey, const QString& informativeKey,
             const QString& defaultButtonKey, const QString& alternateButtonKey,
             const QStringList& arguments) override {
        shown.push_back({messageKey, informativeKey, arguments,
                         defaultButtonKey + QLatin1Char('|') + alternateButtonKey});
        if (onAlert)
            onAlert();
        if (answered >= answers.size())
            return true;
        return answers[answered++];
    }

    int choose(const QString& messageKey, const QString& informativeKey,
               const QStringList& buttonKeys, int defaultButton, int escapeButton,
               const QStringList& arguments) override {
        // The default and the escape button are marked: "*" and "^" before the key.
        QStringList marked;
        for (int i = 0; i < buttonKeys.size(); ++i)
            marked << (i == defaultButton ? QStringLiteral("*") : QString()) +
                          (i == escapeButton ? QStringLiteral("^") : QString()) + buttonKeys[i];
        shown.push_back({messageKey, informativeKey, arguments, marked.join(QLatin1Char('|'))});
        if (onAlert)
            onAlert();
        if (chosen >= choices.size())
            return defaultButton;
        const int index = int(buttonKeys.indexOf(choices[chosen++]));
        return index < 0 ? defaultButton : index;
    }

    void inform(const QString& titleKey, const QString& textKey,
                const QStringList& arguments) override {
        shown.push_back({titleKey, textKey, arguments, QStringLiteral("(not waiting)")});
        if (onAlert)
            onAlert();
    }

    QStringList texts() const {
        QStringList list;
        for (const Shown& s : shown)
            list << s.text;
        return list;
    }

private:
    size_t answered = 0;
    size_t chosen = 0;
};

} // namespace waxline::test
