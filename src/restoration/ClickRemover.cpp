#include "restoration/ClickRemover.h"

#include "restoration/ArModel.h"
#include "restoration/LsarInterpolation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace waxline::restoration {

namespace {

// Samples over which the prediction error's spread is taken, and the least share of the block's
// spread a quiet stretch keeps.
constexpr size_t kLocal = 256;
constexpr double kFloor = 0.25;
// The farthest apart the two edges of one long click lie.
constexpr size_t kLongestStepPair = 120;
// A span grows by at most kGrowth samples a side while the error stays above kLow times the
// threshold.
constexpr size_t kGrowth = 16;
constexpr double kLow = 0.5;
// How far the error reduction of a stretch must stand above the music's own to make it a click
// without a peak, in multiples of the spread.
constexpr double kSure = 20.0;

double robustSpread(std::vector<double>& magnitudes) {
    if (magnitudes.empty())
        return 0;
    auto middle = magnitudes.begin() + static_cast<std::ptrdiff_t>(magnitudes.size() / 2);
    std::nth_element(magnitudes.begin(), middle, magnitudes.end());
    return *middle / 0.6745;
}

// `times` the robust spread of the first `length` values in stretches of kLocal samples, so
// that loud passages raise the bar only where they are; never below a share of the whole
// block's spread. Empty when the block is silent.
std::vector<double> localLimits(const std::vector<double>& values, size_t length, double times) {
    std::vector<double> magnitudes(length);
    std::transform(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(length),
                   magnitudes.begin(), [](double e) { return std::abs(e); });
    std::vector<double> all(magnitudes);
    const double blockSpread = robustSpread(all);
    if (!(blockSpread > 0))
        return {};
    std::vector<double> limit(length);
    for (size_t s = 0; s < length; s += kLocal) {
        const size_t e = std::min(length, s + kLocal);
        std::vector<double> local(magnitudes.begin() + static_cast<std::ptrdiff_t>(s),
                                  magnitudes.begin() + static_cast<std::ptrdiff_t>(e));
        const double spread = std::max(robustSpread(local), kFloor * blockSpread);
        std::fill(limit.begin() + static_cast<std::ptrdiff_t>(s),
                  limit.begin() + static_cast<std::ptrdiff_t>(e), times * spread);
    }
    return limit;
}

// A group of flagged samples: where the forward error first and the backward error last stood
// out. A click shows both around itself (first forward <= last backward); a step, the edge of a
// click longer than the model sees at once or a musical onset, shows the backward error before
// it and the forward error after it.
struct FlagGroup {
    size_t firstForward = std::numeric_limits<size_t>::max();
    size_t lastBackward = 0;
    bool hasForward() const { return firstForward != std::numeric_limits<size_t>::max(); }
    bool isClick() const { return hasForward() && lastBackward >= firstForward; }
    bool isStep() const { return hasForward() && lastBackward < firstForward; }
};

// The clicks of block [begin, end) of x under `model`: flags from both prediction errors, each
// against the robust spread of the forward error around it, grouped while they lie within
// `order` samples of each other. Two steps close together are the edges of one long click.
void findInBlock(const std::vector<float>& x, size_t begin, size_t end, const ArModel& model,
                 const ClickSettings& settings, std::vector<ClickSpan>& spans) {
    const auto p = static_cast<size_t>(model.order());
    const size_t from = std::max(begin, p);
    const size_t to = std::min(end, x.size() - p);
    if (from >= to)
        return;
    const size_t length = to - from;
    // Forward errors run on by the model order, for the matched filter below.
    const size_t ahead = std::min(to + p, x.size()) - from;
    std::vector<double> forward(ahead), backward(length);
    for (size_t n = from; n < from + ahead; ++n)
        forward[n - from] = model.forwardError(x.data(), n);
    for (size_t n = from; n < to; ++n)
        backward[n - from] = model.backwardError(x.data(), n);
    // The forward errors filtered by the model's error filter turned round: a sample added to
    // the signal (a click) spreads over the next `order` errors by that filter and gathers back
    // here at full strength, while a sudden change of the music itself (one large error) does
    // not. Clicks are told from musical transients by this.
    std::vector<double> matched(length);
    for (size_t n = 0; n < length; ++n) {
        double sum = forward[n];
        for (size_t k = 1; k <= p && n + k < ahead; ++k)
            sum -= model.a[k - 1] * forward[n + k];
        matched[n] = sum;
    }
    // The spread in stretches of kLocal samples, so that loud passages raise the bar only
    // where they are; never below a fraction of the whole block's.
    const std::vector<double> limit = localLimits(forward, length, settings.threshold);
    const std::vector<double> peakLimit = localLimits(matched, length, settings.confirmation);
    if (limit.empty() || peakLimit.empty())
        return;
    // A click shows as a peak of the matched values above their spread. A long smooth click
    // may not, but filling it in lowers the summed squared prediction error far more than the
    // music's own error would: u' M^-1 u, with u the matched values at the stretch and M its
    // least-squares system, is about the spread squared times the length without a click.
    const std::vector<double> R = errorFilterCorrelation(model);
    // The click LSAR would take away at the given samples, M^-1 u: the matched values are the
    // gradient of the summed squared prediction error there. False when M is singular.
    std::vector<double> deviation;
    auto estimate = [&](const std::vector<size_t>& at, std::vector<double>& y, double& reduction) {
        const size_t m = at.size();
        std::vector<double> M(m * m);
        y.resize(m);
        for (size_t i = 0; i < m; ++i) {
            y[i] = matched[at[i] - from];
            for (size_t j = 0; j < m; ++j) {
                const size_t d = at[i] > at[j] ? at[i] - at[j] : at[j] - at[i];
                M[i * m + j] = d <= p ? R[d] : 0.0;
            }
        }
        const std::vector<double> u(y);
        if (!solvePositiveDefinite(M, y, m))
            return false;
        reduction = 0;
        for (size_t i = 0; i < m; ++i)
            reduction += u[i] * y[i];
        // How far each estimate may stray by the music's own error alone, in multiples of its
        // spread: the root of the diagonal of M^-1 = L^-T L^-1, M = L L' as factored above.
        deviation.assign(m, 0.0);
        std::vector<double> z(m);
        for (size_t i = 0; i < m; ++i) {
            for (size_t r = i; r < m; ++r) {
                double sum = r == i ? 1.0 : 0.0;
                for (size_t k = i; k < r; ++k)
                    sum -= M[r * m + k] * z[k];
                z[r] = sum / M[r * m + r];
                deviation[i] += z[r] * z[r];
            }
            deviation[i] = std::sqrt(deviation[i]);
        }
        return true;
    };
    // A click shows as a peak of the matched values well above their spread, or as an
    // estimated click that stands out of what the music's own error alone could make of it at
    // some sample. A sharp change of the music that only just clears the flags does neither.
    // Failing both, a long smooth click still lowers the summed squared prediction error far
    // more than the music would: u' M^-1 u is about the spread squared times the length
    // without a click.
    auto confirm = [&](const ClickSpan& span) {
        const double spread = limit[span.first - from] / settings.threshold;
        std::vector<size_t> at;
        for (size_t n = span.first; n <= span.last; ++n)
            at.push_back(n);
        std::vector<double> y;
        double reduction = 0;
        if (!estimate(at, y, reduction)) {
            spans.push_back(span);
            return;
        }
        double peak = 0, standing = 0;
        for (size_t i = 0; i < at.size(); ++i) {
            peak = std::max(peak, std::abs(matched[at[i] - from]) /
                                      (peakLimit[at[i] - from] / settings.confirmation));
            standing = std::max(standing, std::abs(y[i]) / (spread * deviation[i]));
        }
        if (peak < settings.clearPeak && standing < settings.significance)
            return;
        const auto m = static_cast<double>(at.size());
        if (peak > settings.confirmation || reduction > spread * spread * (kSure * kSure + m))
            spans.push_back(span);
    };

    std::vector<FlagGroup> groups;
    size_t groupEnd = 0;
    for (size_t n = from; n < to; ++n) {
        const bool f = std::abs(forward[n - from]) > limit[n - from];
        const bool b = std::abs(backward[n - from]) > limit[n - from];
        if (!f && !b)
            continue;
        if (groups.empty() || n > groupEnd + p)
            groups.emplace_back();
        groupEnd = n;
        if (f)
            groups.back().firstForward = std::min(groups.back().firstForward, n);
        if (b)
            groups.back().lastBackward = std::max(groups.back().lastBackward, n);
    }
    // A click's faint start and tail lie below the threshold: the span grows while the error
    // that sees them from the clean side (forward before, backward after) is still raised.
    auto grown = [&](size_t first, size_t last) {
        for (size_t k = 0; k < kGrowth && first > from && first - 1 >= from &&
                           std::abs(forward[first - 1 - from]) > kLow * limit[first - 1 - from];
             ++k)
            --first;
        for (size_t k = 0; k < kGrowth && last + 1 < to &&
                           std::abs(backward[last + 1 - from]) > kLow * limit[last + 1 - from];
             ++k)
            ++last;
        return ClickSpan{first, last};
    };
    for (size_t g = 0; g < groups.size(); ++g) {
        const FlagGroup& group = groups[g];
        if (group.isClick() && group.lastBackward - group.firstForward < settings.longestClick) {
            confirm(grown(group.firstForward, group.lastBackward));
        } else if (group.isStep() && g + 1 < groups.size() && groups[g + 1].isStep() &&
                   groups[g + 1].lastBackward - group.firstForward < kLongestStepPair) {
            confirm(grown(group.firstForward, groups[g + 1].lastBackward));
            ++g;
        }
    }
}

std::vector<ClickSpan> keptInsideAndMerged(std::vector<ClickSpan> spans, size_t length, size_t p) {
    std::vector<ClickSpan> merged;
    for (ClickSpan span : spans) {
        span.first = std::max(span.first, p);
        span.last = std::min(span.last, length > p + 1 ? length - p - 1 : 0);
        if (span.first > span.last)
            continue;
        if (!merged.empty() && span.first <= merged.back().last + 1)
            merged.back().last = std::max(merged.back().last, span.last);
        else
            merged.push_back(span);
    }
    return merged;
}

std::vector<ClickSpan> detectWith(const std::vector<float>& x, const ClickSettings& settings,
                                  const std::vector<ArModel>& models) {
    std::vector<ClickSpan> spans;
    for (size_t block = 0; block < models.size(); ++block) {
        const size_t begin = block * settings.blockLength;
        findInBlock(x, begin, std::min(x.size(), begin + settings.blockLength), models[block],
                    settings, spans);
    }
    return keptInsideAndMerged(std::move(spans), x.size(), static_cast<size_t>(settings.order));
}

std::vector<ArModel> fitBlocks(const std::vector<float>& x, const ClickSettings& settings) {
    std::vector<ArModel> models;
    for (size_t begin = 0; begin < x.size(); begin += settings.blockLength)
        models.push_back(fitArModel(
            x.data() + begin, std::min(settings.blockLength, x.size() - begin), settings.order));
    return models;
}

// Repairs the spans in x, those closer than the model order together as one system.
void repair(std::vector<float>& x, const std::vector<ClickSpan>& spans,
            const ClickSettings& settings, const std::vector<ArModel>& models) {
    const auto p = static_cast<size_t>(settings.order);
    for (size_t i = 0; i < spans.size();) {
        std::vector<size_t> unknown;
        size_t j = i;
        do {
            for (size_t n = spans[j].first; n <= spans[j].last; ++n)
                unknown.push_back(n);
            ++j;
        } while (j < spans.size() && spans[j].first <= spans[j - 1].last + p &&
                 unknown.size() < 4 * settings.longestClick);
        const ArModel& model =
            models[std::min(models.size() - 1, spans[i].first / settings.blockLength)];
        interpolateLsar(x.data(), x.size(), unknown, model);
        i = j;
    }
}

} // namespace

std::vector<ClickSpan> detectClicks(const std::vector<float>& x, const ClickSettings& settings) {
    return detectWith(x, settings, fitBlocks(x, settings));
}

std::vector<ClickSpan> removeClicks(std::vector<float>& x, const ClickSettings& settings) {
    if (x.size() <= 2 * static_cast<size_t>(settings.order) || settings.blockLength == 0)
        return {};
    const std::vector<ArModel> first = fitBlocks(x, settings);
    std::vector<ClickSpan> spans = detectWith(x, settings, first);
    if (spans.empty())
        return spans;
    // The clicks pull the first models towards themselves: fit again on the repaired audio,
    // then detect and repair the original with the cleaner models.
    std::vector<float> repaired(x);
    repair(repaired, spans, settings, first);
    const std::vector<ArModel> second = fitBlocks(repaired, settings);
    spans = detectWith(x, settings, second);
    repair(x, spans, settings, second);
    return spans;
}

} // namespace waxline::restoration
