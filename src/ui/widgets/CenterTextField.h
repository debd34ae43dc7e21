#pragma once

class QWidget;

namespace waxline::ui {

// Sizes the field to fit its text, keeping the centre of its old frame.
void CenterTextField(QWidget* field);

} // namespace waxline::ui
