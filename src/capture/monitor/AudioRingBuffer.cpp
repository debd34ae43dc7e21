#include "capture/monitor/AudioRingBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace waxline {

namespace {

uint32_t NextPowerOfTwo(uint32_t x) {
    uint32_t p = 1;
    while (p < x) {
        p <<= 1;
    }
    return p;
}

// Copies `bytes` from src into the ring area at `offset`, continuing at the area's start when
// the copy reaches its end.
void WrapCopyIn(uint8_t* area, uint32_t areaBytes, uint32_t offset, const uint8_t* src,
                uint32_t bytes) {
    if (bytes == 0) {
        return;
    }
    const uint32_t first = std::min(bytes, areaBytes - offset);
    std::memcpy(area + offset, src, first);
    if (first < bytes) {
        std::memcpy(area, src + first, bytes - first);
    }
}

void WrapCopyOut(uint8_t* dst, const uint8_t* area, uint32_t areaBytes, uint32_t offset,
                 uint32_t bytes) {
    if (bytes == 0) {
        return;
    }
    const uint32_t first = std::min(bytes, areaBytes - offset);
    std::memcpy(dst, area + offset, first);
    if (first < bytes) {
        std::memcpy(dst + first, area, bytes - first);
    }
}

void WrapZero(uint8_t* area, uint32_t areaBytes, uint32_t offset, uint32_t bytes) {
    if (bytes == 0) {
        return;
    }
    const uint32_t first = std::min(bytes, areaBytes - offset);
    std::memset(area + offset, 0, first);
    if (first < bytes) {
        std::memset(area, 0, bytes - first);
    }
}

} // namespace

AudioRingBuffer::~AudioRingBuffer() {
    Deallocate();
}

void AudioRingBuffer::Allocate(int nChannels, uint32_t bytesPerFrame, uint32_t capacityFrames) {
    Deallocate();
    capacityFrames = NextPowerOfTwo(capacityFrames);
    mNumberChannels = nChannels;
    mBytesPerFrame = bytesPerFrame;
    mCapacityFrames = capacityFrames;
    mCapacityFramesMask = capacityFrames - 1;
    mCapacityBytes = bytesPerFrame * capacityFrames;

    // Pointer table first, then every channel's area, all in one zeroed block.
    const std::size_t channels = static_cast<std::size_t>(std::max(nChannels, 0));
    const std::size_t allocSize = channels * (sizeof(uint8_t*) + mCapacityBytes);
    auto* block = static_cast<uint8_t*>(std::calloc(1, std::max<std::size_t>(allocSize, 1)));
    mBuffers = reinterpret_cast<uint8_t**>(block);
    uint8_t* area = block + channels * sizeof(uint8_t*);
    for (std::size_t i = 0; i < channels; ++i) {
        mBuffers[i] = area;
        area += mCapacityBytes;
    }
    ResetTimeBounds();
}

int AudioRingBuffer::Deallocate() {
    if (mBuffers != nullptr) {
        std::free(mBuffers);
        mBuffers = nullptr;
    }
    mNumberChannels = 0;
    mCapacityBytes = 0;
    mCapacityFrames = 0;
    return 0;
}

void AudioRingBuffer::Clear() {
    ResetTimeBounds();
}

void AudioRingBuffer::ResetTimeBounds() {
    for (TimeBounds& tb : mTimeBoundsQueue) {
        tb.mStartTime.store(0);
        tb.mEndTime.store(0);
        tb.mUpdateCounter.store(0);
    }
    mTimeBoundsQueueCurrentIndex.store(0);
}

void AudioRingBuffer::SetTimeBounds(SampleTime startTime, SampleTime endTime) {
    // Only the writer publishes, so the index cannot move between this load and the swap; the
    // entry written is the one after the current, which readers do not look at until the swap.
    uint32_t index = mTimeBoundsQueueCurrentIndex.load();
    const uint32_t next = index + 1;
    TimeBounds& tb = mTimeBoundsQueue[next & kTimeBoundsQueueMask];
    tb.mStartTime.store(startTime);
    tb.mEndTime.store(endTime);
    tb.mUpdateCounter.store(next);
    // Sequentially consistent (a full barrier): the entry and the samples stored before it are
    // visible to a reader that sees the new index.
    mTimeBoundsQueueCurrentIndex.compare_exchange_strong(index, next);
}

bool AudioRingBuffer::ReadBounds(SampleTime& start, SampleTime& end) const {
    const uint32_t index = mTimeBoundsQueueCurrentIndex.load();
    const TimeBounds& tb = mTimeBoundsQueue[index & kTimeBoundsQueueMask];
    // The writer may have come all the way round the queue and be rewriting this entry; the
    // counter tells whether the start and end just read belong to the index read.
    for (int i = 0; i < 8; ++i) {
        start = tb.mStartTime.load();
        end = tb.mEndTime.load();
        if (tb.mUpdateCounter.load() == index) {
            return true;
        }
    }
    return false;
}

