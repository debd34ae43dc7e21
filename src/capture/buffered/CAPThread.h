#pragma once

#include <cstdint>
#include <thread>

namespace waxline {

// A named thread running entry(arg), asking for a fixed (round-robin real-time) priority when it
// is allowed to; without the privilege it runs at normal priority.
class CAPThread {
public:
    using Entry = void* (*)(void*);

    CAPThread(Entry entry, void* arg, int priority, bool fixedPriority, const char* name);
    ~CAPThread();
    CAPThread(const CAPThread&) = delete;
    CAPThread& operator=(const CAPThread&) = delete;

    void Start();
    bool IsRunning() const { return mThread.joinable(); }
    // Waits for the entry function to return.
    void Join();
    // Whether the requested fixed priority was granted.
    bool GotFixedPriority() const { return mFixed; }

private:
    Entry mEntry;
    void* mArg;
    int mPriority;
    bool mWantFixed;
    bool mFixed = false;
    const char* mName;
    std::thread mThread;
};

} // namespace waxline
