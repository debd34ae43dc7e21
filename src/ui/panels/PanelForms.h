#pragma once

#include <QString>

namespace waxline::ui {

constexpr unsigned firstPanel = 1;
constexpr unsigned lastPanel = 12;

// The form of a panel: "WXL_Tab1" … "WXL_Tab10", "WXL_SelectDeviceTab" (11),
// "WXL_SelectTape" (12); empty for any other number.
QString nibNameForPanel(unsigned panel);

} // namespace waxline::ui
