#pragma once

#include "platform/UsbBus.h"

#include <mutex>
#include <vector>

namespace waxline::platform {

// A USB bus that holds what the test (or the SETUP) attached. Thread-safe.
class VirtualUsbBus : public UsbBus {
public:
    explicit VirtualUsbBus(std::vector<UsbDevice> attached = {});

    std::vector<UsbDevice> devices() override;

    // Test control: plug a device in, pull one (by ids) or all out. Returns how many were removed.
    void attach(const UsbDevice& device);
    int detach(uint16_t vendorId, uint16_t productId);
    int detachAll();

private:
    std::mutex mutex;
    std::vector<UsbDevice> attached;
};

} // namespace waxline::platform
