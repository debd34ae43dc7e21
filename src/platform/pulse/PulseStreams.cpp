#include "platform/pulse/PulseAudioSystem.h"
#include "platform/pulse/PulseConnection.h"

#include <pulse/rtclock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <vector>

namespace waxline::platform {

namespace {

constexpr uint32_t kMaxChannels = PA_CHANNELS_MAX;

// Shared with the notifier's stream-ended work, which may run after the stream is gone.
struct EndGuard {
    std::recursive_mutex mutex;
    InputHandler* input = nullptr;
    OutputHandler* output = nullptr;
    bool sent = false;
};

// Main-loop thread: a failed or killed stream ends once, told on the notifier thread.
void streamStateChanged(pa_stream* stream, PulseConnection& connection,
                        const std::shared_ptr<EndGuard>& guard) {
    connection.signal();
    const auto state = pa_stream_get_state(stream);
    if (state != PA_STREAM_FAILED && state != PA_STREAM_TERMINATED)
        return;
    const int error = pa_context_errno(pa_stream_get_context(stream));
    const Status why = error == PA_ERR_KILLED || error == PA_ERR_NOENTITY ? kErrorUnknownDevice
                                                                          : kErrorNotConnected;
    connection.post([guard, why] {
        std::lock_guard lock(guard->mutex);
        if (guard->sent)
            return;
        guard->sent = true;
        if (guard->input)
            guard->input->onStreamEnded(why);
        if (guard->output)
            guard->output->onStreamEnded(why);
    });
}

// The common part of both directions: the pa_stream, its lifetime and corking.
class PulseStream : public Stream {
public:
    PulseStream(std::shared_ptr<PulseConnection> connection, double rate, uint32_t channels,
                uint32_t maxFrames)
        : connection(std::move(connection))
        , rate(rate)
        , channels(channels)
        , maxFrames(maxFrames)
        , planar(static_cast<size_t>(channels) * maxFrames, 0.0f)
        , guard(std::make_shared<EndGuard>()) {
        for (uint32_t c = 0; c < channels; ++c)
            pointers[c] = planar.data() + static_cast<size_t>(c) * maxFrames;
    }

    ~PulseStream() override { close(); }

    Status start() override { return cork(false); }
    Status stop() override { return cork(true); }
    bool isRunning() const override {
        PulseLock lock(*connection);
        return running && stream && pa_stream_get_state(stream) == PA_STREAM_READY;
    }
    StreamFormat format() const override { return {rate, channels}; }
    uint64_t xrunCount() const override { return xruns.load(std::memory_order_relaxed); }

protected:
    // Detaches every callback and disconnects. The callbacks address the derived object, so
    // each derived destructor calls this first: the main loop must never find a half-destroyed
    // stream. Idempotent.
    void close() {
        {
            std::lock_guard lock(guard->mutex);
            guard->input = nullptr;
            guard->output = nullptr;
        }
        PulseLock lock(*connection);
        if (!stream)
            return;
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_set_write_callback(stream, nullptr, nullptr);
        pa_stream_set_underflow_callback(stream, nullptr, nullptr);
        pa_stream_set_overflow_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
        stream = nullptr;
    }

    // Main-loop lock held: waits until the stream is ready; reports and fails otherwise.
    bool connected(const char* what) {
        const bool settled = connection->waitFor([this] {
            const auto state = pa_stream_get_state(stream);
            return state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state);
        });
        if (settled && pa_stream_get_state(stream) == PA_STREAM_READY)
            return true;
        if (settled)
            connection->report(what, pa_context_errno(connection->context()));
        else
            std::fprintf(stderr, "PulseAudio: %s: no answer within 5 s\n", what);
        return false;
    }

    std::shared_ptr<PulseConnection> connection;
    pa_stream* stream = nullptr;
    double rate;
    uint32_t channels;
    uint32_t maxFrames;
    std::vector<float> planar;
    std::array<float*, kMaxChannels> pointers{};
    int64_t sampleTime = 0; // main-loop thread only
    std::atomic<uint64_t> xruns{0};
    bool running = false;
    std::shared_ptr<EndGuard> guard;

private:
    Status cork(bool pause) {
        PulseLock lock(*connection);
        if (!stream || pa_stream_get_state(stream) != PA_STREAM_READY)
            return kErrorNotConnected;
        if (running == !pause)
            return kNoError;
        const bool ok = connection->wait(
            pa_stream_cork(
                stream, pause ? 1 : 0,
                [](pa_stream*, int, void* self) { static_cast<PulseConnection*>(self)->signal(); },
                connection.get()),
            pause ? "pause the stream" : "start the stream");
        if (!ok)
            return kErrorNotConnected;
        running = !pause;
        return kNoError;
    }
};

class PulseInputStream : public PulseStream {
public:
    PulseInputStream(std::shared_ptr<PulseConnection> connection, double rate, uint32_t channels,
                     uint32_t maxFrames, InputHandler& handler)
        : PulseStream(std::move(connection), rate, channels, maxFrames)
        , handler(&handler) {
        guard->input = &handler;
    }
    ~PulseInputStream() override { close(); }

