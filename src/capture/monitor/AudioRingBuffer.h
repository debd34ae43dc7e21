#pragma once

#include "capture/monitor/AudioBufferList.h"

#include <atomic>
#include <cstdint>

namespace waxline {

// A multichannel ring of audio frames addressed by absolute sample time. One thread stores (the
// monitor's input callback), another fetches (its output callback); neither locks. The stored
// range [start, end) is published through a 32-entry queue of time bounds advanced by
// compare-and-swap, and a reader re-checks the range after copying so a writer that overran the
// span in the meantime is reported.
//
// Allocate/Deallocate/Clear run on a control thread while no callback uses the ring.
// Store runs on the writer thread, Fetch/GetTimeBounds/CheckTimeBounds on the reader thread.
class AudioRingBuffer {
public:
    using SampleTime = int64_t;

    // Status codes of Store, Fetch, CheckTimeBounds and GetTimeBounds.
    enum : int {
        kOK = 0,
        kTooMuch = 1,       // the request runs past the end of the stored data
        kWhollyAfter = 2,   // the request lies wholly after the end
        kOverrun = 3,       // store larger than the capacity, or request spans the stored data
        kStartsBefore = -1, // the request starts before the stored data
        kWhollyBefore = -2, // the request ends before the stored data begins
        kCPUOverload = 4,   // the time bounds changed under the reader on every try
    };

    AudioRingBuffer() = default;
    virtual ~AudioRingBuffer();
    AudioRingBuffer(const AudioRingBuffer&) = delete;
    AudioRingBuffer& operator=(const AudioRingBuffer&) = delete;

    // Frees any earlier block; capacityFrames is rounded up to a power of two.
    void Allocate(int nChannels, uint32_t bytesPerFrame, uint32_t capacityFrames);
    int Deallocate();
    // Forgets what is stored (the time bounds), keeping the sample memory.
    void Clear();

    int Store(const AudioBufferList* abl, uint32_t nFrames, SampleTime frameNumber);
    int Fetch(AudioBufferList* abl, uint32_t nFrames, SampleTime frameNumber);
    // Fetch that leaves the first `skipBytes` bytes of each destination buffer untouched and
    // fetches the rest of the span after them; with a skip of 0 it is the plain Fetch.
    int Fetch(AudioBufferList* abl, uint32_t nFrames, SampleTime frameNumber, uint32_t& skipBytes);

    int GetTimeBounds(SampleTime& startTime, SampleTime& endTime) const;
    void SetTimeBounds(SampleTime startTime, SampleTime endTime);
    int CheckTimeBounds(SampleTime startRead, SampleTime endRead) const;

    int NumberChannels() const { return mNumberChannels; }
    uint32_t CapacityFrames() const { return mCapacityFrames; }
    uint32_t CapacityBytes() const { return mCapacityBytes; }
    uint32_t BytesPerFrame() const { return mBytesPerFrame; }

    static constexpr uint32_t kTimeBoundsQueueSize = 32;
    static constexpr uint32_t kTimeBoundsQueueMask = kTimeBoundsQueueSize - 1;

private:
    friend class AudioRingBufferTestAccess; // to tear the time bounds in tests
    struct TimeBounds {
        std::atomic<SampleTime> mStartTime{0};
        std::atomic<SampleTime> mEndTime{0};
        std::atomic<uint32_t> mUpdateCounter{0};
    };

    uint32_t FrameOffset(SampleTime t) const {
        return static_cast<uint32_t>(t & static_cast<SampleTime>(mCapacityFramesMask)) *
               mBytesPerFrame;
    }
    void ResetTimeBounds();
    // Current bounds as published; false when no consistent reading was had.
    bool ReadBounds(SampleTime& start, SampleTime& end) const;

    // One block: a table of channel pointers, then the channels' sample areas, zero-filled.
    uint8_t** mBuffers = nullptr;
    int mNumberChannels = 0;
    uint32_t mBytesPerFrame = 0;
    uint32_t mCapacityFrames = 0;
    uint32_t mCapacityFramesMask = 0;
    uint32_t mCapacityBytes = 0;
    TimeBounds mTimeBoundsQueue[kTimeBoundsQueueSize];
    std::atomic<uint32_t> mTimeBoundsQueueCurrentIndex{0};
};

} // namespace waxline
