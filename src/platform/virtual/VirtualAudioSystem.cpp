#include "platform/virtual/VirtualAudioSystem.h"

#include "platform/virtual/VirtualUsbBus.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <map>
#include <stdexcept>

namespace waxline::platform {

namespace {

constexpr uint32_t kMaxChannels = 8;
constexpr AudioObjectID kFirstInputId = 1;
constexpr AudioObjectID kFirstOutputId = 50;
// Paced catch-up releases the lock after this many periods so control calls get in.
constexpr int kPeriodsPerTurn = 64;

struct Entry {
    AudioObjectID device = kNoDevice;
    uint32_t channels = 0;
    uint32_t maxFrames = 0;
    std::vector<float> storage;
    std::array<float*, kMaxChannels> pointers{};
    bool running = false;
    bool ended = false;
    bool closed = false;
    uint64_t xruns = 0;

    void allocate(uint32_t channelCount, uint32_t frames) {
        channels = channelCount;
        maxFrames = frames;
        storage.assign(static_cast<size_t>(channels) * frames, 0.0f);
        for (uint32_t c = 0; c < channels; ++c)
            pointers[c] = storage.data() + static_cast<size_t>(c) * frames;
    }
};

struct InputEntry : Entry {
    InputHandler* handler = nullptr;
};

struct OutputEntry : Entry {
    OutputHandler* handler = nullptr;
    double rate = 0;
};

struct Listener {
    AudioSystem::Notification notify;
    bool formatListener = false;
    AudioObjectID device = kNoDevice;
};

} // namespace

struct VirtualAudioSystem::Shared {
    mutable std::recursive_mutex mutex;
    std::condition_variable_any wake;     // streams started/stopped, shutdown
    std::condition_variable_any progress; // the deck produced frames
    bool quit = false;

    std::vector<std::shared_ptr<InputEntry>> inputs;
    std::vector<std::shared_ptr<OutputEntry>> outputs;

    AudioObjectID deck = kFirstInputId;
    std::vector<AudioObjectID> extraIds;
    AudioObjectID output = kFirstOutputId;
    AudioObjectID nextInputId = kFirstInputId;
    AudioObjectID nextOutputId = kFirstOutputId + 1;
    AudioObjectID defaultInput = kFirstInputId;

    double inputRate = 44100;  // nominal
    double outputRate = 44100; // nominal
    double inputClock = 1.0;
    uint32_t period = 512;
    uint32_t channels = 2;

    // Timeline: positions in frames of each device; the timeline in nanoseconds of device time.
    int64_t inputPos = 0;
    int64_t outputPos = 0;
    int64_t skippedFrames = 0; // frames lost to simulateOverflow, already in inputPos
    uint64_t steppedHostBase = 0;
    long double pausedNanos = 0; // timeline at the last resume
    uint64_t resumeHost = 0;     // host time of the last resume
    bool active = false;

    SNDFILE* file = nullptr;
    uint32_t fileChannels = 0;
    int64_t fileFrames = 0;
    int64_t fileRead = 0;
    std::vector<float> interleaved;                // fileChannels x period
    std::vector<std::vector<float>> periodBuffers; // channels x period (deck)
    std::vector<float> silence;                    // period zeros for extra inputs

    SNDFILE* heard = nullptr;
    std::vector<float> mix; // 2 x period
    std::vector<float> mixInterleaved;
    int64_t framesSinceHeaderUpdate = 0;

    std::mutex listenerMutex;
    std::map<int, Listener> listeners;
    int nextToken = 1;

    void sweep() {
        std::erase_if(inputs, [](const auto& e) { return e->closed; });
        std::erase_if(outputs, [](const auto& e) { return e->closed; });
    }
    bool anyRunning() const {
        for (const auto& e : inputs)
            if (e->running)
                return true;
        for (const auto& e : outputs)
            if (e->running)
                return true;
        return false;
    }
    long double inputFramesToNanos(int64_t frames) const {
        return static_cast<long double>(frames) * 1e9L / (inputRate * inputClock);
    }
    long double outputFramesToNanos(int64_t frames) const {
        return static_cast<long double>(frames) * 1e9L / outputRate;
    }
};

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
};

