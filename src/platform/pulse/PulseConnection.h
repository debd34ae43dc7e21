#pragma once

#include "platform/AudioSystem.h"

#include <pulse/pulseaudio.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace waxline::platform {

// One connection to the PulseAudio server per process: the threaded main loop, the context and a
// notifier thread that runs listener and stream-ended work away from the main-loop (audio) thread.
// Streams hold it by shared_ptr, so it lives until the last of them is gone.
class PulseConnection {
public:
    // Throws PlatformError when the server cannot be reached.
    PulseConnection();
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    pa_threaded_mainloop* loop() const { return mainloop; }
    pa_context* context() const { return ctx; }
    bool inLoopThread() const { return pa_threaded_mainloop_in_thread(mainloop) != 0; }

    // Main-loop lock held, not on the loop thread: waits for the operation with a timeout;
    // false (reported once on standard error) when it fails or times out.
    bool wait(pa_operation* op, const char* what);
    // Main-loop lock held: waits until `done` holds, with the same timeout; false on timeout.
    bool waitFor(const std::function<bool()>& done);
    void signal() { pa_threaded_mainloop_signal(mainloop, 0); }

    // Reports a failing call once: the operation and pa_strerror of the context's error.
    void report(const char* what, int error) const;

    // Queues work for the notifier thread (any thread; allocates, so never from an audio path).
    void post(std::function<void()> work);

private:
    void notifierLoop();

    pa_threaded_mainloop* mainloop = nullptr;
    pa_context* ctx = nullptr;

    std::mutex queueMutex;
    std::condition_variable queueReady;
    std::deque<std::function<void()>> queue;
    bool quit = false;
    std::thread notifier;
};

// RAII lock of the main loop.
class PulseLock {
public:
    explicit PulseLock(const PulseConnection& connection)
        : loop(connection.loop()) {
        pa_threaded_mainloop_lock(loop);
    }
    ~PulseLock() { pa_threaded_mainloop_unlock(loop); }
    PulseLock(const PulseLock&) = delete;
    PulseLock& operator=(const PulseLock&) = delete;

private:
    pa_threaded_mainloop* loop;
};

} // namespace waxline::platform
