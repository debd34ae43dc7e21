#pragma once

namespace waxline::ui {

// Registers the forms, artwork and catalogues compiled into this static library; call once
// after the QApplication exists and before any panel is loaded.
void initUiResources();

} // namespace waxline::ui
