#include "platform/virtual/VirtualUsbBus.h"

#include <algorithm>

namespace waxline::platform {

VirtualUsbBus::VirtualUsbBus(std::vector<UsbDevice> attached)
    : attached(std::move(attached)) {}

std::vector<UsbDevice> VirtualUsbBus::devices() {
    std::lock_guard lock(mutex);
    return attached;
}

void VirtualUsbBus::attach(const UsbDevice& device) {
    std::lock_guard lock(mutex);
    attached.push_back(device);
}

int VirtualUsbBus::detach(uint16_t vendorId, uint16_t productId) {
    std::lock_guard lock(mutex);
    const auto removed = std::erase_if(attached, [&](const UsbDevice& device) {
        return device.vendorId == vendorId && device.productId == productId;
    });
    return static_cast<int>(removed);
}

int VirtualUsbBus::detachAll() {
    std::lock_guard lock(mutex);
    const auto removed = attached.size();
    attached.clear();
    return static_cast<int>(removed);
}

} // namespace waxline::platform
