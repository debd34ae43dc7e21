#pragma once

#include "ui/widgets/HouseDialog.h"

#include <QStringList>

#include <vector>

class QPushButton;

namespace waxline::ui {

// An alert or a question in the house style: the title in the walnut header, an icon of ours
// beside the message, a row of pill buttons. No minimise or maximise; Return gives the default
// button, Esc and the window's close the escape one.
class HouseAlert : public HouseDialog {
    Q_OBJECT
public:
    enum class Kind { Warning, Question, Notice };

    // Texts are the catalogue's (the message rich text, captions with or without "&").
    HouseAlert(Kind kind, const QString& title, const QString& message, const QString& informative,
               const QStringList& captions, int defaultButton, int escapeButton,
               QWidget* parent = nullptr);

    // The button pressed, by position; the escape button when none was.
    int chosen() const { return choice; }
    const std::vector<QPushButton*>& buttonList() const { return buttons; }

    void reject() override;

private:
    std::vector<QPushButton*> buttons;
    int escape = -1;
    int choice = -1;
};

// The captions with a mnemonic each: a caption that has its own keeps it, the others take their
// first letter no earlier caption claims, so no two buttons share a key.
QStringList withMnemonics(const QStringList& captions);

} // namespace waxline::ui
