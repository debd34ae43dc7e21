#pragma once

#include <cstddef>
#include <vector>

namespace waxline::restoration {

// A stretch of samples taken for a click and repaired: [first, last].
struct ClickSpan {
    size_t first = 0;
    size_t last = 0;
};

struct ClickSettings {
    int order = 32;            // of the block's autoregressive model
    size_t blockLength = 4096; // samples per model
    // A sample stands out when its prediction error exceeds this many times the block's
    // robust error spread (its median absolute error / 0.6745).
    double threshold = 4.0;
    // A stretch found so is a click only when the forward error, filtered by the model's error
    // filter turned round, peaks above this many times its own spread in it (or filling it in
    // lowers the prediction error by far more than the music's own error would): a sudden
    // change of the music itself, one large error, does neither.
    double confirmation = 6.0;
    // Unless its matched peak reaches this many times its spread, a stretch is a click only
    // when, at some sample, the click estimated there stands out by `significance` times what
    // the music's own prediction error alone could make of it there.
    double clearPeak = 20.0;
    double significance = 10.0;
    size_t longestClick = 400; // stretches flagged longer than this are left alone
};

// Finds clicks and crackle in one channel and repairs them by least-squares AR interpolation.
// A click starts where the forward prediction error first stands out and ends where the
// backward one last does; a musical onset, where the forward error rises only after the
// backward one fell, is no click. Samples outside the returned spans are not touched.
std::vector<ClickSpan> removeClicks(std::vector<float>& x, const ClickSettings& settings = {});

// The detection alone, on x as it is, with each block's model fitted to x.
std::vector<ClickSpan> detectClicks(const std::vector<float>& x,
                                    const ClickSettings& settings = {});

} // namespace waxline::restoration
