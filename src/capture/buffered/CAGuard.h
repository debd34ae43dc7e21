#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace waxline {

// A mutex with a condition variable. Lock reports whether this call took the lock (false when
// the calling thread already held it), so nested users unlock only what they locked.
// Never used on a real-time thread, except Notify/NotifyAll, which take no lock.
class CAGuard {
public:
    explicit CAGuard(const char* name)
        : mName(name) {}

    bool Lock();
    void Unlock();
    bool IsOwner() const { return mOwner.load() == std::this_thread::get_id(); }

    // The caller holds the lock; it is released while waiting and held again on return.
    void Wait();
    // False when the time ran out.
    bool WaitFor(uint64_t nanos);
    bool WaitUntil(std::chrono::steady_clock::time_point when);
    void Notify() { mCondition.notify_one(); }
    void NotifyAll() { mCondition.notify_all(); }

    const char* Name() const { return mName; }

private:
    const char* mName;
    std::mutex mMutex;
    std::condition_variable_any mCondition;
    std::atomic<std::thread::id> mOwner{};
};

} // namespace waxline
