#include "ui/panels/PanelForms.h"

namespace waxline::ui {

QString nibNameForPanel(unsigned panel) {
    if (panel >= 1 && panel <= 10)
        return QStringLiteral("WXL_Tab%1").arg(panel);
    if (panel == 11)
        return QStringLiteral("WXL_SelectDeviceTab");
    if (panel == 12)
        return QStringLiteral("WXL_SelectTape");
    return {};
}

} // namespace waxline::ui
