#include "capture/buffered/CAPThread.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>

namespace waxline {

CAPThread::CAPThread(Entry entry, void* arg, int priority, bool fixedPriority, const char* name)
    : mEntry(entry)
    , mArg(arg)
    , mPriority(priority)
    , mWantFixed(fixedPriority)
    , mName(name) {}

CAPThread::~CAPThread() {
    Join();
}

void CAPThread::Start() {
    if (mThread.joinable()) {
        return;
    }
    mThread = std::thread([this] { mEntry(mArg); });
    pthread_setname_np(mThread.native_handle(), mName);
    if (mWantFixed) {
        // Priorities 0..127 of the design map onto the scheduler's real-time range.
        const int low = sched_get_priority_min(SCHED_RR);
        const int high = sched_get_priority_max(SCHED_RR);
        sched_param param{};
        param.sched_priority = std::clamp(low + mPriority * (high - low) / 127, low, high);
        mFixed = pthread_setschedparam(mThread.native_handle(), SCHED_RR, &param) == 0;
    }
}

void CAPThread::Join() {
    if (mThread.joinable() && mThread.get_id() != std::this_thread::get_id()) {
        mThread.join();
    }
}

} // namespace waxline
