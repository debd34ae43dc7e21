#include "capture/buffered/CAGuard.h"

namespace waxline {

bool CAGuard::Lock() {
    if (IsOwner()) {
        return false;
    }
    mMutex.lock();
    mOwner = std::this_thread::get_id();
    return true;
}

void CAGuard::Unlock() {
    mOwner = std::thread::id();
    mMutex.unlock();
}

namespace {
// Keeps the owner id right across the unlock/relock a condition wait does.
struct OwnerLock {
    std::mutex& mutex;
    std::atomic<std::thread::id>& owner;
    void lock() {
        mutex.lock();
        owner = std::this_thread::get_id();
    }
    void unlock() {
        owner = std::thread::id();
        mutex.unlock();
    }
};
} // namespace

void CAGuard::Wait() {
    OwnerLock lock{mMutex, mOwner};
    mCondition.wait(lock);
}

bool CAGuard::WaitFor(uint64_t nanos) {
    OwnerLock lock{mMutex, mOwner};
    return mCondition.wait_for(lock, std::chrono::nanoseconds(nanos)) == std::cv_status::no_timeout;
}

bool CAGuard::WaitUntil(std::chrono::steady_clock::time_point when) {
    OwnerLock lock{mMutex, mOwner};
    return mCondition.wait_until(lock, when) == std::cv_status::no_timeout;
}

} // namespace waxline
