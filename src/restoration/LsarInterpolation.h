#pragma once

#include "restoration/ArModel.h"

#include <cstddef>
#include <vector>

namespace waxline::restoration {

// Least-squares autoregressive interpolation: replaces the samples at `unknown` (ascending
// positions in x) by the values that minimise the summed squared prediction error of the
// model over every prediction that involves one of them. Each unknown needs `order` samples
// on both sides inside x; the other samples are not touched. False when the system cannot be
// solved (the samples are then left alone).
// The autocorrelation of the model's error filter c = (1, -a1, ..., -ap): R[d] = sum c[k] c[k+d].
// Entry (i, j) of the least-squares system for unknowns at t and s is R[|t - s|].
std::vector<double> errorFilterCorrelation(const ArModel& model);

// Solves M y = b in place (b becomes y) for a symmetric positive definite m x m matrix M,
// stored row by row (its lower half is overwritten). False when M is not positive definite.
bool solvePositiveDefinite(std::vector<double>& M, std::vector<double>& b, size_t m);

bool interpolateLsar(float* x, size_t length, const std::vector<size_t>& unknown,
                     const ArModel& model);

} // namespace waxline::restoration
