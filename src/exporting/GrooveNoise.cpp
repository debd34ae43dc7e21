#include "exporting/GrooveNoise.h"

#include "filters/GapDetector.h"

#include <sndfile.h>

#include <vector>

namespace waxline::exporting {

namespace {

using Sonra::Audio::Filters::GapDetector;

struct SoundHeard : GapDetector::Listener {
    bool heard = false;
    void TrackSilenceStarted() override {}
    void TrackSilenceEnded() override { heard = true; }
    void AlbumEnded() override {}
};

void quiet(const char*) {}

// -30 dBFS RMS over a block of 4096 frames: far above hiss and clicks, far below music.
constexpr double kLoudMeanSquare = 0.001;

} // namespace

bool holdsOnlyGrooveNoise(const std::string& wavPath) {
    SF_INFO info{};
    SNDFILE* file = sf_open(wavPath.c_str(), SFM_READ, &info);
    if (!file)
        return false;
    if (info.channels < 1 || info.samplerate <= 0) {
        sf_close(file);
        return false;
    }
    SoundHeard listener;
    GapDetector detector(listener, static_cast<unsigned>(info.samplerate));
    detector.SetSampleRate(static_cast<unsigned>(info.samplerate));
    detector.SetDiagnosticWriter(quiet);
    detector.Reset();
    constexpr sf_count_t kBlock = 4096;
    const auto channels = static_cast<size_t>(info.channels);
    std::vector<float> frames(kBlock * channels), left(kBlock), right(kBlock);
    // The detector needs a few frames to decide, so a short cut-off passage of music also
    // counts when any block is loud on average: groove noise is hiss and single clicks.
    bool loud = false;
    sf_count_t n = 0;
    while (!listener.heard && !loud && (n = sf_readf_float(file, frames.data(), kBlock)) > 0) {
        double energy = 0;
        for (sf_count_t i = 0; i < n; ++i) {
            const auto at = static_cast<size_t>(i);
            left[at] = frames[at * channels];
            right[at] = frames[at * channels + (channels > 1 ? 1 : 0)];
            energy += 0.5 * (double(left[at]) * left[at] + double(right[at]) * right[at]);
        }
        loud = n == kBlock && energy / static_cast<double>(n) > kLoudMeanSquare;
        detector(left.data(), right.data(), static_cast<unsigned long>(n));
    }
    sf_close(file);
    return !listener.heard && !loud;
}

} // namespace waxline::exporting
