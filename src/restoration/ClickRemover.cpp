#include "restoration/ClickRemover.h"

#include "restoration/ArModel.h"
#include "restoration/LsarInterpolation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace waxline::restoration {

namespace {

// Samples a stretch is widened by on each side: a click's faint edges lie below the threshold.
constexpr size_t kMargin = 2;

double robustSpread(std::vector<double>& magnitudes) {
    if (magnitudes.empty())
        return 0;
    auto middle = magnitudes.begin() + static_cast<std::ptrdiff_t>(magnitudes.size() / 2);
    std::nth_element(magnitudes.begin(), middle, magnitudes.end());
    return *middle / 0.6745;
}

// The clicks of block [begin, end) of x under `model`: flags from both prediction errors,
// grouped while they lie within `order` samples of each other.
void findInBlock(const std::vector<float>& x, size_t begin, size_t end, const ArModel& model,
                 const ClickSettings& settings, std::vector<ClickSpan>& spans) {
    const auto p = static_cast<size_t>(model.order());
    const size_t from = std::max(begin, p);
    const size_t to = std::min(end, x.size() - p);
    if (from >= to)
        return;
    std::vector<double> forward(to - from), backward(to - from);
    for (size_t n = from; n < to; ++n) {
        forward[n - from] = model.forwardError(x.data(), n);
        backward[n - from] = model.backwardError(x.data(), n);
    }
    std::vector<double> magnitudes(forward.size());
    std::transform(forward.begin(), forward.end(), magnitudes.begin(),
                   [](double e) { return std::abs(e); });
    const double limit = settings.threshold * robustSpread(magnitudes);
    if (!(limit > 0))
        return;

    size_t groupEnd = 0;
    bool open = false;
    constexpr size_t kNone = std::numeric_limits<size_t>::max();
    size_t firstForward = kNone;
    size_t lastBackward = 0;
    auto close = [&] {
        if (firstForward != kNone && lastBackward >= firstForward &&
            lastBackward - firstForward < settings.longestClick)
            spans.push_back({firstForward, lastBackward});
        firstForward = kNone;
        lastBackward = 0;
        open = false;
    };
    for (size_t n = from; n < to; ++n) {
        const bool f = std::abs(forward[n - from]) > limit;
        const bool b = std::abs(backward[n - from]) > limit;
        if (!f && !b)
            continue;
        if (open && n > groupEnd + p)
            close();
        open = true;
        groupEnd = n;
        if (f)
            firstForward = std::min(firstForward, n);
        if (b)
            lastBackward = std::max(lastBackward, n);
    }
    if (open)
        close();
}

std::vector<ClickSpan> widenedAndMerged(std::vector<ClickSpan> spans, size_t length, size_t p) {
    std::vector<ClickSpan> merged;
    for (ClickSpan span : spans) {
        span.first = span.first >= p + kMargin ? span.first - kMargin : p;
        span.last = std::min(span.last + kMargin, length > p + 1 ? length - p - 1 : 0);
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
    return widenedAndMerged(std::move(spans), x.size(), static_cast<size_t>(settings.order));
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
