#include "platform/virtual/VirtualSetup.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace waxline::platform {

namespace {

[[noreturn]] void fail(const std::string& item, const std::string& why) {
    throw std::invalid_argument("bad virtual device item \"" + item + "\": " + why);
}

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return {};
    const auto last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

std::string shortNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

double parseNumber(const std::string& item, const std::string& value, double low, double high) {
    const std::string text = trimmed(value);
    char* end = nullptr;
    errno = 0;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || errno != 0 || !std::isfinite(number))
        fail(item, "\"" + value + "\" is not a number");
    if (number < low || number > high)
        fail(item, "must lie between " + shortNumber(low) + " and " + shortNumber(high));
    return number;
}

uint32_t parseCount(const std::string& item, const std::string& value, uint32_t low,
                    uint32_t high) {
    const double number = parseNumber(item, value, low, high);
    if (number != std::floor(number))
        fail(item, "must be a whole number");
    return static_cast<uint32_t>(number);
}

uint16_t parseHex16(const std::string& item, const std::string& text) {
    if (text.empty() || text.size() > 6)
        fail(item, "\"" + text + "\" is not a 16-bit hex id");
    std::string digits = text;
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
        digits = digits.substr(2);
    if (digits.empty() || digits.size() > 4 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        fail(item, "\"" + text + "\" is not a 16-bit hex id");
    return static_cast<uint16_t>(std::strtoul(digits.c_str(), nullptr, 16));
}

UsbDevice parseUsbDevice(const std::string& item, const std::string& text) {
    UsbDevice device;
    const auto first = text.find(':');
    if (first == std::string::npos)
        fail(item, "expected VVVV:PPPP");
    const auto second = text.find(':', first + 1);
    device.vendorId = parseHex16(item, text.substr(0, first));
    device.productId =
        parseHex16(item, text.substr(first + 1, second == std::string::npos ? std::string::npos
                                                                            : second - first - 1));
    device.release =
        second == std::string::npos ? 0x0100 : parseHex16(item, text.substr(second + 1));
    device.product = "Virtual USB device";
    return device;
}

} // namespace

VirtualSetup parseVirtualSetup(const std::string& setup) {
    VirtualSetup result;
    bool usbGiven = false;
    size_t pos = 0;
    while (pos <= setup.size()) {
        auto comma = setup.find(',', pos);
        if (comma == std::string::npos)
            comma = setup.size();
        const std::string item = setup.substr(pos, comma - pos);
        pos = comma + 1;
        if (trimmed(item).empty())
            continue;
        const auto equals = item.find('=');
        if (equals == std::string::npos)
            fail(item, "expected key=value");
        const std::string key = trimmed(item.substr(0, equals));
        const std::string value = item.substr(equals + 1);

        if (key == "usb") {
            if (!usbGiven)
                result.usb.clear();
            usbGiven = true;
            const std::string list = trimmed(value);
            if (list == "none")
                continue;
            size_t start = 0;
            while (start <= list.size()) {
                auto plus = list.find('+', start);
                if (plus == std::string::npos)
                    plus = list.size();
                result.usb.push_back(
                    parseUsbDevice(item, trimmed(list.substr(start, plus - start))));
                start = plus + 1;
            }
        } else if (key == "name") {
            result.name = value;
        } else if (key == "file") {
            if (value.empty())
                fail(item, "needs a file name");
            result.file = value;
        } else if (key == "speed") {
            const std::string text = trimmed(value);
            if (text == "step") {
                result.speed = 0;
                result.asFastAsPossible = false;
            } else if (text == "max") {
                result.asFastAsPossible = true;
                result.speed = 0;
            } else {
                result.speed = parseNumber(item, value, 0, 10000);
                // A deck at speed 0 would never play; step is the way to move it by hand.
                if (result.speed == 0)
                    fail(item, "must be above 0 (or step, or max)");
                result.asFastAsPossible = false;
            }
        } else if (key == "output") {
            if (value.empty())
                fail(item, "needs a file name");
            result.output = value;
        } else if (key == "clock") {
            result.clock = parseNumber(item, value, 0.5, 2.0);
        } else if (key == "outrate") {
            result.outRate = parseNumber(item, value, 1000, 768000);
        } else if (key == "rate") {
            result.rate = parseNumber(item, value, 1000, 768000);
            result.rateGiven = true;
        } else if (key == "channels") {
            result.channels = parseCount(item, value, 1, 8);
        } else if (key == "buffer") {
            result.bufferFrames = parseCount(item, value, 16, 65536);
        } else if (key == "outname") {
            result.outName = value;
        } else if (key == "extra") {
            result.extraInputs.push_back(value);
        } else {
            fail(item, "unknown key \"" + key +
                           "\" (known: usb, name, file, speed, output, clock, outrate, rate, "
                           "channels, buffer, outname, extra)");
        }
    }
    if (result.name.size() > 63)
        result.name.resize(63);
    return result;
}

} // namespace waxline::platform
