#pragma once

#include "platform/AudioSystem.h"

#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace waxline::test {

using platform::AudioObjectID;
using platform::DeviceInfo;
using platform::Direction;

constexpr AudioObjectID kDeck = 7;
constexpr AudioObjectID kSpeakers = 9;
constexpr uint32_t kBlock = 512;

class IdleStream : public platform::Stream {
public:
    platform::Status start() override {
        running = true;
        return platform::kNoError;
    }
    platform::Status stop() override {
        running = false;
        return platform::kNoError;
    }
    bool isRunning() const override { return running; }
    platform::StreamFormat format() const override { return {44100, 2}; }
    bool running = false;
};

// An audio system whose streams never run by themselves: the test calls the handlers, so the
// two "devices" advance exactly as the test's simulated clocks say.
class SteppedAudioSystem : public platform::AudioSystem {
public:
    DeviceInfo input{kDeck, Direction::Input, "deck", "deck.monitor", "Deck", 2, 44100,
                     44100, kBlock,           32};
    DeviceInfo output{
        kSpeakers, Direction::Output, "speakers", "speakers", "Speakers", 2, 44100, 44100, kBlock,
        64};
    platform::InputHandler* inputHandler = nullptr;
    AudioObjectID openedInput = platform::kNoDevice; // the ids the last streams were opened on
    AudioObjectID openedOutput = platform::kNoDevice;
    platform::OutputHandler* outputHandler = nullptr;
    std::map<int, std::pair<AudioObjectID, Notification>> listeners;
    int nextToken = 1;
    bool failOpen = false;

    std::vector<DeviceInfo> devices(Direction d) override {
        return {d == Direction::Input ? input : output};
    }
    std::optional<DeviceInfo> device(AudioObjectID id, Direction d) override {
        const DeviceInfo& info = d == Direction::Input ? input : output;
        if (id != info.id) {
            return std::nullopt;
        }
        return info;
    }
    AudioObjectID defaultDevice(Direction d) override {
        return d == Direction::Input ? input.id : output.id;
    }
    platform::Status setDefaultInput(AudioObjectID) override { return platform::kNoError; }
    std::unique_ptr<platform::Stream> openInput(AudioObjectID id, platform::StreamFormat, uint32_t,
                                                platform::InputHandler& handler,
                                                platform::Status& status) override {
        if (failOpen) {
            status = platform::kErrorOpenFailed;
            return nullptr;
        }
        openedInput = id;
        inputHandler = &handler;
        status = platform::kNoError;
        return std::make_unique<IdleStream>();
    }
    std::unique_ptr<platform::Stream> openOutput(AudioObjectID id, platform::StreamFormat, uint32_t,
                                                 platform::OutputHandler& handler,
                                                 platform::Status& status) override {
        openedOutput = id;
        outputHandler = &handler;
        status = platform::kNoError;
        return std::make_unique<IdleStream>();
    }
    ListenerToken onDeviceListChanged(Notification) override { return 0; }
    ListenerToken onStreamFormatChanged(AudioObjectID id, Notification notify) override {
        listeners[nextToken] = {id, std::move(notify)};
        return nextToken++;
    }
    void removeListener(ListenerToken token) override { listeners.erase(token); }
};

} // namespace waxline::test
