#include "platform/LibudevUsbBus.h"

#include "platform/PlatformError.h"

#include <libudev.h>

#include <cstdlib>

namespace waxline::platform {

namespace {

// sysfs writes the ids as four hex digits without a prefix.
bool readHex16(udev_device* device, const char* attribute, uint16_t& value) {
    const char* text = udev_device_get_sysattr_value(device, attribute);
    if (!text || !*text)
        return false;
    char* end = nullptr;
    const unsigned long number = std::strtoul(text, &end, 16);
    if (end == text || number > 0xFFFF)
        return false;
    value = static_cast<uint16_t>(number);
    return true;
}

} // namespace

LibudevUsbBus::LibudevUsbBus()
    : context(udev_new()) {
    if (!context)
        throw PlatformError(PlatformError::Reason::UsbRegistryUnavailable, "udev_new");
}

LibudevUsbBus::~LibudevUsbBus() {
    udev_unref(context);
}

std::vector<UsbDevice> LibudevUsbBus::devices() {
    std::vector<UsbDevice> result;
    udev_enumerate* enumerate = udev_enumerate_new(context);
    if (!enumerate)
        return result;
    udev_enumerate_add_match_subsystem(enumerate, "usb");
    udev_enumerate_add_match_property(enumerate, "DEVTYPE", "usb_device");
    udev_enumerate_scan_devices(enumerate);
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate)) {
        udev_device* device =
            udev_device_new_from_syspath(context, udev_list_entry_get_name(entry));
        if (!device)
            continue;
        const char* type = udev_device_get_devtype(device);
        UsbDevice usb;
        if (type && std::string(type) == "usb_device" &&
            readHex16(device, "idVendor", usb.vendorId) &&
            readHex16(device, "idProduct", usb.productId)) {
            readHex16(device, "bcdDevice", usb.release);
            if (const char* product = udev_device_get_sysattr_value(device, "product"))
                usb.product = product;
            result.push_back(usb);
        }
        udev_device_unref(device);
    }
    udev_enumerate_unref(enumerate);
    return result;
}

} // namespace waxline::platform
