#include "filters/GapContext.h"

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
    c.shortestSide = static_cast<double>(std::min(before.frames, after.frames)) * frameSeconds;
    if (before.frames == 0 || after.frames == 0)
        return c;
    // Shape only: the mean difference over the bins is the loudness step, measured apart.
    double mean = 0;
    for (size_t b = 0; b < side.bins; ++b)
        mean += after.spectrum[b] - before.spectrum[b];
    mean /= static_cast<double>(side.bins);
    double distance = 0;
    for (size_t b = 0; b < side.bins; ++b)
        distance += std::fabs(after.spectrum[b] - before.spectrum[b] - mean);
    c.timbreDistance = distance / static_cast<double>(side.bins);
    c.levelStep = after.level - before.level;
    const auto second = static_cast<size_t>(1.0 / frameSeconds);
    c.fadeBefore = before.level - meanLevel(side, first - 1, -1, second);
    c.attackAfter = after.level - meanLevel(side, last, 1, second);
    return c;
}

} // namespace Sonra::Audio::Filters
