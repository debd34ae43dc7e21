#include "capture/monitor/AudioRingBuffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace waxline {

class AudioRingBufferTestAccess {
public:
    // Makes the current entry's counter disagree with the index, as when a writer laps the
    // reader while it reads.
    static void TearCurrentEntry(AudioRingBuffer& ring) {
        const uint32_t index = ring.mTimeBoundsQueueCurrentIndex.load();
        ring.mTimeBoundsQueue[index & AudioRingBuffer::kTimeBoundsQueueMask].mUpdateCounter.store(
            index + 7);
    }
};

namespace {

using SampleTime = AudioRingBuffer::SampleTime;
constexpr uint32_t kBytesPerFrame = sizeof(float);

// A stereo buffer list over owned vectors.
struct Stereo {
    std::vector<float> left, right;
    AudioBufferList abl;

    explicit Stereo(uint32_t frames, float fill = 0.0f)
        : left(frames, fill)
        , right(frames, fill) {
        abl.mNumberBuffers = 2;
        abl.mBuffers[0] = {1, frames * kBytesPerFrame, left.data()};
        abl.mBuffers[1] = {1, frames * kBytesPerFrame, right.data()};
    }
};

// What the tests store at sample time t: 1000 + t on the left, its negation on the right, so
// every frame is recognisable after a copy and none is mistaken for the silence of a gap.
float valueAt(SampleTime t) {
    return 1000.0f + static_cast<float>(t);
}

Stereo framesFrom(SampleTime start, uint32_t frames) {
    Stereo s(frames);
    for (uint32_t i = 0; i < frames; ++i) {
        s.left[i] = valueAt(start + static_cast<SampleTime>(i));
        s.right[i] = -s.left[i];
    }
    return s;
}

TEST(AudioRingBufferTest, AllocateRoundsCapacityUpToAPowerOfTwoAndDeallocateForgetsIt) {
    const uint32_t cases[][2] = {{1000, 1024}, {1024, 1024}, {1025, 2048},
                                 {1, 1},       {3, 4},       {20 * 512, 16384}};
    for (const auto& [requested, expected] : cases) {
        SCOPED_TRACE(requested);
        AudioRingBuffer ring;
        ring.Allocate(2, kBytesPerFrame, requested);
        EXPECT_EQ(ring.CapacityFrames(), expected);
        EXPECT_EQ(ring.CapacityBytes(), expected * kBytesPerFrame);
        SampleTime s = -1, e = -1;
        EXPECT_EQ(ring.GetTimeBounds(s, e), 0);
        EXPECT_EQ(s, 0);
        EXPECT_EQ(e, 0);
        EXPECT_EQ(ring.Deallocate(), 0);
        EXPECT_EQ(ring.NumberChannels(), 0);
        EXPECT_EQ(ring.CapacityFrames(), 0u);
        EXPECT_EQ(ring.CapacityBytes(), 0u);
        Stereo one(1);
        EXPECT_EQ(ring.Store(&one.abl, 1, 0), 3) << "nothing fits in a freed ring";
    }
}

// Stored range [100, 200): every placement of a read window against it.
TEST(AudioRingBufferTest, CheckTimeBoundsClassifiesEveryPlacement) {
    AudioRingBuffer ring;
    ring.Allocate(1, kBytesPerFrame, 256);
    ring.SetTimeBounds(100, 200);
    const struct {
        SampleTime start, end;
        int expected;
    } cases[] = {
        {100, 200, 0}, {120, 180, 0}, {150, 150, 0}, {150, 250, 1}, {200, 210, 1}, {201, 210, 2},
        {50, 250, 3},  {50, 150, -1}, {50, 100, -1}, {10, 50, -2},  {10, 99, -2},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ring.CheckTimeBounds(c.start, c.end), c.expected) << c.start << ".." << c.end;
}

TEST(AudioRingBufferTest, TornTimeBoundsReportStatusFour) {
    AudioRingBuffer ring;
    ring.Allocate(1, kBytesPerFrame, 64);
    ring.SetTimeBounds(0, 10);
    AudioRingBufferTestAccess::TearCurrentEntry(ring);
    SampleTime s = 0, e = 0;
    EXPECT_EQ(ring.GetTimeBounds(s, e), 4);
    EXPECT_EQ(ring.CheckTimeBounds(0, 5), 4);
    Stereo out(5);
    EXPECT_EQ(ring.Fetch(&out.abl, 5, 0), 4);
    // The next publication makes the queue readable again.
    ring.SetTimeBounds(0, 10);
    EXPECT_EQ(ring.GetTimeBounds(s, e), 0);
    EXPECT_EQ(e, 10);
}

// A ring takes a sequence of stores and is then read in windows. A fetch that succeeds holds
// exactly the frames of its span (silence where nothing was stored) in the ring's channels and
// sets their sizes; one that fails, or a channel the ring does not have, is left untouched.
TEST(AudioRingBufferTest, StoresAndFetchesAcrossTheWrapAndAtTheEdges) {
    struct Store {
        uint32_t frames;
        SampleTime at;
        int result;
    };
    struct Fetch {
        SampleTime start;
        uint32_t frames;
        int result;
    };
    struct Case {
        int channels;
        uint32_t capacity;
        std::vector<Store> stores;
        SampleTime boundsStart, boundsEnd;
        std::vector<Fetch> fetches;
    };
    const Case cases[] = {
        // Larger than the ring: refused, nothing changed.
        {2, 16, {{8, 0, 0}, {17, 8, 3}}, 0, 8, {{0, 8, 0}}},
        // The second store occupies offsets 10..15 and 0..3 (copied in two pieces) and pushes the
        // start up to 20 - 16; windows in one piece, across the wrap, the whole ring, overwritten.
        {2, 16, {{10, 0, 0}, {10, 10, 0}}, 4, 20, {{4, 6, 0}, {10, 6, 0}, {12, 8, 0}}},
        {2, 16, {{10, 0, 0}, {10, 10, 0}}, 4, 20, {{14, 4, 0}, {4, 16, 0}, {0, 10, -1}}},
        // Earlier than the end: everything before is discarded.
        {2, 64, {{10, 100, 0}, {5, 50, 0}}, 50, 55, {{40, 5, -2}, {48, 5, -1}, {100, 5, 2}}},
        {2, 64, {{10, 100, 0}, {5, 50, 0}}, 50, 55, {{50, 5, 0}}},
        // The gap 10..19 is zeroed at offsets 10..15 and 0..3, the latter still holding 0..3.
        {2, 16, {{10, 0, 0}, {4, 20, 0}}, 8, 24, {{8, 16, 0}}},
        // Beyond the newest frame.
        {2, 64, {{32, 0, 0}}, 0, 32, {{20, 16, 1}}},
        // More buffers than the ring's channels.
        {1, 16, {{4, 0, 0}}, 0, 4, {{0, 4, 0}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        AudioRingBuffer ring;
        ring.Allocate(c.channels, kBytesPerFrame, c.capacity);
        for (const Store& s : c.stores) {
            Stereo in = framesFrom(s.at, s.frames);
            ASSERT_EQ(ring.Store(&in.abl, s.frames, s.at), s.result) << s.at;
        }
        SampleTime s = 0, e = 0;
        ASSERT_EQ(ring.GetTimeBounds(s, e), 0);
        EXPECT_EQ(s, c.boundsStart);
        EXPECT_EQ(e, c.boundsEnd);
        for (const Fetch& f : c.fetches) {
            SCOPED_TRACE(f.start);
            Stereo out(f.frames, -7.0f);
            out.abl.mBuffers[0].mDataByteSize = out.abl.mBuffers[1].mDataByteSize = 123;
            ASSERT_EQ(ring.Fetch(&out.abl, f.frames, f.start), f.result);
            for (int ch = 0; ch < 2; ++ch) {
                const bool copied = f.result == 0 && ch < c.channels;
                EXPECT_EQ(out.abl.mBuffers[ch].mDataByteSize,
                          copied ? f.frames * kBytesPerFrame : 123u);
                const std::vector<float>& got = ch == 0 ? out.left : out.right;
                for (uint32_t i = 0; i < f.frames; ++i) {
                    const SampleTime t = f.start + static_cast<SampleTime>(i);
                    bool written = false;
                    for (const Store& st : c.stores)
                        written =
                            written || (st.result == 0 && t >= st.at && t < st.at + st.frames);
                    const float v = !copied ? -7.0f : !written ? 0.0f : valueAt(t);
                    EXPECT_EQ(got[i], ch == 0 || !copied ? v : -v) << "time " << t;
                }
            }
        }
    }
}

TEST(AudioRingBufferTest, ClearForgetsTheBoundsButKeepsTheSamples) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 16);
    Stereo a = framesFrom(0, 8);
    ASSERT_EQ(ring.Store(&a.abl, 8, 0), 0);
    ring.Clear();
    Stereo out(8);
    EXPECT_EQ(ring.Fetch(&out.abl, 8, 0), 1);
    ring.SetTimeBounds(0, 8);
    ASSERT_EQ(ring.Fetch(&out.abl, 8, 0), 0);
    EXPECT_EQ(out.left, a.left);
}

TEST(AudioRingBufferTest, FetchWithSkipLeavesTheSkippedFramesAlone) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 32);
    Stereo a = framesFrom(0, 16);
    ASSERT_EQ(ring.Store(&a.abl, 16, 0), 0);
    for (uint32_t skipFrames : {0u, 3u}) {
        Stereo out(8, -3.0f);
        uint32_t skip = skipFrames * kBytesPerFrame;
        ASSERT_EQ(ring.Fetch(&out.abl, 8, 4, skip), 0);
        for (uint32_t i = 0; i < 8; ++i)
            EXPECT_EQ(out.left[i], i < skipFrames ? -3.0f : valueAt(4 + i))
                << skipFrames << " " << i;
    }
}

