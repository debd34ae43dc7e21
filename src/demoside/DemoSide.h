#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace waxline::demoside {

// Where the parts of a synthetic record side lie, in seconds from its start.
struct DemoSideLayout {
    struct Span {
        double start;
        double end;
    };
    unsigned sampleRate = 44100;
    std::vector<Span> tracks; // the music
    std::vector<Span> gaps;   // between consecutive tracks
    Span leadIn{0, 0};        // surface noise before the first track
    Span runOut{0, 0};        // run-out groove noise after the last track
    double length() const { return runOut.end; }

    // Realistic sides only: what lies inside the tracks and gaps, and the side's own noise.
    std::vector<Span> fadeIns;       // rising from 45 dB below the track's level
    std::vector<Span> fadeOuts;      // falling to 45 dB below; the track ends with the fade
    std::vector<Span> quietPassages; // the pianissimo itself, a few dB above the groove noise
    std::vector<Span> softIntros;    // a track's quiet opening, before it swells
    std::vector<Span> crackleBursts; // dense crackle, in gaps and in music
    double noiseDb = -62;            // RMS of the groove noise per channel, dBFS
    double humHz = 0;                // 50 or 60; 0 for none
    double humDb = -200;
    double rumbleDb = -200;
};

// How often a realistic side has each feature; tests raise a chance to 1 to be sure of it.
struct DemoSideRealism {
    double fadeInChance = 0.3;
    double fadeOutChance = 0.5;
    double quietPassageChance = 0.5;
    double crackleInGapChance = 0.5;
    double softIntroChance = 1.0; // of one track per side
    double minGapSeconds = 1.0;
    double maxGapSeconds = 5.0;
};

// The longest side the generator makes: far beyond any record or cassette side.
constexpr double kMaxDemoSideSeconds = 4 * 3600;

struct DemoSideOptions {
    int tracks = 5; // realistic sides: 0 takes 3 to 14 from the seed
    uint32_t seed = 1;
    double lengthSeconds = 0; // 0: tracks of 46 to 80 s each (realistic: 3 to 22 minutes of music)
    unsigned sampleRate = 44100;
    // What real sides have: quiet passages, long fades, gaps of 1 to 5 s with crackle, hum,
    // rumble, soft intros. Off, a side is the plain demo that the tests of the live path expect.
    bool realistic = false;
    DemoSideRealism realism;
};

// Renders a deterministic record side: tonal music-like passages with dynamics, gaps of surface
// noise and crackle, a quiet lead-in and 65 s of run-out groove (realistic sides: see
// DemoSideOptions). Streams in blocks, so a long side never needs to be held in memory.
class DemoSideGenerator {
public:
    // Throws std::invalid_argument when the options cannot make a side.
    explicit DemoSideGenerator(const DemoSideOptions& options);

    const DemoSideLayout& layout() const { return sideLayout; }
    size_t totalFrames() const { return frameCount; }

    // Renders up to `frames` frames into the two channels; returns how many, 0 at the end.
    size_t render(float* left, float* right, size_t frames);

private:
    struct Voice {
        double phase = 0;
        double increment = 0;
        float gain = 0;
        float pan = 0.5f; // 0 left, 1 right
    };

    // A realistic track's level over time: straight lines in dB between points.
    struct Envelope {
        std::vector<double> times; // seconds from the start of the side
        std::vector<double> db;    // relative to the track's full level
        float gain = 1;            // the track's full level
    };

    uint64_t nextRandom();
    double uniform(); // [0, 1)
    void startNotes(size_t trackIndex);
    float surfaceNoise();
    float crackle(bool runOut);
    void planRealistic(const DemoSideOptions& options);
    void planTrack(size_t index, const DemoSideRealism& realism, bool softIntro);
    float trackLevel(size_t index, double t) const;
    // Adds the voices' next sample at `level` to `l` and `r`, voice after voice.
    void voicesSample(float level, float& l, float& r);
    size_t renderRealistic(float* left, float* right, size_t frames);

    DemoSideLayout sideLayout;
    size_t frameCount = 0;
    size_t position = 0;
    uint64_t rngState;
    std::vector<float> sineTable;
    Voice voices[3];
    size_t noteEnd = 0;
    float clickLevel = 0;
    size_t nextRevolutionClick = 0;

    // Realistic sides.
    bool realistic = false;
    std::vector<Envelope> envelopes;
    std::vector<float> humTable; // one period of hum with its harmonics
    size_t humPosition = 0;
    float noiseScale = 0;
    double rumbleCoefficient = 0;
    double rumbleScale = 0;
    double rumbleState[2] = {0, 0};
    double warpLevel = 0;
    double rumblePhase = 0;
    double clicksPerSecond = 0;
    float clickDecay = 0.35f;
    std::vector<double> burstRates; // clicks per second, for each crackle burst
    std::vector<float> burstLevels; // click size in each burst
    bool runOutClicks = false;
    size_t currentTrack = 0;
    size_t currentBurst = 0;
    float musicLevel = 0;
    size_t levelUpdate = 0;
};

} // namespace waxline::demoside
