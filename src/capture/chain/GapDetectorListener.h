#pragma once

#include "filters/GapDetector.h"

namespace waxline {

class Audio;

// Forwards the gap detector's events to the capture controller. Audio input thread: it only
// flags work for the main thread and returns.
class GapDetectorListener : public Sonra::Audio::Filters::GapDetector::Listener {
public:
    explicit GapDetectorListener(Audio& owner)
        : audio(owner) {}
    void TrackSilenceStarted() override;
    void TrackSilenceEnded() override {}
    void AlbumEnded() override;

private:
    Audio& audio;
};

} // namespace waxline
