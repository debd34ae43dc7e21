#pragma once

#include <cstddef>
#include <vector>

namespace waxline {

// End-to-end monitor latency from a recording of the output: every click of a regular train
// arrives there twice, straight from the source and again through the monitor. The delay of the
// second arrival behind the first is what a listener hears as the monitor's latency.

// A click: a short full-scale burst, so that resampling on the way cannot hide its onset.
constexpr double kClickSeconds = 0.002;

// `clicks` clicks, `periodSeconds` apart, the first after `leadSeconds` of silence; mono.
std::vector<float> makeClickTrain(double rate, double periodSeconds, int clicks,
                                  double leadSeconds);

struct ClickDelay {
    double atSeconds = 0; // where the straight click was heard
    double delayMs = 0;   // how late its monitored copy came
    bool lost = false;    // no copy came before the next click
};

// The clicks heard in `mono` (one channel at `rate`), each with the delay of its copy. Copies
// later than the period less a margin cannot be told from the next click and count as lost.
// A straight click missing from the recording is placed where the train puts it.
std::vector<ClickDelay> findClickDelays(const std::vector<float>& mono, double rate,
                                        double periodSeconds);

// Median and worst of the delays of the clicks not lost (0 when there are none).
struct DelaySummary {
    std::size_t clicks = 0;
    std::size_t lost = 0;
    double medianMs = 0;
    double worstMs = 0;
};
DelaySummary summarise(const std::vector<ClickDelay>& delays);

} // namespace waxline