std::string sndfileError(SNDFILE* file) {
    return sf_strerror(file);
}

} // namespace

VirtualAudioSystem::VirtualAudioSystem(const VirtualSetup& setup)
    : config(setup)
    , shared(std::make_shared<Shared>()) {
    Shared& s = *shared;
    s.inputRate = setup.rate;
    s.channels = setup.channels;
    s.period = setup.bufferFrames;
    s.inputClock = setup.clock;

    if (!setup.file.empty()) {
        SF_INFO info{};
        s.file = sf_open(setup.file.c_str(), SFM_READ, &info);
        if (!s.file)
            throw std::runtime_error("virtual deck: cannot read \"" + setup.file +
                                     "\": " + sndfileError(nullptr));
        if (setup.rateGiven && setup.rate != info.samplerate) {
            sf_close(s.file);
            throw std::runtime_error("virtual deck: rate=" + std::to_string(setup.rate) +
                                     " contradicts the file's rate of " +
                                     std::to_string(info.samplerate) + " Hz");
        }
        s.inputRate = info.samplerate;
        s.fileChannels = static_cast<uint32_t>(info.channels);
        s.fileFrames = info.frames;
        s.interleaved.assign(static_cast<size_t>(s.fileChannels) * s.period, 0.0f);
    }
    s.outputRate = setup.outRate > 0 ? setup.outRate : s.inputRate;
    s.periodBuffers.assign(s.channels, std::vector<float>(s.period, 0.0f));
    s.silence.assign(s.period, 0.0f);
    s.mix.assign(2 * static_cast<size_t>(s.period), 0.0f);
    s.mixInterleaved.assign(2 * static_cast<size_t>(s.period), 0.0f);

    if (!setup.output.empty()) {
        SF_INFO info{};
        info.samplerate = static_cast<int>(std::lround(s.outputRate));
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        s.heard = sf_open(setup.output.c_str(), SFM_WRITE, &info);
        if (!s.heard) {
            if (s.file)
                sf_close(s.file);
            throw std::runtime_error("virtual output: cannot write \"" + setup.output +
                                     "\": " + sndfileError(nullptr));
        }
    }

    s.deck = s.nextInputId++;
    s.defaultInput = s.deck;
    for (size_t i = 0; i < setup.extraInputs.size(); ++i)
        s.extraIds.push_back(s.nextInputId++);
    s.steppedHostBase = hostTime();

    if (!setup.stepped())
        pacer = std::thread([this] { paceLoop(); });
}

VirtualAudioSystem::~VirtualAudioSystem() {
    {
        std::lock_guard lock(shared->mutex);
        shared->quit = true;
        shared->wake.notify_all();
    }
    if (pacer.joinable())
        pacer.join();
    std::lock_guard lock(shared->mutex);
    for (auto& e : shared->inputs)
        e->running = false, e->ended = true;
    for (auto& e : shared->outputs)
        e->running = false, e->ended = true;
    if (shared->file)
        sf_close(shared->file), shared->file = nullptr;
    if (shared->heard)
        sf_close(shared->heard), shared->heard = nullptr;
}

// ---- device list (any thread) ----

