#include "filters/GapDetector.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace Sonra::Audio::Filters {
namespace {

constexpr double kQ13 = 8192;
constexpr double kPi = 3.141592653589793;

// Conversion toward zero to a 64-bit integer as the hardware does it: a value out of range (or
// NaN, as a zero sample rate gives) becomes INT64_MIN instead of undefined behaviour.
int64_t truncate(double v) {
    return (v >= -9223372036854775808.0 && v < 9223372036854775808.0) ? static_cast<int64_t>(v)
                                                                      : INT64_MIN;
}

// Two's-complement negation, which wraps for INT64_MIN.
int64_t negate(int64_t v) {
    return static_cast<int64_t>(0 - static_cast<uint64_t>(v));
}

} // namespace

void GapDetector::SetFilter_BP(FilterParams* params, float centre, short halfWidth,
                               double sampleRate) {
    params->frequency = centre;
    // Doubled in 16-bit arithmetic: a half-width of 20000 wraps to -25536.
    const short width = static_cast<short>(2 * halfWidth);
    const double C = 1.0 / std::tan(static_cast<double>(width) * kPi / sampleRate);
    const double D =
        2.0 * std::cos(static_cast<double>(centre) * 2 * std::numbers::pi / sampleRate);
    const double g = 1.0 / (C + 1.0);
    // 2g in Q13: the band-pass peaks at a gain of 2.
    params->b0 = truncate(g * kQ13 + g * kQ13);
    params->b1 = 0;
    params->b2 = negate(params->b0);
    params->a1 = truncate(D * C * g * -kQ13);
    params->a2 = truncate((C - 1.0) * g * kQ13);
}

void GapDetector::SetFilter_LP(FilterParams* params, double cutoff, double resonance,
                               double sampleRate) {
    if (static_cast<double>(params->frequency) == cutoff)
        return;
    const double k = 1.4142135623730951 / ((300.0 - resonance) * 0.032 + 1.0);
    params->frequency = static_cast<float>(cutoff);
    const double C = 1.0 / std::tan(cutoff * kPi / sampleRate);
    const double g = 1.0 / (1.0 + k * C + C * C);
    params->b0 = truncate(g * kQ13);
    params->b1 = static_cast<int64_t>(2 * static_cast<uint64_t>(params->b0));
    params->b2 = params->b0;
    params->a1 = truncate(2.0 * (1.0 - C * C) * g * kQ13);
    params->a2 = truncate((1.0 - k * C + C * C) * g * kQ13);
}

} // namespace Sonra::Audio::Filters
