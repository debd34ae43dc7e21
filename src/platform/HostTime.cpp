#include "platform/AudioSystem.h"

#include <chrono>

namespace waxline::platform {

uint64_t hostTime() {
    return static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

uint64_t hostTimeToNanos(uint64_t ticks) {
    using Tick = std::chrono::steady_clock::duration;
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(Tick(static_cast<Tick::rep>(ticks)))
            .count());
}

} // namespace waxline::platform
