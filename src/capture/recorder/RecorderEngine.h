#pragma once

#include "platform/AudioSystem.h"
#include "util/SpscFifo.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace waxline {

// A track file that could not be made or written: which one, the system's error number (0 when
// there was none) and what the file library and the system said about it.
struct TrackFileError {
    std::string path;
    int errorNumber = 0;
    std::string text;
};

// The record path: its own input stream on the capture device, a lock-free queue, and a writer
// thread that writes 16-bit stereo WAV track files. The capture keeps running across track
// switches; each captured buffer goes whole to exactly one file, so consecutive files neither
// lose nor repeat a frame.
//
// Threads: every public method except the counters belongs to the main thread. onInput runs on
// the platform's audio thread and only copies into the queue. The writer thread owns the files
// while recording.
class RecorderEngine : private platform::InputHandler {
public:
    static constexpr uint32_t kBlockFrames = 4096;

    struct Counters {
        uint64_t capturedFrames = 0; // every frame the stream delivered
        uint64_t writtenFrames = 0;  // frames that reached a file
        uint64_t droppedBuffers = 0; // queue full, or the stream reported an overflow
        uint64_t droppedFrames = 0;  // frames in those buffers
        uint64_t currentFileFrames = 0;
        uint32_t filesFinished = 0;
    };

    // Called once from the writer thread when a write fails.
    using FailureHandler = std::function<void(const TrackFileError& error)>;
    // Called once from a platform thread when the capture device vanished or its stream failed.
    using EndHandler = std::function<void()>;

    RecorderEngine(platform::AudioSystem& system, platform::AudioObjectID input,
                   size_t queueBlocks = 256);
    ~RecorderEngine() override;
    RecorderEngine(const RecorderEngine&) = delete;
    RecorderEngine& operator=(const RecorderEngine&) = delete;

    void setFailureHandler(FailureHandler handler) { onFailure = std::move(handler); }
    void setEndHandler(EndHandler handler) { onEnded = std::move(handler); }

    // Opens the next track file (16-bit PCM WAV, 2 channels, at sampleRate) with the gain fixed
    // for the whole file, and makes it take over at the next captured buffer. Before start the
    // rate also sets the rate the input stream is asked for; while running it cannot change.
    // Returns false with the error when the file cannot be made; the current file then goes on.
    bool beginFile(const std::string& path, double sampleRate, float gainDb, TrackFileError& error);

    // Takes no more than `frames` frames in all (0: no limit); what arrives after is left out, so
    // a time limit holds however fast the stream delivers. Set before start.
    void setFrameLimit(uint64_t frames) { frameLimit.store(frames, std::memory_order_relaxed); }

    // Opens and starts the input stream and the writer. False with a reason on failure.
    bool start(std::string& error);
    // Stops the capture, writes out everything captured so far and closes the files.
    void stop();
    bool isRunning() const { return running.load(std::memory_order_acquire); }
    bool failed() const { return writeFailed.load(std::memory_order_acquire); }
    Counters counters() const;
    // Holds the writer as a stalled disk would: blocks pile up in the queue and, once it is
    // full, are dropped and counted. For tests and benchmarks of the drop accounting.
    void holdWriter(bool hold) { writerHeld.store(hold, std::memory_order_release); }

    // For tests: the handler the stream calls, so a test can feed buffers itself.
    platform::InputHandler& inputHandler() { return *this; }

private:
    struct Block {
        uint32_t frames;
        uint32_t generation;
        float samples[2 * kBlockFrames]; // interleaved left, right
    };
    struct TrackFile;

    // Audio thread.
    void onInput(float* const* channels, uint32_t channelCount, uint32_t frames, int64_t sampleTime,
                 uint64_t hostTime) override;
    void onOverflow(uint32_t lostFrames) override;
    void onStreamEnded(platform::Status why) override;
    void flushPending();

    // Writer thread.
    void writerLoop();
    void writeBlock(const Block& block);
    void switchFiles(uint32_t generation);
    void closeCurrent();
    void fail(const TrackFileError& error);

    platform::AudioSystem& system;
    platform::AudioObjectID inputId;
    std::unique_ptr<platform::Stream> stream;
    double streamRate = 0; // the files' rate; the input stream delivers at it
    SpscFifo<Block> blocks;
    SpscFifo<TrackFile*> files; // main thread -> writer, in generation order
    std::thread writer;

    std::atomic<bool> running{false};
    std::atomic<bool> finishing{false};
    std::atomic<bool> writeFailed{false};
    std::atomic<bool> streamEnded{false};
    std::atomic<bool> writerHeld{false};
    std::atomic<uint32_t> requestedGeneration{0}; // raised by beginFile
    uint32_t openedGeneration = 0;                // main thread's count of files queued

    // Audio-thread state and the counters it publishes. Captured frames gather in `pending`
    // until it holds a whole block or the file changes.
    Block pending{};
    uint32_t lastStampedGeneration = 0;
    std::atomic<uint64_t> capturedFrames{0};
    std::atomic<uint64_t> frameLimit{0};
    std::atomic<uint64_t> droppedBuffers{0};
    std::atomic<uint64_t> droppedFrames{0};
    std::atomic<uint64_t> currentFileFrames{0};

    // Writer-thread state.
    TrackFile* current = nullptr;
    std::chrono::steady_clock::time_point lastLinkCheck;
    uint32_t currentGeneration = 0;
    std::unique_ptr<int16_t[]> pcm;
    std::atomic<uint64_t> writtenFrames{0};
    std::atomic<uint32_t> filesFinished{0};

    FailureHandler onFailure;
    EndHandler onEnded;
};

} // namespace waxline
