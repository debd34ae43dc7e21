#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace waxline::platform {

struct UsbDevice {
    uint16_t vendorId = 0;
    uint16_t productId = 0;
    uint16_t release = 0; // bcdDevice
    std::string product;  // for display only
};

// The USB device registry: what is attached now.
class UsbBus {
public:
    virtual ~UsbBus() = default;
    virtual std::vector<UsbDevice> devices() = 0;
};

} // namespace waxline::platform
