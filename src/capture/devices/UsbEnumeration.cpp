#include "capture/devices/UsbEnumeration.h"

#include <cstdio>

namespace waxline {

UsbEnumeration::UsbEnumeration(platform::UsbBus& bus) {
    const std::vector<platform::UsbDevice> devices = bus.devices();
    if (devices.empty()) {
        std::fputs("Unable to find first matching USB device\n", stderr);
        return;
    }
    for (const auto& d : devices) {
        const UsbID id{d.vendorId, d.productId};
        if (UsbIdIsForKnownDevice(id))
            found.push_back(id);
        std::printf("Found device VID 0x%04X (%d), PID 0x%04X (%d), release %d\n", d.vendorId,
                    d.vendorId, d.productId, d.productId, d.release);
    }
}

const KnownUsbDevice* UsbEnumeration::device() const {
    return found.empty() ? nullptr : FindKnownUsbDevice(found.front());
}

} // namespace waxline