// A writer and a reader on two threads, the reader always chasing the newest frames. Every
// fetch that reports success must hold exactly the frames of its time span, however often the
// writer laps the time-bounds queue.
TEST(AudioRingBufferTest, ConcurrentFetchesThatSucceedHoldTheRightFrames) {
    constexpr uint32_t kBlock = 64;
    constexpr SampleTime kEnd = 400000;
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 256);
    std::atomic<bool> done{false};

    std::thread writer([&] {
        for (SampleTime t = 0; t < kEnd; t += kBlock) {
            Stereo block = framesFrom(t, kBlock);
            ring.Store(&block.abl, kBlock, t);
        }
        done = true;
    });

    uint32_t good = 0, wrong = 0;
    Stereo out(48);
    for (bool last = false; !last;) {
        last = done.load();
        SampleTime s = 0, e = 0;
        if (ring.GetTimeBounds(s, e) == 0 && e - s >= 48 && ring.Fetch(&out.abl, 48, e - 48) == 0) {
            ++good;
            for (uint32_t i = 0; i < 48; ++i)
                wrong += out.left[i] != valueAt(e - 48 + i) || out.right[i] != -valueAt(e - 48 + i);
        }
    }
    writer.join();
    EXPECT_GT(good, 0u);
    EXPECT_EQ(wrong, 0u);
}

} // namespace
} // namespace waxline
