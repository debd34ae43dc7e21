// The virtual system's streams: opening them and the Stream objects the caller holds.
#include "platform/virtual/VirtualAudioSystemShared.h"

#include <cmath>

namespace waxline::platform {

using namespace virtualaudio;

namespace {

using Shared = VirtualAudioSystem::Shared;

// Start, stop and closing are the same for both directions: they flip the entry's flags under
// the shared lock and wake the pacing thread.
template <class EntryType> class VirtualStream : public Stream {
public:
    VirtualStream(std::shared_ptr<Shared> shared, std::shared_ptr<EntryType> entry)
        : shared(std::move(shared))
        , entry(std::move(entry)) {}
    ~VirtualStream() override {
        std::lock_guard lock(shared->mutex);
        entry->running = false;
        entry->closed = true;
        entry->handler = nullptr;
        shared->wake.notify_all();
    }
    Status start() override {
        std::lock_guard lock(shared->mutex);
        if (entry->ended)
            return kErrorUnknownDevice;
        entry->running = true;
        shared->wake.notify_all();
        return kNoError;
    }
    Status stop() override {
        std::lock_guard lock(shared->mutex);
        entry->running = false;
        shared->wake.notify_all();
        return kNoError;
    }
    bool isRunning() const override {
        std::lock_guard lock(shared->mutex);
        return entry->running;
    }

protected:
    std::shared_ptr<Shared> shared;
    std::shared_ptr<EntryType> entry;
};

class VirtualInputStream : public VirtualStream<InputEntry> {
public:
    VirtualInputStream(std::shared_ptr<Shared> shared, std::shared_ptr<InputEntry> entry,
                       double rate)
        : VirtualStream(std::move(shared), std::move(entry))
        , rate(rate) {}
    StreamFormat format() const override { return {rate, entry->channels}; }
    uint32_t periodFrames() const override { return shared->period; }
    uint64_t xrunCount() const override {
        std::lock_guard lock(shared->mutex);
        return entry->xruns;
    }

private:
    double rate;
};

class VirtualOutputStream : public VirtualStream<OutputEntry> {
public:
    using VirtualStream::VirtualStream;
    StreamFormat format() const override { return {entry->rate, entry->channels}; }
    uint32_t periodFrames() const override { return shared->period; }
};

} // namespace

// ---- streams (main thread) ----

std::unique_ptr<Stream> VirtualAudioSystem::openInput(AudioObjectID id, StreamFormat format,
                                                      uint32_t framesPerBuffer,
                                                      InputHandler& handler, Status& status) {
    std::lock_guard lock(shared->mutex);
    if (id == kDefaultDevice)
        id = defaultDevice(Direction::Input);
    if (!device(id, Direction::Input)) {
        status = kErrorUnknownDevice;
        return nullptr;
    }
    const uint32_t channels = format.channels ? format.channels : shared->channels;
    const double rate = format.sampleRate > 0 ? format.sampleRate : shared->inputRate;
    if (channels > kMaxChannels || rate < 1000 || rate > 768000) {
        status = kErrorOpenFailed;
        return nullptr;
    }
    auto entry = std::make_shared<InputEntry>();
    entry->device = id;
    entry->handler = &handler;
    entry->deckChannels = shared->channels;
    entry->allocate(channels, framesPerBuffer == 0 ? shared->period : framesPerBuffer);
    if (rate != shared->inputRate) {
        int error = 0;
        entry->resampler = src_new(SRC_SINC_MEDIUM_QUALITY, static_cast<int>(channels), &error);
        if (!entry->resampler) {
            status = kErrorOpenFailed;
            return nullptr;
        }
        entry->ratio = rate / shared->inputRate;
        const auto period = static_cast<size_t>(shared->period);
        entry->resamplerIn.assign(channels * period, 0.0f);
        const auto most =
            static_cast<size_t>(std::ceil(static_cast<double>(period) * entry->ratio));
        entry->resamplerOut.assign(channels * (most + 64), 0.0f);
        entry->ownTime = std::llround(static_cast<double>(shared->inputPos) * entry->ratio);
    }
    shared->sweep();
    shared->inputs.push_back(entry);
    status = kNoError;
    return std::make_unique<VirtualInputStream>(shared, entry, rate);
}

std::unique_ptr<Stream> VirtualAudioSystem::openOutput(AudioObjectID id, StreamFormat format,
                                                       uint32_t framesPerBuffer,
                                                       OutputHandler& handler, Status& status) {
    std::lock_guard lock(shared->mutex);
    if (id == kDefaultDevice)
        id = shared->output;
    if (id == kNoDevice || id != shared->output) {
        status = kErrorUnknownDevice;
        return nullptr;
    }
    if (format.channels > kMaxChannels) {
        status = kErrorOpenFailed;
        return nullptr;
    }
    auto entry = std::make_shared<OutputEntry>();
    entry->device = id;
    entry->handler = &handler;
    entry->rate = shared->outputRate;
    entry->allocate(format.channels == 0 ? 2 : format.channels,
                    framesPerBuffer == 0 ? shared->period : framesPerBuffer);
    shared->sweep();
    shared->outputs.push_back(entry);
    status = kNoError;
    return std::make_unique<VirtualOutputStream>(shared, entry);
}

} // namespace waxline::platform
