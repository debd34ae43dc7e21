#pragma once

#include "capture/buffered/CAGuard.h"
#include "capture/buffered/CAPThread.h"
#include "capture/monitor/AudioBufferList.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace waxline {

// A small ring of large interleaved buffers filled on a real-time thread and processed (for
// example written to a file) by the one worker thread that every queue of the process shares.
// The handover is each buffer's queued mark plus the worker's lock-free incoming stack.
class CABufferQueue {
public:
    struct Format {
        double sampleRate = 0;
        uint32_t channels = 0;
        uint32_t BytesPerFrame() const { return channels * static_cast<uint32_t>(sizeof(float)); }
    };

    class Buffer {
    public:
        Buffer(CABufferQueue* owner, const Format& format, uint32_t byteSize);
        CABufferQueue* mOwner;
        std::vector<float> mStorage; // interleaved frames
        AudioBufferList mData;       // one interleaved buffer over mStorage
        uint32_t mByteSize;
        std::atomic<bool> mQueued{false};
        bool mEndOfStream = false;
        uint32_t mStartFrame = 0;
        uint32_t mEndFrame = 0;
        Buffer* mNext = nullptr; // link in the incoming stack
        uint32_t CapacityFrames(uint32_t bytesPerFrame) const { return mByteSize / bytesPerFrame; }
    };

    // The worker thread shared by all queues.
    class WorkThread {
    public:
        WorkThread();
        ~WorkThread();
        // Any thread, including a real-time one: takes no lock.
        void AddBuffer(Buffer* buffer);
        // Takes a queue's buffers off the list (under the guard), e.g. before the queue goes.
        void RemoveBuffers(CABufferQueue* queue);
        void Stop();
        CAGuard& Guard() { return mRunGuard; }

    private:
        static void* Entry(void* self);
        void Run();
        // Moves the incoming stack, in arrival order, to the end of the list; the guard is held.
        void DrainIncoming();

        CAPThread mThread;
        std::atomic<bool> mStopping{false};
        std::deque<Buffer*> mBuffers;
        std::atomic<Buffer*> mIncoming{nullptr};
        CAGuard mRunGuard{"CABufferQueue::mRunGuard"};
    };

    CABufferQueue(int nBuffers, uint32_t bufferSizeFrames);
    virtual ~CABufferQueue();
    CABufferQueue(const CABufferQueue&) = delete;
    CABufferQueue& operator=(const CABufferQueue&) = delete;

    virtual Buffer* CreateBuffer(const Format& format, uint32_t byteSize);
    // Worker thread, with the guard held.
    virtual void ProcessBuffer(Buffer* buffer) = 0;
    virtual void Start() { mErrorCount = 0; }
    virtual void Stop() {}

    void SetFormat(const Format& format);
    const Format& GetFormat() const { return mFormat; }
    // Pushes that found no free buffer since Start.
    uint32_t ErrorCount() const { return mErrorCount.load(); }
    // Whether the buffer the next push would fill still waits for the worker.
    bool CurrentBufferQueued() const;
    // Whether the worker still holds any buffer of this queue.
    bool AnyBufferQueued() const;
    static WorkThread* SharedWorkThread() { return sWorkThread; }

protected:
    // Waits until the worker has processed every buffer of this queue it was given.
    void WaitUntilProcessed();

    int mNumberBuffers;
    uint32_t mBufferSizeFrames;
    std::vector<std::unique_ptr<Buffer>> mBuffers;
    int mCurrentBuffer = 0;
    uint32_t mBytesPerFrame = 0;
    Format mFormat;
    AudioBufferList mScratch;
    std::atomic<uint32_t> mErrorCount{0};

    static WorkThread* sWorkThread;
};

// The producer side: a real-time thread pushes frames, full buffers go to the worker.
class CAPushBufferQueue : public CABufferQueue {
public:
    using CABufferQueue::CABufferQueue;
    // Real-time safe. Copies the non-interleaved channels of `abl`, interleaving them; when
    // the buffer to fill is still queued the rest is dropped and counted.
    void PushBuffer(uint32_t frames, const AudioBufferList* abl);
    // After the producer stopped: processes a partly filled current buffer on this thread.
    void Flush();
};

} // namespace waxline