int AudioRingBuffer::GetTimeBounds(SampleTime& startTime, SampleTime& endTime) const {
    return ReadBounds(startTime, endTime) ? kOK : kCPUOverload;
}

int AudioRingBuffer::CheckTimeBounds(SampleTime startRead, SampleTime endRead) const {
    SampleTime start = 0;
    SampleTime end = 0;
    if (!ReadBounds(start, end)) {
        return kCPUOverload;
    }
    if (start <= startRead) {
        if (end >= endRead) {
            return kOK;
        }
        return end < startRead ? kWhollyAfter : kTooMuch;
    }
    if (end < endRead) {
        return kOverrun;
    }
    return start > endRead ? kWhollyBefore : kStartsBefore;
}

int AudioRingBuffer::Store(const AudioBufferList* abl, uint32_t nFrames, SampleTime startWrite) {
    if (nFrames > mCapacityFrames) {
        return kOverrun;
    }
    const SampleTime endWrite = startWrite + nFrames;

    // Only this thread publishes, so the current entry is read without the retry loop.
    auto current = [this](SampleTime& s, SampleTime& e) {
        const TimeBounds& tb =
            mTimeBoundsQueue[mTimeBoundsQueueCurrentIndex.load() & kTimeBoundsQueueMask];
        s = tb.mStartTime.load();
        e = tb.mEndTime.load();
    };
    SampleTime start = 0;
    SampleTime end = 0;
    current(start, end);

    if (startWrite < end) {
        // Time went backwards: what is stored no longer lines up, so it is all dropped.
        SetTimeBounds(startWrite, startWrite);
    } else if (endWrite - start > static_cast<SampleTime>(mCapacityFrames)) {
        // The write overruns the oldest frames: move the start up first, so a reader never sees
        // bounds that cover frames being overwritten.
        const SampleTime newStart = endWrite - mCapacityFrames;
        SetTimeBounds(newStart, std::max(newStart, end));
    }
    current(start, end);

    const int channels = std::min(static_cast<int>(abl->mNumberBuffers), mNumberChannels);
    if (startWrite > end) {
        // A gap after the stored end reads as silence.
        const uint32_t offset0 = FrameOffset(end);
        const uint32_t bytes = static_cast<uint32_t>(startWrite - end) * mBytesPerFrame;
        for (int i = 0; i < mNumberChannels; ++i) {
            WrapZero(mBuffers[i], mCapacityBytes, offset0, bytes);
        }
    }

    const uint32_t offset0 = FrameOffset(startWrite);
    const uint32_t bytes = nFrames * mBytesPerFrame;
    for (int i = 0; i < channels; ++i) {
        WrapCopyIn(mBuffers[i], mCapacityBytes, offset0,
                   static_cast<const uint8_t*>(static_cast<const void*>(abl->mBuffers[i].mData)),
                   bytes);
    }

    SetTimeBounds(start, endWrite);
    return kOK;
}

int AudioRingBuffer::Fetch(AudioBufferList* abl, uint32_t nFrames, SampleTime startRead) {
    const SampleTime endRead = startRead + nFrames;
    int err = CheckTimeBounds(startRead, endRead);
    if (err != kOK) {
        return err;
    }

    const uint32_t offset0 = FrameOffset(startRead);
    const uint32_t bytes = nFrames * mBytesPerFrame;
    const int channels = std::min(static_cast<int>(abl->mNumberBuffers), mNumberChannels);
    for (int i = 0; i < channels; ++i) {
        WrapCopyOut(static_cast<uint8_t*>(static_cast<void*>(abl->mBuffers[i].mData)), mBuffers[i],
                    mCapacityBytes, offset0, bytes);
        abl->mBuffers[i].mDataByteSize = bytes;
    }
    // The writer may have overrun the span while it was copied.
    return CheckTimeBounds(startRead, endRead);
}

int AudioRingBuffer::Fetch(AudioBufferList* abl, uint32_t nFrames, SampleTime startRead,
                           uint32_t& skipBytes) {
    if (skipBytes == 0 || mBytesPerFrame == 0) {
        return Fetch(abl, nFrames, startRead);
    }
    const uint32_t skipFrames = std::min(skipBytes / mBytesPerFrame, nFrames);
    const SampleTime begin = startRead + skipFrames;
    const SampleTime endRead = startRead + nFrames;
    int err = CheckTimeBounds(begin, endRead);
    if (err != kOK) {
        return err;
    }
    const uint32_t skip = skipFrames * mBytesPerFrame;
    const uint32_t bytes = (nFrames - skipFrames) * mBytesPerFrame;
    const int channels = std::min(static_cast<int>(abl->mNumberBuffers), mNumberChannels);
    for (int i = 0; i < channels; ++i) {
        auto* dst = static_cast<uint8_t*>(static_cast<void*>(abl->mBuffers[i].mData));
        WrapCopyOut(dst + skip, mBuffers[i], mCapacityBytes, FrameOffset(begin), bytes);
        abl->mBuffers[i].mDataByteSize = skip + bytes;
    }
    skipBytes = skip;
    return CheckTimeBounds(begin, endRead);
}

} // namespace waxline
