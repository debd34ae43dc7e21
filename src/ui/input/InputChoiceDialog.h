#pragma once

#include "ui/widgets/HouseDialog.h"

#include <QDialog>
#include <QStringList>

#include <optional>

class QListWidget;
class QPushButton;

namespace waxline::ui {

// Offered when no supported deck is found: the audio inputs to record from instead (a turntable
// through a phono preamp into line-in, another USB interface), in the panels' walnut and cream.
class InputChoiceDialog : public HouseDialog {
    Q_OBJECT
public:
    InputChoiceDialog(const QStringList& inputNames, QWidget* parent = nullptr);

    // The index of the input chosen; nothing while none is selected.
    std::optional<int> chosenInput() const;

    QListWidget* inputList() const { return list; }

    // Asks modally; the index chosen, or nothing when cancelled.
    static std::optional<int> choose(const QStringList& inputNames, QWidget* parent);

private:
    QListWidget* list = nullptr;
    QPushButton* useButton = nullptr;
};

} // namespace waxline::ui
