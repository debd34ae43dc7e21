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
    // Left holds base + i, right holds -(base + i): each frame is recognisable after a copy.
    static Stereo Ramp(uint32_t frames, float base) {
        Stereo s(frames);
        for (uint32_t i = 0; i < frames; ++i) {
            s.left[i] = base + static_cast<float>(i);
            s.right[i] = -(base + static_cast<float>(i));
        }
        return s;
    }
};

TEST(AudioRingBufferTest, AllocateRoundsCapacityUpToAPowerOfTwo) {
    struct Case {
        uint32_t requested, expected;
    };
    for (const Case& c : {Case{1000, 1024}, Case{1024, 1024}, Case{1025, 2048}, Case{1, 1},
                          Case{3, 4}, Case{20 * 512, 16384}}) {
        AudioRingBuffer ring;
        ring.Allocate(2, kBytesPerFrame, c.requested);
        EXPECT_EQ(ring.CapacityFrames(), c.expected) << c.requested;
        EXPECT_EQ(ring.CapacityBytes(), c.expected * kBytesPerFrame);
        SampleTime s = -1, e = -1;
        EXPECT_EQ(ring.GetTimeBounds(s, e), 0);
        EXPECT_EQ(s, 0);
        EXPECT_EQ(e, 0);
    }
}

TEST(AudioRingBufferTest, DeallocateForgetsTheGeometry) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 64);
    EXPECT_EQ(ring.Deallocate(), 0);
    EXPECT_EQ(ring.NumberChannels(), 0);
    EXPECT_EQ(ring.CapacityFrames(), 0u);
    EXPECT_EQ(ring.CapacityBytes(), 0u);
    Stereo one(1);
    EXPECT_EQ(ring.Store(&one.abl, 1, 0), 3) << "nothing fits in a freed ring";
}

// Stored range [100, 200): every placement of a read window against it.
TEST(AudioRingBufferTest, CheckTimeBoundsClassifiesEveryPlacement) {
    AudioRingBuffer ring;
    ring.Allocate(1, kBytesPerFrame, 256);
    ring.SetTimeBounds(100, 200);
    struct Case {
        SampleTime start, end;
        int expected;
        const char* what;
    };
    const Case cases[] = {
        {100, 200, 0, "exactly the stored range"},
        {120, 180, 0, "inside"},
        {150, 150, 0, "empty window inside"},
        {150, 250, 1, "runs past the end"},
        {200, 210, 1, "starts at the end"},
        {201, 210, 2, "wholly after the end"},
        {50, 250, 3, "starts before and ends after"},
        {50, 150, -1, "starts before"},
        {50, 100, -1, "ends where the data begins"},
        {10, 50, -2, "wholly before"},
        {10, 99, -2, "ends just before"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ring.CheckTimeBounds(c.start, c.end), c.expected) << c.what;
    }
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

TEST(AudioRingBufferTest, StoreLargerThanCapacityReturnsThreeAndChangesNothing) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 16);
    Stereo first = Stereo::Ramp(8, 1.0f);
    ASSERT_EQ(ring.Store(&first.abl, 8, 0), 0);
    Stereo big = Stereo::Ramp(17, 100.0f);
    EXPECT_EQ(ring.Store(&big.abl, 17, 8), 3);
    SampleTime s = 0, e = 0;
    ring.GetTimeBounds(s, e);
    EXPECT_EQ(s, 0);
    EXPECT_EQ(e, 8);
    Stereo out(8);
    ASSERT_EQ(ring.Fetch(&out.abl, 8, 0), 0);
    EXPECT_EQ(out.left, first.left);
    EXPECT_EQ(out.right, first.right);
}

