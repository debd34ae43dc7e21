#include "capture/recorder/RecorderEngine.h"
#include "support/FakeAudioSystem.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <random>

namespace waxline {
namespace {

using test::readStereoWav;
using test::WavContents;

// A deterministic stereo signal with different content on each channel.
struct Signal {
    std::vector<float> left, right;
    explicit Signal(size_t frames, float amplitude = 0.9f) {
        std::mt19937 rng(42);
        std::uniform_real_distribution<float> u(-amplitude, amplitude);
        for (size_t i = 0; i < frames; ++i) {
            left.push_back(u(rng));
            right.push_back(u(rng));
        }
    }
    void feed(platform::InputHandler& h, size_t from, uint32_t frames) {
        float* ch[2] = {left.data() + from, right.data() + from};
        h.onInput(ch, 2, frames, static_cast<int64_t>(from), 0);
    }
};

// The 16-bit value a float sample should become after a gain of `db`, with clipping at full
// scale, as a float in full-scale units.
float expectedAfterGain(float x, double db) {
    const double v = x * std::pow(10.0, db / 20.0);
    return static_cast<float>(std::fmax(-1.0, std::fmin(1.0, v)));
}

struct SplitCase {
    const char* name;
    std::vector<uint32_t> chunks;    // frames per callback, repeated
    std::vector<size_t> switchAfter; // callback numbers after which the next file begins
    std::vector<double> gains;       // one per file
    size_t callbacks;
};

TEST(RecorderEngine, EveryCapturedFrameLandsInExactlyOneFile) {
    const SplitCase cases[] = {
        {"odd sizes", {1, 7, 1234, 4096, 5000}, {3, 4, 11}, {0, -6, 3, -20}, 40},
        {"whole blocks", {4096}, {1, 2, 9}, {0, 0, 0, 0}, 12},
        {"small fragments", {441}, {100, 250}, {0, 6, -3}, 300},
        {"switch before any audio", {512}, {0}, {-1, 1}, 20},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        test::FakeAudioSystem system;
        system.add(platform::Direction::Input, 1, "in");
        size_t total = 0;
        for (size_t i = 0; i < c.callbacks; ++i)
            total += c.chunks[i % c.chunks.size()];
        Signal signal(total);

        RecorderEngine engine(system, 1);
        std::string error;
        TrackFileError fileError;
        std::vector<std::string> paths;
        auto begin = [&] {
            paths.push_back(dir.file("t." + std::to_string(paths.size() + 1) + ".wav"));
            ASSERT_TRUE(engine.beginFile(paths.back(), 44100,
                                         static_cast<float>(c.gains[paths.size() - 1]), fileError))
                << fileError.text;
        };
        begin();
        ASSERT_TRUE(engine.start(error)) << error;
        ASSERT_NE(system.lastInputHandler, nullptr);

        std::vector<size_t> boundaries = {0}; // first frame of each file
        size_t pos = 0, nextSwitch = 0;
        for (size_t i = 0; i < c.callbacks; ++i) {
            if (nextSwitch < c.switchAfter.size() && c.switchAfter[nextSwitch] == i) {
                begin();
                boundaries.push_back(pos);
                ++nextSwitch;
            }
            const uint32_t n = c.chunks[i % c.chunks.size()];
            signal.feed(*system.lastInputHandler, pos, n);
            pos += n;
        }
        engine.stop();
        boundaries.push_back(total);

        const auto counters = engine.counters();
        EXPECT_EQ(counters.capturedFrames, total);
        EXPECT_EQ(counters.writtenFrames, total);
        EXPECT_EQ(counters.droppedBuffers, 0u);
        ASSERT_EQ(paths.size(), boundaries.size() - 1);
        for (size_t f = 0; f < paths.size(); ++f) {
            SCOPED_TRACE(paths[f]);
            const WavContents w = readStereoWav(paths[f]);
            EXPECT_EQ(w.rate, 44100);
            EXPECT_EQ(w.channels, 2);
            ASSERT_EQ(w.frames(), boundaries[f + 1] - boundaries[f]);
            size_t worst = 0;
            for (size_t i = 0; i < w.frames(); ++i) {
                const size_t src = boundaries[f] + i;
                const float l = expectedAfterGain(signal.left[src], c.gains[f]);
                const float r = expectedAfterGain(signal.right[src], c.gains[f]);
                if (std::fabs(w.samples[2 * i] - l) > 1.5f / 32768 ||
                    std::fabs(w.samples[2 * i + 1] - r) > 1.5f / 32768)
                    ++worst;
            }
            EXPECT_EQ(worst, 0u) << "frames differing by more than one step";
        }
    }
}

TEST(RecorderEngine, CountsEveryDroppedBuffer) {
    test::TempDir dir;
    test::FakeAudioSystem system;
    // Two blocks of queue and no writer yet: the third and later full blocks cannot be queued.
    RecorderEngine engine(system, 1, 2);
    Signal signal(5 * RecorderEngine::kBlockFrames);
    for (size_t b = 0; b < 5; ++b)
        signal.feed(engine.inputHandler(), b * RecorderEngine::kBlockFrames,
                    RecorderEngine::kBlockFrames);
    auto c = engine.counters();
    EXPECT_EQ(c.droppedBuffers, 3u);
    EXPECT_EQ(c.droppedFrames, 3u * RecorderEngine::kBlockFrames);
    engine.inputHandler().onOverflow(100);
    c = engine.counters();
    EXPECT_EQ(c.droppedBuffers, 4u);
    EXPECT_EQ(c.droppedFrames, 3u * RecorderEngine::kBlockFrames + 100);
}

// A 44.1 kHz deck with a 48 kHz output: the file says 48 kHz, so the server must deliver 48 kHz,
// in stereo; a mono delivery still fills both channels of the file.
TEST(RecorderEngine, AsksTheInputForTheFilesRateAndFillsBothChannelsFromMono) {
    test::TempDir dir;
    test::FakeAudioSystem system;
    system.add(platform::Direction::Input, 0, "USB Audio CODEC", 2, 44100);
    RecorderEngine engine(system, 0);
    std::string error;
    TrackFileError fileError;
    ASSERT_TRUE(engine.beginFile(dir.file("t.1.wav"), 48000, 0, fileError)) << fileError.text;
    ASSERT_TRUE(engine.start(error)) << error;
    ASSERT_EQ(system.inputIds, std::vector<platform::AudioObjectID>{0});
    EXPECT_EQ(system.lastInputFormat.sampleRate, 48000);
    EXPECT_EQ(system.lastInputFormat.channels, 2u);
    std::vector<float> mono = test::sine(1000, 0.5, 48000, 4800);
    float* ch[1] = {mono.data()};
    system.lastInputHandler->onInput(ch, 1, 4800, 0, 0);
    EXPECT_FALSE(engine.beginFile(dir.file("t.2.wav"), 44100, 0, fileError));
    EXPECT_TRUE(engine.beginFile(dir.file("t.2.wav"), 48000, 0, fileError)) << fileError.text;
    engine.stop();
    const WavContents w = readStereoWav(dir.file("t.1.wav"));
    EXPECT_EQ(w.rate, 48000);
    ASSERT_EQ(w.frames(), 4800u);
    for (size_t i = 0; i < 4800; i += 97)
        EXPECT_EQ(w.samples[2 * i], w.samples[2 * i + 1]);
}

// A vanished device is reported once however often the stream says so; a file that cannot be
// made is refused with its path and errno; a stream that cannot be opened is an error.
TEST(RecorderEngine, FailuresAreReportedOnceWithTheirCause) {
    test::FakeAudioSystem system;
    RecorderEngine engine(system, 1);
    int ended = 0;
    engine.setEndHandler([&] { ++ended; });
    std::string error;
    ASSERT_TRUE(engine.start(error));
    system.lastInputHandler->onStreamEnded(platform::kErrorNotConnected);
    system.lastInputHandler->onStreamEnded(platform::kErrorNotConnected);
    EXPECT_EQ(ended, 1);
    engine.stop();

    TrackFileError fileError;
    EXPECT_FALSE(engine.beginFile("/nonexistent-folder/t.1.wav", 44100, 0, fileError));
    EXPECT_EQ(fileError.path, "/nonexistent-folder/t.1.wav");
    EXPECT_EQ(fileError.errorNumber, ENOENT) << fileError.text;
    EXPECT_FALSE(fileError.text.empty());

    system.failOpen = true;
    RecorderEngine unopened(system, 1);
    std::string openError;
    EXPECT_FALSE(unopened.start(openError));
    EXPECT_FALSE(unopened.isRunning());
    EXPECT_FALSE(openError.empty());
}

// A file-size limit makes the write fail part-way: the engine must say so once and leave a
// valid file holding what fitted. Runs in a child so the limit binds nothing else.
TEST(RecorderEngine, WriteFailureStopsWritingAndKeepsWhatFitted) {
    test::TempDir dir;
    const std::string path = dir.file("limited.wav");
    constexpr rlim_t kLimit = 200000;
    constexpr size_t kFrames = 441000; // 1.7 MB of 16-bit stereo: far beyond the limit
    Signal signal(kFrames, 0.5f);

    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{kLimit, kLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
        test::FakeAudioSystem system;
        RecorderEngine engine(system, 1);
        std::atomic<int> failures{0};
        std::string message;
        int errorNumber = 0;
        engine.setFailureHandler([&](const TrackFileError& e) {
            message = e.path;
            errorNumber = e.errorNumber;
            failures.fetch_add(1);
        });
        std::string error;
        TrackFileError fileError;
        if (!engine.beginFile(path, 44100, 0, fileError) || !engine.start(error))
            _exit(10);
        for (size_t pos = 0; pos < kFrames; pos += 1000)
            signal.feed(*system.lastInputHandler, pos,
                        static_cast<uint32_t>(std::min<size_t>(1000, kFrames - pos)));
        engine.stop();
        // The limit makes the write fail with EFBIG, which the error carries.
        const bool named = message.find(path) != std::string::npos && errorNumber == EFBIG;
        _exit(failures.load() == 1 && engine.failed() && named ? 0 : 11);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);

    const WavContents w = readStereoWav(path);
    ASSERT_EQ(w.channels, 2);
    const size_t maxFrames = (kLimit - 44) / 4;
    EXPECT_LE(w.frames(), maxFrames);
    EXPECT_GE(w.frames(), maxFrames - 2 * RecorderEngine::kBlockFrames);
    for (size_t i = 0; i < w.frames(); i += 101)
        ASSERT_NEAR(w.samples[2 * i], signal.left[i], 1.5 / 32768) << "frame " << i;
}

} // namespace
} // namespace waxline
