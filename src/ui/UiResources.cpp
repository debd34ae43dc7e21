#include "ui/UiResources.h"

#include <QtCore/qresource.h>

// Q_INIT_RESOURCE must be expanded outside any namespace.
static void initWaxlineUiQrc() {
    Q_INIT_RESOURCE(waxline_ui);
}

namespace waxline::ui {

void initUiResources() {
    initWaxlineUiQrc();
}

} // namespace waxline::ui
