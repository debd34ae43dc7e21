#include "GapContext.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Sonra::Audio::Filters {
namespace {

// The mean spectrum (dB per bin) and mean level of the music frames met walking from `start`
// by `step` until `reach` of them are counted or the side ends; `edge` music frames next to the
// quiet are passed over first.
struct Summary {
    std::vector<double> spectrum;
    double level = 0;
    size_t frames = 0;
};

Summary summarise(const SideSplitter& splitter, long start, long step, size_t edge, size_t reach) {
    const SideFeatures& side = splitter.features();
    const std::vector<bool>& music = splitter.musicFrames();
    const long n = static_cast<long>(side.frames());
    Summary s;
    s.spectrum.assign(side.bins, 0.0);
    size_t skipped = 0;
    for (long f = start; f >= 0 && f < n && s.frames < reach; f += step) {
        const auto u = static_cast<size_t>(f);
        if (!music[u])
            continue;
        if (skipped < edge) {
            ++skipped;
            continue;
        }
        const uint8_t* spectrum = side.spectrumOf(u);
        for (size_t b = 0; b < side.bins; ++b)
            s.spectrum[b] += spectrum[b];
        s.level += side.level[u];
        ++s.frames;
    }
    if (s.frames == 0)
        return s;
    const double scale = SideFeatures::kSpectrumStepDb / static_cast<double>(s.frames);
    for (double& v : s.spectrum)
        v *= scale;
    s.level /= static_cast<double>(s.frames);
    return s;
}

// The mean absolute difference of two spectra in dB over the bins, their mean difference (a
// loudness step, measured apart) taken out: how far their shapes differ.
double shapeDistance(const std::vector<double>& a, const std::vector<double>& b) {
    double mean = 0;
    for (size_t i = 0; i < a.size(); ++i)
        mean += b[i] - a[i];
    mean /= static_cast<double>(a.size());
    double distance = 0;
    for (size_t i = 0; i < a.size(); ++i)
        distance += std::fabs(b[i] - a[i] - mean);
    return distance / static_cast<double>(a.size());
}

// The mean level over `count` frames walking from `start` by `step`, digital silence as floor.
double meanLevel(const SideFeatures& side, long start, long step, size_t count) {
    const long n = static_cast<long>(side.frames());
    double sum = 0;
    size_t used = 0;
    for (long f = start; f >= 0 && f < n && used < count; f += step, ++used)
        sum += std::max(side.level[static_cast<size_t>(f)], -110.0f);
    return used > 0 ? sum / static_cast<double>(used) : -110.0;
}

} // namespace

GapContext GapContext::measure(const SideSplitter& splitter, const SplitBoundary& gap) {
    GapContext c;
    const SideFeatures& side = splitter.features();
    if (side.hop == 0 || side.frames() == 0)
        return c;
    const double frameSeconds = side.frameSeconds();
    const auto hop = static_cast<int64_t>(side.hop);
    const long first = static_cast<long>(gap.quietStart / hop);
    const long last = static_cast<long>((gap.quietEnd + hop - 1) / hop);
    const auto edge = static_cast<size_t>(kEdgeSeconds / frameSeconds);
    const auto reach = static_cast<size_t>(kReachSeconds / frameSeconds);
    const Summary before = summarise(splitter, first - 1, -1, edge, reach);
    const Summary after = summarise(splitter, last, 1, edge, reach);
    // The same piece either side differs across the quiet no more than within either side.
    const Summary nearBefore = summarise(splitter, first - 1, -1, edge, reach / 2);
    const Summary farBefore = summarise(splitter, first - 1, -1, edge + reach / 2, reach / 2);
    const Summary nearAfter = summarise(splitter, last, 1, edge, reach / 2);
    const Summary farAfter = summarise(splitter, last, 1, edge + reach / 2, reach / 2);
    if (nearBefore.frames > 0 && farBefore.frames > 0 && nearAfter.frames > 0 &&
        farAfter.frames > 0) {
        const double across = shapeDistance(nearBefore.spectrum, nearAfter.spectrum);
        const double within = 0.5 * (shapeDistance(nearBefore.spectrum, farBefore.spectrum) +
                                     shapeDistance(nearAfter.spectrum, farAfter.spectrum));
        c.novelty = across / std::max(within, 0.1);
    }
    c.shortestSide = static_cast<double>(std::min(before.frames, after.frames)) * frameSeconds;
    if (before.frames == 0 || after.frames == 0)
        return c;
    c.timbreDistance = shapeDistance(before.spectrum, after.spectrum);
    c.levelStep = after.level - before.level;
    const auto second = static_cast<size_t>(1.0 / frameSeconds);
    c.fadeBefore = before.level - meanLevel(side, first - 1, -1, second);
    c.attackAfter = after.level - meanLevel(side, last, 1, second);
    return c;
}

} // namespace Sonra::Audio::Filters
