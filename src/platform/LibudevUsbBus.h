#pragma once

#include "platform/UsbBus.h"

struct udev;

namespace waxline::platform {

// The machine's USB devices as udev lists them (subsystem usb, devtype usb_device).
class LibudevUsbBus : public UsbBus {
public:
    // Throws PlatformError when udev cannot be opened.
    LibudevUsbBus();
    ~LibudevUsbBus() override;
    LibudevUsbBus(const LibudevUsbBus&) = delete;
    LibudevUsbBus& operator=(const LibudevUsbBus&) = delete;

    std::vector<UsbDevice> devices() override;

private:
    ::udev* context = nullptr;
};

} // namespace waxline::platform
