#include "platform/Platform.h"

#include "platform/virtual/VirtualAudioSystem.h"
#include "platform/virtual/VirtualUsbBus.h"

#include <cstdlib>
#include <stdexcept>

namespace waxline::platform {

std::unique_ptr<AudioSystem> openPulseAudio();
std::unique_ptr<UsbBus> openUdev();

Platform openPlatform(const std::string& virtualSetup) {
    std::string setup = virtualSetup;
    if (setup.empty())
        if (const char* env = std::getenv("WAXLINE_VIRTUAL_DEVICE"))
            setup = env;
    Platform platform;
    if (!setup.empty()) {
        VirtualSetup parsed;
        try {
            parsed = parseVirtualSetup(setup);
        } catch (const std::invalid_argument& error) {
            throw std::runtime_error(error.what());
        }
        platform.audio = std::make_unique<VirtualAudioSystem>(parsed);
        platform.usb = std::make_unique<VirtualUsbBus>(parsed.usb);
        return platform;
    }
    platform.audio = openPulseAudio();
    platform.usb = openUdev();
    return platform;
}

} // namespace waxline::platform
