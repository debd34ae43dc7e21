#include "exporting/TrackLoudness.h"

#include "tagging/TaglibTagger.h"

#include <ebur128.h>

#include <cmath>
#include <cstdio>

namespace waxline::exporting {

struct LoudnessMeter {
    ebur128_state* state = nullptr;
    ~LoudnessMeter() {
        if (state)
            ebur128_destroy(&state);
    }
};

namespace {

constexpr double kReferenceLoudness = -18.0;

} // namespace

TrackLoudness measureLoudness(const std::vector<float>& interleaved, int channels, int rate) {
    TrackLoudness loudness;
    if (channels <= 0 || rate <= 0)
        return loudness;
    auto meter = std::make_shared<LoudnessMeter>();
    meter->state = ebur128_init(static_cast<unsigned>(channels), static_cast<unsigned long>(rate),
                                EBUR128_MODE_I | EBUR128_MODE_SAMPLE_PEAK);
    if (!meter->state)
        return loudness;
    const size_t frames = interleaved.size() / static_cast<size_t>(channels);
    if (frames > 0 &&
        ebur128_add_frames_float(meter->state, interleaved.data(), frames) != EBUR128_SUCCESS)
        return loudness;
    double integrated = -HUGE_VAL;
    ebur128_loudness_global(meter->state, &integrated);
    double peak = 0;
    for (int c = 0; c < channels; ++c) {
        double channelPeak = 0;
        ebur128_sample_peak(meter->state, static_cast<unsigned>(c), &channelPeak);
        peak = std::max(peak, channelPeak);
    }
    loudness.meter = meter;
    loudness.integrated = integrated;
    loudness.peak = peak;
    return loudness;
}

std::optional<double> combinedLoudness(const std::vector<const TrackLoudness*>& tracks) {
    std::vector<ebur128_state*> states;
    for (const TrackLoudness* track : tracks)
        if (track && track->measured())
            states.push_back(track->meter->state);
    if (states.empty())
        return std::nullopt;
    double loudness = -HUGE_VAL;
    if (ebur128_loudness_global_multiple(states.data(), states.size(), &loudness) !=
        EBUR128_SUCCESS)
        return std::nullopt;
    return loudness;
}

std::string replayGainText(double loudness) {
    // Silence has no loudness to bring anywhere: it is left as it is.
    const double gain = std::isfinite(loudness) ? kReferenceLoudness - loudness : 0.0;
    char text[32];
    std::snprintf(text, sizeof text, "%.2f dB", gain);
    return text;
}

std::string replayPeakText(double peak) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", peak);
    return text;
}

bool writeReplayGain(const std::string& path, const TrackLoudness& track,
                     std::optional<double> sideLoudness, double sidePeak) {
    TaglibTagger tagger(path.c_str(), TagText::Unicode);
    if (!tagger.isValid() || !track.measured())
        return false;
    tagger.setTagProperty("REPLAYGAIN_TRACK_GAIN", replayGainText(track.integrated).c_str());
    tagger.setTagProperty("REPLAYGAIN_TRACK_PEAK", replayPeakText(track.peak).c_str());
    if (sideLoudness) {
        tagger.setTagProperty("REPLAYGAIN_ALBUM_GAIN", replayGainText(*sideLoudness).c_str());
        tagger.setTagProperty("REPLAYGAIN_ALBUM_PEAK", replayPeakText(sidePeak).c_str());
    }
    return true;
}

} // namespace waxline::exporting
