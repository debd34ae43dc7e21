#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace waxline {

// A failed platform operation: what was being done, and the status it returned.
class CAXException : public std::runtime_error {
public:
    CAXException(const char* operation, int32_t status)
        : std::runtime_error(operation)
        , mOperation(operation)
        , mStatus(status) {}

    const char* Operation() const { return mOperation.c_str(); }
    int32_t Status() const { return mStatus; }

    // Four printable characters as 'abcd' when the status is a four-character code, else the
    // number.
    static std::string FormatStatus(int32_t status) {
        const auto u = static_cast<uint32_t>(status);
        char c[4] = {static_cast<char>(u >> 24), static_cast<char>(u >> 16),
                     static_cast<char>(u >> 8), static_cast<char>(u)};
        bool printable = true;
        for (char ch : c) {
            printable = printable && ch >= 0x20 && ch < 0x7f;
        }
        if (printable) {
            return "'" + std::string(c, 4) + "'";
        }
        return std::to_string(status);
    }

private:
    std::string mOperation;
    int32_t mStatus;
};

} // namespace waxline
