#include "capture/recorder/RecorderEngine.h"
#include "util/Decibels.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>

namespace waxline {

namespace {

// The header is rewritten at least this often, so a killed process loses at most this much;
// and after every half second of audio written, which matters when input runs faster than real
// time (a virtual deck, or the writer catching up after a stall).
constexpr auto kHeaderInterval = std::chrono::milliseconds(500);
constexpr double kHeaderAudioSeconds = 0.5;
constexpr auto kIdleWait = std::chrono::milliseconds(2);
// How often the writer looks whether the current file still has a name.
constexpr auto kLinkCheckInterval = std::chrono::milliseconds(250);

int16_t toPcm16(float x) {
    const float v = std::nearbyint(x * 32767.0f);
    return static_cast<int16_t>(std::clamp(v, -32768.0f, 32767.0f));
}

} // namespace

struct RecorderEngine::TrackFile {
    SNDFILE* sf = nullptr;
    int fd = -1; // owned by sf; kept to watch the file's link count
    float gain = 1;
    std::string path;
    std::chrono::steady_clock::time_point headerWritten;
    sf_count_t framesPerHeader = 0;
    sf_count_t framesSinceHeader = 0;
};

RecorderEngine::RecorderEngine(platform::AudioSystem& audioSystem, platform::AudioObjectID input,
                               size_t queueBlocks)
    : system(audioSystem)
    , inputId(input)
    , blocks(queueBlocks)
    , files(64)
    , pcm(std::make_unique<int16_t[]>(2 * kBlockFrames)) {}

RecorderEngine::~RecorderEngine() {
    stop();
    // Files queued but never started (the engine never ran) are closed here.
    TrackFile* f = nullptr;
    while (files.tryPop(f)) {
        sf_close(f->sf);
        delete f;
    }
}

bool RecorderEngine::beginFile(const std::string& path, double sampleRate, float gainDb,
                               TrackFileError& error) {
    if (!running.load(std::memory_order_acquire))
        streamRate = sampleRate;
    else if (sampleRate != streamRate) {
        error = {path, 0, "cannot change the sample rate within a recording"};
        return false;
    }
    SF_INFO info{};
    info.samplerate = static_cast<int>(static_cast<float>(sampleRate));
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    // Opened here rather than by libsndfile, so the writer can see the file being deleted.
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        const int err = errno;
        error = {path, err, std::strerror(err)};
        return false;
    }
    errno = 0;
    SNDFILE* sf = sf_open_fd(fd, SFM_WRITE, &info, SF_TRUE);
    if (!sf) {
        error = {path, errno, sf_strerror(nullptr)};
        ::close(fd);
        return false;
    }
    auto* file = new TrackFile;
    file->sf = sf;
    file->fd = fd;
    file->gain = gainFactor(gainDb);
    file->path = path;
    file->headerWritten = std::chrono::steady_clock::now();
    file->framesPerHeader =
        std::max<sf_count_t>(1, static_cast<sf_count_t>(info.samplerate * kHeaderAudioSeconds));
    if (!files.tryPush(file)) {
        sf_close(sf);
        delete file;
        error = {path, 0, "too many track switches waiting to be written"};
        return false;
    }
    // The file is queued before the generation is raised, so the writer finds it when the first
    // block stamped with the new generation arrives (release pairs with the audio thread's load).
    ++openedGeneration;
    requestedGeneration.store(openedGeneration, std::memory_order_release);
    return true;
}

bool RecorderEngine::start(std::string& error) {
    if (running.load(std::memory_order_acquire))
        return true;
    finishing.store(false, std::memory_order_relaxed);
    streamEnded.store(false, std::memory_order_relaxed);
    writer = std::thread([this] { writerLoop(); });
    platform::Status status = platform::kNoError;
    // The server converts the input to the files' rate, so what is written is what the header
    // says even when the input device runs at another rate.
    stream = system.openInput(inputId, platform::StreamFormat{streamRate, 2}, kBlockFrames, *this,
                              status);
    if (stream && status == platform::kNoError)
        status = stream->start();
    if (!stream || status != platform::kNoError) {
        error = "cannot open the input stream of device " + std::to_string(inputId) + " (status " +
                std::to_string(status) + ")";
        stream.reset();
        finishing.store(true, std::memory_order_release);
        writer.join();
        return false;
    }
    running.store(true, std::memory_order_release);
    return true;
}

void RecorderEngine::stop() {
    // Destroying the stream waits until no callback runs; after that this thread may act as the
    // producer and push what the audio thread had gathered.
    stream.reset();
    if (!writer.joinable())
        return;
    flushPending();
    finishing.store(true, std::memory_order_release);
    writer.join();
    running.store(false, std::memory_order_release);
}

RecorderEngine::Counters RecorderEngine::counters() const {
    Counters c;
    c.capturedFrames = capturedFrames.load(std::memory_order_relaxed);
    c.writtenFrames = writtenFrames.load(std::memory_order_relaxed);
    c.droppedBuffers = droppedBuffers.load(std::memory_order_relaxed);
    c.droppedFrames = droppedFrames.load(std::memory_order_relaxed);
    c.currentFileFrames = currentFileFrames.load(std::memory_order_relaxed);
    c.filesFinished = filesFinished.load(std::memory_order_relaxed);
    return c;
}

