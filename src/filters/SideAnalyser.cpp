#include "filters/SideAnalyser.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace Sonra::Audio::Filters {
namespace {

constexpr size_t kFrameSize = 512;
constexpr double kAnalysisRate = 11025; // enough for the band the splitter looks at
constexpr double kHighPassHz = 200;
constexpr double kLowestBinHz = 150; // below: rumble, hum and bass, which say little
constexpr double kHighestBinHz = 4500;
// The level is the lower third of |x| of the differenced signal; for Gaussian noise that
// quantile is 0.4307 sigma, which turns it into an RMS.
constexpr size_t kLevelRank = kFrameSize / 3;
constexpr double kQuantileToRms = 1 / 0.4307;

} // namespace

SideAnalyser::SideAnalyser(unsigned sampleRate)
    : fft(kFrameSize) {
    if (sampleRate < 8000)
        throw std::invalid_argument("side analysis needs a sample rate from 8000 Hz");
    decimation = std::max<size_t>(1, static_cast<size_t>(std::lround(sampleRate / kAnalysisRate)));
    const double rate = static_cast<double>(sampleRate) / static_cast<double>(decimation);
    result.sampleRate = sampleRate;
    result.hop = kFrameSize * decimation;
    result.binHz = rate / kFrameSize;
    firstBin = static_cast<size_t>(std::ceil(kLowestBinHz / result.binHz));
    const size_t lastBin =
        std::min(kFrameSize / 2 - 1, static_cast<size_t>(std::floor(kHighestBinHz / result.binHz)));
    result.bins = lastBin + 1 - firstBin;
    result.firstBinHz = static_cast<double>(firstBin) * result.binHz;

    // Second-order Butterworth high-pass by the bilinear transform.
    const double k = std::tan(2 * std::numbers::pi * kHighPassHz / rate / 2);
    const double q = 1 / std::sqrt(2.0);
    const double norm = 1 / (1 + k / q + k * k);
    hp[0] = norm;
    hp[1] = -2 * norm;
    hp[2] = norm;
    hp[3] = 2 * (k * k - 1) * norm;
    hp[4] = (1 - k / q + k * k) * norm;

    frame.resize(kFrameSize);
    slopes.resize(kFrameSize);
    window.resize(kFrameSize);
    for (size_t i = 0; i < kFrameSize; ++i)
        window[i] =
            static_cast<float>(0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) /
                                                    static_cast<double>(kFrameSize)));
    windowed.resize(kFrameSize);
    power.resize(kFrameSize / 2 + 1);
    magnitudes.resize(kFrameSize);
}

void SideAnalyser::addInterleaved(const float* samples, size_t frames, unsigned channels) {
    if (channels == 0)
        return;
    const float scale = 1.0f / static_cast<float>(channels);
    auto mono = [&](size_t i) {
        float m = 0;
        for (unsigned c = 0; c < channels; ++c)
            m += samples[i * channels + c];
        return m * scale;
    };
    size_t i = 0;
    for (; i < frames && summed != 0; ++i)
        addMono(mono(i));
    // Whole groups of the decimation at once: the per-sample path is the analysis' hot loop.
    const float groupScale = 1.0f / static_cast<float>(decimation);
    for (; i + decimation <= frames; i += decimation) {
        float group = 0;
        for (size_t k = 0; k < decimation; ++k)
            group += mono(i + k);
        addDecimated(group * groupScale);
    }
    for (; i < frames; ++i)
        addMono(mono(i));
    result.inputFrames += static_cast<int64_t>(frames);
}

void SideAnalyser::addPlanar(const float* left, const float* right, size_t frames) {
    size_t i = 0;
    for (; i < frames && summed != 0; ++i)
        addMono(0.5f * (left[i] + right[i]));
    const float groupScale = 0.5f / static_cast<float>(decimation);
    for (; i + decimation <= frames; i += decimation) {
        float group = 0;
        for (size_t k = 0; k < decimation; ++k)
            group += left[i + k] + right[i + k];
        addDecimated(group * groupScale);
    }
    for (; i < frames; ++i)
        addMono(0.5f * (left[i] + right[i]));
    result.inputFrames += static_cast<int64_t>(frames);
}

void SideAnalyser::addMono(float sample) {
    // A plain average over the decimation: what folds down is noise on noise, and tones stay
    // tones, which is all the analysis asks of the band.
    sum += sample;
    if (++summed < decimation)
        return;
    const float x = sum / static_cast<float>(decimation);
    sum = 0;
    summed = 0;
    addDecimated(x);
}

void SideAnalyser::addDecimated(double x) {
    const double y = hp[0] * x + hp[1] * hpState[0] + hp[2] * hpState[1] - hp[3] * hpState[2] -
                     hp[4] * hpState[3];
    hpState[1] = hpState[0];
    hpState[0] = x;
    hpState[3] = hpState[2];
    hpState[2] = y;
    // The difference is a high-pass of two taps: it takes rumble and hum out like the
    // biquad, but leaves no ringing tail behind a click to fill the frame.
    slopes[fill] = static_cast<float>(x - previous);
    previous = x;
    frame[fill++] = static_cast<float>(y);
    if (fill == kFrameSize) {
        finishFrame();
        fill = 0;
    }
}

void SideAnalyser::finishFrame() {
    double energy = 0;
    for (size_t i = 0; i < kFrameSize; ++i) {
        magnitudes[i] = std::fabs(slopes[i]);
        windowed[i] = frame[i] * window[i];
        energy += static_cast<double>(frame[i]) * frame[i];
    }
    result.loudness.push_back(
        static_cast<float>(10 * std::log10(energy / static_cast<double>(kFrameSize) + 1e-24)));
    auto rank = magnitudes.begin() + kLevelRank;
    std::nth_element(magnitudes.begin(), rank, magnitudes.end());
    const double rms = static_cast<double>(*rank) * kQuantileToRms;
    result.level.push_back(static_cast<float>(20 * std::log10(rms + 1e-12)));

    fft.powerSpectrum(windowed.data(), power.data());
    const size_t base = result.spectrum.size();
    result.spectrum.resize(base + result.bins);
    uint8_t* out = result.spectrum.data() + base;
    for (size_t b = 0; b < result.bins; ++b) {
        const float db = 10 * std::log10(power[firstBin + b] + 1e-20f);
        const float steps = (db - static_cast<float>(SideFeatures::kSpectrumFloorDb)) /
                            static_cast<float>(SideFeatures::kSpectrumStepDb);
        out[b] = static_cast<uint8_t>(std::clamp(steps, 0.0f, 255.0f) + 0.5f);
    }
}

std::vector<float> meansAround(const std::vector<float>& values, size_t from, size_t to,
                               size_t half, float floor) {
    const size_t n = values.size();
    to = std::min(to, n);
    std::vector<float> means(from < to ? to - from : 0);
    for (size_t f = from; f < to; ++f) {
        const size_t first = f >= half ? f - half : 0;
        const size_t last = std::min(n, f + half + 1);
        float sum = 0;
        for (size_t g = first; g < last; ++g)
            sum += std::max(values[g], floor);
        means[f - from] = sum / static_cast<float>(last - first);
    }
    return means;
}

} // namespace Sonra::Audio::Filters
