#include "filters/GapDetector.h"

#include <algorithm>
#include <cstdint>

namespace Sonra::Audio::Filters {
namespace {

using ZoneItem = GapDetector::ZoneItem;
using TrackItem = GapDetector::TrackItem;

constexpr int32_t kSound = 0;
constexpr int32_t kSilence = 1;
constexpr float kFinderFrameSeconds = 0.5f;
constexpr float kNoPreviousZone = 9999999;
constexpr float kNoiseMinSeconds = 45; // sound this long is music, not lead-in or run-out noise
constexpr float kShortGapSeconds = 1.5f;
constexpr float kShortSoundSeconds = 10;
constexpr float kKeptClosingSilence = 5;

int64_t toSamples(float seconds, float rate) {
    return static_cast<int64_t>(seconds * rate);
}

template <typename Pred> void removeZonesWhere(std::vector<ZoneItem>& zones, Pred pred) {
    zones.erase(std::remove_if(zones.begin(), zones.end(), pred), zones.end());
}

} // namespace

void GapDetector::CalculateDurations(std::vector<ZoneItem>& zones, float total) {
    if (zones.empty())
        return;
    zones.front().previousDuration = kNoPreviousZone;
    for (size_t i = 0; i + 1 < zones.size(); ++i) {
        zones[i].duration = zones[i + 1].start - zones[i].start;
        zones[i + 1].previousDuration = zones[i].duration;
    }
    zones.back().duration = total - zones.back().start;
}

void GapDetector::ReduceZones(std::vector<ZoneItem>& zones) {
    if (zones.empty())
        return;
    size_t kept = 0;
    for (size_t i = 1; i < zones.size(); ++i) {
        if (zones[i].kind != zones[kept].kind)
            zones[++kept] = zones[i];
    }
    zones.resize(kept + 1);
}

void GapDetector::CleanupZones(std::vector<ZoneItem>& zones, float total) {
    CalculateDurations(zones, total);
    ReduceZones(zones);
    CalculateDurations(zones, total);
}

void GapDetector::FindTracks(std::vector<TrackItem>& tracks) {
    if (aamHistory.empty())
        return;

    float threshold = 50;
    if (minAAM > 15 && maxAAM / minAAM > 40)
        threshold = 4 * minAAM;

    std::vector<ZoneItem> zones{{kSilence, 0, 0, kNoPreviousZone}};
    bool inSilence = true;
    float clock = 0;
    for (float level : aamHistory) {
        const bool sound = level > threshold; // a NaN level is silence
        if (sound == inSilence) {
            zones.back().duration = clock - zones.back().start;
            zones.push_back({sound ? kSound : kSilence, clock, 0, 0});
            inSilence = !sound;
        }
        clock += kFinderFrameSeconds;
    }
    const float total = static_cast<float>(static_cast<double>(aamHistory.size()) * 0.5);
    zones.back().duration = clock - zones.back().start;
    aamHistory.clear();

    auto isMusic = [](const ZoneItem& z) {
        return z.kind == kSound && z.duration > kNoiseMinSeconds;
    };
    // Lead-in noise: everything before the first long stretch of sound is silence.
    auto first = std::find_if(zones.begin(), zones.end(), isMusic);
    if (first != zones.end())
        std::for_each(zones.begin(), first, [](ZoneItem& z) { z.kind = kSilence; });
    CleanupZones(zones, total);

    // Run-out noise: everything after the last long stretch of sound is silence.
    auto last = std::find_if(zones.rbegin(), zones.rend(), isMusic);
    if (last != zones.rend())
        std::for_each(zones.rbegin(), last, [](ZoneItem& z) { z.kind = kSilence; });
    CleanupZones(zones, total);

    removeZonesWhere(zones, [](const ZoneItem& z) {
        return z.kind == kSilence && z.duration < kShortGapSeconds;
    });
    CleanupZones(zones, total);

    removeZonesWhere(zones, [](const ZoneItem& z) {
        return z.kind == kSound && z.duration < kShortSoundSeconds;
    });
    CleanupZones(zones, total);

    if (zones.empty())
        return;
    // A leading silence is pulled back to the start; a leading sound zone is left where it is.
    if (zones.front().start != 0 && zones.front().kind == kSilence)
        zones.front().start = 0;

    const size_t n = zones.size();
    if (n < 2) {
        tracks.push_back({0, total - 0, 0, toSamples(total, sampleRate)});
        return;
    }

    TrackItem current{0, 0, 0, 0};
    float trackStart = 0;
    bool open = true;
    for (size_t k = 1; k < n; ++k) {
        const ZoneItem& p = zones[k - 1];
        const ZoneItem& z = zones[k];
        if (p.kind == kSilence && z.kind == kSound) {
            open = true;
        } else if (p.kind == kSound && z.kind == kSilence && k != n - 1) {
            const float boundary = z.start + z.duration * 0.5f; // the middle of the gap
            current.duration = boundary - trackStart;
            current.length = toSamples(current.duration, sampleRate);
            tracks.push_back(current);
            current.start = boundary;
            current.startSample = static_cast<int64_t>(sampleRate * boundary);
            trackStart = boundary;
            open = false;
        } else if (p.kind == kSound && z.kind == kSilence) {
            // The side's last track keeps at most a few seconds of the closing silence.
            current.duration = std::min(kKeptClosingSilence, z.duration) + z.start - trackStart;
            current.length = toSamples(current.duration, sampleRate);
            tracks.push_back(current);
            open = false;
        }
    }
    if (open) {
        current.duration = total - trackStart;
        current.length = toSamples(current.duration, sampleRate);
        tracks.push_back(current);
    }
}

} // namespace Sonra::Audio::Filters
