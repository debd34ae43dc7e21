#include "capture/devices/AudioDeviceList.h"

namespace waxline {

namespace {
constexpr size_t kMaxNameBytes = 63; // the list stores 64 bytes with the terminator
}

AudioDeviceList::AudioDeviceList(platform::AudioSystem& system, bool inputs)
    : mSystem(system)
    , mInputs(inputs) {
    BuildList();
}

void AudioDeviceList::BuildList() {
    mDevices.clear();
    const auto direction = mInputs ? platform::Direction::Input : platform::Direction::Output;
    for (const auto& info : mSystem.devices(direction)) {
        // A sink's monitor carries its card's name but captures nothing from the outside: a USB
        // codec with a playback side would otherwise be listed twice.
        if (info.channels == 0 || (mInputs && info.monitorOf != platform::kNoDevice))
            continue;
        mDevices.push_back({info.name.substr(0, kMaxNameBytes), info.id});
    }
}

} // namespace waxline
