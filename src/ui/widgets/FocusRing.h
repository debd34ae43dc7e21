#pragma once

#include <QColor>

namespace waxline::ui {

// The one colour that shows where the keyboard is, on fields, boxes, sliders and pictured
// buttons alike; the style sheets spell it "#2F8FA3".
inline QColor focusRingColour() {
    return QColor(0x2F, 0x8F, 0xA3);
}

} // namespace waxline::ui
