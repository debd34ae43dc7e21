#pragma once

#include "platform/AudioSystem.h"

#include <cstddef>
#include <cstdint>

namespace waxline {

// A small value object describing one device in one direction, read from the audio system.
// Main/control thread only.
class AudioDevice {
public:
    AudioDevice() = default;

    // Reads the device's properties; returns false (leaving mID set and the rest zero) when the
    // audio system does not know the device.
    bool Init(platform::AudioSystem& system, platform::AudioObjectID id, bool isInput);
    bool Valid() const { return mValid; }

    void SetBufferSize(uint32_t frames) { mBufferSizeFrames = frames; }
    uint32_t CountChannels() const { return mFormat.channels; }
    // Copies the name, truncated and terminated, into a caller's buffer of `size` bytes.
    void GetName(char* buf, std::size_t size) const;

    platform::AudioObjectID mID = platform::kNoDevice;
    bool mIsInput = false;
    uint32_t mSafetyOffset = 0;
    uint32_t mBufferSizeFrames = 0;
    platform::StreamFormat mFormat; // nominal sample rate and channel count

private:
    bool mValid = false;
    char mName[64] = {};
};

} // namespace waxline