std::vector<DeviceInfo> VirtualAudioSystem::listLocked(Direction direction) const {
    const Shared& s = *shared;
    std::vector<DeviceInfo> list;
    if (direction == Direction::Input) {
        if (s.deck != kNoDevice) {
            DeviceInfo d;
            d.id = s.deck;
            d.direction = Direction::Input;
            d.name = config.name;
            d.serverName = "virtual.deck";
            d.description = config.file.empty() ? "Virtual deck (silent)"
                                                : "Virtual deck playing " + config.file;
            d.channels = s.channels;
            d.nominalSampleRate = s.inputRate;
            d.actualSampleRate = s.inputRate * s.inputClock;
            d.bufferFrames = s.period;
            list.push_back(d);
        }
        for (size_t i = 0; i < s.extraIds.size(); ++i) {
            DeviceInfo d;
            d.id = s.extraIds[i];
            d.direction = Direction::Input;
            d.name = config.extraInputs[i].substr(0, 63);
            d.serverName = "virtual.extra" + std::to_string(i + 1);
            d.description = "Virtual extra input (silent)";
            d.channels = s.channels;
            d.nominalSampleRate = s.inputRate;
            d.actualSampleRate = s.inputRate * s.inputClock;
            d.bufferFrames = s.period;
            list.push_back(d);
        }
    } else if (s.output != kNoDevice) {
        DeviceInfo d;
        d.id = s.output;
        d.direction = Direction::Output;
        d.name = config.outName.substr(0, 63);
        d.serverName = "virtual.output";
        d.description =
            config.output.empty() ? "Virtual output" : "Virtual output writing " + config.output;
        d.channels = 2;
        d.nominalSampleRate = d.actualSampleRate = s.outputRate;
        d.bufferFrames = s.period;
        list.push_back(d);
    }
    return list;
}

std::vector<DeviceInfo> VirtualAudioSystem::devices(Direction direction) {
    std::lock_guard lock(shared->mutex);
    return listLocked(direction);
}

std::optional<DeviceInfo> VirtualAudioSystem::device(AudioObjectID id, Direction direction) {
    std::lock_guard lock(shared->mutex);
    for (const auto& d : listLocked(direction))
        if (d.id == id)
            return d;
    return std::nullopt;
}

AudioObjectID VirtualAudioSystem::defaultDevice(Direction direction) {
    std::lock_guard lock(shared->mutex);
    if (direction == Direction::Output)
        return shared->output;
    for (const auto& d : listLocked(Direction::Input))
        if (d.id == shared->defaultInput)
            return d.id;
    const auto list = listLocked(Direction::Input);
    return list.empty() ? kNoDevice : list.front().id;
}

Status VirtualAudioSystem::setDefaultInput(AudioObjectID id) {
    std::lock_guard lock(shared->mutex);
    for (const auto& d : listLocked(Direction::Input))
        if (d.id == id) {
            shared->defaultInput = id;
            return kNoError;
        }
    return kErrorUnknownDevice;
}

// ---- streams (main thread) ----

std::unique_ptr<Stream> VirtualAudioSystem::openInput(AudioObjectID id, uint32_t framesPerBuffer,
                                                      InputHandler& handler, Status& status) {
    std::lock_guard lock(shared->mutex);
    if (id == 0)
        id = defaultDevice(Direction::Input);
    if (!device(id, Direction::Input)) {
        status = kErrorUnknownDevice;
        return nullptr;
    }
    auto entry = std::make_shared<InputEntry>();
    entry->device = id;
    entry->handler = &handler;
    entry->allocate(shared->channels, framesPerBuffer == 0 ? shared->period : framesPerBuffer);
    shared->sweep();
    shared->inputs.push_back(entry);
    status = kNoError;
    return std::make_unique<VirtualInputStream>(shared, entry, shared->inputRate);
}

