#pragma once

#include "platform/AudioSystem.h"
#include "platform/UsbBus.h"

#include <vector>

namespace waxline::test {

// A USB bus that reports exactly the devices a test puts on it.
class FakeUsbBus : public platform::UsbBus {
public:
    std::vector<platform::UsbDevice> attached;
    std::vector<platform::UsbDevice> devices() override { return attached; }
};

// A stream that does nothing by itself: the test calls the handler it was opened with.
class FakeStream : public platform::Stream {
public:
    explicit FakeStream(platform::StreamFormat format = {44100, 2})
        : streamFormat(format) {}
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

private:
    platform::StreamFormat streamFormat;
    bool running = false;
};

// An audio system with a fixed device list. Streams opened on it are FakeStreams; the last input
// handler is kept so a test can feed audio.
class FakeAudioSystem : public platform::AudioSystem {
public:
    std::vector<platform::DeviceInfo> inputs;
    std::vector<platform::DeviceInfo> outputs;
    platform::AudioObjectID defaultInput = platform::kNoDevice;
    platform::AudioObjectID defaultOutput = platform::kNoDevice;
    platform::InputHandler* lastInputHandler = nullptr;
    int inputsOpened = 0;
    // What the streams were opened on, in order, and the format the last input asked for.
    std::vector<platform::AudioObjectID> inputIds;
    std::vector<platform::AudioObjectID> outputIds;
    platform::StreamFormat lastInputFormat;
    bool failOpen = false;

    // Adds a device; channels 0 makes one without streams in that direction.
    void add(platform::Direction direction, platform::AudioObjectID id, const std::string& name,
             uint32_t channels = 2, double rate = 44100);

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

    std::vector<Notification> deviceListListeners;
};

} // namespace waxline::test