// Audio thread: copy, stamp and queue; nothing else.
void RecorderEngine::onInput(float* const* channels, uint32_t channelCount, uint32_t frames,
                             int64_t /*sampleTime*/, uint64_t /*hostTime*/) {
    if (channelCount == 0)
        return;
    if (const uint64_t limit = frameLimit.load(std::memory_order_relaxed)) {
        const uint64_t taken = capturedFrames.load(std::memory_order_relaxed);
        if (taken >= limit)
            return;
        frames = static_cast<uint32_t>(std::min<uint64_t>(frames, limit - taken));
    }
    const uint32_t generation = requestedGeneration.load(std::memory_order_acquire);
    if (generation != lastStampedGeneration) {
        // The switch falls exactly between two callbacks: what came before goes to the old file.
        flushPending();
        lastStampedGeneration = generation;
        currentFileFrames.store(0, std::memory_order_relaxed);
    }
    const float* left = channels[0];
    const float* right = channelCount > 1 ? channels[1] : channels[0];
    uint32_t done = 0;
    while (done < frames) {
        const uint32_t n = std::min(frames - done, kBlockFrames - pending.frames);
        float* out = pending.samples + 2 * pending.frames;
        for (uint32_t i = 0; i < n; ++i) {
            out[2 * i] = left[done + i];
            out[2 * i + 1] = right[done + i];
        }
        pending.frames += n;
        done += n;
        if (pending.frames == kBlockFrames)
            flushPending();
    }
    capturedFrames.fetch_add(frames, std::memory_order_relaxed);
    currentFileFrames.fetch_add(frames, std::memory_order_relaxed);
}

void RecorderEngine::flushPending() {
    if (pending.frames == 0)
        return;
    pending.generation = lastStampedGeneration;
    if (!blocks.tryPush(pending)) {
        droppedBuffers.fetch_add(1, std::memory_order_relaxed);
        droppedFrames.fetch_add(pending.frames, std::memory_order_relaxed);
    }
    pending.frames = 0;
}

void RecorderEngine::onOverflow(uint32_t lostFrames) {
    droppedBuffers.fetch_add(1, std::memory_order_relaxed);
    droppedFrames.fetch_add(lostFrames, std::memory_order_relaxed);
}

void RecorderEngine::onStreamEnded(platform::Status /*why*/) {
    if (!streamEnded.exchange(true) && onEnded)
        onEnded();
}

void RecorderEngine::writerLoop() {
    Block block;
    for (;;) {
        // Read the flag before draining: everything pushed before it was set is then seen.
        const bool last = finishing.load(std::memory_order_acquire);
        bool any = false;
        while ((last || !writerHeld.load(std::memory_order_acquire)) && blocks.tryPop(block)) {
            any = true;
            writeBlock(block);
        }
        if (last)
            break;
        const auto now = std::chrono::steady_clock::now();
        if (current && now - lastLinkCheck >= kLinkCheckInterval) {
            lastLinkCheck = now;
            struct stat status {};
            // Deleted (with its folder, say), the file takes everything written on into nothing.
            if (::fstat(current->fd, &status) == 0 && status.st_nlink == 0)
                fail({current->path, ENOENT, "the file was deleted while recording"});
        }
        if (current &&
            std::chrono::steady_clock::now() - current->headerWritten >= kHeaderInterval) {
            sf_command(current->sf, SFC_UPDATE_HEADER_NOW, nullptr, 0);
            current->headerWritten = std::chrono::steady_clock::now();
            current->framesSinceHeader = 0;
        }
        if (!any)
            std::this_thread::sleep_for(kIdleWait);
    }
    // Files opened after the last captured buffer (e.g. the one opened at the last gap) exist
    // too, empty but valid.
    switchFiles(openedGeneration);
    closeCurrent();
}

void RecorderEngine::writeBlock(const Block& block) {
    if (block.generation != currentGeneration)
        switchFiles(block.generation);
    if (!current || writeFailed.load(std::memory_order_relaxed))
        return;
    const uint32_t samples = 2 * block.frames;
    for (uint32_t i = 0; i < samples; ++i)
        pcm[i] = toPcm16(block.samples[i] * current->gain);
    errno = 0;
    const sf_count_t n = sf_writef_short(current->sf, pcm.get(), block.frames);
    if (n > 0) {
        writtenFrames.fetch_add(static_cast<uint64_t>(n), std::memory_order_relaxed);
        current->framesSinceHeader += n;
        if (current->framesSinceHeader >= current->framesPerHeader) {
            sf_command(current->sf, SFC_UPDATE_HEADER_NOW, nullptr, 0);
            current->headerWritten = std::chrono::steady_clock::now();
            current->framesSinceHeader = 0;
        }
    }
    if (n != static_cast<sf_count_t>(block.frames)) {
        const int err = errno;
        std::string text = sf_strerror(current->sf);
        if (err)
            text += std::string(" (") + std::strerror(err) + ")";
        fail({current->path, err, text});
    }
}

void RecorderEngine::switchFiles(uint32_t generation) {
    while (currentGeneration != generation) {
        TrackFile* next = nullptr;
        if (!files.tryPop(next))
            break; // cannot happen: files are queued before their generation is raised
        closeCurrent();
        current = next;
        ++currentGeneration;
    }
}

void RecorderEngine::closeCurrent() {
    if (!current)
        return;
    sf_close(current->sf); // rewrites the header with the final length
    delete current;
    current = nullptr;
    filesFinished.fetch_add(1, std::memory_order_relaxed);
}

void RecorderEngine::fail(const TrackFileError& error) {
    if (writeFailed.exchange(true, std::memory_order_acq_rel))
        return;
    // Make the header describe what did reach the disk.
    sf_command(current->sf, SFC_UPDATE_HEADER_NOW, nullptr, 0);
    if (onFailure)
        onFailure(error);
}

} // namespace waxline
