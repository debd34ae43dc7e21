#include "restoration/ArModel.h"

#include <cmath>
#include <numbers>

namespace waxline::restoration {

double ArModel::forwardError(const float* x, size_t n) const {
    double e = x[n];
    for (size_t k = 1; k <= a.size(); ++k)
        e -= a[k - 1] * x[n - k];
    return e;
}

double ArModel::backwardError(const float* x, size_t n) const {
    double e = x[n];
    for (size_t k = 1; k <= a.size(); ++k)
        e -= a[k - 1] * x[n + k];
    return e;
}

ArModel fitArModel(const float* x, size_t length, int order) {
    ArModel model;
    const auto p = static_cast<size_t>(order);
    model.a.assign(p, 0.0);
    if (length <= p || p == 0)
        return model;
    std::vector<double> w(length);
    for (size_t i = 0; i < length; ++i)
        w[i] = x[i] * (0.5 - 0.5 * std::cos(2 * std::numbers::pi * (i + 0.5) / length));
    std::vector<double> r(p + 1, 0.0);
    for (size_t lag = 0; lag <= p; ++lag) {
        double sum = 0;
        for (size_t i = lag; i < length; ++i)
            sum += w[i] * w[i - lag];
        r[lag] = sum;
    }
    if (r[0] <= 0)
        return model;
    // A touch of white noise keeps the recursion well conditioned on very pure tones.
    r[0] *= 1.0 + 1e-9;

    std::vector<double> a(p + 1, 0.0), previous(p + 1, 0.0);
    a[0] = 1;
    double error = r[0];
    for (size_t i = 1; i <= p; ++i) {
        double acc = r[i];
        for (size_t j = 1; j < i; ++j)
            acc += a[j] * r[i - j];
        const double k = -acc / error;
        previous = a;
        for (size_t j = 1; j < i; ++j)
            a[j] = previous[j] + k * previous[i - j];
        a[i] = k;
        error *= 1 - k * k;
        if (error <= 0)
            break;
    }
    for (size_t k = 1; k <= p; ++k)
        model.a[k - 1] = -a[k];
    return model;
}

} // namespace waxline::restoration
