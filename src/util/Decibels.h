#pragma once

#include <cmath>

namespace waxline {

// Decibels to an amplitude factor and back, in double precision: the one rule that the monitor
// gain and the level meter share, so what the slider says is what the meter shows.
inline double dbamp(double dB) {
    return std::pow(10.0, dB * 0.05);
}

inline double ampdb(double amplitude) {
    return 20.0 * std::log10(amplitude);
}

} // namespace waxline
