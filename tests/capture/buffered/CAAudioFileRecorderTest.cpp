#include "capture/buffered/CAAudioFileRecorder.h"
#include "capture/buffered/CAXException.h"
#include "support/FakeAudioSystem.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <vector>

namespace waxline {
namespace {

using test::DeckAndSpeakers;
using test::kDeck;
using test::readStereoWav;
using test::TempDir;
using test::WavContents;

float Left(int64_t n) {
    return static_cast<float>(std::sin(n * 0.01)) * 0.8f;
}
float Right(int64_t n) {
    return static_cast<float>((n % 200) - 100) / 100.0f;
}

// Feeds frames [from, from + frames) of the test signal through the device's handler.
void Feed(DeckAndSpeakers& system, int64_t from, uint32_t frames) {
    std::vector<float> l(frames), r(frames);
    for (uint32_t i = 0; i < frames; ++i) {
        l[i] = Left(from + i);
        r[i] = Right(from + i);
    }
    float* ch[2] = {l.data(), r.data()};
    system.lastInputHandler->onInput(ch, 2, frames, from, 0);
}

// A delivery may span several buffers, so wait until the worker has handed all of them back.
void WaitForFreeBuffer(const CAAudioFileRecorder& recorder) {
    while (recorder.AnyBufferQueued()) {
        std::this_thread::yield();
    }
}

// Odd delivery sizes, several buffer hand-overs and a partial last buffer: the file holds
// exactly the input, interleaved, at the device's rate.
TEST(CAAudioFileRecorderTest, FileHoldsExactlyTheInput) {
    for (uint32_t block : {1u, 7u, 1234u, 4096u}) {
        DeckAndSpeakers system;
        TempDir dir;
        const auto path = dir.file("take.wav");
        CAAudioFileRecorder recorder(system, kDeck, path, 0.0f, 3, 2048);
        recorder.Start();
        const int64_t total = 20000;
        for (int64_t t = 0; t < total; t += block) {
            WaitForFreeBuffer(recorder);
            Feed(system, t, static_cast<uint32_t>(std::min<int64_t>(block, total - t)));
        }
        recorder.Stop();
        EXPECT_EQ(recorder.ErrorCount(), 0u);
        EXPECT_EQ(recorder.FramesWritten(), static_cast<uint64_t>(total));

        const WavContents w = readStereoWav(path);
        ASSERT_EQ(w.channels, 2);
        EXPECT_EQ(w.rate, 44100);
        ASSERT_EQ(w.samples.size(), static_cast<std::size_t>(total * 2)) << "block " << block;
        int64_t wrong = 0;
        for (int64_t n = 0; n < total; ++n) {
            wrong += w.samples[2 * n] != Left(n) || w.samples[2 * n + 1] != Right(n);
        }
        EXPECT_EQ(wrong, 0) << "block " << block;
    }
}

// With the worker held up every buffer ends up queued; the next push is dropped and counted
// instead of blocking, and what was queued before still reaches the file.
TEST(CAAudioFileRecorderTest, PushIntoAllQueuedBuffersIsDroppedAndCounted) {
    DeckAndSpeakers system;
    TempDir dir;
    const auto path = dir.file("drop.wav");
    CAAudioFileRecorder recorder(system, kDeck, path, 0.0f, 3, 1000);
    recorder.Start();
    CAGuard& guard = CABufferQueue::SharedWorkThread()->Guard();
    // Wait for any earlier work to finish so the worker is idle, then hold it off.
    WaitForFreeBuffer(recorder);
    const bool locked = guard.Lock();
    Feed(system, 0, 3000); // fills and queues all three buffers
    EXPECT_TRUE(recorder.CurrentBufferQueued());
    Feed(system, 3000, 500);
    EXPECT_EQ(recorder.ErrorCount(), 1u);
    if (locked) {
        guard.Unlock();
    }
    recorder.Stop();
    const WavContents w = readStereoWav(path);
    EXPECT_EQ(w.samples.size(), 3000u * 2);
    EXPECT_EQ(w.samples[2 * 2999], Left(2999));
    // Start resets the count.
    recorder.Start();
    EXPECT_EQ(recorder.ErrorCount(), 0u);
    recorder.Stop();
}

// 10^(dB/20) with only positive samples clamped to 1.0; 0 dB passes values above 1.0.
TEST(CAAudioFileRecorderTest, GainClampsOnlyThePositiveSide) {
    struct Case {
        float dB, in, written;
    };
    const Case cases[] = {{0.0f, 1.5f, 1.5f}, {0.0f, -1.5f, -1.5f},      {6.0f, 0.3f, 0.598579f},
                          {6.0f, 0.7f, 1.0f}, {6.0f, -0.7f, -1.396684f}, {-20.0f, 0.8f, 0.08f}};
    for (const Case& c : cases) {
        DeckAndSpeakers system;
        TempDir dir;
        const auto path = dir.file("gain.wav");
        CAAudioFileRecorder recorder(system, kDeck, path, c.dB, 3, 256);
        recorder.Start();
        std::vector<float> in(100, c.in);
        float* ch[2] = {in.data(), in.data()};
        system.lastInputHandler->onInput(ch, 2, 100, 0, 0);
        recorder.Stop();
        const WavContents w = readStereoWav(path);
        ASSERT_EQ(w.samples.size(), 200u);
        EXPECT_NEAR(w.samples[0], c.written, 1e-5) << c.dB << " dB on " << c.in;
        EXPECT_NEAR(w.samples[199], c.written, 1e-5);
    }
}

// Two recorders at once: the one worker thread serves both queues, and each file is whole.
TEST(CAAudioFileRecorderTest, OneWorkerServesSeveralQueues) {
    DeckAndSpeakers a, b;
    TempDir dir;
    CAAudioFileRecorder ra(a, kDeck, dir.file("a.wav"), 0.0f, 3, 512);
    auto* worker = CABufferQueue::SharedWorkThread();
    CAAudioFileRecorder rb(b, kDeck, dir.file("b.wav"), -6.0f, 3, 700);
    EXPECT_EQ(CABufferQueue::SharedWorkThread(), worker);
    ra.Start();
    rb.Start();
    for (int64_t t = 0; t < 30000; t += 300) {
        WaitForFreeBuffer(ra);
        WaitForFreeBuffer(rb);
        Feed(a, t, 300);
        Feed(b, t, 300);
    }
    ra.Stop();
    rb.Stop();
    const WavContents wa = readStereoWav(dir.file("a.wav"));
    const WavContents wb = readStereoWav(dir.file("b.wav"));
    ASSERT_EQ(wa.samples.size(), 60000u);
    ASSERT_EQ(wb.samples.size(), 60000u);
    const float half = std::pow(10.0f, -6.0f / 20.0f);
    int64_t wrong = 0;
    for (int64_t n = 0; n < 30000; ++n) {
        wrong += wa.samples[2 * n] != Left(n);
        wrong += std::abs(wb.samples[2 * n + 1] - std::min(1.0f, half * Right(n))) > 1e-6f;
    }
    EXPECT_EQ(wrong, 0);
}

TEST(CAAudioFileRecorderTest, FailuresNameTheOperation) {
    struct Case {
        platform::AudioObjectID device;
        bool failOpen;
        std::string path;
        const char* operation;
    };
    TempDir dir;
    const std::string good = dir.file("x.wav");
    const Case cases[] = {
        {4242, false, good, "failed to select input device"},
        {kDeck, true, good, "connect input proc to output unit"},
        {kDeck, false, dir.file("missing/x.wav"), "couldn't find output directory"},
    };
    for (const Case& c : cases) {
        DeckAndSpeakers system;
        system.failOpen = c.failOpen;
        try {
            CAAudioFileRecorder recorder(system, c.device, c.path);
            ADD_FAILURE() << "no exception for " << c.operation;
        } catch (const CAXException& e) {
            EXPECT_STREQ(e.Operation(), c.operation);
        }
    }
    EXPECT_EQ(CAXException::FormatStatus(0x77686174), "'what'");
    EXPECT_EQ(CAXException::FormatStatus(-50), "-50");
}

} // namespace
} // namespace waxline
