#include "ui/widgets/Decibels.h"

#include <cmath>

namespace waxline::ui {

double dbamp(double db) {
    return std::pow(10.0, db * 0.05);
}

double ampdb(double amp) {
    return 20.0 * std::log10(amp);
}

} // namespace waxline::ui
