#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <type_traits>

namespace waxline {

// The project's one lock-free single-producer/single-consumer FIFO.
//
// Exactly one thread may push (the producer, e.g. an audio callback) and exactly one thread may
// pop (the consumer, e.g. a writer or the main thread). The storage is allocated once, at
// construction, with a power-of-two capacity so indices wrap with a mask. tryPush/tryPop and
// their bulk forms never block, lock or allocate; they return false (or a short count) when the
// FIFO is full or empty, and the caller counts what it had to drop.
//
// Head and tail are free-running 64-bit counters (they never wrap in practice), so full and empty
// are told apart without sacrificing a slot: size = tail - head.
//
// T must be trivially copyable: a sample, an event struct, or a fixed block such as
// SpscFifo<std::array<float, 256>>.
template <typename T> class SpscFifo {
    static_assert(std::is_trivially_copyable_v<T>, "SpscFifo elements are copied as raw memory");

public:
    // Capacity is rounded up to the next power of two (at least 2).
    explicit SpscFifo(std::size_t minCapacity)
        : mCapacity(roundUpPow2(minCapacity))
        , mMask(mCapacity - 1)
        , mSlots(std::make_unique<T[]>(mCapacity)) {}

    SpscFifo(const SpscFifo&) = delete;
    SpscFifo& operator=(const SpscFifo&) = delete;

    std::size_t capacity() const { return mCapacity; }

    // Producer thread only.
    bool tryPush(const T& item) { return pushMany(std::span<const T>(&item, 1)) == 1; }

    // Producer thread only. Pushes as many of `items` as fit, in order; returns how many.
    std::size_t pushMany(std::span<const T> items) {
        // Our own index: only this thread writes it, so relaxed is enough.
        const uint64_t tail = mTail.value.load(std::memory_order_relaxed);
        // Acquire pairs with the consumer's release store of head: the slots it freed are really
        // done being read before we overwrite them.
        const uint64_t head = mHead.value.load(std::memory_order_acquire);
        const std::size_t freeSlots = mCapacity - static_cast<std::size_t>(tail - head);
        const std::size_t n = items.size() < freeSlots ? items.size() : freeSlots;
        for (std::size_t i = 0; i < n; ++i) {
            mSlots[(tail + i) & mMask] = items[i];
        }
        // Release publishes the slot contents written above before the consumer sees the new tail.
        mTail.value.store(tail + n, std::memory_order_release);
        return n;
    }

    // Consumer thread only.
    bool tryPop(T& out) { return popMany(std::span<T>(&out, 1)) == 1; }

    // Consumer thread only. Pops up to out.size() items in order; returns how many.
    std::size_t popMany(std::span<T> out) {
        // Our own index: only this thread writes it, so relaxed is enough.
        const uint64_t head = mHead.value.load(std::memory_order_relaxed);
        // Acquire pairs with the producer's release store of tail: the slot contents it wrote are
        // visible before we read them.
        const uint64_t tail = mTail.value.load(std::memory_order_acquire);
        const std::size_t avail = static_cast<std::size_t>(tail - head);
        const std::size_t n = out.size() < avail ? out.size() : avail;
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = mSlots[(head + i) & mMask];
        }
        // Release orders our reads of the slots before the producer may reuse them.
        mHead.value.store(head + n, std::memory_order_release);
        return n;
    }

    // Either thread; an instantaneous estimate (exact when called from the consumer for the
    // lower bound, or from the producer for the upper bound).
    std::size_t size() const {
        // Acquire on both keeps the estimate no older than what this thread already observed.
        const uint64_t tail = mTail.value.load(std::memory_order_acquire);
        const uint64_t head = mHead.value.load(std::memory_order_acquire);
        return tail >= head ? static_cast<std::size_t>(tail - head) : 0;
    }

    bool empty() const { return size() == 0; }

private:
    static std::size_t roundUpPow2(std::size_t n) {
        std::size_t c = 2;
        while (c < n) {
            c <<= 1;
        }
        return c;
    }

    // Each index on its own cache line, so the producer's stores of tail do not keep invalidating
    // the line the consumer reads head from (and vice versa).
    static constexpr std::size_t kCacheLine = 64;
    struct alignas(kCacheLine) PaddedIndex {
        std::atomic<uint64_t> value{0};
        char pad[kCacheLine - sizeof(std::atomic<uint64_t>)];
    };

    const std::size_t mCapacity;
    const std::size_t mMask;
    std::unique_ptr<T[]> mSlots;
    PaddedIndex mHead; // next slot to read; written by the consumer
    PaddedIndex mTail; // next slot to write; written by the producer
};

} // namespace waxline
