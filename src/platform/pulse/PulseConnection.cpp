#include "platform/pulse/PulseConnection.h"

#include "platform/PlatformError.h"

#include <pulse/rtclock.h>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace waxline::platform {

namespace {

constexpr pa_usec_t kTimeout = 5 * PA_USEC_PER_SEC;
// Below the server's own real-time threads (priority 5 by default).
constexpr int kLoopThreadPriority = 4;
constexpr int kLoopThreadNice = -11;

struct Timer {
    PulseConnection* connection;
    bool expired = false;
};

void onTimer(pa_mainloop_api*, pa_time_event*, const struct timeval*, void* userdata) {
    auto* timer = static_cast<Timer*>(userdata);
    timer->expired = true;
    timer->connection->signal();
}

// The stream callbacks run on the main-loop thread and must keep pace with the server, which
// runs its own threads at real-time priority: a busy machine would otherwise starve them and
// the monitor would run dry. A low real-time priority where the system grants it, else a
// raised nice level, else the thread stays as it is.
void raiseLoopThreadPriority(pa_mainloop_api*, void*) {
    sched_param param{};
    param.sched_priority = std::max(sched_get_priority_min(SCHED_FIFO), kLoopThreadPriority);
    if (pthread_setschedparam(pthread_self(), SCHED_FIFO | SCHED_RESET_ON_FORK, &param) == 0)
        return;
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kLoopThreadNice);
}

} // namespace

PulseConnection::PulseConnection() {
    mainloop = pa_threaded_mainloop_new();
    if (!mainloop)
        throw PlatformError(PlatformError::Reason::AudioClientFailed, "pa_threaded_mainloop_new");
    ctx = pa_context_new(pa_threaded_mainloop_get_api(mainloop), "Waxline");
    if (!ctx) {
        pa_threaded_mainloop_free(mainloop);
        throw PlatformError(PlatformError::Reason::AudioClientFailed, "pa_context_new");
    }
    pa_context_set_state_callback(
        ctx, [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->signal(); }, this);

    std::string failure;
    if (pa_context_connect(ctx, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        failure = pa_strerror(pa_context_errno(ctx));
    } else if (pa_threaded_mainloop_start(mainloop) < 0) {
        failure = "pa_threaded_mainloop_start";
    } else {
        PulseLock lock(*this);
        const bool settled = waitFor([this] {
            const auto state = pa_context_get_state(ctx);
            return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
        });
        if (!settled)
            failure = "timeout";
        else if (pa_context_get_state(ctx) != PA_CONTEXT_READY)
            failure = pa_strerror(pa_context_errno(ctx));
        else
            pa_mainloop_api_once(pa_threaded_mainloop_get_api(mainloop), raiseLoopThreadPriority,
                                 nullptr);
    }
    if (!failure.empty()) {
        pa_threaded_mainloop_stop(mainloop);
        pa_context_set_state_callback(ctx, nullptr, nullptr);
        pa_context_disconnect(ctx);
        pa_context_unref(ctx);
        pa_threaded_mainloop_free(mainloop);
        throw PlatformError(PlatformError::Reason::AudioServerUnreachable, failure);
    }
    notifier = std::thread([this] { notifierLoop(); });
}

PulseConnection::~PulseConnection() {
    {
        std::lock_guard lock(queueMutex);
        quit = true;
    }
    queueReady.notify_all();
    notifier.join();
    {
        PulseLock lock(*this);
        pa_context_set_state_callback(ctx, nullptr, nullptr);
        pa_context_set_subscribe_callback(ctx, nullptr, nullptr);
        pa_context_disconnect(ctx);
        pa_context_unref(ctx);
    }
    pa_threaded_mainloop_stop(mainloop);
    pa_threaded_mainloop_free(mainloop);
}

bool PulseConnection::waitFor(const std::function<bool()>& done) {
    if (inLoopThread())
        return done();
    Timer timer{this};
    pa_time_event* event = pa_context_rttime_new(ctx, pa_rtclock_now() + kTimeout, onTimer, &timer);
    while (!done() && !timer.expired)
        pa_threaded_mainloop_wait(mainloop);
    if (event)
        pa_threaded_mainloop_get_api(mainloop)->time_free(event);
    return done();
}

bool PulseConnection::wait(pa_operation* op, const char* what) {
    if (!op) {
        report(what, pa_context_errno(ctx));
        return false;
    }
    const bool finished =
        waitFor([op] { return pa_operation_get_state(op) != PA_OPERATION_RUNNING; });
    const bool ok = finished && pa_operation_get_state(op) == PA_OPERATION_DONE;
    if (!finished) {
        pa_operation_cancel(op); // its callback must not run on our returned stack frame
        std::fprintf(stderr, "PulseAudio: %s: no answer within 5 s\n", what);
    } else if (!ok) {
        report(what, pa_context_errno(ctx));
    }
    pa_operation_unref(op);
    return ok;
}

void PulseConnection::report(const char* what, int error) const {
    std::fprintf(stderr, "PulseAudio: %s failed: %s\n", what, pa_strerror(error));
}

void PulseConnection::post(std::function<void()> work) {
    {
        std::lock_guard lock(queueMutex);
        queue.push_back(std::move(work));
    }
    queueReady.notify_one();
}

void PulseConnection::notifierLoop() {
    std::unique_lock lock(queueMutex);
    while (true) {
        queueReady.wait(lock, [this] { return quit || !queue.empty(); });
        if (queue.empty())
            return;
        auto work = std::move(queue.front());
        queue.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

} // namespace waxline::platform
