#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace waxline::exporting {

struct LoudnessMeter;

// A track's loudness by EBU R128: integrated loudness in LUFS and the sample peak (full scale
// 1.0). The meter stays with it, so that the tracks of a side can be measured together.
struct TrackLoudness {
    std::shared_ptr<LoudnessMeter> meter;
    double integrated = 0; // LUFS; -inf for silence
    double peak = 0;
    bool measured() const { return meter != nullptr; }
};

// Measures interleaved samples of the given channel count and rate; unmeasured when the
// meter cannot be made (no channels, an impossible rate).
TrackLoudness measureLoudness(const std::vector<float>& interleaved, int channels, int rate);

// The integrated loudness of tracks taken as one programme (a side); nothing when none of them
// was measured.
std::optional<double> combinedLoudness(const std::vector<const TrackLoudness*>& tracks);

// ReplayGain 2.0: the gain that brings the loudness to -18 LUFS, as "-3.21 dB", and a peak
// as "0.987654".
std::string replayGainText(double loudness);
std::string replayPeakText(double peak);

// Writes REPLAYGAIN_TRACK_GAIN and _PEAK (and the ALBUM ones when a side's figures are given)
// into the file's tags. False when the file cannot be tagged.
bool writeReplayGain(const std::string& path, const TrackLoudness& track,
                     std::optional<double> sideLoudness = std::nullopt, double sidePeak = 0);

} // namespace waxline::exporting
