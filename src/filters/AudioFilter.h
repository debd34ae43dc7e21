#pragma once

#include "filters/BiQuad.h"

#include <memory>

namespace Sonra::Audio::Filters {

// The equalisation preset applied in place to the monitored stereo stream. Two chains of at most
// two sections each: slots 0 and 1 act on the left channel, slots 2 and 3 on the right.
class AudioFilter {
public:
    enum Type { NoFilter = 0, RIAAPlayback = 1, ChromeTape = 2, BrightSpin = 3 };

    // Main thread. Frees every section, then builds the preset from clear state; an unknown type
    // leaves pass-through.
    void Set(Type type);

    // Audio input thread. Filters both channels in place; no allocation, no lock.
    void operator()(float* left, float* right, unsigned long count);

    // The section in a slot (0, 1 left; 2, 3 right), or null.
    const BiQuad* section(int slot) const { return slots[slot].get(); }

private:
    std::unique_ptr<BiQuad> slots[4];
};

} // namespace Sonra::Audio::Filters
