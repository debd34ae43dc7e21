#include "platform/Platform.h"

#include <stdexcept>

namespace waxline::platform {

// Replaced by the PulseAudio and libudev implementations.
std::unique_ptr<AudioSystem> openPulseAudio() {
    throw std::runtime_error("the PulseAudio audio system is not available in this build yet; "
                             "use --virtual-device SPEC");
}
std::unique_ptr<UsbBus> openUdev() {
    return nullptr;
}

} // namespace waxline::platform
