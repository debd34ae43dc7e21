#include "platform/LibudevUsbBus.h"
#include "platform/Platform.h"
#include "platform/pulse/PulseAudioSystem.h"

namespace waxline::platform {

std::unique_ptr<AudioSystem> openPulseAudio() {
    return std::make_unique<PulseAudioSystem>();
}
std::unique_ptr<UsbBus> openUdev() {
    return std::make_unique<LibudevUsbBus>();
}

} // namespace waxline::platform
