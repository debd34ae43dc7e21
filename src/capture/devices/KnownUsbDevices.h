#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace waxline {

struct UsbID {
    uint16_t vendor = 0;
    uint16_t product = 0;
    bool operator==(const UsbID&) const = default;
};

// How an input name is compared with a catalogue name. Linux always uses the prefix rule; the
// exact rule is what older systems used and is kept for completeness.
enum class NameMatchRule { Prefix, Exact };

// One supported USB turntable or cassette player.
struct KnownUsbDevice {
    UsbID usbId;
    const char* name;    // the name the device's audio input carries; blanks are significant
    const char* altName; // a second accepted input name, or null
    bool genericChip;    // the id belongs to a general-purpose USB audio chip
    bool turntableOrTape;
    bool riaa; // a turntable that needs the RIAA preset

    bool NameMatch(std::string_view inputName, NameMatchRule rule = NameMatchRule::Prefix) const;
};

extern const KnownUsbDevice knownUsbDevices[];
extern const size_t knownUsbDeviceCount;

// The first catalogue row with this vendor and product, or null.
const KnownUsbDevice* FindKnownUsbDevice(UsbID id);
bool UsbIdIsForKnownDevice(UsbID id);

} // namespace waxline
