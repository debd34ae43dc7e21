#include "filters/SideSplitter.h"

#include "filters/CrossFade.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Sonra::Audio::Filters {
namespace {

constexpr float kSilentDb = -110;   // below: digital silence, no groove at all
constexpr float kModeStepDb = 0.5;  // the level distribution's resolution
constexpr float kModeWidthDb = 1.5; // frames this close to its noise peak are groove noise
constexpr size_t kMinNoiseFrames = 10;
constexpr size_t kMinModeFrames = 40;
constexpr double kModeSeconds = 8;           // of noise make a peak however much music there is
constexpr float kModeClimbDb = 1.5;          // from where the noise's frames are enough to its peak
constexpr double kExponentialMedianDb = 1.6; // a noise bin's mean lies 1.6 dB above its median
constexpr double kLogAverageBiasDb = 2.5;    // -10 log10(e) times Euler's constant
constexpr double kAboveNoiseDb = 8;          // a peak this far above the noise's mean power ...
constexpr double kAboveNeighboursDb = 10;    // ... and above its neighbours is a tone
constexpr size_t kNeighbourBins = 6;
constexpr int kTonalPeaks = 2;         // tones in a frame that make it music
constexpr float kLoudDb = 4.5;         // a frame this far above the noise is music whatever it is
constexpr float kCleanDb = 3;          // a gap frame lies this close to the noise
constexpr float kDarkDb = 1.5;         // ... and its low band this close: soft music lifts it
constexpr size_t kBlipFrames = 2;      // shorter bursts of "music" inside quiet are chance
constexpr size_t kBridgeFrames = 6;    // quiet stretches this close together are one
constexpr size_t kPlacementFrames = 4; // either side of a frame, for its surroundings
constexpr float kPlacementSpreadDb = 0.5;
constexpr double kEdgeSeconds = 0.25;
constexpr double kMusicRunSeconds = 1.0; // music starts with at least this much of it
constexpr double kMinCandidateSeconds = 0.25;
constexpr double kMinGapSeconds = 0.6;
constexpr double kConvincing = 0.8;
constexpr double kMinTrackSeconds = 12;
constexpr double kDipSpacingSeconds = 5;
constexpr size_t kMaxDips = 3 * SideSplitter::kMaxTracks;
constexpr double kDipConfidence = 0.02;
constexpr double kSegueReachSeconds = 3; // how far a quiet moment may lie from its cross-fade
constexpr double kLowBandTopHz = 800;    // soft music keeps its energy low; hiss and clicks do not
constexpr size_t kLowBandReach = 5;      // frames either side of the median that steadies it

float median(std::vector<float>& values) {
    if (values.empty())
        return 0;
    auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

SideSplitter::SideSplitter(SideFeatures features)
    : side(std::move(features)) {
    const size_t n = side.frames();
    music.assign(n, false);
    if (n == 0)
        return;
    smoothed = meansAround(side.level, 0, n, 2, kSilentDb);
    learnNoise();
    findLowBand();
    classifyFrames();
    if (!hasMusic)
        return;
    findCandidates();
    findDips();
}

void SideSplitter::learnNoise() {
    // The groove noise is the level the side keeps coming back to between the music: the
    // tallest narrow peak of the level distribution below its median. Its minimum would be the
    // digital silence at the end of a fade or a tape leader, far below the noise of the gaps.
    const size_t n = side.frames();
    std::vector<float> sounding;
    for (size_t f = 0; f < n; ++f)
        if (side.level[f] > kSilentDb)
            sounding.push_back(side.level[f]);
    std::vector<size_t> noise;
    if (sounding.size() >= kMinNoiseFrames) {
        std::vector<float> sorted = sounding;
        const float middle = median(sorted);
        const float lowest = *std::min_element(sounding.begin(), sounding.end());
        const auto bins = static_cast<size_t>(std::max(1.0f, (middle - lowest) / kModeStepDb)) + 1;
        std::vector<size_t> histogram(bins, 0);
        for (float l : sounding)
            if (l <= middle)
                ++histogram[std::min(bins - 1, static_cast<size_t>((l - lowest) / kModeStepDb))];
        const auto reach = static_cast<size_t>(kModeWidthDb / kModeStepDb);
        std::vector<size_t> window(bins, 0);
        size_t tallest = 0;
        for (size_t b = 0; b < bins; ++b) {
            for (size_t c = b >= reach ? b - reach : 0; c < std::min(bins, b + reach + 1); ++c)
                window[b] += histogram[c];
            tallest = std::max(tallest, window[b]);
        }
        // The lowest peak of some weight: a fade's tail passes each level too fast to make one.
        // A few seconds of it is enough: a side of segues has noise only before and after.
        const auto seconds = static_cast<size_t>(kModeSeconds / side.frameSeconds());
        const size_t enough = std::max(kMinModeFrames, std::min(tallest * 3 / 10, seconds));
        size_t best = 0;
        while (best < bins && window[best] < enough)
            ++best;
        // Noise makes a peak of its own; under loud hiss it may be only a shoulder of soft
        // music, whose peak lies further up.
        const size_t start = best;
        const auto climb = static_cast<size_t>(kModeClimbDb / kModeStepDb);
        while (best + 1 < bins && window[best + 1] > window[best] && best < start + climb)
            ++best;
        const float mode = lowest + (static_cast<float>(best) + 0.5f) * kModeStepDb;
        for (size_t f = 0; f < n; ++f)
            if (side.level[f] > kSilentDb && std::fabs(side.level[f] - mode) <= kModeWidthDb)
                noise.push_back(f);
    }
    if (noise.size() < kMinNoiseFrames) {
        noise.resize(n);
        std::iota(noise.begin(), noise.end(), size_t{0});
        const size_t keep = std::min(n, kMinNoiseFrames);
        std::partial_sort(noise.begin(), noise.begin() + static_cast<std::ptrdiff_t>(keep),
                          noise.end(),
                          [&](size_t a, size_t b) { return side.level[a] < side.level[b]; });
        noise.resize(keep);
    }
    std::vector<float> values(noise.size());
    for (size_t i = 0; i < noise.size(); ++i)
        values[i] = side.level[noise[i]];
    noiseLevel = median(values);
    // The median of each bin over the noise frames: clicks in them are outliers it ignores.
    profile.resize(side.bins);
    for (size_t b = 0; b < side.bins; ++b) {
        for (size_t i = 0; i < noise.size(); ++i)
            values[i] = side.spectrumOf(noise[i])[b];
        profile[b] = median(values) +
                     static_cast<float>(kExponentialMedianDb / SideFeatures::kSpectrumStepDb);
    }
}

void SideSplitter::classifyFrames() {
    const size_t n = side.frames();
    const size_t bins = side.bins;
    const auto step = static_cast<float>(SideFeatures::kSpectrumStepDb);
    // Spectra averaged over three frames (in dB): noise steadies, tones held that long do not.
    // A dB average of noise lies 2.5 dB below its mean power, which the profile holds.
    const float aboveNoise = static_cast<float>(kAboveNoiseDb - kLogAverageBiasDb) / step;
    const float aboveNeighbours = static_cast<float>(kAboveNeighboursDb) / step;
    tonal.assign(n, 0);
    std::vector<float> average(bins);
    float neighbours[2 * kNeighbourBins + 1];
    for (size_t f = 0; f < n; ++f) {
        const size_t from = f > 0 ? f - 1 : 0;
        const size_t to = std::min(n, f + 2);
        const float scale = 1.0f / static_cast<float>(to - from);
        std::fill(average.begin(), average.end(), 0.0f);
        for (size_t g = from; g < to; ++g) {
            const uint8_t* s = side.spectrumOf(g);
            for (size_t b = 0; b < bins; ++b)
                average[b] += s[b];
        }
        for (float& a : average)
            a *= scale;
        int peaks = 0;
        for (size_t b = 1; b + 1 < bins && peaks < 3; ++b) {
            const float a = average[b];
            if (a < profile[b] + aboveNoise || a < average[b - 1] || a <= average[b + 1])
                continue;
            // A click lifts every bin alike; a tone stands above the bins around it.
            const size_t lo = b >= kNeighbourBins ? b - kNeighbourBins : 0;
            const size_t hi = std::min(bins, b + kNeighbourBins + 1);
            const size_t count = hi - lo;
            std::copy(average.begin() + static_cast<std::ptrdiff_t>(lo),
                      average.begin() + static_cast<std::ptrdiff_t>(hi), neighbours);
            std::nth_element(neighbours, neighbours + count / 2, neighbours + count);
            if (a >= neighbours[count / 2] + aboveNeighbours)
                ++peaks;
        }
        tonal[f] = static_cast<uint8_t>(peaks);
    }
    // The quietest frames tell the noise's spectrum but sit low in its spread of levels; its
    // level is the median of every frame without a tone near that floor (gaps, lead-in,
    // run-out), crackle included.
    std::vector<float> levels;
    for (size_t f = 0; f < n; ++f)
        if (tonal[f] == 0 && side.level[f] > kSilentDb && side.level[f] < noiseLevel + kLoudDb)
            levels.push_back(side.level[f]);
    if (levels.size() >= kMinNoiseFrames)
        noiseLevel = median(levels);
    for (size_t f = 0; f < n; ++f)
        music[f] = side.level[f] > kSilentDb &&
                   (tonal[f] >= kTonalPeaks || side.level[f] - noiseLevel >= kLoudDb);
    // Lone frames that chance made tonal do not break a gap.
    for (size_t f = 0; f < n;) {
        if (!music[f]) {
            ++f;
            continue;
        }
        size_t end = f;
        while (end < n && music[end])
            ++end;
        if (end - f <= kBlipFrames && f > 0 && end < n)
            std::fill(music.begin() + static_cast<std::ptrdiff_t>(f),
                      music.begin() + static_cast<std::ptrdiff_t>(end), false);
        f = end;
    }
    const auto runFrames = static_cast<size_t>(std::ceil(kMusicRunSeconds / side.frameSeconds()));
    bool found = false;
    for (size_t f = 0; f < n;) {
        if (!music[f]) {
            ++f;
            continue;
        }
        size_t end = f;
        while (end < n && music[end])
            ++end;
        if (end - f >= runFrames) {
            if (!found)
                musicFirst = f;
            musicLast = end;
            found = true;
        }
        f = end;
    }
    hasMusic = found;
}

void SideSplitter::findLowBand() {
    // Per frame, how far the band below 800 Hz rises above the noise's beyond what the band
    // above does, in mean dB: a single frame of noise sits the log-average bias below its mean
    // power, which is added back so noise reads about 0. The median over half a second ignores
    // the clicks that lift single frames.
    const size_t n = side.frames();
    const auto step = static_cast<float>(SideFeatures::kSpectrumStepDb);
    const auto top = static_cast<size_t>(std::clamp(
        (kLowBandTopHz - side.firstBinHz) / side.binHz + 1, 1.0, static_cast<double>(side.bins)));
    std::vector<float> perFrame(n);
    const auto bias = static_cast<float>(kLogAverageBiasDb);
    for (size_t f = 0; f < n; ++f) {
        const uint8_t* s = side.spectrumOf(f);
        float low = 0;
        for (size_t b = 0; b < top; ++b)
            low += static_cast<float>(s[b]) - profile[b];
        float high = 0;
        for (size_t b = top; b < side.bins; ++b)
            high += static_cast<float>(s[b]) - profile[b];
        low = low * step / static_cast<float>(top) + bias;
        high = top < side.bins ? high * step / static_cast<float>(side.bins - top) + bias : 0;
        // Crackle and applause lift the whole band; soft music only its low part.
        perFrame[f] = low - std::max(0.0f, high);
    }
    lowBand.assign(n, 0);
    std::vector<float> window;
    for (size_t f = 0; f < n; ++f) {
        const size_t from = f >= kLowBandReach ? f - kLowBandReach : 0;
        const size_t to = std::min(n, f + kLowBandReach + 1);
        window.assign(perFrame.begin() + static_cast<std::ptrdiff_t>(from),
                      perFrame.begin() + static_cast<std::ptrdiff_t>(to));
        lowBand[f] = median(window);
    }
}

void SideSplitter::findCandidates() {
    const double frameSeconds = side.frameSeconds();
    std::vector<std::pair<size_t, size_t>> runs;
    for (size_t f = musicFirst; f < musicLast;) {
        if (music[f]) {
            ++f;
            continue;
        }
        size_t end = f;
        while (end < musicLast && !music[end])
            ++end;
        if (!runs.empty() && f - runs.back().second <= kBridgeFrames)
            runs.back().second = end;
        else
            runs.emplace_back(f, end);
        f = end;
    }
    std::vector<float> excess;
    for (const auto& [first, last] : runs) {
        const double seconds = static_cast<double>(last - first) * frameSeconds;
        if (seconds < kMinCandidateSeconds)
            continue;
        // The longest clean stretch decides: a fade's tail or a lone doubtful frame at either
        // end of the quiet neither makes the gap nor unmakes it.
        size_t cleanFirst = first;
        size_t cleanLast = first;
        excess.clear();
        for (size_t f = first; f < last;) {
            auto clean = [&](size_t g) {
                return !music[g] && tonal[g] == 0 && side.level[g] - noiseLevel < kCleanDb &&
                       lowBand[g] < kDarkDb;
            };
            if (!clean(f)) {
                ++f;
                continue;
            }
            size_t end = f;
            while (end < last && clean(end))
                ++end;
            if (end - f > cleanLast - cleanFirst) {
                cleanFirst = f;
                cleanLast = end;
            }
            f = end;
        }
        if (cleanLast == cleanFirst)
            continue;
        for (size_t f = cleanFirst; f < cleanLast; ++f)
            excess.push_back(side.level[f] - noiseLevel);
        const double cleanSeconds = static_cast<double>(cleanLast - cleanFirst) * frameSeconds;
        const double atFloor = std::clamp(1 - (median(excess) - 1.5) / 3, 0.0, 1.0);
        const double length = std::clamp((cleanSeconds - 0.3) / 0.6, 0.0, 1.0);

        // The quietest point of the clean stretch: the frame whose surroundings (crackle and
        // the music either side counted) are quietest, the one nearest the middle among near
        // equals. A quarter of a second at each edge (less in a short stretch) is left out: it
        // may hold the last of a fade too faint to hear.
        const size_t margin = std::min((cleanLast - cleanFirst) / 4,
                                       static_cast<size_t>(kEdgeSeconds / frameSeconds));
        const size_t searchFirst = cleanFirst + margin;
        const size_t searchLast = cleanLast - margin;
        const std::vector<float> local =
            meansAround(side.loudness, searchFirst, searchLast, kPlacementFrames, kSilentDb);
        const float lowest = local.empty() ? std::numeric_limits<float>::infinity()
                                           : *std::min_element(local.begin(), local.end());
        const double middle = 0.5 * static_cast<double>(cleanFirst + cleanLast - 1);
        size_t quietest = searchFirst;
        double nearest = std::numeric_limits<double>::infinity();
        for (size_t f = searchFirst; f < searchLast; ++f) {
            const double distance = std::fabs(static_cast<double>(f) - middle);
            if (local[f - searchFirst] <= lowest + kPlacementSpreadDb && distance < nearest) {
                nearest = distance;
                quietest = f;
            }
        }
        candidates.push_back({first, last, quietest, length * atFloor, cleanSeconds});
    }
}

void SideSplitter::findDips() {
    // Quietest seconds of the music, for a count or sleeve that asks for more tracks than
    // there are gaps (tracks that run into each other).
    const size_t n = side.frames();
    const double frameSeconds = side.frameSeconds();
    const auto half = static_cast<size_t>(0.5 / frameSeconds);
    const auto spacing = static_cast<size_t>(kDipSpacingSeconds / frameSeconds);
    std::vector<float> second(n, std::numeric_limits<float>::infinity());
    if (musicFirst + spacing + spacing < musicLast) {
        const size_t first = musicFirst + spacing, last = musicLast - spacing;
        const std::vector<float> means = meansAround(side.level, first, last, half, kSilentDb);
        std::copy(means.begin(), means.end(), second.begin() + static_cast<long>(first));
    }
    std::vector<size_t> order;
    for (size_t f = 0; f < n; ++f)
        if (std::isfinite(second[f]))
            order.push_back(f);
    std::sort(order.begin(), order.end(),
              [&](size_t a, size_t b) { return second[a] < second[b]; });
    auto farFrom = [&](size_t f, size_t g) { return (f > g ? f - g : g - f) >= spacing; };
    for (size_t f : order) {
        if (dips.size() >= kMaxDips)
            break;
        bool free = true;
        for (const Candidate& c : candidates)
            free = free && farFrom(f, c.quietest);
        for (const Candidate& d : dips)
            free = free && farFrom(f, d.quietest);
        if (free)
            dips.push_back({f, f + 1, f, kDipConfidence, 0});
    }
}

float SideSplitter::musicMargin(int64_t from, int64_t to) const {
    const auto hop = static_cast<int64_t>(side.hop);
    if (hop == 0 || from < 0 || to <= from || to > side.inputFrames)
        return -std::numeric_limits<float>::infinity();
    const auto first = static_cast<size_t>(from / hop);
    const auto last = std::min(side.frames(), static_cast<size_t>((to + hop - 1) / hop));
    float lowest = std::numeric_limits<float>::infinity();
    for (size_t f = first; f < last; ++f)
        lowest = std::min(lowest, smoothed[f] - noiseLevel);
    return first < last ? lowest : -std::numeric_limits<float>::infinity();
}

float SideSplitter::lowBandPeak(int64_t from, int64_t to) const {
    const auto hop = static_cast<int64_t>(side.hop);
    if (hop == 0 || from < 0 || to <= from || to > side.inputFrames || lowBand.empty())
        return std::numeric_limits<float>::infinity();
    const auto first = static_cast<size_t>(from / hop);
    const auto last = std::min(side.frames(), static_cast<size_t>((to + hop - 1) / hop));
    float highest = -std::numeric_limits<float>::infinity();
    for (size_t f = first; f < last; ++f)
        highest = std::max(highest, lowBand[f]);
    return first < last ? highest : std::numeric_limits<float>::infinity();
}

int64_t SideSplitter::sampleOf(size_t frame) const {
    const auto centre = static_cast<int64_t>(frame * side.hop + side.hop / 2);
    return std::min(centre, side.inputFrames);
}

double SideSplitter::secondsOf(size_t frame) const {
    return (static_cast<double>(frame) + 0.5) * side.frameSeconds();
}

SideSplitter::Candidate SideSplitter::atCrossFade(const Candidate& c) const {
    // A quiet moment in the music that the sleeve says ends a track is most likely the soft
    // middle of a cross-fade; the boundary belongs where the one piece turns into the other.
    if (c.seconds > 0)
        return c;
    // A quiet moment inside a long quiet stretch is a gap's, not a cross-fade's.
    for (const Candidate& q : candidates)
        if (c.quietest >= q.first && c.quietest < q.last)
            return c;
    const auto reach = static_cast<size_t>(kSegueReachSeconds / side.frameSeconds());
    const size_t from = std::max(c.quietest >= reach ? c.quietest - reach : 0, musicFirst);
    const size_t to = std::min(c.quietest + reach + 1, musicLast);
    const size_t f = CrossFade::middle(side, from, to, c.quietest);
    return {f, f + 1, f, c.confidence, 0};
}

SplitBoundary SideSplitter::boundaryAt(const Candidate& c, double confidence) const {
    return {sampleOf(c.quietest), static_cast<float>(confidence),
            std::min(static_cast<int64_t>(c.first * side.hop), side.inputFrames),
            std::min(static_cast<int64_t>(c.last * side.hop), side.inputFrames), c.seconds};
}

std::vector<SplitBoundary> SideSplitter::quietStretches() const {
    std::vector<SplitBoundary> all;
    for (const Candidate& c : candidates)
        all.push_back(boundaryAt(c, c.confidence));
    return all;
}

SplitProposal SideSplitter::emptyProposal() const {
    SplitProposal p;
    p.noiseFloorDb = noiseLevel;
    if (!hasMusic) {
        p.problem = SplitProposal::Problem::NoMusic;
        p.musicEnd = side.inputFrames;
        return p;
    }
    p.musicStart = std::min(static_cast<int64_t>(musicFirst * side.hop), side.inputFrames);
    p.musicEnd = std::min(static_cast<int64_t>(musicLast * side.hop), side.inputFrames);
    return p;
}

SplitProposal SideSplitter::propose() const {
    SplitProposal p = emptyProposal();
    std::vector<const Candidate*> kept;
    for (const Candidate& c : candidates) {
        if (c.seconds < kMinGapSeconds || c.confidence < kConvincing)
            continue;
        // A "track" this short at either end is a noise burst in the lead-in or the run-out.
        if (secondsOf(c.quietest) - secondsOf(musicFirst) < kMinTrackSeconds ||
            secondsOf(musicLast) - secondsOf(c.quietest) < kMinTrackSeconds)
            continue;
        // Two gaps closer than any track: keep the more convincing.
        if (!kept.empty() &&
            secondsOf(c.quietest) - secondsOf(kept.back()->quietest) < kMinTrackSeconds) {
            if (c.confidence > kept.back()->confidence)
                kept.back() = &c;
            continue;
        }
        kept.push_back(&c);
    }
    for (const Candidate* c : kept)
        p.boundaries.push_back(boundaryAt(*c, c->confidence));
    return p;
}

SplitProposal SideSplitter::proposeCount(int tracks) const {
    SplitProposal p = emptyProposal();
    if (tracks < 1 || tracks > kMaxTracks) {
        p.problem = SplitProposal::Problem::CountOutOfRange;
        return p;
    }
    if (tracks == 1)
        return p;
    if (!hasMusic)
        return p;
    std::vector<const Candidate*> ranked;
    for (const Candidate& c : candidates)
        ranked.push_back(&c);
    std::stable_sort(ranked.begin(), ranked.end(), [](const Candidate* a, const Candidate* b) {
        if (a->confidence != b->confidence)
            return a->confidence > b->confidence;
        return a->seconds > b->seconds;
    });
    // The most convincing gaps that leave every track its minimum length, as without a count;
    // then, if the count asks for more, the gaps passed over and the quietest moments.
    std::vector<const Candidate*> chosen;
    std::vector<const Candidate*> passed;
    const auto wanted = static_cast<size_t>(tracks - 1);
    for (const Candidate* c : ranked) {
        bool room = secondsOf(c->quietest) - secondsOf(musicFirst) >= kMinTrackSeconds &&
                    secondsOf(musicLast) - secondsOf(c->quietest) >= kMinTrackSeconds;
        for (const Candidate* k : chosen)
            room = room &&
                   std::fabs(secondsOf(c->quietest) - secondsOf(k->quietest)) >= kMinTrackSeconds;
        (room && chosen.size() < wanted ? chosen : passed).push_back(c);
    }
    ranked = chosen;
    ranked.insert(ranked.end(), passed.begin(), passed.end());
    for (const Candidate& d : dips)
        ranked.push_back(&d);
    if (ranked.size() > wanted)
        ranked.resize(wanted);
    std::sort(ranked.begin(), ranked.end(),
              [](const Candidate* a, const Candidate* b) { return a->quietest < b->quietest; });
    for (const Candidate* c : ranked)
        p.boundaries.push_back(boundaryAt(*c, c->confidence));
    return p;
}

SplitProposal SideSplitter::proposeDurations(const std::vector<double>& seconds) const {
    SplitProposal p = emptyProposal();
    if (seconds.empty() || seconds.size() > static_cast<size_t>(kMaxTracks)) {
        p.problem = SplitProposal::Problem::CountOutOfRange;
        return p;
    }
    if (!hasMusic || seconds.size() == 1)
        return p;
    double total = 0;
    for (double d : seconds) {
        if (!(d > 0)) {
            p.problem = SplitProposal::Problem::DurationsDoNotFit;
            return p;
        }
        total += d;
    }
    // Sleeves count from the start of each track to the next and round to the second; the
    // measured music may hold a little lead-in or run-out. Scale the durations onto it.
    const double start = secondsOf(musicFirst) - 0.5 * side.frameSeconds();
    const double end = secondsOf(musicLast) - 0.5 * side.frameSeconds();
    const double scale = (end - start) / total;
    if (scale < 0.8 || scale > 1.25) {
        p.problem = SplitProposal::Problem::DurationsDoNotFit;
        return p;
    }

    std::vector<const Candidate*> points;
    for (const Candidate& c : candidates)
        points.push_back(&c);
    for (const Candidate& d : dips)
        points.push_back(&d);
    std::sort(points.begin(), points.end(),
              [](const Candidate* a, const Candidate* b) { return a->quietest < b->quietest; });
    const size_t m = points.size();
    const size_t boundaries = seconds.size() - 1;
    if (m < boundaries) {
        p.problem = SplitProposal::Problem::DurationsDoNotFit;
        return p;
    }
    // Dynamic programme over (boundary i at point j): squared misfit of each track's length in
    // units of the sleeve's likely error, plus a price for using a doubtful gap.
    // An inner track runs from one gap to the next, which the sleeve times to the second; the
    // first and last also depend on where the music is heard to start and end (a soft intro, a
    // fade under the hiss), so they are held more loosely.
    const size_t lastTrack = seconds.size() - 1;
    auto misfit = [&](double length, size_t track) {
        const double want = seconds[track];
        const bool outer = track == 0 || track == lastTrack;
        const double sigma = outer ? 4 + 0.04 * want : 1.5 + 0.01 * want;
        const double z = (length - want) / sigma;
        return z * z;
    };
    // A clear gap a few seconds from where the sleeve puts it beats a doubtful one right there:
    // the lead-in and the hearing of the first notes move every sleeve time alike.
    auto price = [&](const Candidate* c) { return 16 * (1 - c->confidence); };
    const double inf = std::numeric_limits<double>::infinity();
    std::vector<double> cost(boundaries * m, inf);
    std::vector<size_t> from(boundaries * m, 0);
    for (size_t j = 0; j < m; ++j)
        cost[j] = misfit(secondsOf(points[j]->quietest) - start, 0) + price(points[j]);
    for (size_t i = 1; i < boundaries; ++i) {
        for (size_t j = i; j < m; ++j) {
            const double t = secondsOf(points[j]->quietest);
            double best = inf;
            size_t bestK = 0;
            for (size_t k = i - 1; k < j; ++k) {
                const double prior = cost[(i - 1) * m + k];
                if (prior == inf)
                    continue;
                const double c = prior + misfit(t - secondsOf(points[k]->quietest), i);
                if (c < best) {
                    best = c;
                    bestK = k;
                }
            }
            cost[i * m + j] = best + price(points[j]);
            from[i * m + j] = bestK;
        }
    }
    double best = inf;
    size_t last = 0;
    for (size_t j = boundaries - 1; j < m; ++j) {
        const double c = cost[(boundaries - 1) * m + j] +
                         misfit(end - secondsOf(points[j]->quietest), boundaries);
        if (c < best) {
            best = c;
            last = j;
        }
    }
    std::vector<size_t> chosen(boundaries);
    for (size_t i = boundaries; i-- > 0;) {
        chosen[i] = last;
        last = from[i * m + last];
    }
    double previous = start;
    for (size_t i = 0; i < boundaries; ++i) {
        const Candidate& c = *points[chosen[i]];
        const double t = secondsOf(c.quietest);
        // A gap far from where the sleeve puts it is less certain than the gap alone.
        const double fit = std::exp(-0.5 * misfit(t - previous, i));
        p.boundaries.push_back(boundaryAt(atCrossFade(c), c.confidence * std::max(fit, 0.25)));
        previous = t;
    }
    return p;
}

} // namespace Sonra::Audio::Filters
