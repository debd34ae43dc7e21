#pragma once

class QWidget;

namespace waxline::ui {

// Replaces every "IDS_" placeholder text of the view's labels and fields by its localised
// (rich) text, descending into every other kind of child; a key without a translation keeps
// its placeholder.
void TranslateView(QWidget* view);

} // namespace waxline::ui
