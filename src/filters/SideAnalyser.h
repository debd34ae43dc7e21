#pragma once

#include "filters/RealFft.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Sonra::Audio::Filters {

// What the whole-side splitter keeps of a recording: per analysis frame of about 45 ms, a
// click-proof level and a coarse spectrum. About 200 bytes a frame, so a 30-minute side takes
// some 8 MB however long the audio was.
struct SideFeatures {
    double sampleRate = 44100;
    size_t hop = 0;          // input frames per analysis frame
    size_t bins = 0;         // spectrum values stored per frame
    double firstBinHz = 0;   // centre of the first stored bin
    double binHz = 0;        // spacing of the bins
    int64_t inputFrames = 0; // everything the analyser was given
    // Per frame: a low quantile of the magnitude of the differenced signal, as an RMS in dBFS;
    // even dense crackle is too sparse to move it.
    std::vector<float> level;
    // Per frame: the plain RMS of the 200 Hz high-pass in dBFS, which clicks do raise.
    std::vector<float> loudness;
    // Per frame, bins values: power in steps of kSpectrumStepDb above kSpectrumFloorDb.
    std::vector<uint8_t> spectrum;

    static constexpr double kSpectrumFloorDb = -90;
    static constexpr double kSpectrumStepDb = 0.5;

    size_t frames() const { return level.size(); }
    double frameSeconds() const { return static_cast<double>(hop) / sampleRate; }
    const uint8_t* spectrumOf(size_t frame) const { return spectrum.data() + frame * bins; }
};

// For every frame f in [from, to): the mean of values[f - half .. f + half], cut at the ends of
// the side, each value counted as at least `floor` (so digital silence weighs no more than it).
std::vector<float> meansAround(const std::vector<float>& values, size_t from, size_t to,
                               size_t half, float floor);

// Streams a side through once (any block sizes) and keeps its SideFeatures: the mono mix is
// averaged down to about 11 kHz, high-passed (rumble, warp and the hum's fundamental out) and
// cut into 512-sample frames. Not for the audio thread: it allocates as the side grows.
class SideAnalyser {
public:
    // sampleRate from 8000 Hz; throws std::invalid_argument otherwise.
    explicit SideAnalyser(unsigned sampleRate);

    // Frames of `channels` interleaved samples, all channels mixed.
    void addInterleaved(const float* samples, size_t frames, unsigned channels);
    void addPlanar(const float* left, const float* right, size_t frames);

    // A partial frame at the end is left out: it is shorter than a tenth of a second.
    const SideFeatures& features() const { return result; }
    SideFeatures takeFeatures() { return std::move(result); }

private:
    void addMono(float sample);
    void addDecimated(double sample);
    void finishFrame();

    SideFeatures result;
    size_t decimation = 1;
    float sum = 0;
    size_t summed = 0;
    std::vector<float> frame;  // high-passed decimated samples
    std::vector<float> slopes; // differenced decimated samples
    double previous = 0;
    size_t fill = 0;
    double hp[5] = {};      // b0, b1, b2, a1, a2 of the 200 Hz high-pass
    double hpState[4] = {}; // x1, x2, y1, y2
    size_t firstBin = 0;
    std::vector<float> window;
    std::vector<float> windowed;
    std::vector<float> power;
    std::vector<float> magnitudes;
    RealFft fft;
};

} // namespace Sonra::Audio::Filters
