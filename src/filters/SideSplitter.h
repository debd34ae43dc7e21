#pragma once

#include "filters/SideAnalyser.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Sonra::Audio::Filters {

struct SplitBoundary {
    int64_t sample;     // the first frame of the next track
    float confidence;   // 0 (a guess to reach a given count) to 1 (a clear gap)
    int64_t quietStart; // the quiet stretch the boundary lies in; equal to sample for a guess
    int64_t quietEnd;
    double cleanSeconds = 0; // its longest part as quiet as the noise, low band too; 0 for a guess
};

struct SplitProposal {
    enum class Problem {
        None,
        NoMusic,           // nothing on the side sounds like more than groove noise
        CountOutOfRange,   // a track count below 1 or above SideSplitter::kMaxTracks
        DurationsDoNotFit, // the sleeve's durations add up to far more or less than the music
    };
    Problem problem = Problem::None;
    std::vector<SplitBoundary> boundaries; // in order; tracks = boundaries + 1
    int64_t musicStart = 0;                // first and last frame of music, for trimming
    int64_t musicEnd = 0;
    float noiseFloorDb = 0; // the groove noise it learnt, RMS in dBFS above 200 Hz
};

// Proposes track boundaries for a whole recorded side from its SideFeatures. It learns the side's
// own groove noise (its level and its spectrum, hum included) from the quietest stretches; a
// frame is music when it rises clearly above that level or carries spectral peaks the noise has
// not, which a pianissimo or the tail of a fade does and a crackle burst does not. A gap is a
// stretch of noise-only frames between music; each boundary goes to the quietest point of its gap.
class SideSplitter {
public:
    static constexpr int kMaxTracks = 40;

    explicit SideSplitter(SideFeatures features);

    // Every gap that is convincing on its own.
    SplitProposal propose() const;
    // Exactly `tracks` tracks: the tracks - 1 most convincing gaps, then the quietest moments.
    SplitProposal proposeCount(int tracks) const;
    // One track per duration (seconds, as printed on the sleeve), fitted to the gaps.
    SplitProposal proposeDurations(const std::vector<double>& seconds) const;

    // Per analysis frame: whether it counts as music (for a front end's overview).
    const std::vector<bool>& musicFrames() const { return music; }
    // Per analysis frame: tonal peaks above the groove noise, counted up to 3.
    const std::vector<uint8_t>& tonalPeaks() const { return tonal; }
    const SideFeatures& features() const { return side; }
    // Every quiet stretch inside the music that could hold a boundary, clear or not, in order.
    std::vector<SplitBoundary> quietStretches() const;
    // The lowest level above the groove noise, in dB, over side frames [from, to): how sure it
    // is that the stretch holds music throughout. Minus infinity outside the side.
    float musicMargin(int64_t from, int64_t to) const;
    // The highest level of the low band above the groove noise's, in dB, over side frames
    // [from, to): how much soft music a quiet stretch may hide. Infinity outside the side.
    float lowBandPeak(int64_t from, int64_t to) const;

private:
    struct Candidate {
        size_t first; // frames [first, last) of the quiet stretch
        size_t last;
        size_t quietest; // where its boundary goes
        double confidence;
        double seconds; // of its longest clean part (0 for a dip)
    };

    void learnNoise();
    void classifyFrames();
    void findLowBand();
    void findCandidates();
    void findDips();
    SplitProposal emptyProposal() const;
    SplitBoundary boundaryAt(const Candidate& c, double confidence) const;
    Candidate atCrossFade(const Candidate& c) const;
    int64_t sampleOf(size_t frame) const;
    double secondsOf(size_t frame) const;

    SideFeatures side;
    std::vector<float> smoothed; // level over 5 frames
    std::vector<float> profile;  // groove-noise spectrum, in spectrum steps
    float noiseLevel = 0;
    std::vector<uint8_t> tonal; // spectral peaks above the noise, counted up to 3
    std::vector<float> lowBand; // the low band's rise above the noise's beyond the high band's, dB
    std::vector<bool> music;
    bool hasMusic = false;
    size_t musicFirst = 0; // frames [musicFirst, musicLast) hold the music
    size_t musicLast = 0;
    std::vector<Candidate> candidates; // quiet stretches inside the music, in order
    std::vector<Candidate> dips;       // quietest moments of the music, quietest first
};

} // namespace Sonra::Audio::Filters
