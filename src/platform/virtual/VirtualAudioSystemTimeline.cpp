// The virtual system's timeline: the deck producing and the output consuming frames, paced by
// a thread or stepped by the caller, and the test controls that read or move it.
#include "platform/virtual/VirtualAudioSystemShared.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace waxline::platform {

using virtualaudio::InputEntry;

namespace {

// Paced catch-up releases the lock after this many periods so control calls get in.
constexpr int kPeriodsPerTurn = 64;

} // namespace

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
        if (e->resampler) {
            deliverResampled(*e, frames, fromDeck);
            continue;
        }
        for (uint32_t done = 0; done < frames && e->running && e->handler;) {
            const uint32_t n = std::min(frames - done, e->maxFrames);
            for (uint32_t c = 0; c < e->channels; ++c) {
                const float* from =
                    fromDeck ? s.periodBuffers[c % s.channels].data() + done : s.silence.data();
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

// The deck's `frames` new frames, converted to the stream's rate, in pieces of at most its
// buffer size; the stream's own sample time counts what it delivered.
void VirtualAudioSystem::deliverResampled(InputEntry& e, uint32_t frames, bool fromDeck) {
    const Shared& s = *shared;
    const uint32_t channels = e.channels;
    for (uint32_t i = 0; i < frames; ++i)
        for (uint32_t c = 0; c < channels; ++c)
            e.resamplerIn[static_cast<size_t>(i) * channels + c] =
                fromDeck ? s.periodBuffers[c % s.channels][i] : 0.0f;
    const long outCapacity = static_cast<long>(e.resamplerOut.size() / channels);
    const int64_t deckStart = s.inputPos;
    long used = 0;
    while (used < static_cast<long>(frames) && e.running && e.handler) {
        SRC_DATA data{};
        data.data_in = e.resamplerIn.data() + static_cast<size_t>(used) * channels;
        data.input_frames = static_cast<long>(frames) - used;
        data.data_out = e.resamplerOut.data();
        data.output_frames = outCapacity;
        data.src_ratio = e.ratio;
        if (src_process(e.resampler, &data) != 0)
            return;
        used += data.input_frames_used;
        const auto made = static_cast<uint32_t>(data.output_frames_gen);
        for (uint32_t done = 0; done < made && e.running && e.handler;) {
            const uint32_t n = std::min(made - done, e.maxFrames);
            for (uint32_t c = 0; c < channels; ++c)
                for (uint32_t i = 0; i < n; ++i)
                    e.pointers[c][i] = e.resamplerOut[static_cast<size_t>(done + i) * channels + c];
            const auto deckTime =
                deckStart + static_cast<int64_t>(static_cast<double>(done) / e.ratio);
            e.handler->onInput(e.pointers.data(), channels, n, e.ownTime,
                               hostTimeAt(s.inputFramesToNanos(deckTime)));
            e.ownTime += n;
            done += n;
        }
        if (data.input_frames_used == 0 && made == 0)
            return;
    }
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

// ---- test control of the timeline (any thread, never from inside a callback) ----

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

} // namespace waxline::platform
