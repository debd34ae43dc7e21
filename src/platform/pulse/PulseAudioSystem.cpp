#include "platform/pulse/PulseAudioSystem.h"

#include "platform/pulse/PulseConnection.h"

#include <cmath>
#include <cstring>

namespace waxline::platform {

namespace {

struct Collected {
    PulseConnection* connection;
    std::vector<DeviceInfo> list;
};

DeviceInfo describe(uint32_t index, Direction direction, const char* name, const char* description,
                    const pa_sample_spec& format, pa_proplist* properties) {
    DeviceInfo info;
    info.id = index;
    info.direction = direction;
    info.serverName = name ? name : "";
    info.description = description ? description : "";
    info.name = PulseAudioSystem::deviceName(pa_proplist_gets(properties, "alsa.card_name"),
                                             pa_proplist_gets(properties, "device.product.name"),
                                             description);
    info.channels = format.channels;
    info.actualSampleRate = info.nominalSampleRate = format.rate;
    info.bufferFrames = pulseFragmentFrames(format.rate);
    info.safetyOffsetFrames = 0;
    return info;
}

void onSourceInfo(pa_context*, const pa_source_info* source, int eol, void* userdata) {
    auto* collected = static_cast<Collected*>(userdata);
    if (eol != 0 || !source) {
        collected->connection->signal();
        return;
    }
    // The two highest indices stand for "none" and "the default device"; the server would need
    // four billion devices to hand them out.
    if (source->index >= kDefaultDevice)
        return;
    DeviceInfo info = describe(source->index, Direction::Input, source->name, source->description,
                               source->sample_spec, source->proplist);
    info.monitorOf =
        source->monitor_of_sink == PA_INVALID_INDEX ? kNoDevice : source->monitor_of_sink;
    collected->list.push_back(std::move(info));
}

void onSinkInfo(pa_context*, const pa_sink_info* sink, int eol, void* userdata) {
    auto* collected = static_cast<Collected*>(userdata);
    if (eol != 0 || !sink) {
        collected->connection->signal();
        return;
    }
    if (sink->index >= kDefaultDevice)
        return;
    collected->list.push_back(describe(sink->index, Direction::Output, sink->name,
                                       sink->description, sink->sample_spec, sink->proplist));
}

void signalSuccess(pa_context*, int, void* connection) {
    static_cast<PulseConnection*>(connection)->signal();
}

} // namespace

struct PulseAudioSystem::Listeners {
    struct Listener {
        AudioSystem::Notification notify;
        bool formatListener = false;
        AudioObjectID device = kNoDevice;
    };
    std::weak_ptr<PulseConnection> connection;
    std::mutex mutex;
    std::map<int, Listener> byToken;
    std::map<AudioObjectID, pa_sample_spec> formats; // last known format of watched sources
    int nextToken = 1;

