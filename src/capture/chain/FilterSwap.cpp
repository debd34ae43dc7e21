#include "capture/chain/FilterSwap.h"

#include "capture/chain/InputChain.h"

#include <atomic>
#include <thread>

namespace waxline {

using Sonra::Audio::Filters::AudioFilter;

namespace {

// Zero-filled at program start: no sections, so it passes audio through until a preset is chosen.
// Only reachable through `active`, so nothing can set a preset that the chain no longer reads.
AudioFilter passThrough;

// The preset in force, and the one the audio thread is applying right now: a single hazard
// pointer, as there is one input thread.
std::atomic<AudioFilter*> active{&passThrough};
std::atomic<AudioFilter*> inUse{nullptr};

} // namespace

ActiveFilter::ActiveFilter() {
    // Announce the pointer, then confirm it is still current: after that the main thread sees
    // the announcement before it could free the object (both sequentially consistent).
    AudioFilter* p = active.load();
    for (;;) {
        inUse.store(p);
        AudioFilter* again = active.load();
        if (again == p)
            break;
        p = again;
    }
    held = p;
}

ActiveFilter::~ActiveFilter() {
    inUse.store(nullptr, std::memory_order_release);
}

void setFilterType(AudioFilter::Type type) {
    auto* fresh = new AudioFilter;
    fresh->Set(type);
    AudioFilter* old = active.exchange(fresh);
    // At most one buffer's filtering to wait for.
    while (inUse.load() == old)
        std::this_thread::yield();
    if (old != &passThrough)
        delete old;
}

} // namespace waxline