// Capacity 16: a second 10-frame store at time 10 occupies offsets 10..15 and 0..3, so it is
// copied in two pieces and pushes the start up to 20 - 16 = 4.
TEST(AudioRingBufferTest, WrapAroundStoreAndFetchCopyInTwoPieces) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 16);
    Stereo a = Stereo::Ramp(10, 0.0f);  // times 0..9 hold 0..9
    Stereo b = Stereo::Ramp(10, 10.0f); // times 10..19 hold 10..19
    ASSERT_EQ(ring.Store(&a.abl, 10, 0), 0);
    ASSERT_EQ(ring.Store(&b.abl, 10, 10), 0);
    SampleTime s = 0, e = 0;
    ASSERT_EQ(ring.GetTimeBounds(s, e), 0);
    EXPECT_EQ(s, 4);
    EXPECT_EQ(e, 20);

    struct Case {
        SampleTime start;
        uint32_t frames;
    };
    // Windows in one piece, across the wrap, and the whole ring.
    for (const Case& c : {Case{4, 6}, Case{10, 6}, Case{12, 8}, Case{14, 4}, Case{4, 16}}) {
        Stereo out(c.frames, -999.0f);
        ASSERT_EQ(ring.Fetch(&out.abl, c.frames, c.start), 0) << c.start;
        for (uint32_t i = 0; i < c.frames; ++i) {
            const float expected = static_cast<float>(c.start + i);
            EXPECT_EQ(out.left[i], expected) << "time " << c.start + i;
            EXPECT_EQ(out.right[i], -expected) << "time " << c.start + i;
        }
        EXPECT_EQ(out.abl.mBuffers[0].mDataByteSize, c.frames * kBytesPerFrame);
        EXPECT_EQ(out.abl.mBuffers[1].mDataByteSize, c.frames * kBytesPerFrame);
    }
    Stereo out(10);
    EXPECT_EQ(ring.Fetch(&out.abl, 10, 0), -1) << "times 0..3 were overwritten";
}

TEST(AudioRingBufferTest, StoreEarlierThanTheEndDiscardsEverything) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 64);
    Stereo a = Stereo::Ramp(10, 0.0f);
    ASSERT_EQ(ring.Store(&a.abl, 10, 100), 0);
    Stereo b = Stereo::Ramp(5, 50.0f);
    ASSERT_EQ(ring.Store(&b.abl, 5, 50), 0);
    SampleTime s = 0, e = 0;
    ring.GetTimeBounds(s, e);
    EXPECT_EQ(s, 50);
    EXPECT_EQ(e, 55);
    Stereo out(5, -7.0f);
    EXPECT_EQ(ring.Fetch(&out.abl, 5, 40), -2);
    EXPECT_EQ(ring.Fetch(&out.abl, 5, 48), -1);
    EXPECT_EQ(ring.Fetch(&out.abl, 5, 100), 2);
    EXPECT_EQ(out.left, std::vector<float>(5, -7.0f)) << "failed fetches copy nothing";
    ASSERT_EQ(ring.Fetch(&out.abl, 5, 50), 0);
    EXPECT_EQ(out.left, b.left);
}

// Capacity 16; ones at times 0..9 (offsets 0..9), then a store at 20..23 leaves a gap 10..19
// whose zeroing wraps: offsets 10..15 and 0..3, the latter still holding the old ones.
TEST(AudioRingBufferTest, GapAfterTheEndReadsAsSilenceEvenAcrossTheWrap) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 16);
    Stereo ones(10, 1.0f);
    ASSERT_EQ(ring.Store(&ones.abl, 10, 0), 0);
    Stereo twos(4, 2.0f);
    ASSERT_EQ(ring.Store(&twos.abl, 4, 20), 0);
    SampleTime s = 0, e = 0;
    ring.GetTimeBounds(s, e);
    EXPECT_EQ(s, 8);
    EXPECT_EQ(e, 24);
    Stereo out(16, -1.0f);
    ASSERT_EQ(ring.Fetch(&out.abl, 16, 8), 0);
    std::vector<float> expected = {1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 2, 2, 2};
    EXPECT_EQ(out.left, expected);
    EXPECT_EQ(out.right, expected);
}

