#pragma once

#include "platform/AudioSystem.h"

#include <functional>
#include <memory>

namespace waxline {

// What the monitor gave up to hold its latency since it was started: the places where it
// skipped input and how much, and the underflows and overflows the server told of.
struct MonitorDrops {
    uint64_t skips = 0;
    double skippedMs = 0;
    uint64_t outputUnderflows = 0;
    uint64_t inputOverflows = 0;
};

// What the capture controller needs of the play-through monitor host: start, stop, the input
// gain in decibels. The real one wraps CAPlayThroughHost; tests may supply their own.
class MonitorHost {
public:
    virtual ~MonitorHost() = default;
    virtual int Start() = 0;
    virtual int Stop() = 0;
    virtual bool IsRunning() = 0;
    virtual void SetInputGain(float db) = 0;
    // Input-to-output latency of the monitor, for reports: in milliseconds, and in frames of
    // the input (the thru offset, or in varispeed the distance kept). 0 until it has played.
    virtual double LatencyMilliseconds() { return 0; }
    virtual double LatencyFrames() { return 0; }
    // True once after the monitor had to settle on a longer latency than it started with, and
    // held it; `ms` is that latency.
    virtual bool TakeSettledLatency(double& /*ms*/) { return false; }
    virtual MonitorDrops Drops() { return {}; }
};

// Makes the host for (input, output), with InputProcCallback installed as its processing
// callback; null when the monitor cannot be built.
using MonitorFactory = std::function<std::unique_ptr<MonitorHost>(
    platform::AudioSystem&, platform::AudioObjectID input, platform::AudioObjectID output)>;

// The play-through monitor of this program.
std::unique_ptr<MonitorHost> makePlayThroughHost(platform::AudioSystem& system,
                                                 platform::AudioObjectID input,
                                                 platform::AudioObjectID output);

} // namespace waxline
