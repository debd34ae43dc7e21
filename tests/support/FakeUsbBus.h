#pragma once

#include "platform/UsbBus.h"

#include <vector>

namespace waxline::test {

// A USB bus that reports exactly the devices a test puts on it.
class FakeUsbBus : public platform::UsbBus {
public:
    std::vector<platform::UsbDevice> attached;
    std::vector<platform::UsbDevice> devices() override { return attached; }
};

} // namespace waxline::test
