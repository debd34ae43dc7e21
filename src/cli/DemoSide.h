#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace waxline::cli {

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
};

struct DemoSideOptions {
    int tracks = 5;
    uint32_t seed = 1;
    double lengthSeconds = 0; // 0: tracks of 46 to 80 s each
    unsigned sampleRate = 44100;
};

// Renders a deterministic record side: tonal music-like passages with dynamics, gaps of surface
// noise and crackle, a quiet lead-in and 65 s of run-out groove. Streams in blocks, so a long
// side never needs to be held in memory.
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

    uint64_t nextRandom();
    double uniform(); // [0, 1)
    void startNotes(size_t trackIndex);
    float surfaceNoise();
    float crackle(bool runOut);

    DemoSideLayout sideLayout;
    size_t frameCount = 0;
    size_t position = 0;
    uint64_t rngState;
    std::vector<float> sineTable;
    Voice voices[3];
    size_t noteEnd = 0;
    float clickLevel = 0;
    size_t nextRevolutionClick = 0;
};

} // namespace waxline::cli
