#pragma once

#include "platform/UsbBus.h"

#include <cstdint>
#include <string>
#include <vector>

namespace waxline::platform {

// What the virtual devices look like, parsed from a comma-separated SETUP of key=value items:
//   usb=VVVV:PPPP[:RRRR]  an attached USB device (hex ids, optional hex release); repeat the key
//                         or join several with '+'; usb=none for an empty bus
//   name=TEXT             the virtual deck's input name, kept exactly (trailing blanks matter)
//   file=PATH             a sound file the deck plays (any rate/channels libsndfile reads);
//                         after its end the deck delivers digital silence forever
//   speed=F|step|max      real-time factor above 0; step: nothing moves until step() is
//                         called; max: as fast as the machine allows
//   output=PATH.wav       the virtual output writes what it hears (32-bit float WAV)
//   clock=F               the input clock runs F times as fast as the output's (varispeed tests)
//   outrate=HZ            the output's sample rate (default: the input's)
//   rate=HZ               the input's sample rate when there is no file (default 44100)
//   channels=N            the input's channel count (default 2); file channels repeat cyclically
//   buffer=FRAMES         the device period (default 512)
//   outname=TEXT          the output's name
//   extra=TEXT            one more (silent) input device with that name; repeatable
// Without usb= the bus holds 08bb:2900 and the deck is named "USB Audio CODEC " (a supported
// turntable), so a bare "file=side.wav" behaves like the usual deck.
struct VirtualSetup {
    std::vector<UsbDevice> usb{UsbDevice{0x08bb, 0x2900, 0x0100, "USB Audio CODEC"}};
    std::string name = "USB Audio CODEC ";
    std::string file;
    double speed = 1.0; // 0 with asFastAsPossible unset: stepped
    bool asFastAsPossible = false;
    std::string output;
    double clock = 1.0;
    double outRate = 0; // 0: the input's rate
    double rate = 44100;
    bool rateGiven = false;
    uint32_t channels = 2;
    uint32_t bufferFrames = 512;
    std::string outName = "Virtual Output";
    std::vector<std::string> extraInputs;

    bool stepped() const { return speed == 0 && !asFastAsPossible; }
};

// Throws std::invalid_argument with a one-line message naming the offending item.
VirtualSetup parseVirtualSetup(const std::string& setup);

} // namespace waxline::platform