std::unique_ptr<Stream> VirtualAudioSystem::openOutput(AudioObjectID id, StreamFormat format,
                                                       uint32_t framesPerBuffer,
                                                       OutputHandler& handler, Status& status) {
    std::lock_guard lock(shared->mutex);
    if (id == 0)
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

// ---- the timeline (pacing thread or step caller, mutex held) ----

uint64_t VirtualAudioSystem::hostTimeAt(long double timelineNanos) const {
    const Shared& s = *shared;
    if (config.stepped())
        return s.steppedHostBase + static_cast<uint64_t>(timelineNanos);
    if (config.asFastAsPossible)
        return hostTime();
    const long double real = (timelineNanos - s.pausedNanos) / config.speed;
    return s.resumeHost + static_cast<uint64_t>(std::max<long double>(0, real));
}

void VirtualAudioSystem::produceInput(uint32_t frames) {
    Shared& s = *shared;
    // Fill the deck's period buffers from the file, then silence.
    if (s.file && s.fileRead < s.fileFrames) {
        const sf_count_t got = sf_readf_float(s.file, s.interleaved.data(), frames);
        const uint32_t n = got > 0 ? static_cast<uint32_t>(got) : 0;
        for (uint32_t c = 0; c < s.channels; ++c) {
            const uint32_t source = c % s.fileChannels;
            float* out = s.periodBuffers[c].data();
            for (uint32_t i = 0; i < n; ++i)
                out[i] = s.interleaved[static_cast<size_t>(i) * s.fileChannels + source];
            std::fill(out + n, out + frames, 0.0f);
        }
        s.fileRead += n;
        if (n < frames)
            s.fileRead = s.fileFrames;
    } else {
        for (auto& buffer : s.periodBuffers)
            std::fill(buffer.begin(), buffer.begin() + frames, 0.0f);
    }

    for (auto& e : s.inputs) {
        if (!e->running || !e->handler)
            continue;
        const bool fromDeck = e->device == s.deck;
        for (uint32_t done = 0; done < frames && e->running && e->handler;) {
            const uint32_t n = std::min(frames - done, e->maxFrames);
            for (uint32_t c = 0; c < e->channels; ++c) {
                const float* from = fromDeck ? s.periodBuffers[c].data() + done : s.silence.data();
                std::copy(from, from + n, e->pointers[c]);
            }
            const int64_t sampleTime = s.inputPos + done;
            e->handler->onInput(e->pointers.data(), e->channels, n, sampleTime,
                                hostTimeAt(s.inputFramesToNanos(sampleTime)));
            done += n;
        }
    }
    s.inputPos += frames;
    s.progress.notify_all();
}

void VirtualAudioSystem::consumeOutput(uint32_t frames) {
    Shared& s = *shared;
    std::fill(s.mix.begin(), s.mix.end(), 0.0f);
    for (auto& e : s.outputs) {
        if (!e->running || !e->handler)
            continue;
        for (uint32_t done = 0; done < frames && e->running && e->handler;) {
            const uint32_t n = std::min(frames - done, e->maxFrames);
            std::fill(e->storage.begin(), e->storage.end(), 0.0f);
            const int64_t sampleTime = s.outputPos + done;
            e->handler->onOutput(e->pointers.data(), e->channels, n, sampleTime,
                                 hostTimeAt(s.outputFramesToNanos(sampleTime)));
            for (uint32_t c = 0; c < std::min<uint32_t>(e->channels, 2); ++c)
                for (uint32_t i = 0; i < n; ++i)
                    s.mix[c * s.period + done + i] += e->pointers[c][i];
            done += n;
        }
    }
    if (s.heard) {
        for (uint32_t i = 0; i < frames; ++i) {
            s.mixInterleaved[2 * i] = s.mix[i];
            s.mixInterleaved[2 * i + 1] = s.mix[s.period + i];
        }
        sf_writef_float(s.heard, s.mixInterleaved.data(), frames);
        s.framesSinceHeaderUpdate += frames;
        // Keep the file readable if the process dies: rewrite the header about once a second.
        if (s.framesSinceHeaderUpdate >= static_cast<int64_t>(s.outputRate)) {
            sf_command(s.heard, SFC_UPDATE_HEADER_NOW, nullptr, 0);
            s.framesSinceHeaderUpdate = 0;
        }
    }
    s.outputPos += frames;
}

void VirtualAudioSystem::catchUpOutput() {
    Shared& s = *shared;
    const long double nanos = s.inputFramesToNanos(s.inputPos);
    const auto target = static_cast<int64_t>(std::floor(nanos * s.outputRate / 1e9L + 1e-9L));
    while (s.outputPos < target)
        consumeOutput(static_cast<uint32_t>(std::min<int64_t>(s.period, target - s.outputPos)));
}

void VirtualAudioSystem::step(uint64_t inputFrames) {
    if (!config.stepped())
        throw std::logic_error("VirtualAudioSystem::step needs speed=step");
    std::lock_guard lock(shared->mutex);
    shared->sweep();
    while (inputFrames > 0) {
        const auto n = static_cast<uint32_t>(std::min<uint64_t>(shared->period, inputFrames));
        produceInput(n);
        catchUpOutput();
        inputFrames -= n;
    }
}

void VirtualAudioSystem::paceLoop() {
    using namespace std::chrono;
    Shared& s = *shared;
    std::unique_lock lock(s.mutex);
    while (!s.quit) {
        s.sweep();
        const bool running = s.anyRunning();
        if (!running) {
            if (s.active) {
                s.pausedNanos = s.inputFramesToNanos(s.inputPos);
                s.active = false;
            }
            s.wake.wait(lock);
            continue;
        }
        if (!s.active) {
            s.pausedNanos = s.inputFramesToNanos(s.inputPos);
            s.resumeHost = hostTime();
            s.active = true;
        }
        if (config.asFastAsPossible) {
            for (int i = 0; i < kPeriodsPerTurn && !s.quit; ++i) {
                produceInput(s.period);
                catchUpOutput();
            }
            lock.unlock();
            std::this_thread::yield();
            lock.lock();
            continue;
        }
        const long double now =
            s.pausedNanos +
            static_cast<long double>(hostTimeToNanos(hostTime() - s.resumeHost)) * config.speed;
        for (int i = 0; i < kPeriodsPerTurn && s.inputFramesToNanos(s.inputPos + s.period) <= now;
             ++i) {
            produceInput(s.period);
            catchUpOutput();
        }
        const long double due = s.inputFramesToNanos(s.inputPos + s.period);
        const long double waitNanos = std::max<long double>(0, (due - now) / config.speed);
        if (waitNanos > 0)
            s.wake.wait_for(lock, nanoseconds(static_cast<int64_t>(waitNanos)));
        else {
            lock.unlock();
            std::this_thread::yield();
            lock.lock();
        }
    }
}

// ---- test control ----

AudioObjectID VirtualAudioSystem::deckId() const {
    std::lock_guard lock(shared->mutex);
    return shared->deck;
}

AudioObjectID VirtualAudioSystem::outputId() const {
    std::lock_guard lock(shared->mutex);
    return shared->output;
}

void VirtualAudioSystem::removeInput() {
    std::vector<std::shared_ptr<InputEntry>> ended;
    {
        std::lock_guard lock(shared->mutex);
        if (shared->deck == kNoDevice)
            return;
        for (auto& e : shared->inputs)
            if (e->device == shared->deck && !e->ended && !e->closed) {
                e->running = false;
                e->ended = true;
                ended.push_back(e);
            }
        shared->deck = kNoDevice;
        shared->wake.notify_all();
    }
    for (auto& e : ended)
        if (auto* handler = e->handler)
            handler->onStreamEnded(kErrorUnknownDevice);
    fireDeviceListChanged();
}

void VirtualAudioSystem::addInput() {
    {
        std::lock_guard lock(shared->mutex);
        if (shared->deck != kNoDevice)
            return;
        shared->deck = shared->nextInputId++;
    }
    fireDeviceListChanged();
}

void VirtualAudioSystem::removeOutput() {
    std::vector<std::shared_ptr<OutputEntry>> ended;
    {
        std::lock_guard lock(shared->mutex);
        if (shared->output == kNoDevice)
            return;
        for (auto& e : shared->outputs)
            if (!e->ended && !e->closed) {
                e->running = false;
                e->ended = true;
                ended.push_back(e);
            }
        shared->output = kNoDevice;
        shared->wake.notify_all();
    }
    for (auto& e : ended)
        if (auto* handler = e->handler)
            handler->onStreamEnded(kErrorUnknownDevice);
    fireDeviceListChanged();
}

void VirtualAudioSystem::addOutput() {
    {
        std::lock_guard lock(shared->mutex);
        if (shared->output != kNoDevice)
            return;
        shared->output = shared->nextOutputId++;
    }
    fireDeviceListChanged();
}

void VirtualAudioSystem::simulateOverflow(uint32_t frames) {
    std::lock_guard lock(shared->mutex);
    Shared& s = *shared;
    if (s.file && s.fileRead < s.fileFrames) {
        const auto skip = std::min<int64_t>(frames, s.fileFrames - s.fileRead);
        sf_seek(s.file, skip, SEEK_CUR);
        s.fileRead += skip;
    }
    s.inputPos += frames;
    s.skippedFrames += frames;
    for (auto& e : s.inputs)
        if (e->running && e->handler) {
            ++e->xruns;
            e->handler->onOverflow(frames);
        }
}

void VirtualAudioSystem::notifyFormatChanged() {
    fireFormatChanged(deckId());
}

int64_t VirtualAudioSystem::framesDelivered() const {
    std::lock_guard lock(shared->mutex);
    return shared->inputPos;
}

int64_t VirtualAudioSystem::outputFramesConsumed() const {
    std::lock_guard lock(shared->mutex);
    return shared->outputPos;
}

int64_t VirtualAudioSystem::fileFrames() const {
    return shared->fileFrames;
}

bool VirtualAudioSystem::waitForFrames(int64_t frames, std::chrono::milliseconds timeout) {
    std::unique_lock lock(shared->mutex);
    return shared->progress.wait_for(lock, timeout, [&] { return shared->inputPos >= frames; });
}

// ---- listeners ----

AudioSystem::ListenerToken VirtualAudioSystem::onDeviceListChanged(Notification notify) {
    std::lock_guard lock(shared->listenerMutex);
    const int token = shared->nextToken++;
    shared->listeners[token] = Listener{std::move(notify), false, kNoDevice};
    return token;
}

AudioSystem::ListenerToken VirtualAudioSystem::onStreamFormatChanged(AudioObjectID input,
                                                                     Notification notify) {
    std::lock_guard lock(shared->listenerMutex);
    const int token = shared->nextToken++;
    shared->listeners[token] = Listener{std::move(notify), true, input};
    return token;
}

void VirtualAudioSystem::removeListener(ListenerToken token) {
    std::lock_guard lock(shared->listenerMutex);
    shared->listeners.erase(token);
}

void VirtualAudioSystem::fireDeviceListChanged() {
    std::vector<Notification> calls;
    {
        std::lock_guard lock(shared->listenerMutex);
        for (const auto& [token, listener] : shared->listeners)
            if (!listener.formatListener)
                calls.push_back(listener.notify);
    }
    for (auto& call : calls)
        call();
}

void VirtualAudioSystem::fireFormatChanged(AudioObjectID id) {
    std::vector<Notification> calls;
    {
        std::lock_guard lock(shared->listenerMutex);
        for (const auto& [token, listener] : shared->listeners)
            if (listener.formatListener && listener.device == id)
                calls.push_back(listener.notify);
    }
    for (auto& call : calls)
        call();
}

// ---- the deck as a whole ----

bool unplugVirtualDeck(Platform& platform) {
    auto* audio = dynamic_cast<VirtualAudioSystem*>(platform.audio.get());
    auto* usb = dynamic_cast<VirtualUsbBus*>(platform.usb.get());
    if (!audio || !usb)
        return false;
    usb->detachAll();
    audio->removeInput();
    return true;
}

bool plugVirtualDeck(Platform& platform) {
    auto* audio = dynamic_cast<VirtualAudioSystem*>(platform.audio.get());
    auto* usb = dynamic_cast<VirtualUsbBus*>(platform.usb.get());
    if (!audio || !usb)
        return false;
    usb->detachAll();
    for (const auto& device : audio->setup().usb)
        usb->attach(device);
    audio->addInput();
    return true;
}

} // namespace waxline::platform
