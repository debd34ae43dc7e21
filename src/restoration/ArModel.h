#pragma once

#include <cstddef>
#include <vector>

namespace waxline::restoration {

// An autoregressive model of a stretch of audio: x[n] is predicted as the sum of a[k - 1] *
// x[n - k] for k = 1..order. Fitted by the autocorrelation method (Hann window, Levinson-Durbin
// recursion), which always gives a stable model.
struct ArModel {
    std::vector<double> a;
    int order() const { return static_cast<int>(a.size()); }
    // The forward prediction error at n (needs order samples before n).
    double forwardError(const float* x, size_t n) const;
    // The backward prediction error at n: x[n] from the order samples after it.
    double backwardError(const float* x, size_t n) const;
};

// Fits a model of the given order to x[0..length); a silent or too short stretch gives all
// coefficients zero.
ArModel fitArModel(const float* x, size_t length, int order);

} // namespace waxline::restoration
