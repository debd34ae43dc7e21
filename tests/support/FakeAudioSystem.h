#pragma once

#include "platform/AudioSystem.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace waxline::test {

// The deck and speakers of addDeckAndSpeakers, and their buffer size in frames.
constexpr platform::AudioObjectID kDeck = 7;
constexpr platform::AudioObjectID kSpeakers = 9;
constexpr uint32_t kBlock = 512;

// A stream that does nothing by itself: the test calls the handler it was opened with.
class FakeStream : public platform::Stream {
public:
    explicit FakeStream(platform::StreamFormat f)
        : streamFormat(f) {}
    platform::Status start() override {
        running = true;
        return platform::kNoError;
    }
    platform::Status stop() override {
        running = false;
        return platform::kNoError;
    }
    bool isRunning() const override { return running; }
    platform::StreamFormat format() const override { return streamFormat; }
    uint64_t xrunCount() const override { return xruns; }
    uint32_t queuedFramesTarget() const override { return queuedFrames; }
    uint32_t heldFrames() const override { return held; }

    // What a test scripts: the server's underflows so far, the queue it keeps and how much of
    // it it holds when the output is asked for more.
    uint64_t xruns = 0;
    uint32_t queuedFrames = 0;
    uint32_t held = 0;

private:
    platform::StreamFormat streamFormat;
    bool running = false;
};

// An audio system whose streams never run by themselves: a test calls the handlers of the
// streams it opened, so the devices advance exactly as the test's simulated clocks say. The
// devices are the ones the test puts in `inputs` and `outputs`.
class FakeAudioSystem : public platform::AudioSystem {
public:
    std::vector<platform::DeviceInfo> inputs;
    std::vector<platform::DeviceInfo> outputs;
    platform::AudioObjectID defaultInput = platform::kNoDevice;
    platform::AudioObjectID defaultOutput = platform::kNoDevice;
    platform::InputHandler* lastInputHandler = nullptr;
    platform::OutputHandler* lastOutputHandler = nullptr;
    FakeStream* lastOutputStream = nullptr;
    int inputsOpened = 0;
    // What the streams were opened on, in order, and the format the last input asked for.
    std::vector<platform::AudioObjectID> inputIds;
    std::vector<platform::AudioObjectID> outputIds;
    platform::StreamFormat lastInputFormat;
    bool failOpen = false;
    // Registered notifications: the device a stream-format listener watches (kNoDevice for a
    // device-list listener) and the notification itself.
    std::map<ListenerToken, std::pair<platform::AudioObjectID, Notification>> listeners;

    // Adds a device with 512-frame buffers and no safety offset; channels 0 makes one without
    // streams in that direction.
    platform::DeviceInfo& add(platform::Direction direction, platform::AudioObjectID id,
                              const std::string& name, uint32_t channels = 2, double rate = 44100);
    // A stereo deck (kDeck, safety offset 32 frames) and speakers (kSpeakers, safety offset 64)
    // at 44100 Hz with kBlock-frame buffers, made the default input and output.
    void addDeckAndSpeakers();
    // Calls every device-list listener, as the platform does when a device comes or goes.
    void notifyDeviceListChanged();
    // The device the last input (output) stream was opened on; kNoDevice when none was.
    platform::AudioObjectID lastInputId() const;
    platform::AudioObjectID lastOutputId() const;

    std::vector<platform::DeviceInfo> devices(platform::Direction direction) override;
    std::optional<platform::DeviceInfo> device(platform::AudioObjectID id,
                                               platform::Direction direction) override;
    platform::AudioObjectID defaultDevice(platform::Direction direction) override;
    platform::Status setDefaultInput(platform::AudioObjectID id) override;
    std::unique_ptr<platform::Stream> openInput(platform::AudioObjectID id,
                                                platform::StreamFormat format, uint32_t frames,
                                                platform::InputHandler& handler,
                                                platform::Status& status) override;
    std::unique_ptr<platform::Stream> openOutput(platform::AudioObjectID id,
                                                 platform::StreamFormat format, uint32_t frames,
                                                 platform::OutputHandler& handler,
                                                 platform::Status& status) override;
    ListenerToken onDeviceListChanged(Notification notify) override;
    ListenerToken onStreamFormatChanged(platform::AudioObjectID input,
                                        Notification notify) override;
    void removeListener(ListenerToken token) override;

private:
    ListenerToken nextToken = 1;
};

// The fake with the deck and speakers of addDeckAndSpeakers in place.
struct DeckAndSpeakers : FakeAudioSystem {
    DeckAndSpeakers() { addDeckAndSpeakers(); }
};

} // namespace waxline::test
