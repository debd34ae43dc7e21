#pragma once

#include "filters/BiQuad.h"
#include "filters/StereoBiQuad.h"

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
    void operator()(float* left, float* right, unsigned long count) {
        process(left, right, count, [](float, float) {});
    }

    // As operator(), handing every equalised frame to sink(left, right) in order during the same
    // pass, so that a consumer's own recursion overlaps the filter's.
    template <class Sink> void process(float* left, float* right, unsigned long count, Sink&& sink);

    // The section in a slot (0, 1 left; 2, 3 right), or null.
    const BiQuad* section(int slot) const { return slots[slot].get(); }

private:
    std::unique_ptr<BiQuad> slots[4];
};

template <class Sink>
void AudioFilter::process(float* left, float* right, unsigned long count, Sink&& sink) {
    BiQuad* l0 = slots[0].get();
    BiQuad* l1 = slots[1].get();
    BiQuad* r0 = slots[2].get();
    BiQuad* r1 = slots[3].get();

    // The presets have the same chain on both channels. The channels' recursions are independent
    // and section 1 only consumes section 0's output of the same sample, so running everything
    // side by side, sample by sample, gives exactly the block-by-block, section-after-section
    // result while keeping several recursions in flight.
    if (l0 && r0 && !l1 && !r1) {
        StereoBiQuad s0(*l0, *r0);
        for (unsigned long i = 0; i < count; ++i) {
            const StereoBiQuad::Pair y = s0.step(StereoBiQuad::Pair{left[i], right[i]});
            left[i] = y[0];
            right[i] = y[1];
            sink(y[0], y[1]);
        }
        s0.keepState(*l0, *r0);
        return;
    }
    if (l0 && l1 && r0 && r1) {
        StereoBiQuad s0(*l0, *r0), s1(*l1, *r1);
        for (unsigned long i = 0; i < count; ++i) {
            const StereoBiQuad::Pair y = s1.step(s0.step(StereoBiQuad::Pair{left[i], right[i]}));
            left[i] = y[0];
            right[i] = y[1];
            sink(y[0], y[1]);
        }
        s0.keepState(*l0, *r0);
        s1.keepState(*l1, *r1);
        return;
    }

    if (l0)
        (*l0)(left, count);
    if (l1)
        (*l1)(left, count);
    if (r0)
        (*r0)(right, count);
    if (r1)
        (*r1)(right, count);
    for (unsigned long i = 0; i < count; ++i)
        sink(left[i], right[i]);
}

} // namespace Sonra::Audio::Filters