    Status open(const DeviceInfo& source) {
        PulseLock lock(*connection);
        const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, static_cast<uint32_t>(rate),
                                    static_cast<uint8_t>(channels)};
        stream = pa_stream_new(connection->context(), "Waxline capture", &format, nullptr);
        if (!stream) {
            connection->report("create a record stream", pa_context_errno(connection->context()));
            return kErrorOpenFailed;
        }
        pa_stream_set_state_callback(
            stream,
            [](pa_stream* s, void* self) {
                auto* me = static_cast<PulseInputStream*>(self);
                streamStateChanged(s, *me->connection, me->guard);
            },
            this);
        pa_stream_set_read_callback(
            stream,
            [](pa_stream* s, size_t, void* self) { static_cast<PulseInputStream*>(self)->read(s); },
            this);
        pa_buffer_attr attr{};
        attr.maxlength = static_cast<uint32_t>(-1);
        attr.tlength = attr.prebuf = attr.minreq = static_cast<uint32_t>(-1);
        attr.fragsize = std::min(maxFrames, pulseFragmentFrames(rate)) * frameBytes();
        const auto flags = static_cast<pa_stream_flags_t>(
            PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY | PA_STREAM_START_CORKED);
        if (pa_stream_connect_record(stream, source.serverName.c_str(), &attr, flags) < 0) {
            connection->report("connect a record stream", pa_context_errno(connection->context()));
            return kErrorOpenFailed;
        }
        if (!connected("connect a record stream"))
            return kErrorOpenFailed;
        if (const pa_buffer_attr* granted = pa_stream_get_buffer_attr(stream))
            grantedFragment = granted->fragsize / frameBytes();
        return kNoError;
    }

    uint32_t periodFrames() const override { return grantedFragment; }

private:
    uint32_t frameBytes() const { return channels * static_cast<uint32_t>(sizeof(float)); }

    // Main-loop thread, real-time: deinterleave into the buffers made at creation.
    void read(pa_stream* s) {
        const uint32_t bytesPerFrame = frameBytes();
        while (pa_stream_readable_size(s) > 0) {
            const void* data = nullptr;
            size_t bytes = 0;
            if (pa_stream_peek(s, &data, &bytes) < 0 || bytes == 0)
                return;
            const auto frames = static_cast<uint32_t>(bytes / bytesPerFrame);
            if (!data) {
                // A hole: the server lost this much input.
                xruns.fetch_add(1, std::memory_order_relaxed);
                handler->onOverflow(frames);
                sampleTime += frames;
            } else {
                const auto* samples = static_cast<const float*>(data);
                for (uint32_t done = 0; done < frames;) {
                    const uint32_t n = std::min(frames - done, maxFrames);
                    for (uint32_t c = 0; c < channels; ++c)
                        for (uint32_t i = 0; i < n; ++i)
                            pointers[c][i] = samples[static_cast<size_t>(done + i) * channels + c];
                    handler->onInput(pointers.data(), channels, n, sampleTime, hostTime());
                    sampleTime += n;
                    done += n;
                }
            }
            pa_stream_drop(s);
        }
    }

    InputHandler* handler;
    uint32_t grantedFragment = 0;
};

class PulseOutputStream : public PulseStream {
public:
    PulseOutputStream(std::shared_ptr<PulseConnection> connection, double rate, uint32_t channels,
                      uint32_t maxFrames, OutputHandler& handler)
        : PulseStream(std::move(connection), rate, channels, maxFrames)
        , handler(&handler) {
        guard->output = &handler;
    }
    ~PulseOutputStream() override {
        stopRelaxTimer();
        close();
    }

