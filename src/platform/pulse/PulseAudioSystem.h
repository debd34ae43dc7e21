#pragma once

#include "platform/AudioSystem.h"

#include <map>
#include <memory>
#include <mutex>

namespace waxline::platform {

class PulseConnection;

// The audio system on a PulseAudio (or pipewire-pulse) server: sources are inputs (monitors of
// sinks included, marked with the sink they monitor), sinks are outputs, ids are their indices. The
// process-wide default input is held here and starts as the server's default source; the server's
// own default never changes. Record and playback streams exchange FLOAT32LE with their handlers on
// the main-loop thread.
class PulseAudioSystem : public AudioSystem {
public:
    // Throws PlatformError when the server cannot be reached.
    PulseAudioSystem();
    ~PulseAudioSystem() override;

    std::vector<DeviceInfo> devices(Direction direction) override;
    std::optional<DeviceInfo> device(AudioObjectID id, Direction direction) override;
    AudioObjectID defaultDevice(Direction direction) override;
    Status setDefaultInput(AudioObjectID id) override;
    std::unique_ptr<Stream> openInput(AudioObjectID id, StreamFormat format,
                                      uint32_t framesPerBuffer, InputHandler& handler,
                                      Status& status) override;
    std::unique_ptr<Stream> openOutput(AudioObjectID id, StreamFormat format,
                                       uint32_t framesPerBuffer, OutputHandler& handler,
                                       Status& status) override;
    ListenerToken onDeviceListChanged(Notification notify) override;
    ListenerToken onStreamFormatChanged(AudioObjectID input, Notification notify) override;
    void removeListener(ListenerToken token) override;
    bool serverReachable() override;

    // The device name that the catalogue matches: alsa.card_name, else device.product.name,
    // else the description; cut to 63 bytes.
    static std::string deviceName(const char* cardName, const char* productName,
                                  const char* description);

    struct Listeners;

private:
    std::string serverDefault(Direction direction);

    std::shared_ptr<PulseConnection> connection;
    std::shared_ptr<Listeners> listeners;
    AudioObjectID defaultInput = kNoDevice;
};

// Streams (PulseStreams.cpp).
// The record stream asks the server for `format` (0: the source's own rate or channels); the
// server converts, so what the handler receives is what format() says.
std::unique_ptr<Stream> openPulseInput(std::shared_ptr<PulseConnection> connection,
                                       const DeviceInfo& source, StreamFormat format,
                                       uint32_t framesPerBuffer, InputHandler& handler,
                                       Status& status);
std::unique_ptr<Stream> openPulseOutput(std::shared_ptr<PulseConnection> connection,
                                        const DeviceInfo& sink, StreamFormat format,
                                        uint32_t framesPerBuffer, OutputHandler& handler,
                                        Status& status);

// Frames per callback that keep the monitor well under 50 ms from input to output.
uint32_t pulseFragmentFrames(double rate);

} // namespace waxline::platform
