#pragma once

#include "platform/AudioSystem.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace waxline {

// A stretch of audio in memory: interleaved float frames at their own rate.
struct ExcerptAudio {
    double sampleRate = 0;
    unsigned channels = 0;
    std::vector<float> interleaved;
    int64_t frames() const {
        return channels ? static_cast<int64_t>(interleaved.size() / channels) : 0;
    }
};

// Plays one stretch of audio, held in memory, through an output device. Everything is prepared
// on the main thread before the stream starts; the audio callback only copies from it, then
// plays silence until the main thread closes the stream. Main thread, except the callback.
class ExcerptPlayer {
public:
    ExcerptPlayer();
    ~ExcerptPlayer();
    ExcerptPlayer(const ExcerptPlayer&) = delete;
    ExcerptPlayer& operator=(const ExcerptPlayer&) = delete;

    // Replaces whatever plays by `excerpt` on `output` (or the default output), converted to the
    // device's rate when it differs from the excerpt's. False when `excerpt` is empty, the device
    // is unknown, or the conversion or the stream fails; nothing plays then.
    bool play(platform::AudioSystem& system, platform::AudioObjectID output,
              const ExcerptAudio& excerpt);
    void stop();
    bool playing() const { return stream != nullptr; }
    // Closes the stream once the excerpt and a short silence after it have gone to the device, or
    // the device went away. From a timer.
    void closeWhenDone();

private:
    class Playback;
    // Declared first, so it outlives the stream whose callback reads it.
    std::unique_ptr<Playback> playback;
    std::unique_ptr<platform::Stream> stream;
};

} // namespace waxline
