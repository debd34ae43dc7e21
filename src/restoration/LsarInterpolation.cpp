#include "restoration/LsarInterpolation.h"

#include <cmath>

namespace waxline::restoration {

std::vector<double> errorFilterCorrelation(const ArModel& model) {
    const auto p = static_cast<size_t>(model.order());
    std::vector<double> c(p + 1);
    c[0] = 1;
    for (size_t k = 1; k <= p; ++k)
        c[k] = -model.a[k - 1];
    std::vector<double> R(p + 1, 0.0);
    for (size_t d = 0; d <= p; ++d)
        for (size_t k = 0; k + d <= p; ++k)
            R[d] += c[k] * c[k + d];
    return R;
}

bool solvePositiveDefinite(std::vector<double>& M, std::vector<double>& b, size_t m) {
    for (size_t j = 0; j < m; ++j) {
        double diagonal = M[j * m + j];
        for (size_t k = 0; k < j; ++k)
            diagonal -= M[j * m + k] * M[j * m + k];
        if (!(diagonal > 0))
            return false;
        const double root = std::sqrt(diagonal);
        M[j * m + j] = root;
        for (size_t i = j + 1; i < m; ++i) {
            double sum = M[i * m + j];
            for (size_t k = 0; k < j; ++k)
                sum -= M[i * m + k] * M[j * m + k];
            M[i * m + j] = sum / root;
        }
    }
    for (size_t i = 0; i < m; ++i) {
        double sum = b[i];
        for (size_t k = 0; k < i; ++k)
            sum -= M[i * m + k] * b[k];
        b[i] = sum / M[i * m + i];
    }
    for (size_t i = m; i-- > 0;) {
        double sum = b[i];
        for (size_t k = i + 1; k < m; ++k)
            sum -= M[k * m + i] * b[k];
        b[i] = sum / M[i * m + i];
    }
    return true;
}

// With c = (1, -a1, ..., -ap) the error is e[n] = sum_k c[k] x[n - k]. Splitting x into the
// unknown samples u and the known rest, the errors are e = Au u + Ak xk, and the least-squares
// u solves (Au' Au) u = -Au' Ak xk. Summed over every row that meets an unknown, the entry of
// Au' Au for unknowns at t and s is R(|t - s|) = sum_k c[k] c[k + |t - s|], zero beyond p.
bool interpolateLsar(float* x, size_t length, const std::vector<size_t>& unknown,
                     const ArModel& model) {
    const size_t m = unknown.size();
    const auto p = static_cast<size_t>(model.order());
    if (m == 0)
        return true;
    if (unknown.front() < p || unknown.back() + p >= length)
        return false;
    std::vector<double> c(p + 1);
    c[0] = 1;
    for (size_t k = 1; k <= p; ++k)
        c[k] = -model.a[k - 1];
    const std::vector<double> R = errorFilterCorrelation(model);

    // The errors of the rows that meet an unknown, computed with the unknowns set to zero.
    const size_t first = unknown.front();
    const size_t last = unknown.back() + p;
    std::vector<double> known(last + 1 - first + p);
    for (size_t i = 0; i < known.size(); ++i)
        known[i] = x[first - p + i];
    for (size_t t : unknown)
        known[t - first + p] = 0;
    std::vector<double> e(last + 1 - first);
    for (size_t n = first; n <= last; ++n) {
        double sum = 0;
        for (size_t k = 0; k <= p; ++k)
            sum += c[k] * known[n - k - first + p];
        e[n - first] = sum;
    }

    std::vector<double> M(m * m, 0.0), b(m, 0.0);
    for (size_t i = 0; i < m; ++i) {
        for (size_t j = 0; j < m; ++j) {
            const size_t d =
                unknown[i] > unknown[j] ? unknown[i] - unknown[j] : unknown[j] - unknown[i];
            M[i * m + j] = d <= p ? R[d] : 0.0;
        }
        double sum = 0;
        for (size_t k = 0; k <= p; ++k)
            sum += c[k] * e[unknown[i] + k - first];
        b[i] = -sum;
    }

    // M is symmetric positive definite for any model (c[0] = 1).
    if (!solvePositiveDefinite(M, b, m))
        return false;
    for (size_t i = 0; i < m; ++i)
        x[unknown[i]] = static_cast<float>(b[i]);
    return true;
}

} // namespace waxline::restoration
