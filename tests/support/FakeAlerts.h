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

    QStringList texts() const {
        QStringList list;
        for (const Shown& s : shown)
            list << s.text;
        return list;
    }

private:
    size_t answered = 0;
};

} // namespace waxline::test
