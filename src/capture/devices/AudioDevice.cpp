#include "capture/devices/AudioDevice.h"

#include <algorithm>
#include <cstring>

namespace waxline {

bool AudioDevice::Init(platform::AudioSystem& system, platform::AudioObjectID id, bool isInput) {
    *this = AudioDevice();
    mID = id;
    mIsInput = isInput;
    const auto info =
        system.device(id, isInput ? platform::Direction::Input : platform::Direction::Output);
    if (!info) {
        return false;
    }
    mSafetyOffset = info->safetyOffsetFrames;
    mBufferSizeFrames = info->bufferFrames;
    mFormat.channels = info->channels;
    mFormat.sampleRate =
        info->nominalSampleRate > 0 ? info->nominalSampleRate : info->actualSampleRate;
    const std::size_t n = std::min(info->name.size(), sizeof(mName) - 1);
    std::memcpy(mName, info->name.data(), n);
    mName[n] = '\0';
    mValid = true;
    return true;
}

void AudioDevice::GetName(char* buf, std::size_t size) const {
    if (size == 0) {
        return;
    }
    const std::size_t n = std::min(std::strlen(mName), size - 1);
    std::memcpy(buf, mName, n);
    buf[n] = '\0';
}

} // namespace waxline
