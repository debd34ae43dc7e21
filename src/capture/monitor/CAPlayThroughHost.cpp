#include "capture/monitor/CAPlayThroughHost.h"

namespace waxline {

CAPlayThroughHost::CAPlayThroughHost(platform::AudioSystem& system, platform::AudioObjectID input,
                                     platform::AudioObjectID output, Poster poster)
    : mSystem(system)
    , mPoster(std::move(poster))
    , mAlive(std::make_shared<std::atomic<CAPlayThroughHost*>>(this)) {
    CreatePlayThrough(input, output);
}

CAPlayThroughHost::~CAPlayThroughHost() {
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        *mAlive = nullptr;
        DeleteLocked();
    }
    if (mRebuilder.joinable()) {
        mRebuilder.join();
    }
}

void CAPlayThroughHost::CreatePlayThrough(platform::AudioObjectID input,
                                          platform::AudioObjectID output) {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    DeleteLocked();
    mPlayThrough = std::make_unique<CAPlayThrough>(mSystem, input, output);
    std::weak_ptr<std::atomic<CAPlayThroughHost*>> alive = mAlive;
    mListener = mSystem.onStreamFormatChanged(mPlayThrough->GetInputDeviceID(), [alive] {
        if (auto host = alive.lock(); host && host->load()) {
            host->load()->StreamListener();
        }
    });
    mListening = true;
}

void CAPlayThroughHost::DeleteLocked() {
    if (!mPlayThrough) {
        return;
    }
    mPlayThrough->Stop();
    if (mListening) {
        mSystem.removeListener(mListener);
        mListening = false;
    }
    mPlayThrough.reset();
}

void CAPlayThroughHost::DeletePlayThrough() {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    DeleteLocked();
}

void CAPlayThroughHost::ResetPlayThrough() {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    if (!mPlayThrough) {
        return;
    }
    const platform::AudioObjectID input = mPlayThrough->GetInputDeviceID();
    const platform::AudioObjectID output = mPlayThrough->GetOutputDeviceID();
    DeleteLocked();
    CreatePlayThrough(input, output);
    mPlayThrough->Start();
    ++mResets;
}

bool CAPlayThroughHost::PlayThroughExists() const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    return mPlayThrough != nullptr;
}

platform::Status CAPlayThroughHost::Start() {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    return mPlayThrough ? mPlayThrough->Start() : platform::kNoError;
}

platform::Status CAPlayThroughHost::Stop() {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    return mPlayThrough ? mPlayThrough->Stop() : platform::kNoError;
}

bool CAPlayThroughHost::IsRunning() const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    return mPlayThrough && mPlayThrough->IsRunning();
}

int CAPlayThroughHost::ResetCount() const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    return mResets;
}

// Platform notification thread: never rebuilds here, only hands the rebuild on.
void CAPlayThroughHost::StreamListener() {
    std::weak_ptr<std::atomic<CAPlayThroughHost*>> alive = mAlive;
    auto rebuild = [alive] {
        if (auto host = alive.lock(); host && host->load()) {
            host->load()->ResetPlayThrough();
        }
    };
    if (mPoster) {
        mPoster(std::move(rebuild));
        return;
    }
    std::lock_guard<std::recursive_mutex> guard(mLock);
    if (mAlive->load() == nullptr) {
        return;
    }
    if (mRebuilder.joinable()) {
        mRebuilder.join();
    }
    mRebuilder = std::thread(std::move(rebuild));
}

} // namespace waxline
