#include "cli/DemoSide.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace waxline::cli {
namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr size_t kTableSize = 4096;
constexpr double kRunOutSeconds = 65;
constexpr double kRevolutionSeconds = 1.8; // 33 1/3 rpm
constexpr double kFadeSeconds = 0.4;

// Notes of the melody voice stay in 440-554 Hz, where the gap detector listens; bass and
// harmony voices move around it.
constexpr double kMelody[] = {440.0, 466.2, 493.9, 523.3, 554.4};
constexpr double kHarmony[] = {220.0, 246.9, 261.6, 293.7, 329.6};
constexpr double kBass[] = {55.0, 61.7, 65.4, 73.4, 82.4, 98.0};

template <size_t N> double pick(const double (&table)[N], double u) {
    return table[std::min(N - 1, static_cast<size_t>(u * N))];
}

} // namespace

DemoSideGenerator::DemoSideGenerator(const DemoSideOptions& options)
    : rngState(0x9E3779B97F4A7C15ull ^
               (static_cast<uint64_t>(options.seed) * 0xD1B54A32D192ED03ull)) {
    if (options.tracks < 1 || options.tracks > 40)
        throw std::invalid_argument("the number of tracks must be from 1 to 40");
    if (options.sampleRate < 8000)
        throw std::invalid_argument("the sample rate is too low");
    sideLayout.sampleRate = options.sampleRate;

    sineTable.resize(kTableSize + 1);
    for (size_t i = 0; i <= kTableSize; ++i)
        sineTable[i] = static_cast<float>(std::sin(kTwoPi * static_cast<double>(i) / kTableSize));

    const double leadIn = 2.0 + uniform();
    std::vector<double> gaps(static_cast<size_t>(options.tracks - 1));
    double gapTotal = 0;
    for (double& g : gaps) {
        // Long enough for four whole half-second frames of quiet, however the frames fall.
        g = 2.6 + 1.4 * uniform();
        gapTotal += g;
    }
    std::vector<double> lengths(static_cast<size_t>(options.tracks));
    if (options.lengthSeconds > 0) {
        const double music = options.lengthSeconds - leadIn - gapTotal - kRunOutSeconds;
        double weightSum = 0;
        for (double& l : lengths) {
            l = 0.8 + 0.4 * uniform();
            weightSum += l;
        }
        for (double& l : lengths)
            l = l / weightSum * music;
        if (*std::min_element(lengths.begin(), lengths.end()) < 15)
            throw std::invalid_argument("the side is too short for that many tracks");
    } else {
        for (double& l : lengths)
            l = 46 + 34 * uniform(); // longer than the 45 s the track finder takes for music
    }

    double t = 0;
    sideLayout.leadIn = {t, leadIn};
    t = leadIn;
    for (size_t i = 0; i < lengths.size(); ++i) {
        sideLayout.tracks.push_back({t, t + lengths[i]});
        t += lengths[i];
        if (i < gaps.size()) {
            sideLayout.gaps.push_back({t, t + gaps[i]});
            t += gaps[i];
        }
    }
    sideLayout.runOut = {t, t + kRunOutSeconds};
    frameCount = static_cast<size_t>(std::llround(sideLayout.runOut.end * options.sampleRate));
}

uint64_t DemoSideGenerator::nextRandom() {
    // splitmix64: small, fast and the same on every platform.
    uint64_t z = (rngState += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

double DemoSideGenerator::uniform() {
    return static_cast<double>(nextRandom() >> 11) * 0x1.0p-53;
}

void DemoSideGenerator::startNotes(size_t trackIndex) {
    const double rate = sideLayout.sampleRate;
    const double lengths[] = {0.25, 0.5, 0.5, 0.75, 1.0};
    noteEnd = position + static_cast<size_t>(pick(lengths, uniform()) * rate);
    const double* tables[] = {kMelody, kHarmony, kBass};
    const size_t sizes[] = {std::size(kMelody), std::size(kHarmony), std::size(kBass)};
    for (int v = 0; v < 3; ++v) {
        // Each track keeps its own colour: a transposition by track number within the tables.
        const size_t idx = (static_cast<size_t>(uniform() * sizes[v]) + trackIndex) % sizes[v];
        voices[v].increment = tables[v][idx] / rate;
    }
    voices[0].gain = 0.16f;
    voices[0].pan = 0.4f;
    voices[1].gain = 0.12f;
    voices[1].pan = 0.7f;
    voices[2].gain = 0.2f;
    voices[2].pan = 0.5f;
}

float DemoSideGenerator::surfaceNoise() {
    // Sum of four uniforms: a cheap, nearly Gaussian hiss about 62 dB below full scale.
    double s = 0;
    for (int i = 0; i < 4; ++i)
        s += uniform() - 0.5;
    return static_cast<float>(s * 0.0014);
}

float DemoSideGenerator::crackle(bool runOut) {
    const double rate = sideLayout.sampleRate;
    if (uniform() < 3.0 / rate)
        clickLevel = static_cast<float>((uniform() < 0.5 ? -1 : 1) * (0.03 + 0.2 * uniform()));
    if (runOut && position >= nextRevolutionClick) {
        clickLevel = 0.25f;
        nextRevolutionClick = position + static_cast<size_t>(kRevolutionSeconds * rate);
    }
    const float out = clickLevel;
    clickLevel *= 0.35f; // a click dies away within a few samples
    return out;
}

size_t DemoSideGenerator::render(float* left, float* right, size_t frames) {
    const double rate = sideLayout.sampleRate;
    const size_t n = std::min(frames, frameCount - position);
    for (size_t i = 0; i < n; ++i, ++position) {
        const double t = static_cast<double>(position) / rate;
        float l = surfaceNoise();
        float r = surfaceNoise();
        const bool runOut = t >= sideLayout.runOut.start;
        const float c = crackle(runOut);
        l += c;
        r += c * 0.8f;

        for (size_t k = 0; k < sideLayout.tracks.size(); ++k) {
            const auto& span = sideLayout.tracks[k];
            if (t < span.start || t >= span.end)
                continue;
            if (position >= noteEnd)
                startNotes(k);
            const double into = t - span.start;
            const double left_ = span.end - t;
            const double fade = std::min({1.0, into / kFadeSeconds, left_ / kFadeSeconds});
            // Slow swells between half and full level give the passage its dynamics.
            const double swell =
                0.75 + 0.25 * std::sin(kTwoPi * into / (7.0 + 3.0 * static_cast<double>(k)));
            const float level = static_cast<float>(fade * swell);
            for (auto& v : voices) {
                float s = 0;
                for (int h = 1; h <= 3; ++h) {
                    double ph = v.phase * h;
                    ph -= std::floor(ph);
                    const double pos = ph * kTableSize;
                    const size_t idx = static_cast<size_t>(pos);
                    const float frac = static_cast<float>(pos - static_cast<double>(idx));
                    s += (sineTable[idx] + frac * (sineTable[idx + 1] - sineTable[idx])) /
                         static_cast<float>(h);
                }
                v.phase += v.increment;
                v.phase -= std::floor(v.phase);
                l += level * v.gain * s * (1.0f - v.pan);
                r += level * v.gain * s * v.pan;
            }
            break;
        }
        left[i] = l;
        right[i] = r;
    }
    return n;
}

} // namespace waxline::cli
