#pragma once

#include <QString>

namespace waxline::ui {

// Pictures of the help window ("help-window.png") and of the inputs offered without a deck
// ("other-input.png") and of a warning and a question ("alert-warning.png", "alert-question.png")
// into `dir`, the help page in `language` ("en", "de"); false when one
// cannot be written.
bool writeDialogScreenshots(const QString& dir, const QString& language);

} // namespace waxline::ui
