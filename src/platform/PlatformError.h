#pragma once

#include <stdexcept>
#include <string>

namespace waxline::platform {

// Why the audio service or the USB registry could not be had. The reason is for the front ends
// to word; the detail is the failing library's own text (pa_strerror's, say) or, for the
// virtual devices, which item of their set-up is wrong.
class PlatformError : public std::runtime_error {
public:
    enum class Reason {
        AudioServerUnreachable, // no server answered, or it refused us
        AudioClientFailed,      // the client library could not set itself up
        UsbRegistryUnavailable, // udev could not be opened
        VirtualDeviceInvalid,   // the virtual devices' set-up cannot be used
    };

    PlatformError(Reason reason, const std::string& detail)
        : std::runtime_error(detail)
        , why(reason) {}
    Reason reason() const { return why; }

private:
    Reason why;
};

} // namespace waxline::platform
