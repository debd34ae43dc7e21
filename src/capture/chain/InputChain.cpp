#include "capture/chain/InputChain.h"

#include "capture/chain/FilterSwap.h"

#include <algorithm>
#include <cmath>

namespace waxline {

std::atomic<Sonra::Audio::Filters::GapDetector*> gapDetector{nullptr};

namespace {

// Relaxed atomics: the cells are independent values and a reader may miss a peak that arrives
// between its read and its clear, as with plain floats, but without a data race.
std::atomic<float> ssVUMax{0};
std::atomic<float> ssVUMaxL{0};
std::atomic<float> ssVUMaxR{0};

// The largest |x| of a buffer. Eight running maxima keep the loop free of one long dependency
// chain; max is exact, so the result equals the one-by-one scan.
float peakOf(const float* samples, uint32_t count) {
    constexpr uint32_t kLanes = 8;
    float lane[kLanes] = {};
    uint32_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        for (uint32_t j = 0; j < kLanes; ++j) {
            const float a = std::fabs(samples[i + j]);
            lane[j] = a > lane[j] ? a : lane[j];
        }
    }
    float p = 0;
    for (; i < count; ++i) {
        const float a = std::fabs(samples[i]);
        p = a > p ? a : p;
    }
    for (float v : lane)
        p = v > p ? v : p;
    return p;
}

void raise(std::atomic<float>& cell, float value) {
    if (value > cell.load(std::memory_order_relaxed))
        cell.store(value, std::memory_order_relaxed);
}

} // namespace

void InputProcCallback(AudioBufferList* buffers, uint32_t frames, int64_t /*sampleTime*/) {
    if (buffers->mNumberBuffers == 0)
        return;
    float* left = buffers->mBuffers[0].mData;
    const float p = peakOf(left, frames);
    raise(ssVUMaxL, p);
    raise(ssVUMax, p);

    // Mono (or more than two channels) is metered only: never equalised nor gap-detected.
    if (buffers->mNumberBuffers != 2)
        return;

    float* right = buffers->mBuffers[1].mData;
    const float q = peakOf(right, frames);
    raise(ssVUMaxR, q);
    raise(ssVUMax, q);

    const ActiveFilter equaliser;
    auto* detector = gapDetector.load(std::memory_order_acquire);
    if (!detector) {
        (*equaliser)(left, right, frames);
        return;
    }
    // The detector takes each equalised frame in the same pass, so its recursion runs alongside
    // the equaliser's; runs end at the detector's frame boundaries, where a frame is judged.
    Sonra::Audio::Filters::GapDetector::Feed feed(*detector);
    for (uint32_t i = 0; i < frames;) {
        const auto n = static_cast<uint32_t>(std::min<uint64_t>(frames - i, feed.room()));
        equaliser->process(left + i, right + i, n, [&feed](float l, float r) { feed.add(l, r); });
        feed.endRun();
        i += n;
    }
    feed.finish();
}

void ResetVUMax() {
    ssVUMax.store(0, std::memory_order_relaxed);
}

float GetVUMax() {
    return ssVUMax.load(std::memory_order_relaxed);
}

float GetVUMaxL() {
    return ssVUMaxL.exchange(0, std::memory_order_relaxed);
}

float GetVUMaxR() {
    return ssVUMaxR.exchange(0, std::memory_order_relaxed);
}

float GetVUMaxL3() {
    return 0.0f;
}

float GetVUMaxR3() {
    return 0.0f;
}

} // namespace waxline
