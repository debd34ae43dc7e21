#pragma once

#include "capture/monitor/CAPlayThrough.h"
#include "platform/AudioSystem.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace waxline {

// Owns one play-through monitor and rebuilds it when the input device's stream format changes.
// The format notification arrives on a platform thread; the rebuild is handed to the owner's
// poster (e.g. a queued call onto the main thread) or, without one, to a helper thread of the
// host's own. Control-thread methods; the rebuild takes the same lock.
class CAPlayThroughHost {
public:
    // Runs the given work later on a non-real-time thread.
    using Poster = std::function<void(std::function<void()>)>;

    CAPlayThroughHost(platform::AudioSystem& system, platform::AudioObjectID input,
                      platform::AudioObjectID output, Poster poster = {});
    ~CAPlayThroughHost();
    CAPlayThroughHost(const CAPlayThroughHost&) = delete;
    CAPlayThroughHost& operator=(const CAPlayThroughHost&) = delete;

    void CreatePlayThrough(platform::AudioObjectID input, platform::AudioObjectID output);
    void DeletePlayThrough();
    // Rebuilds the monitor on the same devices and starts it; the new one has unity gain and no
    // processing callback until the owner sets them again.
    void ResetPlayThrough();
    bool PlayThroughExists() const;

    platform::Status Start();
    platform::Status Stop();
    bool IsRunning() const;

    // The monitor, or null; valid until the next Create/Delete/Reset.
    CAPlayThrough* PlayThrough() const { return mPlayThrough.get(); }
    // How many times a format change rebuilt the monitor.
    int ResetCount() const;

private:
    void StreamListener();
    void DeleteLocked();

    platform::AudioSystem& mSystem;
    Poster mPoster;
    mutable std::recursive_mutex mLock;
    std::unique_ptr<CAPlayThrough> mPlayThrough;
    platform::AudioSystem::ListenerToken mListener = -1;
    bool mListening = false;
    int mResets = 0;
    // Lets posted work notice that the host is gone.
    std::shared_ptr<std::atomic<CAPlayThroughHost*>> mAlive;
    std::thread mRebuilder;
};

} // namespace waxline
