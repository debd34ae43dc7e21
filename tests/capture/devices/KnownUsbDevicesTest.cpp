#include "capture/devices/KnownUsbDevices.h"
#include "capture/devices/AudioDeviceList.h"
#include "capture/devices/UsbEnumeration.h"
#include "support/FakeAudioSystem.h"
#include "support/FakeUsbBus.h"

#include <gtest/gtest.h>

#include <set>

namespace waxline {
namespace {

std::set<size_t> matchingRows(const std::string& input, NameMatchRule rule) {
    std::set<size_t> rows;
    for (size_t i = 0; i < knownUsbDeviceCount; ++i)
        if (knownUsbDevices[i].NameMatch(input, rule))
            rows.insert(i);
    return rows;
}

struct NameCase {
    const char* input;
    std::set<size_t> prefixRows;
    std::set<size_t> exactRows;
};

// The exact rule shows each name with its blanks, and "" under the prefix rule every row.
TEST(KnownUsbDevices, NameMatchUnderBothRules) {
    const std::set<size_t> all = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const NameCase cases[] = {
        // Without the trailing blank: the prefix rule accepts it, exact comparison does not.
        {"USB Audio CODEC", {0, 2, 7, 8, 9}, {}},
        {"USB Audio CODEC ", {0, 2, 7, 8, 9}, {0, 2, 7, 8, 9}},
        // The compared length is 0, so every row matches.
        {"", all, {}},
        {"USB Audio CODEC  and more", {0, 2, 7, 8, 9}, {}},
        {"USB PnP Audio Device", {1, 2, 3, 4, 5, 11, 12}, {1, 2, 3, 4, 5, 11, 12}},
        {"USB Audio Device", {3, 10}, {3, 10}},
        {"USB AUDIO  CODEC", {11}, {11}},
        {"USB AUDIO CODEC", {12}, {12}},
        {"OVA uTT", {8}, {8}},
        {"USB", all, {}},
        {"Built-in Audio", {}, {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(matchingRows(c.input, NameMatchRule::Prefix), c.prefixRows)
            << "prefix rule, input '" << c.input << "'";
        EXPECT_EQ(matchingRows(c.input, NameMatchRule::Exact), c.exactRows)
            << "exact rule, input '" << c.input << "'";
    }
}

TEST(KnownUsbDevices, LookupByIdFindsTheFirstRow) {
    struct Case {
        UsbID id;
        int row; // -1: not in the catalogue
    };
    const Case cases[] = {
        {{0x08BB, 0x2900}, 0},  {{0x0D8C, 0x0121}, 1},  {{0x0D8C, 0x0131}, 4},
        {{0x0DBC, 0x0121}, 5},  {{0x0C76, 0x161F}, 12}, {{0x0D8C, 0x0016}, 10},
        {{0x08BB, 0x2901}, -1}, {{0x2900, 0x08BB}, -1}, {{0, 0}, -1},
    };
    for (const auto& c : cases) {
        const KnownUsbDevice* row = FindKnownUsbDevice(c.id);
        if (c.row < 0) {
            EXPECT_EQ(row, nullptr);
            EXPECT_FALSE(UsbIdIsForKnownDevice(c.id));
        } else {
            EXPECT_EQ(row, &knownUsbDevices[c.row]);
            EXPECT_TRUE(UsbIdIsForKnownDevice(c.id));
        }
    }
}

// Every device on the bus is printed; the count and the first row are the catalogue's.
TEST(UsbEnumeration, CountsCatalogueDevicesAndPrintsEveryDevice) {
    const platform::UsbDevice hub{0x1D6B, 0x0002, 0x0515, "hub"};
    const platform::UsbDevice codec{0x08BB, 0x29B0, 0x0100, "codec"};
    const std::string hubLine = "Found device VID 0x1D6B (7531), PID 0x0002 (2), release 1301\n";
    const struct {
        std::vector<platform::UsbDevice> bus;
        size_t expectedCount;
        int firstRow; // -1: none
        std::string expectedOut;
        std::string expectedErr;
    } cases[] = {
        {{}, 0, -1, "", "Unable to find first matching USB device\n"},
        {{hub}, 0, -1, hubLine, ""},
        {{hub, codec},
         1,
         2,
         hubLine + "Found device VID 0x08BB (2235), PID 0x29B0 (10672), release 256\n",
         ""},
        {{{0x0D8C, 0x0131, 1, "a"}, {0x08BB, 0x2900, 2, "b"}},
         2,
         4,
         "Found device VID 0x0D8C (3468), PID 0x0131 (305), release 1\n"
         "Found device VID 0x08BB (2235), PID 0x2900 (10496), release 2\n",
         ""},
    };
    for (const auto& c : cases) {
        test::FakeUsbBus bus;
        bus.attached = c.bus;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        UsbEnumeration found(bus);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.expectedOut);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.expectedErr);
        EXPECT_EQ(found.numberOfDetectedDevices(), c.expectedCount);
        EXPECT_EQ(found.device(), c.firstRow < 0 ? nullptr : &knownUsbDevices[c.firstRow]);
    }
}

TEST(AudioDeviceList, KeepsCaptureDevicesWithChannelsInOrderAndTruncatesNames) {
    test::FakeAudioSystem system;
    const std::string longName(80, 'x');
    system.add(platform::Direction::Input, 7, "USB Audio CODEC");
    system.add(platform::Direction::Input, 3, "Monitor without channels", 0);
    system.add(platform::Direction::Input, 5, longName, 1);
    // A USB codec's playback side: its monitor carries the card's name, and source 0 is as real
    // as any other.
    system.add(platform::Direction::Input, 0, "USB Audio CODEC");
    system.inputs.back().monitorOf = 9;
    system.add(platform::Direction::Output, 9, "Speakers");

    AudioDeviceList inputs(system, true);
    ASSERT_EQ(inputs.GetList().size(), 2u);
    EXPECT_EQ(inputs.GetList()[0].mID, 7u);
    EXPECT_EQ(inputs.GetList()[0].mName, "USB Audio CODEC");
    EXPECT_EQ(inputs.GetList()[1].mID, 5u);
    EXPECT_EQ(inputs.GetList()[1].mName, std::string(63, 'x'));

    AudioDeviceList outputs(system, false);
    ASSERT_EQ(outputs.GetList().size(), 1u);
    EXPECT_EQ(outputs.GetList()[0].mID, 9u);

    system.inputs.clear();
    inputs.BuildList();
    EXPECT_TRUE(inputs.empty());
}

} // namespace
} // namespace waxline
