#include "capture/devices/KnownUsbDevices.h"

#include <algorithm>

namespace waxline {

// Searched in this order. The trailing and doubled blanks are what the devices report.
const KnownUsbDevice knownUsbDevices[] = {
    {{0x08BB, 0x2900}, "USB Audio CODEC ", nullptr, false, false, true},
    {{0x0D8C, 0x0121}, "USB PnP Audio Device", nullptr, true, true, true},
    {{0x08BB, 0x29B0}, "USB Audio CODEC ", "USB PnP Audio Device", false, false, true},
    {{0x0C76, 0x1600}, "USB PnP Audio Device", "USB Audio Device", true, true, false},
    {{0x0D8C, 0x0131}, "USB PnP Audio Device", nullptr, true, true, true},
    {{0x0DBC, 0x0121}, "USB PnP Audio Device", nullptr, true, true, true},
    {{0x2034, 0x0105}, "USB Microphone", nullptr, false, false, false},
    {{0xEB1A, 0x5051}, "USB Audio CODEC ", "OVA Audio USB 2861 Device", false, false, false},
    {{0x15E4, 0x0174}, "USB Audio CODEC ", "OVA uTT", false, false, false},
    {{0x15E4, 0x0179}, "USB Audio CODEC ", "OVA REEL BASE", false, false, false},
    {{0x0D8C, 0x0016}, "USB Audio Device", nullptr, false, false, false},
    {{0x08BB, 0x29C0}, "USB AUDIO  CODEC", "USB PnP Audio Device", false, false, true},
    {{0x0C76, 0x161F}, "USB AUDIO CODEC", "USB PnP Audio Device", false, true, false},
};
const size_t knownUsbDeviceCount = sizeof(knownUsbDevices) / sizeof(knownUsbDevices[0]);

namespace {

// Compares only as many characters as the shorter name holds, so "USB Audio CODEC " accepts an
// input reported without its trailing blank and a longer input that begins with the name.
bool prefixEqual(std::string_view a, std::string_view b) {
    const size_t n = std::min(a.size(), b.size());
    return a.substr(0, n) == b.substr(0, n);
}

} // namespace

bool KnownUsbDevice::NameMatch(std::string_view inputName, NameMatchRule rule) const {
    if (rule == NameMatchRule::Exact)
        return inputName == name || (altName && inputName == altName);
    return prefixEqual(inputName, name) || (altName && prefixEqual(inputName, altName));
}

const KnownUsbDevice* FindKnownUsbDevice(UsbID id) {
    for (size_t i = 0; i < knownUsbDeviceCount; ++i)
        if (knownUsbDevices[i].usbId == id)
            return &knownUsbDevices[i];
    return nullptr;
}

bool UsbIdIsForKnownDevice(UsbID id) {
    return FindKnownUsbDevice(id) != nullptr;
}

} // namespace waxline
