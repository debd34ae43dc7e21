#include "platform/virtual/VirtualUsbBus.h"
#include "platform/PlatformError.h"
#include "platform/virtual/VirtualAudioSystem.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace waxline::platform;

namespace {

std::vector<std::pair<int, int>> ids(UsbBus& bus) {
    std::vector<std::pair<int, int>> result;
    for (const auto& d : bus.devices())
        result.emplace_back(d.vendorId, d.productId);
    return result;
}

TEST(VirtualUsbBus, HoldsTheSetupsDevicesAndFollowsAttachAndDetach) {
    Platform platform = openPlatform("usb=08bb:2900+0d8c:0131,usb=08bb:2900");
    auto& bus = dynamic_cast<VirtualUsbBus&>(*platform.usb);
    using P = std::vector<std::pair<int, int>>;
    EXPECT_EQ(ids(bus), (P{{0x08bb, 0x2900}, {0x0d8c, 0x0131}, {0x08bb, 0x2900}}));
    EXPECT_EQ(bus.detach(0x08bb, 0x2900), 2);
    EXPECT_EQ(ids(bus), (P{{0x0d8c, 0x0131}}));
    EXPECT_EQ(bus.detach(0x1111, 0x2222), 0);
    bus.attach(UsbDevice{0x2034, 0x0105, 0x0100, "mic"});
    EXPECT_EQ(ids(bus), (P{{0x0d8c, 0x0131}, {0x2034, 0x0105}}));
    EXPECT_EQ(bus.detachAll(), 2);
    EXPECT_TRUE(bus.devices().empty());
}

TEST(VirtualUsbBus, UnplugAndPlugTheDeckTogether) {
    Platform platform = openPlatform("usb=0c76:1600,speed=step");
    auto& audio = dynamic_cast<VirtualAudioSystem&>(*platform.audio);
    int listChanges = 0;
    audio.onDeviceListChanged([&] { ++listChanges; });

    ASSERT_TRUE(unplugVirtualDeck(platform));
    EXPECT_TRUE(platform.usb->devices().empty());
    EXPECT_TRUE(platform.audio->devices(Direction::Input).empty());
    EXPECT_EQ(listChanges, 1);

    ASSERT_TRUE(plugVirtualDeck(platform));
    ASSERT_EQ(platform.usb->devices().size(), 1u);
    EXPECT_EQ(platform.usb->devices()[0].productId, 0x1600);
    EXPECT_EQ(platform.audio->devices(Direction::Input).size(), 1u);
    EXPECT_EQ(listChanges, 2);
}

TEST(OpenPlatform, TakesTheEnvironmentWhenNoSetupIsGivenAndReportsBadSetups) {
    ::setenv("WAXLINE_VIRTUAL_DEVICE", "usb=none,name=From the environment", 1);
    Platform fromEnvironment = openPlatform();
    ::unsetenv("WAXLINE_VIRTUAL_DEVICE");
    EXPECT_TRUE(fromEnvironment.usb->devices().empty());
    ASSERT_EQ(fromEnvironment.audio->devices(Direction::Input).size(), 1u);
    EXPECT_EQ(fromEnvironment.audio->devices(Direction::Input)[0].name, "From the environment");

    EXPECT_THROW(openPlatform("speed=fast"), PlatformError);
    EXPECT_THROW(openPlatform("file=/nonexistent/side.wav"), PlatformError);
}

} // namespace
