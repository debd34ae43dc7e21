#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace waxline {

// Decibels to an amplitude factor and back, in double precision: the one rule that the monitor
// gain and the level meter share, so what the slider says is what the meter shows.
inline double dbamp(double dB) {
    return std::pow(10.0, dB * 0.05);
}

inline double ampdb(double amplitude) {
    return 20.0 * std::log10(amplitude);
}

// The range of the recording gain: the command line refuses values outside it, and the gain
// stages hold any value to it, so no factor can be zero or infinite.
inline constexpr double kMinGainDb = -60;
inline constexpr double kMaxGainDb = 40;

// The one gain stage of the monitor and the recorders: dbamp's factor, in single precision for
// the audio threads, of the gain held to its range. A NaN gives unity.
inline float gainFactor(double dB) {
    return std::isnan(dB) ? 1.0f
                          : static_cast<float>(dbamp(std::clamp(dB, kMinGainDb, kMaxGainDb)));
}

// Applies a gain factor in place. Only the upper side is clamped to full scale: negative peaks
// pass as they are, as they always have through the monitor. Real-time safe.
inline void applyGain(float* samples, size_t count, float factor) {
    if (factor == 1.0f)
        return;
    for (size_t i = 0; i < count; ++i)
        samples[i] = std::min(1.0f, factor * samples[i]);
}

} // namespace waxline
