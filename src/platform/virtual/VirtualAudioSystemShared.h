#pragma once

// The state the virtual audio system shares with its streams, which may outlive it. Only the
// files of VirtualAudioSystem include this.
#include "platform/virtual/VirtualAudioSystem.h"

#include <samplerate.h>
#include <sndfile.h>

#include <array>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace waxline::platform::virtualaudio {

constexpr uint32_t kMaxChannels = 8;
constexpr AudioObjectID kFirstInputId = 1;
constexpr AudioObjectID kFirstOutputId = 50;

// One open stream: its buffers handed to the handler, and the flags its Stream object and the
// timeline share under the lock.
struct Entry {
    AudioObjectID device = kNoDevice;
    uint32_t channels = 0;
    uint32_t maxFrames = 0;
    std::vector<float> storage;
    std::array<float*, kMaxChannels> pointers{};
    bool running = false;
    bool ended = false;
    bool closed = false;
    uint64_t xruns = 0;

    void allocate(uint32_t channelCount, uint32_t frames) {
        channels = channelCount;
        maxFrames = frames;
        storage.assign(static_cast<size_t>(channels) * frames, 0.0f);
        for (uint32_t c = 0; c < channels; ++c)
            pointers[c] = storage.data() + static_cast<size_t>(c) * frames;
    }
};

struct InputEntry : Entry {
    InputHandler* handler = nullptr;
    uint32_t deckChannels = 0; // channels taken from the deck; more repeat them cyclically

    // A stream asked for another rate than the deck's gets the deck's audio through its own
    // resampler, as a real server converts. Sized at open; the timeline only uses them.
    SRC_STATE* resampler = nullptr;
    double ratio = 1;                // stream frames per deck frame
    std::vector<float> resamplerIn;  // interleaved, one deck period
    std::vector<float> resamplerOut; // interleaved, what one period gives and a margin
    int64_t ownTime = 0;             // the resampled stream's sample time

    InputEntry() = default;
    InputEntry(const InputEntry&) = delete;
    InputEntry& operator=(const InputEntry&) = delete;
    ~InputEntry() {
        if (resampler)
            src_delete(resampler);
    }
};

struct OutputEntry : Entry {
    OutputHandler* handler = nullptr;
    double rate = 0;
};

struct Listener {
    AudioSystem::Notification notify;
    bool formatListener = false;
    AudioObjectID device = kNoDevice;
};

} // namespace waxline::platform::virtualaudio

namespace waxline::platform {

struct VirtualAudioSystem::Shared {
    mutable std::recursive_mutex mutex;
    std::condition_variable_any wake;     // streams started/stopped, shutdown
    std::condition_variable_any progress; // the deck produced frames
    bool quit = false;

    std::vector<std::shared_ptr<virtualaudio::InputEntry>> inputs;
    std::vector<std::shared_ptr<virtualaudio::OutputEntry>> outputs;

    AudioObjectID deck = virtualaudio::kFirstInputId;
    std::vector<AudioObjectID> extraIds;
    AudioObjectID output = virtualaudio::kFirstOutputId;
    AudioObjectID nextInputId = virtualaudio::kFirstInputId;
    AudioObjectID nextOutputId = virtualaudio::kFirstOutputId + 1;
    AudioObjectID defaultInput = virtualaudio::kFirstInputId;

    double inputRate = 44100;  // nominal
    double outputRate = 44100; // nominal
    double inputClock = 1.0;
    uint32_t period = 512;
    uint32_t channels = 2;

    // Timeline: positions in frames of each device; the timeline in nanoseconds of device time.
    int64_t inputPos = 0;
    int64_t outputPos = 0;
    int64_t skippedFrames = 0; // frames lost to simulateOverflow, already in inputPos
    uint64_t steppedHostBase = 0;
    long double pausedNanos = 0; // timeline at the last resume
    uint64_t resumeHost = 0;     // host time of the last resume
    bool active = false;

    SNDFILE* file = nullptr;
    uint32_t fileChannels = 0;
    int64_t fileFrames = 0;
    int64_t fileRead = 0;
    std::vector<float> interleaved;                // fileChannels x period
    std::vector<std::vector<float>> periodBuffers; // channels x period (deck)
    std::vector<float> silence;                    // period zeros for extra inputs

    SNDFILE* heard = nullptr;
    std::vector<float> mix; // 2 x period
    std::vector<float> mixInterleaved;
    int64_t framesSinceHeaderUpdate = 0;

    std::mutex listenerMutex;
    std::map<int, virtualaudio::Listener> listeners;
    int nextToken = 1;

    void sweep() {
        std::erase_if(inputs, [](const auto& e) { return e->closed; });
        std::erase_if(outputs, [](const auto& e) { return e->closed; });
    }
    bool anyRunning() const {
        for (const auto& e : inputs)
            if (e->running)
                return true;
        for (const auto& e : outputs)
            if (e->running)
                return true;
        return false;
    }
    long double inputFramesToNanos(int64_t frames) const {
        return static_cast<long double>(frames) * 1e9L / (inputRate * inputClock);
    }
    long double outputFramesToNanos(int64_t frames) const {
        return static_cast<long double>(frames) * 1e9L / outputRate;
    }
};

} // namespace waxline::platform
