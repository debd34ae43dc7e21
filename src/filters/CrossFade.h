#pragma once

#include "filters/SideAnalyser.h"

#include <cstddef>

namespace Sonra::Audio::Filters {

// Where one piece hands over to the next with no gap between. Through a cross-fade the outgoing
// piece falls as the incoming one rises, so the level passes through a trough; the new track
// starts where the level climbs out of it. When the outgoing piece faded early the trough is
// long and flat, and only its end tells where the incoming piece takes over.
class CrossFade {
public:
    // Seconds the level is averaged over: long enough to steady it, short against a fade.
    static constexpr double kSmoothSeconds = 0.5;
    // How far above the trough's lowest level the level still counts as the trough.
    static constexpr float kTroughDb = 1.5f;
    // Levels below this are digital silence, counted as this.
    static constexpr float kSilentDb = -110;

    // The frame in [from, to) where the level climbs out of its lowest trough, or `fallback`
    // when the range is empty.
    static size_t middle(const SideFeatures& side, size_t from, size_t to, size_t fallback);
};

} // namespace Sonra::Audio::Filters