    Status open(const DeviceInfo& sink) {
        PulseLock lock(*connection);
        const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, static_cast<uint32_t>(rate),
                                    static_cast<uint8_t>(channels)};
        stream = pa_stream_new(connection->context(), "Waxline monitor", &format, nullptr);
        if (!stream) {
            connection->report("create a playback stream", pa_context_errno(connection->context()));
            return kErrorOpenFailed;
        }
        pa_stream_set_state_callback(
            stream,
            [](pa_stream* s, void* self) {
                auto* me = static_cast<PulseOutputStream*>(self);
                streamStateChanged(s, *me->connection, me->guard);
            },
            this);
        pa_stream_set_write_callback(
            stream,
            [](pa_stream* s, size_t bytes, void* self) {
                static_cast<PulseOutputStream*>(self)->write(s, bytes);
            },
            this);
        pa_stream_set_underflow_callback(
            stream,
            [](pa_stream* s, void* self) { static_cast<PulseOutputStream*>(self)->underflow(s); },
            this);
        fragment = std::min(maxFrames, pulseFragmentFrames(rate)) * frameBytes();
        // Two fragments queued, topped up every half fragment: the queue stays near full, so a
        // late wake-up of this client does not run it dry.
        attr.maxlength = static_cast<uint32_t>(-1);
        attr.tlength = 2 * fragment;
        attr.prebuf = static_cast<uint32_t>(-1);
        attr.minreq = std::max(frameBytes(), fragment / 2 / frameBytes() * frameBytes());
        attr.fragsize = static_cast<uint32_t>(-1);
        queuedFrames = attr.tlength / frameBytes();
        const auto flags = static_cast<pa_stream_flags_t>(
            PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY | PA_STREAM_START_CORKED);
        if (pa_stream_connect_playback(stream, sink.serverName.c_str(), &attr, flags, nullptr,
                                       nullptr) < 0) {
            connection->report("connect a playback stream",
                               pa_context_errno(connection->context()));
            return kErrorOpenFailed;
        }
        if (!connected("connect a playback stream"))
            return kErrorOpenFailed;
        if (const pa_buffer_attr* granted = pa_stream_get_buffer_attr(stream)) {
            attr = *granted;
            queuedFrames = attr.tlength / frameBytes();
        }
        initialLength = attr.tlength;
        relaxTimer =
            pa_context_rttime_new(connection->context(), pa_rtclock_now() + kRelaxNanos / 1000,
                                  &PulseOutputStream::relax, this);
        return kNoError;
    }

    uint32_t queuedFramesTarget() const override {
        return queuedFrames.load(std::memory_order_relaxed);
    }
    uint32_t heldFrames() const override { return held; }

