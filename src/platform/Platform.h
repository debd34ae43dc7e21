#pragma once

#include "platform/AudioSystem.h"
#include "platform/UsbBus.h"

#include <memory>
#include <string>

namespace waxline::platform {

struct Platform {
    std::unique_ptr<AudioSystem> audio;
    std::unique_ptr<UsbBus> usb;
};

// The virtual devices when setup (or, when setup is empty, $WAXLINE_VIRTUAL_DEVICE) names them,
// e.g. "usb=08bb:2900,name=USB Audio CODEC ,file=side.wav,speed=1"; otherwise PulseAudio and
// libudev. Throws PlatformError when they cannot be had.
Platform openPlatform(const std::string& virtualSetup = {});

} // namespace waxline::platform
