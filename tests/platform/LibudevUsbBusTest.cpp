#include "platform/LibudevUsbBus.h"

#include <gtest/gtest.h>

using waxline::platform::LibudevUsbBus;

namespace {

// What is attached depends on the machine; the listing itself must work and be well-formed.
TEST(LibudevUsbBus, ListsAttachedDevicesWithoutError) {
    LibudevUsbBus bus;
    const auto first = bus.devices();
    const auto second = bus.devices();
    EXPECT_EQ(first.size(), second.size());
    for (const auto& device : first)
        EXPECT_FALSE(device.vendorId == 0 && device.productId == 0) << device.product;
}

} // namespace
