#pragma once

#include <cstdint>

namespace waxline {

// One channel of non-interleaved 32-bit float samples.
struct AudioBuffer {
    uint32_t mNumberChannels = 1;
    uint32_t mDataByteSize = 0;
    float* mData = nullptr;
};

// A list of channel buffers: buffer 0 is the left (or only) channel, buffer 1 the right. Fixed
// size, so a list can live on the real-time path without allocation.
struct AudioBufferList {
    static constexpr uint32_t kMaxBuffers = 8;
    uint32_t mNumberBuffers = 0;
    AudioBuffer mBuffers[kMaxBuffers];
};

} // namespace waxline