private:
    uint32_t frameBytes() const { return channels * static_cast<uint32_t>(sizeof(float)); }

    // Main-loop thread. Underflows that come back within a short while mean the server cannot
    // keep this stream fed with so short a queue: it grows by a fragment, up to a limit, and
    // stays there.
    void underflow(pa_stream* s) {
        xruns.fetch_add(1, std::memory_order_relaxed);
        const uint64_t now = hostTimeToNanos(hostTime());
        const bool recurring = underflows > 0 && now - lastUnderflow < kUnderflowWindowNanos;
        ++underflows;
        lastUnderflow = now;
        const auto limit = static_cast<uint32_t>(rate * kMaxQueueSeconds) * frameBytes();
        if (!recurring || attr.tlength + fragment > limit)
            return;
        attr.tlength += fragment;
        queuedFrames = attr.tlength / frameBytes();
        if (pa_operation* op = pa_stream_set_buffer_attr(s, &attr, nullptr, nullptr))
            pa_operation_unref(op);
    }

    // Main-loop thread, outside the audio path: a queue grown in a busy spell shrinks a
    // fragment at a time once no underflow came for a while.
    static void relax(pa_mainloop_api*, pa_time_event*, const struct timeval*, void* self) {
        auto* me = static_cast<PulseOutputStream*>(self);
        const uint64_t now = hostTimeToNanos(hostTime());
        if (me->stream && me->attr.tlength > me->initialLength &&
            now - me->lastUnderflow >= kRelaxNanos) {
            me->attr.tlength -= std::min(me->fragment, me->attr.tlength - me->initialLength);
            me->queuedFrames = me->attr.tlength / me->frameBytes();
            if (pa_operation* op =
                    pa_stream_set_buffer_attr(me->stream, &me->attr, nullptr, nullptr))
                pa_operation_unref(op);
        }
        me->restartRelaxTimer();
    }

    void restartRelaxTimer() {
        if (relaxTimer)
            pa_context_rttime_restart(connection->context(), relaxTimer,
                                      pa_rtclock_now() + kRelaxNanos / 1000);
    }

    void stopRelaxTimer() {
        PulseLock lock(*connection);
        if (relaxTimer)
            pa_threaded_mainloop_get_api(connection->loop())->time_free(relaxTimer);
        relaxTimer = nullptr;
    }

    static constexpr uint64_t kRelaxNanos = 10'000'000'000;
    pa_time_event* relaxTimer = nullptr;
    uint32_t initialLength = 0;
    static constexpr uint64_t kUnderflowWindowNanos = 2'000'000'000;
    static constexpr double kMaxQueueSeconds = 0.02;
    pa_buffer_attr attr{};
    uint32_t fragment = 0;
    uint64_t underflows = 0;
    uint64_t lastUnderflow = 0;
    std::atomic<uint32_t> queuedFrames{0};

    // Main-loop thread, real-time: the handler fills our planar buffers; we interleave them
    // straight into the server's buffer.
    void write(pa_stream* s, size_t bytes) {
        const uint32_t bytesPerFrame = frameBytes();
        auto frames = static_cast<uint32_t>(bytes / bytesPerFrame);
        // The server asks for what its queue lacks; the rest it still holds.
        const uint32_t target = queuedFrames.load(std::memory_order_relaxed);
        held = target > frames ? target - frames : 0;
        while (frames > 0) {
            void* data = nullptr;
            size_t size = static_cast<size_t>(std::min(frames, maxFrames)) * bytesPerFrame;
            if (pa_stream_begin_write(s, &data, &size) < 0 || !data || size < bytesPerFrame)
                return;
            const auto n = static_cast<uint32_t>(
                std::min<size_t>(size / bytesPerFrame, std::min(frames, maxFrames)));
            std::fill(planar.begin(), planar.end(), 0.0f);
            handler->onOutput(pointers.data(), channels, n, sampleTime, hostTime());
            auto* out = static_cast<float*>(data);
            for (uint32_t i = 0; i < n; ++i)
                for (uint32_t c = 0; c < channels; ++c)
                    out[static_cast<size_t>(i) * channels + c] = pointers[c][i];
            pa_stream_write(s, data, static_cast<size_t>(n) * bytesPerFrame, nullptr, 0,
                            PA_SEEK_RELATIVE);
            sampleTime += n;
            frames -= n;
            held += n;
        }
    }

    OutputHandler* handler;
    uint32_t held = 0; // main-loop thread only
};

} // namespace

std::unique_ptr<Stream> openPulseInput(std::shared_ptr<PulseConnection> connection,
                                       const DeviceInfo& source, StreamFormat format,
                                       uint32_t framesPerBuffer, InputHandler& handler,
                                       Status& status) {
    const uint32_t channels = format.channels ? format.channels : source.channels;
    const double rate = format.sampleRate > 0 ? format.sampleRate : source.nominalSampleRate;
    if (channels == 0 || channels > kMaxChannels || rate <= 0 || rate > PA_RATE_MAX) {
        status = kErrorOpenFailed;
        return nullptr;
    }
    const uint32_t frames = framesPerBuffer ? framesPerBuffer : pulseFragmentFrames(rate);
    auto stream =
        std::make_unique<PulseInputStream>(std::move(connection), rate, channels, frames, handler);
    status = stream->open(source);
    if (status != kNoError)
        return nullptr;
    return stream;
}

std::unique_ptr<Stream> openPulseOutput(std::shared_ptr<PulseConnection> connection,
                                        const DeviceInfo& sink, StreamFormat format,
                                        uint32_t framesPerBuffer, OutputHandler& handler,
                                        Status& status) {
    const uint32_t channels = format.channels ? format.channels : sink.channels;
    const double rate = format.sampleRate > 0 ? format.sampleRate : sink.nominalSampleRate;
    if (channels == 0 || channels > kMaxChannels) {
        status = kErrorOpenFailed;
        return nullptr;
    }
    const uint32_t frames = framesPerBuffer ? framesPerBuffer : pulseFragmentFrames(rate);
    auto stream =
        std::make_unique<PulseOutputStream>(std::move(connection), rate, channels, frames, handler);
    status = stream->open(sink);
    if (status != kNoError)
        return nullptr;
    return stream;
}

} // namespace waxline::platform
