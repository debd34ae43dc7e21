// The virtual system's devices: the lists and defaults, the deck and output coming and going,
// and the listeners that hear about it.
#include "platform/virtual/VirtualAudioSystemShared.h"

namespace waxline::platform {

using namespace virtualaudio;

namespace {

// The device in `slot` vanishes: its open streams end and, outside the lock, their handlers hear
// so. False when it was gone already.
template <class EntryType>
bool removeDevice(VirtualAudioSystem::Shared& s, AudioObjectID& slot,
                  std::vector<std::shared_ptr<EntryType>>& entries) {
    std::vector<std::shared_ptr<EntryType>> ended;
    {
        std::lock_guard lock(s.mutex);
        if (slot == kNoDevice)
            return false;
        for (auto& e : entries)
            if (e->device == slot && !e->ended && !e->closed) {
                e->running = false;
                e->ended = true;
                ended.push_back(e);
            }
        slot = kNoDevice;
        s.wake.notify_all();
    }
    for (auto& e : ended)
        if (auto* handler = e->handler)
            handler->onStreamEnded(kErrorUnknownDevice);
    return true;
}

// The device comes back under a new id, as the audio server would give it. False when it was
// there already.
bool addDevice(VirtualAudioSystem::Shared& s, AudioObjectID& slot, AudioObjectID& nextId) {
    std::lock_guard lock(s.mutex);
    if (slot != kNoDevice)
        return false;
    slot = nextId++;
    return true;
}

} // namespace

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

// ---- the deck and output coming and going (test control) ----

AudioObjectID VirtualAudioSystem::deckId() const {
    std::lock_guard lock(shared->mutex);
    return shared->deck;
}

AudioObjectID VirtualAudioSystem::outputId() const {
    std::lock_guard lock(shared->mutex);
    return shared->output;
}

void VirtualAudioSystem::removeInput() {
    if (removeDevice(*shared, shared->deck, shared->inputs))
        fireListeners(false, kNoDevice);
}

void VirtualAudioSystem::addInput() {
    if (addDevice(*shared, shared->deck, shared->nextInputId))
        fireListeners(false, kNoDevice);
}

void VirtualAudioSystem::removeOutput() {
    if (removeDevice(*shared, shared->output, shared->outputs))
        fireListeners(false, kNoDevice);
}

void VirtualAudioSystem::addOutput() {
    if (addDevice(*shared, shared->output, shared->nextOutputId))
        fireListeners(false, kNoDevice);
}

void VirtualAudioSystem::notifyFormatChanged() {
    fireListeners(true, deckId());
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

void VirtualAudioSystem::fireListeners(bool formatListeners, AudioObjectID id) {
    std::vector<Notification> calls;
    {
        std::lock_guard lock(shared->listenerMutex);
        for (const auto& [token, listener] : shared->listeners)
            if (listener.formatListener == formatListeners &&
                (!formatListeners || listener.device == id))
                calls.push_back(listener.notify);
    }
    for (auto& call : calls)
        call();
}

} // namespace waxline::platform