    void fire(bool formatListeners, AudioObjectID device) {
        std::vector<Notification> calls;
        {
            std::lock_guard lock(mutex);
            for (const auto& [token, listener] : byToken)
                if (listener.formatListener == formatListeners &&
                    (!formatListeners || listener.device == device))
                    calls.push_back(listener.notify);
        }
        for (auto& call : calls)
            call();
    }
};

namespace {

using SharedListeners = std::shared_ptr<PulseAudioSystem::Listeners>;

// Main-loop thread: a watched source changed; tell its listeners only when its format did.
void onChangedSource(pa_context*, const pa_source_info* source, int eol, void* userdata) {
    auto* listeners = static_cast<SharedListeners*>(userdata);
    if (eol != 0 || !source) {
        delete listeners;
        return;
    }
    bool changed = false;
    {
        std::lock_guard lock((*listeners)->mutex);
        auto known = (*listeners)->formats.find(source->index);
        if (known != (*listeners)->formats.end() &&
            (known->second.rate != source->sample_spec.rate ||
             known->second.channels != source->sample_spec.channels)) {
            known->second = source->sample_spec;
            changed = true;
        }
    }
    if (auto connection = (*listeners)->connection.lock(); changed && connection)
        connection->post([l = *listeners, index = source->index] { l->fire(true, index); });
}

void onSubscription(pa_context* context, pa_subscription_event_type_t event, uint32_t index,
                    void* userdata) {
    auto& listeners = *static_cast<SharedListeners*>(userdata);
    auto connection = listeners->connection.lock();
    if (!connection)
        return;
    const auto facility = event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
    const auto type = event & PA_SUBSCRIPTION_EVENT_TYPE_MASK;
    if (facility != PA_SUBSCRIPTION_EVENT_SOURCE && facility != PA_SUBSCRIPTION_EVENT_SINK)
        return;
    if (type == PA_SUBSCRIPTION_EVENT_NEW || type == PA_SUBSCRIPTION_EVENT_REMOVE) {
        connection->post([l = listeners] { l->fire(false, kNoDevice); });
        return;
    }
    if (facility == PA_SUBSCRIPTION_EVENT_SOURCE && type == PA_SUBSCRIPTION_EVENT_CHANGE) {
        bool watched = false;
        {
            std::lock_guard lock(listeners->mutex);
            watched = listeners->formats.count(index) > 0;
        }
        if (watched)
            if (pa_operation* op = pa_context_get_source_info_by_index(
                    context, index, onChangedSource, new SharedListeners(listeners)))
                pa_operation_unref(op);
    }
}

} // namespace

uint32_t pulseFragmentFrames(double rate) {
    return static_cast<uint32_t>(std::lround(rate * 0.010));
}

std::string PulseAudioSystem::deviceName(const char* cardName, const char* productName,
                                         const char* description) {
    std::string name;
    if (cardName && *cardName)
        name = cardName;
    else if (productName && *productName)
        name = productName;
    else if (description)
        name = description;
    if (name.size() > 63) {
        name.resize(63);
        // Never leave half of a UTF-8 sequence at the end.
        while (!name.empty() && (static_cast<unsigned char>(name.back()) & 0xC0) == 0x80)
            name.pop_back();
        if (!name.empty() && (static_cast<unsigned char>(name.back()) & 0x80))
            name.pop_back();
    }
    return name;
}

PulseAudioSystem::PulseAudioSystem()
    : connection(std::make_shared<PulseConnection>())
    , listeners(std::make_shared<Listeners>()) {
    listeners->connection = connection;
    {
        PulseLock lock(*connection);
        pa_context_set_subscribe_callback(connection->context(), onSubscription, &listeners);
        connection->wait(
            pa_context_subscribe(connection->context(),
                                 static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE |
                                                                     PA_SUBSCRIPTION_MASK_SINK),
                                 signalSuccess, connection.get()),
            "subscribe to device changes");
    }
    const std::string source = serverDefault(Direction::Input);
    for (const auto& d : devices(Direction::Input))
        if (d.serverName == source)
            defaultInput = d.id;
}

PulseAudioSystem::~PulseAudioSystem() {
    PulseLock lock(*connection);
    pa_context_set_subscribe_callback(connection->context(), nullptr, nullptr);
}

std::vector<DeviceInfo> PulseAudioSystem::devices(Direction direction) {
    Collected collected{connection.get(), {}};
    PulseLock lock(*connection);
    pa_context* ctx = connection->context();
    if (direction == Direction::Input)
        connection->wait(pa_context_get_source_info_list(ctx, onSourceInfo, &collected),
                         "list the sources");
    else
        connection->wait(pa_context_get_sink_info_list(ctx, onSinkInfo, &collected),
                         "list the sinks");
    return collected.list;
}

std::optional<DeviceInfo> PulseAudioSystem::device(AudioObjectID id, Direction direction) {
    for (auto& d : devices(direction))
        if (d.id == id)
            return d;
    return std::nullopt;
}

