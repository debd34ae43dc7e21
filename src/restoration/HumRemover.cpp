#include "restoration/HumRemover.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>

namespace waxline::restoration {

namespace {

// Quiet stretches are taken in blocks of four seconds: each is analysed on its own (their phases
// do not join up, and mains frequency wanders over minutes); four seconds resolve the hum to a
// quarter of a hertz and lift it well out of the music around it.
constexpr double kBlockSeconds = 4.0;
constexpr double kNotchWidth = 1.6; // Hz, at -3 dB
constexpr double kStandsOut = 10.0; // dB above the neighbouring spectrum
constexpr int kHighestHarmonic = 40;
constexpr double kHighestHum = 4000; // Hz

// The power of x at one frequency in each of its blocks of `block` samples (Goertzel), as a
// share of that block's whole power, averaged over the blocks: the quietest blocks, where hum
// stands out, count as much as the louder ones, where music hides it.
double powerAt(const std::vector<float>& x, double frequency, double rate, size_t block) {
    const double w = 2 * std::numbers::pi * frequency / rate;
    const double coefficient = 2 * std::cos(w);
    double sum = 0;
    size_t blocks = 0;
    for (size_t begin = 0; begin + block <= x.size(); begin += block, ++blocks) {
        double s1 = 0, s2 = 0, energy = 1e-20;
        for (size_t i = begin; i < begin + block; ++i) {
            const double s0 = x[i] + coefficient * s1 - s2;
            s2 = s1;
            s1 = s0;
            energy += static_cast<double>(x[i]) * x[i];
        }
        sum += (s1 * s1 + s2 * s2 - coefficient * s1 * s2) / energy;
    }
    return blocks ? sum / (static_cast<double>(block) * static_cast<double>(blocks)) : 0.0;
}

// The summed power of the first harmonics at f: their common peak marks the true fundamental.
double harmonicPower(const std::vector<float>& x, double f, double rate, size_t block) {
    double sum = 0;
    for (int h = 1; h <= 5; ++h)
        sum += powerAt(x, f * h, rate, block);
    return sum;
}

double db(double power) {
    return 10 * std::log10(std::max(power, 1e-30));
}

// How far the harmonic stands out of the spectrum beside it (the median of eight readings
// 4 to 10 Hz away), in dB.
double prominence(const std::vector<float>& x, double frequency, double rate, size_t block) {
    std::vector<double> beside;
    for (double offset : {4.0, 6.0, 8.0, 10.0}) {
        beside.push_back(powerAt(x, frequency - offset, rate, block));
        beside.push_back(powerAt(x, frequency + offset, rate, block));
    }
    std::nth_element(beside.begin(), beside.begin() + 4, beside.end());
    return db(powerAt(x, frequency, rate, block)) - db(beside[4]);
}

struct Notch {
    double b0, b1, b2, a1, a2;
};

Notch notchAt(double frequency, double rate) {
    const double w = 2 * std::numbers::pi * frequency / rate;
    const double q = frequency / kNotchWidth;
    const double alpha = std::sin(w) / (2 * q);
    const double a0 = 1 + alpha;
    return {1 / a0, -2 * std::cos(w) / a0, 1 / a0, -2 * std::cos(w) / a0, (1 - alpha) / a0};
}

template <typename Index> void runNotch(std::vector<double>& y, const Notch& n, Index order) {
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    for (size_t i = 0; i < y.size(); ++i) {
        const size_t k = order(i);
        const double in = y[k];
        const double out = n.b0 * in + n.b1 * x1 + n.b2 * x2 - n.a1 * y1 - n.a2 * y2;
        x2 = x1;
        x1 = in;
        y2 = y1;
        y1 = out;
        y[k] = out;
    }
}

} // namespace

std::vector<float> quietStretches(const std::vector<float>& x, double rate) {
    const auto block = static_cast<size_t>(rate * kBlockSeconds);
    if (block == 0 || x.size() < block)
        return x;
    std::vector<std::pair<double, size_t>> levels;
    for (size_t begin = 0; begin + block <= x.size(); begin += block) {
        double sum = 0;
        for (size_t i = begin; i < begin + block; ++i)
            sum += static_cast<double>(x[i]) * x[i];
        levels.emplace_back(sum, begin);
    }
    std::sort(levels.begin(), levels.end());
    const size_t least = 4;
    const size_t wanted = std::min(levels.size(), std::max(levels.size() / 10, least));
    std::vector<size_t> chosen;
    for (size_t i = 0; i < wanted; ++i)
        chosen.push_back(levels[i].second);
    std::sort(chosen.begin(), chosen.end());
    std::vector<float> quiet;
    quiet.reserve(chosen.size() * block);
    for (size_t begin : chosen)
        quiet.insert(quiet.end(), x.begin() + static_cast<std::ptrdiff_t>(begin),
                     x.begin() + static_cast<std::ptrdiff_t>(begin + block));
    return quiet;
}

HumProfile findHum(const std::vector<float>& quiet, double rate, HumChoice choice) {
    HumProfile hum;
    const auto block = static_cast<size_t>(rate * kBlockSeconds);
    if (choice == HumChoice::Off || block == 0 || quiet.size() < block)
        return hum;
    std::vector<double> mains;
    if (choice != HumChoice::Hz60)
        mains.push_back(50);
    if (choice != HumChoice::Hz50)
        mains.push_back(60);
    double bestPower = -1;
    for (double nominal : mains) {
        // Mains frequency wanders by a few tenths of a hertz; a coarse then a fine search.
        double best = nominal, power = -1;
        for (double f = nominal - 0.5; f <= nominal + 0.5; f += 0.05)
            if (const double p = harmonicPower(quiet, f, rate, block); p > power)
                std::tie(best, power) = std::pair(f, p);
        const double centre = best;
        for (double f = centre - 0.05; f <= centre + 0.05; f += 0.005)
            if (const double p = harmonicPower(quiet, f, rate, block); p > power)
                std::tie(best, power) = std::pair(f, p);
        std::vector<int> harmonics;
        for (int h = 1; h <= kHighestHarmonic && best * h <= std::min(kHighestHum, rate / 2 - 20);
             ++h)
            if (prominence(quiet, best * h, rate, block) >= kStandsOut)
                harmonics.push_back(h);
        // Mains hum always carries its fundamental or its first overtone; higher ones alone are
        // more likely music.
        const bool mainsLike = !harmonics.empty() && harmonics.front() <= 2;
        if (mainsLike && power > bestPower) {
            bestPower = power;
            hum.fundamental = best;
            hum.harmonics = harmonics;
        }
    }
    return hum;
}

void removeHum(std::vector<float>& x, double rate, const HumProfile& hum) {
    if (!hum.present() || x.empty())
        return;
    std::vector<double> y(x.begin(), x.end());
    for (int h : hum.harmonics) {
        const Notch notch = notchAt(hum.fundamental * h, rate);
        runNotch(y, notch, [](size_t i) { return i; });
        runNotch(y, notch, [n = y.size()](size_t i) { return n - 1 - i; });
    }
    std::transform(y.begin(), y.end(), x.begin(), [](double v) { return static_cast<float>(v); });
}

} // namespace waxline::restoration
