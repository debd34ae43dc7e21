#include "support/FakePlatform.h"

namespace waxline::test {

void FakeAudioSystem::add(platform::Direction direction, platform::AudioObjectID id,
                          const std::string& name, uint32_t channels, double rate) {
    platform::DeviceInfo info;
    info.id = id;
    info.direction = direction;
    info.name = name;
    info.serverName = "fake." + std::to_string(id);
    info.description = name;
    info.channels = channels;
    info.actualSampleRate = rate;
    info.nominalSampleRate = rate;
    info.bufferFrames = 512;
    (direction == platform::Direction::Input ? inputs : outputs).push_back(info);
}

std::vector<platform::DeviceInfo> FakeAudioSystem::devices(platform::Direction direction) {
    return direction == platform::Direction::Input ? inputs : outputs;
}

std::optional<platform::DeviceInfo> FakeAudioSystem::device(platform::AudioObjectID id,
                                                            platform::Direction direction) {
    for (const auto& d : devices(direction))
        if (d.id == id)
            return d;
    return std::nullopt;
}

platform::AudioObjectID FakeAudioSystem::defaultDevice(platform::Direction direction) {
    return direction == platform::Direction::Input ? defaultInput : defaultOutput;
}

platform::Status FakeAudioSystem::setDefaultInput(platform::AudioObjectID id) {
    if (!device(id, platform::Direction::Input))
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
    const auto info =
        device(id == platform::kDefaultDevice ? defaultInput : id, platform::Direction::Input);
    const double rate = format.sampleRate > 0 ? format.sampleRate
                        : info                ? info->nominalSampleRate
                                              : 44100;
    const uint32_t channels = format.channels ? format.channels : info ? info->channels : 2;
    return std::make_unique<FakeStream>(platform::StreamFormat{rate, channels});
}

std::unique_ptr<platform::Stream> FakeAudioSystem::openOutput(platform::AudioObjectID id,
                                                              platform::StreamFormat format,
                                                              uint32_t, platform::OutputHandler&,
                                                              platform::Status& status) {
    status = platform::kNoError;
    outputIds.push_back(id);
    return std::make_unique<FakeStream>(format);
}

platform::AudioSystem::ListenerToken FakeAudioSystem::onDeviceListChanged(Notification notify) {
    deviceListListeners.push_back(std::move(notify));
    return static_cast<ListenerToken>(deviceListListeners.size());
}

platform::AudioSystem::ListenerToken FakeAudioSystem::onStreamFormatChanged(platform::AudioObjectID,
                                                                            Notification) {
    return 1000;
}

void FakeAudioSystem::removeListener(ListenerToken) {}

} // namespace waxline::test
