#include "capture/buffered/CABufferQueue.h"

#include <algorithm>
#include <mutex>

namespace waxline {

CABufferQueue::WorkThread* CABufferQueue::sWorkThread = nullptr;

namespace {
std::once_flag gWorkThreadOnce;
constexpr int kWorkThreadPriority = 63;
} // namespace

CABufferQueue::Buffer::Buffer(CABufferQueue* owner, const Format& format, uint32_t byteSize)
    : mOwner(owner)
    , mStorage(byteSize / sizeof(float), 0.0f)
    , mByteSize(byteSize) {
    mData.mNumberBuffers = 1;
    mData.mBuffers[0] = {format.channels, byteSize, mStorage.data()};
}

// ---- worker thread --------------------------------------------------------------------------

CABufferQueue::WorkThread::WorkThread()
    : mThread(&WorkThread::Entry, this, kWorkThreadPriority, true, "CABufferQueue") {
    mThread.Start();
}

CABufferQueue::WorkThread::~WorkThread() {
    Stop();
    mThread.Join();
}

void* CABufferQueue::WorkThread::Entry(void* self) {
    static_cast<WorkThread*>(self)->Run();
    return nullptr;
}

void CABufferQueue::WorkThread::AddBuffer(Buffer* buffer) {
    buffer->mQueued.store(true);
    Buffer* head = mIncoming.load();
    do {
        buffer->mNext = head;
        // Sequentially consistent exchange: the buffer's contents and link are published with it.
    } while (!mIncoming.compare_exchange_weak(head, buffer));
    mRunGuard.Notify();
}

void CABufferQueue::WorkThread::DrainIncoming() {
    Buffer* head = mIncoming.exchange(nullptr);
    // The stack holds the newest first; reverse it into arrival order.
    Buffer* ordered = nullptr;
    while (head != nullptr) {
        Buffer* next = head->mNext;
        head->mNext = ordered;
        ordered = head;
        head = next;
    }
    for (; ordered != nullptr; ordered = ordered->mNext) {
        mBuffers.push_back(ordered);
    }
}

void CABufferQueue::WorkThread::Run() {
    while (!mStopping.load()) {
        const bool locked = mRunGuard.Lock();
        // Only sleep when there is nothing to do, so a notify sent while buffers were being
        // written is not lost.
        if (mIncoming.load() == nullptr && mBuffers.empty() && !mStopping.load()) {
            mRunGuard.WaitFor(100'000'000);
        }
        for (;;) {
            DrainIncoming();
            if (mBuffers.empty()) {
                break;
            }
            Buffer* buffer = mBuffers.front();
            mBuffers.pop_front();
            buffer->mOwner->ProcessBuffer(buffer);
            buffer->mQueued.store(false);
            mRunGuard.NotifyAll();
            if (mStopping.load()) {
                break;
            }
        }
        if (locked) {
            mRunGuard.Unlock();
        }
    }
}

void CABufferQueue::WorkThread::RemoveBuffers(CABufferQueue* queue) {
    const bool locked = mRunGuard.Lock();
    DrainIncoming();
    for (auto it = mBuffers.begin(); it != mBuffers.end();) {
        if ((*it)->mOwner == queue) {
            (*it)->mQueued.store(false);
            it = mBuffers.erase(it);
        } else {
            ++it;
        }
    }
    if (locked) {
        mRunGuard.Unlock();
    }
}

void CABufferQueue::WorkThread::Stop() {
    mStopping.store(true);
    mRunGuard.NotifyAll();
}

// ---- queue ----------------------------------------------------------------------------------

CABufferQueue::CABufferQueue(int nBuffers, uint32_t bufferSizeFrames)
    : mNumberBuffers(std::max(nBuffers, 1))
    , mBufferSizeFrames(bufferSizeFrames) {
    // The worker lives as long as the process: queues come and go, it serves them all.
    std::call_once(gWorkThreadOnce, [] { sWorkThread = new WorkThread(); });
}

CABufferQueue::~CABufferQueue() {
    if (sWorkThread != nullptr) {
        sWorkThread->RemoveBuffers(this);
    }
}

CABufferQueue::Buffer* CABufferQueue::CreateBuffer(const Format& format, uint32_t byteSize) {
    return new Buffer(this, format, byteSize);
}

void CABufferQueue::SetFormat(const Format& format) {
    if (sWorkThread != nullptr) {
        sWorkThread->RemoveBuffers(this);
    }
    mBuffers.clear();
    mFormat = format;
    mBytesPerFrame = format.BytesPerFrame();
    for (int i = 0; i < mNumberBuffers; ++i) {
        mBuffers.emplace_back(CreateBuffer(format, mBytesPerFrame * mBufferSizeFrames));
    }
    mCurrentBuffer = 0;
    mScratch.mNumberBuffers = 1;
    mScratch.mBuffers[0] = {format.channels, 0, nullptr};
}

bool CABufferQueue::CurrentBufferQueued() const {
    return !mBuffers.empty() && mBuffers[static_cast<std::size_t>(mCurrentBuffer)]->mQueued.load();
}

bool CABufferQueue::AnyBufferQueued() const {
    return std::any_of(mBuffers.begin(), mBuffers.end(),
                       [](const auto& b) { return b->mQueued.load(); });
}

void CABufferQueue::WaitUntilProcessed() {
    CAGuard& guard = sWorkThread->Guard();
    const bool locked = guard.Lock();
    for (;;) {
        if (!AnyBufferQueued()) {
            break;
        }
        guard.Notify();
        guard.WaitFor(50'000'000);
    }
    if (locked) {
        guard.Unlock();
    }
}

// ---- producer -------------------------------------------------------------------------------

void CAPushBufferQueue::PushBuffer(uint32_t frames, const AudioBufferList* abl) {
    if (mBuffers.empty() || mBytesPerFrame == 0) {
        return;
    }
    const uint32_t channels = mFormat.channels;
    const uint32_t sources = std::min(abl->mNumberBuffers, channels);
    if (sources == 0) {
        return;
    }
    uint32_t done = 0;
    while (done < frames) {
        Buffer* buffer = mBuffers[static_cast<std::size_t>(mCurrentBuffer)].get();
        if (buffer->mQueued.load()) {
            // Every buffer is waiting for the worker: the rest of this push is lost.
            mErrorCount.fetch_add(1, std::memory_order_relaxed);
            return;
        }
        const uint32_t capacity = buffer->CapacityFrames(mBytesPerFrame);
        const uint32_t n = std::min(frames - done, capacity - buffer->mEndFrame);
        float* dst =
            buffer->mStorage.data() + static_cast<std::size_t>(buffer->mEndFrame) * channels;
        for (uint32_t c = 0; c < channels; ++c) {
            // A mono source feeds every channel.
            const float* src = abl->mBuffers[c < sources ? c : 0].mData + done;
            for (uint32_t i = 0; i < n; ++i) {
                dst[static_cast<std::size_t>(i) * channels + c] = src[i];
            }
        }
        buffer->mEndFrame += n;
        done += n;
        if (buffer->mEndFrame == capacity) {
            sWorkThread->AddBuffer(buffer);
            mCurrentBuffer = (mCurrentBuffer + 1) % mNumberBuffers;
        }
    }
}

void CAPushBufferQueue::Flush() {
    if (mBuffers.empty()) {
        return;
    }
    Buffer* buffer = mBuffers[static_cast<std::size_t>(mCurrentBuffer)].get();
    if (buffer->mEndFrame > buffer->mStartFrame && !buffer->mQueued.load()) {
        ProcessBuffer(buffer);
    }
}

} // namespace waxline
