#include "platform/Platform.h"

#include "platform/PlatformError.h"
#include "platform/virtual/VirtualAudioSystem.h"
#include "platform/virtual/VirtualUsbBus.h"

#include <cstdlib>

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
        try {
            const VirtualSetup parsed = parseVirtualSetup(setup);
            platform.audio = std::make_unique<VirtualAudioSystem>(parsed);
            platform.usb = std::make_unique<VirtualUsbBus>(parsed.usb);
        } catch (const std::exception& error) {
            throw PlatformError(PlatformError::Reason::VirtualDeviceInvalid, error.what());
        }
        return platform;
    }
    platform.audio = openPulseAudio();
    platform.usb = openUdev();
    return platform;
}

} // namespace waxline::platform
