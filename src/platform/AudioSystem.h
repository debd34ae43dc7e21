#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace waxline::platform {

// A device id: the PulseAudio source index (inputs) or sink index (outputs); virtual devices
// number theirs likewise. PulseAudio counts from 0, so 0 is a real device: "the default device
// of that direction" has a value of its own next to "none", and the audio systems never list a
// device under either.
using AudioObjectID = uint32_t;
constexpr AudioObjectID kNoDevice = 0xFFFFFFFF;
constexpr AudioObjectID kDefaultDevice = 0xFFFFFFFE;

// Status codes of platform calls: 0 is success; anything else names the failure.
using Status = int32_t;
constexpr Status kNoError = 0;
constexpr Status kErrorUnknownDevice = 1;
constexpr Status kErrorOpenFailed = 2;
constexpr Status kErrorNotConnected = 3;

enum class Direction { Input, Output };

struct DeviceInfo {
    AudioObjectID id = kNoDevice;
    Direction direction = Direction::Input;
    std::string name;       // matched against the device catalogue; at most 63 bytes
    std::string serverName; // e.g. "deck.monitor"
    std::string description;
    uint32_t channels = 0;
    double actualSampleRate = 0;
    double nominalSampleRate = 0;
    uint32_t bufferFrames = 0;
    uint32_t safetyOffsetFrames = 0;
    // For an input that is the monitor of an output (what that output plays), the output's id;
    // kNoDevice for a capture device.
    AudioObjectID monitorOf = kNoDevice;
};

struct StreamFormat {
    double sampleRate = 0;
    uint32_t channels = 0;
};

// Receives captured audio. onInput runs on the platform's audio thread and must follow the
// real-time rules (no allocation, lock, logging, file I/O or Qt). onStreamEnded runs on a
// platform thread, not the audio path, once, when the device vanished or the stream failed.
class InputHandler {
public:
    virtual ~InputHandler() = default;
    // channels[c][i]: non-interleaved float samples; sampleTime counts frames since start.
    virtual void onInput(float* const* channels, uint32_t channelCount, uint32_t frames,
                         int64_t sampleTime, uint64_t hostTime) = 0;
    virtual void onOverflow(uint32_t /*lostFrames*/) {}
    virtual void onStreamEnded(Status /*why*/) {}
};

// Supplies audio to play; runs on the platform's audio thread under the real-time rules.
class OutputHandler {
public:
    virtual ~OutputHandler() = default;
    virtual void onOutput(float* const* channels, uint32_t channelCount, uint32_t frames,
                          int64_t sampleTime, uint64_t hostTime) = 0;
    virtual void onStreamEnded(Status /*why*/) {}
};

class Stream {
public:
    virtual ~Stream() = default; // stops the stream and waits until no callback runs
    virtual Status start() = 0;
    virtual Status stop() = 0;
    virtual bool isRunning() const = 0;
    virtual StreamFormat format() const = 0;
    // How often the server lost input (overflow) or ran out of output (underflow) so far.
    virtual uint64_t xrunCount() const { return 0; }
    // An output's queue on the server side as it stands, in frames (0 when it has none): it may
    // grow while the stream runs when the server cannot keep a short one fed. Any thread.
    virtual uint32_t queuedFramesTarget() const { return 0; }
    // An output's frames the server still holds, not yet played, ahead of what the callback
    // now running writes (0 where unknown). Read on the output's callback thread.
    virtual uint32_t heldFrames() const { return 0; }
    // The frames the device delivers or takes at a time, whatever the stream asked for (0 when
    // the stream gets what it asked for). Any thread.
    virtual uint32_t periodFrames() const { return 0; }
};

// The system audio service: devices, the process-wide default input, streams and notifications.
// Methods are called from the main thread unless stated.
class AudioSystem {
public:
    virtual ~AudioSystem() = default;

    virtual std::vector<DeviceInfo> devices(Direction direction) = 0;
    virtual std::optional<DeviceInfo> device(AudioObjectID id, Direction direction) = 0;
    virtual AudioObjectID defaultDevice(Direction direction) = 0;
    // The process-wide default input; never changes the server's default.
    virtual Status setDefaultInput(AudioObjectID id) = 0;

    // framesPerBuffer is a wish; the stream delivers at most that many frames per callback.
    // format: the rate and channel count the input stream delivers, converted from the device's
    // own when they differ; 0 in either takes the device's.
    virtual std::unique_ptr<Stream> openInput(AudioObjectID id, StreamFormat format,
                                              uint32_t framesPerBuffer, InputHandler& handler,
                                              Status& status) = 0;
    virtual std::unique_ptr<Stream> openOutput(AudioObjectID id, StreamFormat format,
                                               uint32_t framesPerBuffer, OutputHandler& handler,
                                               Status& status) = 0;

    // Notifications run on a platform thread; a handler posts work elsewhere and returns.
    using Notification = std::function<void()>;
    using ListenerToken = int;
    virtual ListenerToken onDeviceListChanged(Notification notify) = 0;
    virtual ListenerToken onStreamFormatChanged(AudioObjectID input, Notification notify) = 0;
    virtual void removeListener(ListenerToken token) = 0;
    // Whether the sound server still answers: a stream that ended with the server gone says
    // nothing about the device. A system without a server always answers.
    virtual bool serverReachable() { return true; }
};

// Host clock: steady-clock ticks and their conversion to nanoseconds.
uint64_t hostTime();
uint64_t hostTimeToNanos(uint64_t ticks);

} // namespace waxline::platform
