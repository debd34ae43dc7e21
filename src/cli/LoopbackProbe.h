#pragma once

#include "capture/monitor/ClickDelays.h"
#include "platform/AudioSystem.h"

#include <string>

namespace waxline::cli {

// The running monitor's latency as a listener hears it, measured as bench/monitor-latency does:
// where the input is the monitor of an output ("deck"), a click train plays through a sink
// combined of that output and the monitor's own output ("speakers"), so each click reaches the
// speakers' monitor twice, straight and through the monitor; the delay between the two is the
// latency. The combined sink is a module loaded with pactl for the measurement and unloaded
// after it.
struct LoopbackMeasurement {
    bool made = false;
    std::string whyNot; // when no loopback could be made
    DelaySummary delays;
};

LoopbackMeasurement measureThroughLoopback(platform::AudioSystem& system,
                                           platform::AudioObjectID input,
                                           platform::AudioObjectID output);

} // namespace waxline::cli
