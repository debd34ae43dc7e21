// The capture controller on a private PulseAudio daemon, with the USB bus told what is plugged in.
#include "capture/Audio.h"
#include "platform/pulse/PulseAudioSystem.h"
#include "platform/virtual/VirtualUsbBus.h"
#include "support/CoreApplication.h"
#include "support/PulseDaemon.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace waxline {
namespace {

// A USB codec with a playback side: the monitor of its sink carries the card's name as its
// capture source does. Detection finds one device with one input, the capture source.
TEST(AudioOnPulseAudio, DetectsACodecWithAPlaybackSideAsOneInput) {
    test::CoreApplication app;
    test::PulseDaemon pulse;
    if (!pulse.running())
        GTEST_SKIP() << "no PulseAudio daemon: " << pulse.whyNot();
    ASSERT_TRUE(pulse.addCard("codec", "USB Audio CODEC ", 48000));

    platform::Platform platform;
    platform.audio = std::make_unique<platform::PulseAudioSystem>();
    platform.usb = std::make_unique<platform::VirtualUsbBus>(
        std::vector<platform::UsbDevice>{{0x08bb, 0x2900, 0x0100, "USB Audio CODEC"}});
    platform::AudioObjectID captureSide = platform::kNoDevice;
    for (const auto& d : platform.audio->devices(platform::Direction::Input))
        if (d.serverName == "codec_in")
            captureSide = d.id;
    ASSERT_NE(captureSide, platform::kNoDevice);

    Audio audio(platform);
    testing::internal::CaptureStderr();
    const int code = audio.detectAudioDevice();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(code, 1);
    EXPECT_EQ(audio.countDevicesWithMatchingName(), 1u);
    EXPECT_EQ(audio.inputDeviceID(), captureSide);
}

} // namespace
} // namespace waxline
