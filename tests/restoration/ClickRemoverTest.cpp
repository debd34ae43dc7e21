#include "restoration/ClickRemover.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace {

using waxline::restoration::ClickSpan;
using waxline::restoration::removeClicks;

enum class Shape { Impulse, Decaying, Bump, Square, Crackle };

struct ClickCase {
    const char* name;
    Shape shape;
    int length;       // samples of each click
    double perSecond; // clicks a second
    double height;    // against the music's peak of about 0.5
};

// Music-like: a few partials drifting in level, with a little noise, at 44.1 kHz.
std::vector<float> music(size_t frames, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0, 0.002);
    std::vector<float> x(frames);
    const double tau = 2 * std::numbers::pi;
    for (size_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / 44100;
        x[i] = static_cast<float>(0.2 * std::sin(tau * 220 * t) * (1 + 0.5 * std::sin(tau * t)) +
                                  0.12 * std::sin(tau * 331 * t + 1) +
                                  0.08 * std::sin(tau * 1250 * t) * std::sin(tau * 3 * t) +
                                  noise(random));
    }
    return x;
}

double shapeAt(Shape shape, int i, int length) {
    const double u = (i + 0.5) / length;
    switch (shape) {
    case Shape::Impulse:
        return i == 0 ? 1 : 0;
    case Shape::Decaying:
        return std::exp(-5 * u) * std::cos(std::numbers::pi * 3 * u);
    case Shape::Bump:
        return std::sin(std::numbers::pi * u);
    case Shape::Square:
        return 1;
    case Shape::Crackle:
        return (i % 2 ? -0.6 : 1) * (1 - u);
    }
    return 0;
}

TEST(ClickRemover, FindsAndRepairsClicksOfEveryShapeLeavingTheRestAlone) {
    const ClickCase cases[] = {
        {"single samples, 20/s", Shape::Impulse, 1, 20, 0.6},
        {"small single samples", Shape::Impulse, 1, 10, 0.15},
        {"decaying, 8 samples", Shape::Decaying, 8, 10, 0.5},
        {"bumps, 20 samples", Shape::Bump, 20, 5, 0.4},
        {"scratches, 60 samples", Shape::Square, 60, 2, 0.3},
        {"crackle, 4 samples, 20/s", Shape::Crackle, 4, 20, 0.3},
    };
    const size_t frames = 44100 * 3;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<float> clean = music(frames, 7);
        std::vector<float> x = clean;
        std::mt19937 random(11);
        std::uniform_int_distribution<size_t> jitter(0, 400);
        const auto spacing = static_cast<size_t>(44100 / c.perSecond);
        std::vector<ClickSpan> truth;
        for (size_t at = 2000; at + spacing < frames; at += spacing) {
            const size_t start = at + jitter(random);
            const double sign = truth.size() % 2 ? -1 : 1;
            for (int i = 0; i < c.length; ++i)
                x[start + static_cast<size_t>(i)] +=
                    static_cast<float>(sign * c.height * shapeAt(c.shape, i, c.length));
            truth.push_back({start, start + static_cast<size_t>(c.length) - 1});
        }
        const std::vector<float> damaged = x;
        const std::vector<ClickSpan> found = removeClicks(x);

        std::vector<bool> inFound(frames, false), inTruth(frames, false);
        for (const auto& s : found)
            for (size_t n = s.first; n <= s.last; ++n)
                inFound[n] = true;
        for (const auto& s : truth)
            for (size_t n = s.first; n <= s.last; ++n)
                inTruth[n] = true;
        size_t missed = 0, untouched = 0, changedOutside = 0;
        for (const auto& s : truth) {
            bool hit = false;
            for (size_t n = s.first; n <= s.last; ++n)
                hit = hit || inFound[n];
            missed += hit ? 0 : 1;
        }
        size_t falseSpans = 0;
        for (const auto& s : found) {
            bool real = false;
            for (size_t n = s.first; n <= s.last; ++n)
                real = real || inTruth[n];
            falseSpans += real ? 0 : 1;
        }
        double errorBefore = 0, errorAfter = 0;
        for (size_t n = 0; n < frames; ++n) {
            if (!inFound[n] && x[n] != damaged[n])
                ++changedOutside;
            if (inTruth[n]) {
                errorBefore += std::pow(damaged[n] - clean[n], 2);
                errorAfter += std::pow(x[n] - clean[n], 2);
                untouched += x[n] == damaged[n] ? 1 : 0;
            }
        }
        EXPECT_EQ(missed, 0u) << "of " << truth.size();
        EXPECT_LE(falseSpans, truth.size() / 20) << "of " << found.size();
        EXPECT_EQ(changedOutside, 0u);
        EXPECT_GT(10 * std::log10(errorBefore / errorAfter), 15.0) << "dB less click energy";
    }
}

TEST(ClickRemover, LeavesCleanMusicBitIdentical) {
    const struct {
        const char* name;
        unsigned seed;
    } rows[] = {{"first", 3}, {"second", 4}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<float> x = music(44100 * 2, row.seed);
        const std::vector<float> before = x;
        const auto found = removeClicks(x);
        EXPECT_TRUE(found.empty());
        EXPECT_EQ(x, before);
    }
}

} // namespace

// Sharp but musical: a drum's noise burst starts at once out of the surface noise, a sudden
// rise of the prediction error that is no click added to the music.
TEST(ClickRemover, TakesNoDrumHitForAClick) {
    const struct {
        const char* name;
        double decay; // seconds
    } rows[] = {{"short hits", 0.01}, {"longer hits", 0.05}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::mt19937 random(5);
        std::normal_distribution<double> noise(0, 1);
        std::vector<float> x(44100 * 2);
        for (float& v : x)
            v = static_cast<float>(0.003 * noise(random));
        for (size_t start = 3000; start + 10000 < x.size(); start += 11025)
            for (size_t i = 0; start + i < x.size(); ++i)
                x[start + i] += static_cast<float>(
                    0.015 * noise(random) * std::exp(-static_cast<double>(i) / 44100 / row.decay));
        const std::vector<float> before = x;
        const auto found = removeClicks(x);
        size_t changed = 0;
        for (size_t i = 0; i < x.size(); ++i)
            changed += x[i] != before[i] ? 1 : 0;
        EXPECT_LE(found.size(), 1u) << "of 7 hits";
        EXPECT_LE(changed, x.size() / 1000);
    }
}
