#include "cli/PlatformWords.h"

namespace waxline::cli {

std::string describe(const platform::PlatformError& error) {
    using Reason = platform::PlatformError::Reason;
    switch (error.reason()) {
    case Reason::AudioServerUnreachable:
        return std::string("cannot reach the PulseAudio server (") + error.what() +
               "): check that sound works on this computer";
    case Reason::AudioClientFailed:
        return std::string("the PulseAudio client could not start (") + error.what() + ")";
    case Reason::UsbRegistryUnavailable:
        return std::string("cannot open udev to list the USB devices (") + error.what() + ")";
    case Reason::VirtualDeviceInvalid:
        return error.what();
    }
    return error.what();
}

} // namespace waxline::cli
