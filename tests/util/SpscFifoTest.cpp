#include "util/SpscFifo.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <thread>
#include <vector>

namespace waxline {
namespace {

TEST(SpscFifoTest, CapacityRoundsUpToPowerOfTwo) {
    struct Case {
        std::size_t requested;
        std::size_t expected;
    };
    const Case cases[] = {{0, 2}, {1, 2}, {2, 2}, {3, 4}, {1000, 1024}, {1024, 1024}, {1025, 2048}};
    for (const Case& c : cases) {
        SpscFifo<int> fifo(c.requested);
        EXPECT_EQ(fifo.capacity(), c.expected) << "requested " << c.requested;
    }
}

TEST(SpscFifoTest, FullAndEmptyAreReportedWithoutLosingOrder) {
    SpscFifo<int> fifo(4);
    int out = -1;
    EXPECT_FALSE(fifo.tryPop(out));
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(fifo.tryPush(i));
    }
    EXPECT_FALSE(fifo.tryPush(99)) << "a full FIFO must refuse, not overwrite";
    EXPECT_EQ(fifo.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(fifo.tryPop(out));
        EXPECT_EQ(out, i);
    }
    EXPECT_FALSE(fifo.tryPop(out));
    EXPECT_TRUE(fifo.empty());
}

TEST(SpscFifoTest, BulkOperationsWrapAroundAndReturnShortCounts) {
    SpscFifo<int> fifo(8);
    std::vector<int> in = {0, 1, 2, 3, 4, 5};
    EXPECT_EQ(fifo.pushMany(in), 6u);
    std::vector<int> out(4);
    EXPECT_EQ(fifo.popMany(out), 4u);
    EXPECT_EQ(out, (std::vector<int>{0, 1, 2, 3}));
    // 2 left; 6 free: this push crosses the end of the storage and is cut at 6.
    std::vector<int> more = {6, 7, 8, 9, 10, 11, 12, 13};
    EXPECT_EQ(fifo.pushMany(more), 6u);
    std::vector<int> all(16);
    EXPECT_EQ(fifo.popMany(all), 8u);
    all.resize(8);
    EXPECT_EQ(all, (std::vector<int>{4, 5, 6, 7, 8, 9, 10, 11}));
}

// A producer and a consumer thread: every item arrives once, in order, and pushes refused on a
// full FIFO are retried by the producer so the counts must match exactly.
TEST(SpscFifoTest, ThreadedTransferKeepsOrderAndCount) {
    using Block = std::array<float, 16>;
    constexpr uint32_t kItems = 200000;
    SpscFifo<Block> fifo(64);

    std::thread producer([&] {
        for (uint32_t i = 0; i < kItems;) {
            Block b;
            b.fill(static_cast<float>(i));
            if (fifo.tryPush(b)) {
                ++i;
            } else {
                std::this_thread::yield();
            }
        }
    });

    uint32_t received = 0;
    uint32_t misordered = 0;
    uint32_t torn = 0;
    while (received < kItems) {
        Block b;
        if (!fifo.tryPop(b)) {
            std::this_thread::yield();
            continue;
        }
        if (b[0] != static_cast<float>(received)) {
            ++misordered;
        }
        for (float v : b) {
            if (v != b[0]) {
                ++torn;
            }
        }
        ++received;
    }
    producer.join();
    EXPECT_EQ(received, kItems);
    EXPECT_EQ(misordered, 0u);
    EXPECT_EQ(torn, 0u);
    Block extra;
    EXPECT_FALSE(fifo.tryPop(extra));
}

} // namespace
} // namespace waxline
