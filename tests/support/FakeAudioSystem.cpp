#include "support/FakeAudioSystem.h"

namespace waxline::test {

using platform::Direction;

platform::DeviceInfo& FakeAudioSystem::add(Direction direction, platform::AudioObjectID id,
                                           const std::string& name, uint32_t channels,
                                           double rate) {
    platform::DeviceInfo info;
    info.id = id;
    info.direction = direction;
    info.name = name;
    info.serverName = "fake." + std::to_string(id);
    info.description = name;
    info.channels = channels;
    info.actualSampleRate = rate;
    info.nominalSampleRate = rate;
    info.bufferFrames = kBlock;
    auto& list = direction == Direction::Input ? inputs : outputs;
    list.push_back(info);
    return list.back();
}

void FakeAudioSystem::addDeckAndSpeakers() {
    add(Direction::Input, kDeck, "deck").safetyOffsetFrames = 32;
    add(Direction::Output, kSpeakers, "speakers").safetyOffsetFrames = 64;
    defaultInput = kDeck;
    defaultOutput = kSpeakers;
}

void FakeAudioSystem::notifyDeviceListChanged() {
    for (auto& [token, listener] : listeners)
        if (listener.first == platform::kNoDevice)
            listener.second();
}

platform::AudioObjectID FakeAudioSystem::lastInputId() const {
    return inputIds.empty() ? platform::kNoDevice : inputIds.back();
}

platform::AudioObjectID FakeAudioSystem::lastOutputId() const {
    return outputIds.empty() ? platform::kNoDevice : outputIds.back();
}

std::vector<platform::DeviceInfo> FakeAudioSystem::devices(Direction direction) {
    return direction == Direction::Input ? inputs : outputs;
}

std::optional<platform::DeviceInfo> FakeAudioSystem::device(platform::AudioObjectID id,
                                                            Direction direction) {
    for (const auto& d : direction == Direction::Input ? inputs : outputs)
        if (d.id == id)
            return d;
    return std::nullopt;
}

platform::AudioObjectID FakeAudioSystem::defaultDevice(Direction direction) {
    return direction == Direction::Input ? defaultInput : defaultOutput;
}

platform::Status FakeAudioSystem::setDefaultInput(platform::AudioObjectID id) {
    if (!device(id, Direction::Input))
        return platform::kErrorUnknownDevice;
    defaultInput = id;
    return platform::kNoError;
}

std::unique_ptr<platform::Stream>
FakeAudioSystem::openInput(platform::AudioObjectID id, platform::StreamFormat format, uint32_t,
                           platform::InputHandler& handler, platform::Status& status) {
    if (failOpen) {
        status = platform::kErrorOpenFailed;
        return nullptr;
    }
    status = platform::kNoError;
    lastInputHandler = &handler;
    ++inputsOpened;
    inputIds.push_back(id);
    lastInputFormat = format;
    // Delivers the format asked for, else the device's own; 44.1 kHz stereo for a device the
    // test did not describe.
    const auto info = device(id == platform::kDefaultDevice ? defaultInput : id, Direction::Input);
    const double rate = format.sampleRate > 0 ? format.sampleRate
                        : info                ? info->nominalSampleRate
                                              : 44100;
    const uint32_t channels = format.channels ? format.channels : info ? info->channels : 2;
    return std::make_unique<FakeStream>(platform::StreamFormat{rate, channels});
}

std::unique_ptr<platform::Stream>
FakeAudioSystem::openOutput(platform::AudioObjectID id, platform::StreamFormat format, uint32_t,
                            platform::OutputHandler& handler, platform::Status& status) {
    if (failOpen) {
        status = platform::kErrorOpenFailed;
        return nullptr;
    }
    status = platform::kNoError;
    lastOutputHandler = &handler;
    outputIds.push_back(id);
    auto stream = std::make_unique<FakeStream>(format);
    lastOutputStream = stream.get();
    return stream;
}

platform::AudioSystem::ListenerToken FakeAudioSystem::onDeviceListChanged(Notification notify) {
    listeners[nextToken] = {platform::kNoDevice, std::move(notify)};
    return nextToken++;
}

platform::AudioSystem::ListenerToken
FakeAudioSystem::onStreamFormatChanged(platform::AudioObjectID input, Notification notify) {
    listeners[nextToken] = {input, std::move(notify)};
    return nextToken++;
}

void FakeAudioSystem::removeListener(ListenerToken token) {
    listeners.erase(token);
}

} // namespace waxline::test
