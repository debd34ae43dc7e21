#include "capture/chain/InputChain.h"
#include "capture/monitor/CAPlayThroughHost.h"
#include "capture/monitor/MonitorHost.h"

namespace waxline {

namespace {

// The monitor host as the capture controller sees it, with the input chain installed.
class PlayThroughLink : public MonitorHost {
public:
    PlayThroughLink(platform::AudioSystem& system, platform::AudioObjectID input,
                    platform::AudioObjectID output)
        : mSystem(system)
        , host(system, input, output) {
        if (auto* monitor = host.PlayThrough())
            monitor->SetProcessingCallback(InputProcCallback);
    }
    int Start() override { return host.Start(); }
    int Stop() override { return host.Stop(); }
    bool IsRunning() override { return host.IsRunning(); }
    void SetInputGain(float db) override {
        if (auto* monitor = host.PlayThrough())
            monitor->SetInputGain(db);
    }
    double LatencyMilliseconds() override {
        auto* monitor = host.PlayThrough();
        return monitor ? monitor->LatencyMilliseconds() : 0;
    }
    double LatencyFrames() override {
        auto* monitor = host.PlayThrough();
        if (!monitor)
            return 0;
        const auto input = mSystem.device(monitor->GetInputDeviceID(), platform::Direction::Input);
        const double rate = input ? input->actualSampleRate : 0;
        return rate > 0 ? monitor->LatencyMilliseconds() * rate / 1000.0 : 0;
    }

    bool TakeSettledLatency(double& ms) override {
        auto* monitor = host.PlayThrough();
        return monitor && monitor->TakeSettledLatency(ms);
    }
    MonitorDrops Drops() override {
        auto* monitor = host.PlayThrough();
        return monitor ? monitor->Drops() : MonitorDrops{};
    }

private:
    platform::AudioSystem& mSystem;
    CAPlayThroughHost host;
};

} // namespace

std::unique_ptr<MonitorHost> makePlayThroughHost(platform::AudioSystem& system,
                                                 platform::AudioObjectID input,
                                                 platform::AudioObjectID output) {
    return std::make_unique<PlayThroughLink>(system, input, output);
}

} // namespace waxline
