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
bool interpolateLsar(float* x, size_t length, const std::vector<size_t>& unknown,
                     const ArModel& model);

} // namespace waxline::restoration
