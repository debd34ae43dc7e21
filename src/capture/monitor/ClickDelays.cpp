#include "capture/monitor/ClickDelays.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace waxline {

namespace {

// An onset: a sample above the threshold after this long below it. With the click's length,
// the shortest delay told apart from the click itself.
constexpr double kQuietBeforeSeconds = 0.003;
// How far a straight click may stray from its place in the train (the path to the output
// may resample and adjust its rate).
constexpr double kLatticeToleranceSeconds = 0.012;
constexpr double kThresholdOfPeak = 0.3;

std::vector<std::size_t> onsets(const std::vector<float>& mono, double rate) {
    float peak = 0;
    for (float s : mono)
        peak = std::max(peak, std::abs(s));
    std::vector<std::size_t> found;
    if (peak <= 0)
        return found;
    const float threshold = peak * static_cast<float>(kThresholdOfPeak);
    const auto quiet = static_cast<std::size_t>(kQuietBeforeSeconds * rate);
    std::size_t lastLoud = 0;
    bool anyLoud = false;
    for (std::size_t i = 0; i < mono.size(); ++i) {
        if (std::abs(mono[i]) < threshold)
            continue;
        if (!anyLoud || i - lastLoud > quiet)
            found.push_back(i);
        anyLoud = true;
        lastLoud = i;
    }
    return found;
}

} // namespace

std::vector<float> makeClickTrain(double rate, double periodSeconds, int clicks,
                                  double leadSeconds) {
    const auto lead = static_cast<std::size_t>(leadSeconds * rate);
    const auto period = static_cast<std::size_t>(periodSeconds * rate);
    const auto burst = static_cast<std::size_t>(kClickSeconds * rate);
    std::vector<float> train(lead + static_cast<std::size_t>(clicks) * period, 0.0f);
    // A 2 kHz burst: well inside every rate's band, full level from its first half-wave.
    for (int k = 0; k < clicks; ++k)
        for (std::size_t i = 0; i < burst; ++i)
            train[lead + static_cast<std::size_t>(k) * period + i] = static_cast<float>(
                0.8 * std::sin(2.0 * std::numbers::pi * 2000.0 * static_cast<double>(i) / rate +
                               std::numbers::pi / 2.0));
    return train;
}

std::vector<ClickDelay> findClickDelays(const std::vector<float>& mono, double rate,
                                        double periodSeconds) {
    const std::vector<std::size_t> heard = onsets(mono, rate);
    std::vector<ClickDelay> result;
    if (heard.empty())
        return result;
    const double period = periodSeconds * rate;
    const double tolerance = kLatticeToleranceSeconds * rate;
    // The first onset is a straight click: nothing the monitor plays can come before it. Each
    // next straight click is one period after the last; whatever lies between is a copy.
    double straight = static_cast<double>(heard.front());
    std::size_t i = 1;
    while (true) {
        ClickDelay click;
        click.atSeconds = straight / rate;
        click.lost = true;
        double next = straight + period;
        bool nextFound = false;
        for (; i < heard.size(); ++i) {
            const auto at = static_cast<double>(heard[i]);
            if (std::abs(at - next) <= tolerance) {
                next = at;
                nextFound = true;
                ++i;
                break;
            }
            if (at > next + tolerance)
                break;
            if (click.lost) {
                click.lost = false;
                click.delayMs = (at - straight) / rate * 1000.0;
            }
        }
        result.push_back(click);
        if (!nextFound && i >= heard.size()) {
            // The train or the recording ended; a last click whose copy was cut off says
            // nothing.
            if (result.back().lost)
                result.pop_back();
            break;
        }
        // A straight click that never came (its path ran dry) leaves the train where it was:
        // the next onset is then its copy, and taking that for the train would measure every
        // later copy against the wrong click, a period less its true delay.
        straight = next;
    }
    return result;
}

DelaySummary summarise(const std::vector<ClickDelay>& delays) {
    DelaySummary summary;
    std::vector<double> heard;
    for (const ClickDelay& d : delays) {
        ++summary.clicks;
        if (d.lost)
            ++summary.lost;
        else
            heard.push_back(d.delayMs);
    }
    if (heard.empty())
        return summary;
    std::sort(heard.begin(), heard.end());
    const std::size_t n = heard.size();
    summary.medianMs = n % 2 ? heard[n / 2] : (heard[n / 2 - 1] + heard[n / 2]) / 2.0;
    summary.worstMs = heard.back();
    return summary;
}

} // namespace waxline
