#include "platform/virtual/VirtualSetup.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using waxline::platform::parseVirtualSetup;
using waxline::platform::VirtualSetup;

namespace {

struct GoodCase {
    const char* setup;
    void (*check)(const VirtualSetup&);
};

TEST(VirtualSetup, ParsesGoodSetups) {
    const GoodCase cases[] = {
        {"usb=08bb:2900,name=USB Audio CODEC ,file=side.wav,speed=1",
         [](const VirtualSetup& s) {
             ASSERT_EQ(s.usb.size(), 1u);
             EXPECT_EQ(s.usb[0].vendorId, 0x08bb);
             EXPECT_EQ(s.usb[0].productId, 0x2900);
             EXPECT_EQ(s.name, "USB Audio CODEC "); // trailing blank kept
             EXPECT_EQ(s.file, "side.wav");
             EXPECT_DOUBLE_EQ(s.speed, 1.0);
             EXPECT_FALSE(s.stepped());
         }},
        {"usb=0D8C:0131+0c76:161f,usb=15e4:0179:0203",
         [](const VirtualSetup& s) {
             ASSERT_EQ(s.usb.size(), 3u);
             EXPECT_EQ(s.usb[0].vendorId, 0x0d8c);
             EXPECT_EQ(s.usb[0].productId, 0x0131);
             EXPECT_EQ(s.usb[1].vendorId, 0x0c76);
             EXPECT_EQ(s.usb[1].productId, 0x161f);
             EXPECT_EQ(s.usb[2].productId, 0x0179);
             EXPECT_EQ(s.usb[2].release, 0x0203);
         }},
        {"usb=none", [](const VirtualSetup& s) { EXPECT_TRUE(s.usb.empty()); }},
        {"file=a.wav",
         [](const VirtualSetup& s) {
             // Without usb= the deck is a supported turntable.
             ASSERT_EQ(s.usb.size(), 1u);
             EXPECT_EQ(s.usb[0].vendorId, 0x08bb);
             EXPECT_EQ(s.name, "USB Audio CODEC ");
         }},
        {"speed=step", [](const VirtualSetup& s) { EXPECT_TRUE(s.stepped()); }},
        {"speed=max",
         [](const VirtualSetup& s) {
             EXPECT_TRUE(s.asFastAsPossible);
             EXPECT_FALSE(s.stepped());
         }},
        {"clock=1.001,outrate=48000,output=heard.wav",
         [](const VirtualSetup& s) {
             EXPECT_DOUBLE_EQ(s.clock, 1.001);
             EXPECT_DOUBLE_EQ(s.outRate, 48000);
             EXPECT_EQ(s.output, "heard.wav");
         }},
        {"rate=48000,channels=1,buffer=256",
         [](const VirtualSetup& s) {
             EXPECT_DOUBLE_EQ(s.rate, 48000);
             EXPECT_EQ(s.channels, 1u);
             EXPECT_EQ(s.bufferFrames, 256u);
         }},
        {"extra=USB Audio CODEC,extra=Built-in Audio,outname=Speakers",
         [](const VirtualSetup& s) {
             ASSERT_EQ(s.extraInputs.size(), 2u);
             EXPECT_EQ(s.extraInputs[0], "USB Audio CODEC");
             EXPECT_EQ(s.extraInputs[1], "Built-in Audio");
             EXPECT_EQ(s.outName, "Speakers");
         }},
        {"name=", [](const VirtualSetup& s) { EXPECT_EQ(s.name, ""); }},
        {" speed = 2 ,,", [](const VirtualSetup& s) { EXPECT_DOUBLE_EQ(s.speed, 2.0); }},
        {"name=0123456789012345678901234567890123456789012345678901234567890123456789",
         [](const VirtualSetup& s) { EXPECT_EQ(s.name.size(), 63u); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.setup);
        c.check(parseVirtualSetup(c.setup));
    }
}

TEST(VirtualSetup, RejectsBadSetupsWithOneLineNamingTheItem) {
    const struct {
        const char* setup;
        const char* mentioned;
    } cases[] = {
        {"usb=08bb", "usb=08bb"},     {"usb=08bb:29000", "29000"},
        {"usb=xyz:0001", "xyz"},      {"usb=08bb:2900+", "usb=08bb:2900+"},
        {"speed=fast", "fast"},       {"speed=-1", "speed=-1"},
        {"speed=0", "speed=0"},       {"speed=nan", "nan"},
        {"speed=inf", "inf"},         {"clock=0", "clock=0"},
        {"clock=abc", "abc"},         {"channels=1.5", "channels=1.5"},
        {"channels=0", "channels=0"}, {"buffer=4", "buffer=4"},
        {"outrate=12", "outrate=12"}, {"file=", "file="},
        {"colour=red", "colour"},     {"justtext", "justtext"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.setup);
        try {
            parseVirtualSetup(c.setup);
            ADD_FAILURE() << "accepted";
        } catch (const std::invalid_argument& error) {
            const std::string message = error.what();
            EXPECT_NE(message.find(c.mentioned), std::string::npos) << message;
            EXPECT_EQ(message.find('\n'), std::string::npos) << message;
        }
    }
}

} // namespace