std::string PulseAudioSystem::serverDefault(Direction direction) {
    struct Answer {
        PulseConnection* connection;
        Direction direction;
        std::string name;
    } answer{connection.get(), direction, {}};
    PulseLock lock(*connection);
    connection->wait(pa_context_get_server_info(
                         connection->context(),
                         [](pa_context*, const pa_server_info* info, void* userdata) {
                             auto* a = static_cast<Answer*>(userdata);
                             const char* name = a->direction == Direction::Input
                                                    ? info->default_source_name
                                                    : info->default_sink_name;
                             a->name = name ? name : "";
                             a->connection->signal();
                         },
                         &answer),
                     "read the server's default devices");
    return answer.name;
}

AudioObjectID PulseAudioSystem::defaultDevice(Direction direction) {
    const auto list = devices(direction);
    if (direction == Direction::Input && defaultInput != kNoDevice)
        for (const auto& d : list)
            if (d.id == defaultInput)
                return d.id;
    const std::string name = serverDefault(direction);
    for (const auto& d : list)
        if (d.serverName == name)
            return d.id;
    return list.empty() ? kNoDevice : list.front().id;
}

Status PulseAudioSystem::setDefaultInput(AudioObjectID id) {
    if (!device(id, Direction::Input))
        return kErrorUnknownDevice;
    defaultInput = id;
    return kNoError;
}

std::unique_ptr<Stream> PulseAudioSystem::openInput(AudioObjectID id, StreamFormat format,
                                                    uint32_t framesPerBuffer, InputHandler& handler,
                                                    Status& status) {
    if (id == kDefaultDevice)
        id = defaultDevice(Direction::Input);
    const auto source = device(id, Direction::Input);
    if (!source) {
        status = kErrorUnknownDevice;
        return nullptr;
    }
    return openPulseInput(connection, *source, format, framesPerBuffer, handler, status);
}

std::unique_ptr<Stream> PulseAudioSystem::openOutput(AudioObjectID id, StreamFormat format,
                                                     uint32_t framesPerBuffer,
                                                     OutputHandler& handler, Status& status) {
    if (id == kDefaultDevice)
        id = defaultDevice(Direction::Output);
    const auto sink = device(id, Direction::Output);
    if (!sink) {
        status = kErrorUnknownDevice;
        return nullptr;
    }
    return openPulseOutput(connection, *sink, format, framesPerBuffer, handler, status);
}

AudioSystem::ListenerToken PulseAudioSystem::onDeviceListChanged(Notification notify) {
    std::lock_guard lock(listeners->mutex);
    const int token = listeners->nextToken++;
    listeners->byToken[token] = Listeners::Listener{std::move(notify), false, kNoDevice};
    return token;
}

AudioSystem::ListenerToken PulseAudioSystem::onStreamFormatChanged(AudioObjectID input,
                                                                   Notification notify) {
    const auto source = device(input, Direction::Input);
    std::lock_guard lock(listeners->mutex);
    if (source) {
        pa_sample_spec format{};
        format.format = PA_SAMPLE_FLOAT32LE;
        format.rate = static_cast<uint32_t>(source->nominalSampleRate);
        format.channels = static_cast<uint8_t>(source->channels);
        // Only rate and channels are compared: they are what a stream's format() reports.
        listeners->formats.try_emplace(input, format);
    }
    const int token = listeners->nextToken++;
    listeners->byToken[token] = Listeners::Listener{std::move(notify), true, input};
    return token;
}

bool PulseAudioSystem::serverReachable() {
    PulseLock lock(*connection);
    return pa_context_get_state(connection->context()) == PA_CONTEXT_READY;
}

void PulseAudioSystem::removeListener(ListenerToken token) {
    std::lock_guard lock(listeners->mutex);
    listeners->byToken.erase(token);
}

} // namespace waxline::platform
