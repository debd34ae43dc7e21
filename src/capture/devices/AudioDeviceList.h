#pragma once

#include "platform/AudioSystem.h"

#include <string>
#include <vector>

namespace waxline {

// The audio devices that have channels in one direction, in the order the platform lists them;
// inputs are capture devices only, never the monitor of an output.
class AudioDeviceList {
public:
    struct Device {
        std::string mName; // at most 63 bytes
        platform::AudioObjectID mID = platform::kNoDevice;
    };

    AudioDeviceList(platform::AudioSystem& system, bool inputs);

    void BuildList();
    const std::vector<Device>& GetList() const { return mDevices; }
    bool empty() const { return mDevices.empty(); }

private:
    platform::AudioSystem& mSystem;
    bool mInputs;
    std::vector<Device> mDevices;
};

} // namespace waxline
