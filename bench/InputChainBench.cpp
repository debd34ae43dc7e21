// The input chain as it runs per captured buffer: peaks, the RIAA preset on both channels and the
// gap detector, over 4096-frame stereo buffers of music-like signal.
#include "capture/chain/FilterSwap.h"
#include "capture/chain/InputChain.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

using Sonra::Audio::Filters::AudioFilter;
using Sonra::Audio::Filters::GapDetector;

struct NullListener : GapDetector::Listener {
    void TrackSilenceStarted() override {}
    void TrackSilenceEnded() override {}
    void AlbumEnded() override {}
};

void inputChain(benchmark::State& state, AudioFilter::Type preset, bool withDetector) {
    constexpr uint32_t kFrames = 4096;
    std::vector<float> left(kFrames), right(kFrames), sourceL(kFrames), sourceR(kFrames);
    for (uint32_t i = 0; i < kFrames; ++i) {
        sourceL[i] = 0.3f * std::sin(0.0712f * i) + 0.1f * std::sin(0.51f * i);
        sourceR[i] = 0.3f * std::sin(0.0655f * i) + 0.1f * std::sin(0.47f * i);
    }
    NullListener listener;
    GapDetector detector(listener, 44100);
    waxline::setFilterType(preset);
    waxline::gapDetector.store(withDetector ? &detector : nullptr);
    waxline::AudioBufferList list;
    list.mNumberBuffers = 2;
    list.mBuffers[0].mData = left.data();
    list.mBuffers[1].mData = right.data();
    for (auto _ : state) {
        state.PauseTiming();
        left = sourceL;
        right = sourceR;
        state.ResumeTiming();
        waxline::InputProcCallback(&list, kFrames, 0);
        benchmark::ClobberMemory();
    }
    waxline::gapDetector.store(nullptr);
    state.counters["frames/s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kFrames, benchmark::Counter::kIsRate);
    state.counters["x realtime"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kFrames / 44100.0, benchmark::Counter::kIsRate);
}

BENCHMARK_CAPTURE(inputChain, riaa_with_detector, AudioFilter::RIAAPlayback, true);
BENCHMARK_CAPTURE(inputChain, riaa_only, AudioFilter::RIAAPlayback, false);
BENCHMARK_CAPTURE(inputChain, chrome_with_detector, AudioFilter::ChromeTape, true);
BENCHMARK_CAPTURE(inputChain, peaks_only, AudioFilter::NoFilter, false);

} // namespace

BENCHMARK_MAIN();
