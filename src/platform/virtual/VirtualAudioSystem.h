#pragma once

#include "platform/AudioSystem.h"
#include "platform/Platform.h"
#include "platform/virtual/VirtualSetup.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace waxline::platform {

namespace virtualaudio {
struct InputEntry;
}

// The virtual turntable and output behind the AudioSystem interface. The deck plays the SETUP's
// file (then silence) on one timeline shared by all its input streams, so every stream sees the
// same frame at the same sample time; the output consumes at the same pace and can write what it
// hears to a float WAV whose frame k is what the output heard at its sample time k.
//
// Threads: with a speed factor a pacing thread plays the part of the audio server and runs every
// callback; in stepped mode step() runs them on the calling thread. The timeline moves only while
// at least one stream runs (paced) or when step() is called (stepped). onStreamEnded and the
// device-list listeners of removeInput()/removeOutput() run on the thread that calls those.
// Streams may outlive this object; they then deliver nothing.
class VirtualAudioSystem : public AudioSystem {
public:
    // Throws std::runtime_error when the file cannot be read or the output cannot be written.
    explicit VirtualAudioSystem(const VirtualSetup& setup);
    ~VirtualAudioSystem() override;
    VirtualAudioSystem(const VirtualAudioSystem&) = delete;
    VirtualAudioSystem& operator=(const VirtualAudioSystem&) = delete;

    std::vector<DeviceInfo> devices(Direction direction) override;
    std::optional<DeviceInfo> device(AudioObjectID id, Direction direction) override;
    AudioObjectID defaultDevice(Direction direction) override;
    Status setDefaultInput(AudioObjectID id) override;
    // An input stream asked for another rate than the deck's is resampled (libsamplerate), as a
    // real server would; its sample times count its own frames.
    std::unique_ptr<Stream> openInput(AudioObjectID id, StreamFormat format,
                                      uint32_t framesPerBuffer, InputHandler& handler,
                                      Status& status) override;
    std::unique_ptr<Stream> openOutput(AudioObjectID id, StreamFormat format,
                                       uint32_t framesPerBuffer, OutputHandler& handler,
                                       Status& status) override;
    ListenerToken onDeviceListChanged(Notification notify) override;
    ListenerToken onStreamFormatChanged(AudioObjectID input, Notification notify) override;
    void removeListener(ListenerToken token) override;

    // --- Test control (any thread, never from inside a callback) ---
    const VirtualSetup& setup() const { return config; }
    AudioObjectID deckId() const;   // kNoDevice while the deck is removed
    AudioObjectID outputId() const; // kNoDevice while the output is removed
    // Stepped mode only: the deck produces `inputFrames` frames, the output consumes what falls
    // due meanwhile; all callbacks run on this thread before it returns.
    void step(uint64_t inputFrames);
    // The deck (or output) vanishes: its streams end, device-list listeners fire. Adding it back
    // gives it a new id, as the audio server would.
    void removeInput();
    void addInput();
    void removeOutput();
    void addOutput();
    // The deck skips `frames` frames that no stream receives; running input streams hear
    // onOverflow(frames).
    void simulateOverflow(uint32_t frames);
    // Stream-format listeners of the deck fire (as if its format changed).
    void notifyFormatChanged();
    int64_t framesDelivered() const;      // frames the deck has produced (its sample time)
    int64_t outputFramesConsumed() const; // frames the output has consumed
    int64_t fileFrames() const;           // frames in the file; 0 without one
    // Paced mode: waits until the deck has produced at least `frames`; false on timeout.
    bool waitForFrames(int64_t frames, std::chrono::milliseconds timeout);

    struct Shared;

private:
    void paceLoop();
    void produceInput(uint32_t frames);
    void deliverResampled(virtualaudio::InputEntry& entry, uint32_t frames, bool fromDeck);
    void consumeOutput(uint32_t frames);
    void catchUpOutput();
    uint64_t hostTimeAt(long double timelineNanos) const;
    // Calls, outside every lock, the device-list listeners or the format listeners of `id`.
    void fireListeners(bool formatListeners, AudioObjectID id);
    std::vector<DeviceInfo> listLocked(Direction direction) const;

    VirtualSetup config;
    std::shared_ptr<Shared> shared;
    std::thread pacer;
};

// Pulls the virtual deck's USB devices and its input out together, as unplugging a USB turntable
// does; plugVirtualDeck puts both back. Return false when `platform` is not virtual.
bool unplugVirtualDeck(Platform& platform);
bool plugVirtualDeck(Platform& platform);

} // namespace waxline::platform