TEST(AudioRingBufferTest, FetchBeyondTheNewestDataReturnsOneAndCopiesNothing) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 64);
    Stereo a = Stereo::Ramp(32, 0.0f);
    ASSERT_EQ(ring.Store(&a.abl, 32, 0), 0);
    Stereo out(16, 5.0f);
    out.abl.mBuffers[0].mDataByteSize = 123;
    EXPECT_EQ(ring.Fetch(&out.abl, 16, 20), 1);
    EXPECT_EQ(out.left, std::vector<float>(16, 5.0f));
    EXPECT_EQ(out.abl.mBuffers[0].mDataByteSize, 123u);
}

TEST(AudioRingBufferTest, ClearForgetsTheBoundsButKeepsTheSamples) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 16);
    Stereo a = Stereo::Ramp(8, 1.0f);
    ASSERT_EQ(ring.Store(&a.abl, 8, 0), 0);
    ring.Clear();
    Stereo out(8);
    EXPECT_EQ(ring.Fetch(&out.abl, 8, 0), 1);
    ring.SetTimeBounds(0, 8);
    ASSERT_EQ(ring.Fetch(&out.abl, 8, 0), 0);
    EXPECT_EQ(out.left, a.left);
}

TEST(AudioRingBufferTest, MoreBuffersThanChannelsCopiesOnlyTheRingsChannels) {
    AudioRingBuffer ring;
    ring.Allocate(1, kBytesPerFrame, 16);
    Stereo a = Stereo::Ramp(4, 1.0f);
    ASSERT_EQ(ring.Store(&a.abl, 4, 0), 0);
    Stereo out(4, 9.0f);
    ASSERT_EQ(ring.Fetch(&out.abl, 4, 0), 0);
    EXPECT_EQ(out.left, a.left);
    EXPECT_EQ(out.right, std::vector<float>(4, 9.0f));
}

TEST(AudioRingBufferTest, FetchWithSkipLeavesTheSkippedFramesAlone) {
    AudioRingBuffer ring;
    ring.Allocate(2, kBytesPerFrame, 32);
    Stereo a = Stereo::Ramp(16, 0.0f);
    ASSERT_EQ(ring.Store(&a.abl, 16, 0), 0);
    Stereo out(8, -3.0f);
    uint32_t skip = 0;
    ASSERT_EQ(ring.Fetch(&out.abl, 8, 4, skip), 0);
    EXPECT_EQ(out.left, (std::vector<float>{4, 5, 6, 7, 8, 9, 10, 11}));
    Stereo out2(8, -3.0f);
    skip = 3 * kBytesPerFrame;
    ASSERT_EQ(ring.Fetch(&out2.abl, 8, 4, skip), 0);
    EXPECT_EQ(out2.left, (std::vector<float>{-3, -3, -3, 7, 8, 9, 10, 11}));
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
        Stereo block(kBlock);
        for (SampleTime t = 0; t < kEnd; t += kBlock) {
            for (uint32_t i = 0; i < kBlock; ++i) {
                const float v = static_cast<float>((t + i) % 1000003);
                block.left[i] = v;
                block.right[i] = -v;
            }
            ring.Store(&block.abl, kBlock, t);
        }
        done = true;
    });

    uint32_t good = 0, wrong = 0;
    Stereo out(48);
    for (;;) {
        const bool last = done.load();
        SampleTime s = 0, e = 0;
        if (ring.GetTimeBounds(s, e) == 0 && e - s >= 48) {
            const SampleTime from = e - 48;
            if (ring.Fetch(&out.abl, 48, from) == 0) {
                ++good;
                for (uint32_t i = 0; i < 48; ++i) {
                    const float v = static_cast<float>((from + i) % 1000003);
                    if (out.left[i] != v || out.right[i] != -v) {
                        ++wrong;
                    }
                }
            }
        }
        if (last) {
            break;
        }
    }
    writer.join();
    EXPECT_GT(good, 0u);
    EXPECT_EQ(wrong, 0u);
}

} // namespace
} // namespace waxline
