#pragma once

#include "capture/devices/KnownUsbDevices.h"
#include "platform/UsbBus.h"

#include <vector>

namespace waxline {

// The catalogue devices attached to the bus, in bus order. Enumerates once, when made; every
// device examined is printed on standard output, bus failures on standard error.
class UsbEnumeration {
public:
    explicit UsbEnumeration(platform::UsbBus& bus);

    size_t numberOfDetectedDevices() const { return found.size(); }
    // The catalogue row of the first device found, or null.
    const KnownUsbDevice* device() const;
    const std::vector<UsbID>& ids() const { return found; }

private:
    std::vector<UsbID> found;
};

} // namespace waxline
