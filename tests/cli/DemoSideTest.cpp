#include "demoside/DemoSide.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using waxline::demoside::DemoSideGenerator;
using waxline::demoside::DemoSideOptions;

namespace {

double rmsDb(const std::vector<float>& x, size_t from, size_t to) {
    double sum = 0;
    for (size_t i = from; i < to; ++i)
        sum += static_cast<double>(x[i]) * x[i];
    return 10 * std::log10(sum / static_cast<double>(to - from) + 1e-30);
}

// The whole side rendered, in the generator's blocks.
void renderAll(DemoSideGenerator& gen, std::vector<float>& left, std::vector<float>& right) {
    left.assign(gen.totalFrames(), 0);
    right.assign(gen.totalFrames(), 0);
    size_t pos = 0;
    while (size_t n = gen.render(left.data() + pos, right.data() + pos, 4096))
        pos += n;
    ASSERT_EQ(pos, gen.totalFrames());
}

TEST(DemoSide, MusicIsLoudAndGapsLeadInAndRunOutAreQuiet) {
    DemoSideOptions options;
    options.tracks = 3;
    options.seed = 3;
    DemoSideGenerator gen(options);
    const auto& layout = gen.layout();
    std::vector<float> left, right;
    renderAll(gen, left, right);

    const double rate = layout.sampleRate;
    auto idx = [&](double s) { return static_cast<size_t>(s * rate); };
    ASSERT_EQ(layout.tracks.size(), 3u);
    ASSERT_EQ(layout.gaps.size(), 2u);
    EXPECT_NEAR(layout.runOut.end - layout.runOut.start, 65, 1e-9);
    for (const auto& t : layout.tracks) {
        EXPECT_GT(t.end - t.start, 45);
        EXPECT_GT(rmsDb(left, idx(t.start + 1), idx(t.end - 1)), -25);
    }
    for (const auto& g : layout.gaps) {
        EXPECT_GE(g.end - g.start, 2.5);
        EXPECT_LE(g.end - g.start, 4.0);
        EXPECT_LT(rmsDb(left, idx(g.start + 0.1), idx(g.end - 0.1)), -45);
    }
    EXPECT_LT(rmsDb(left, 0, idx(layout.leadIn.end)), -45);
    EXPECT_LT(rmsDb(right, idx(layout.runOut.start + 0.1), left.size()), -45);
}

// A length fills the side to the frame; more than 40 tracks, or too many for the length, are
// refused.
TEST(DemoSide, LengthOptionFillsTheSideAndImpossibleOptionsAreRefused) {
    DemoSideOptions options;
    options.tracks = 7;
    options.lengthSeconds = 1800;
    DemoSideGenerator gen(options);
    EXPECT_NEAR(gen.layout().length(), 1800, 1e-6);
    EXPECT_EQ(gen.totalFrames(), 1800u * 44100u);
    options.lengthSeconds = 120;
    EXPECT_THROW(DemoSideGenerator{options}, std::invalid_argument);
    options.tracks = 41;
    options.lengthSeconds = 0;
    EXPECT_THROW(DemoSideGenerator{options}, std::invalid_argument);
}

// Mean power in dB of a 200 Hz high-pass (second-order Butterworth) of x over [from, to): the
// band where groove noise and music meet, without rumble.
double bandDb(const std::vector<float>& x, double rate, size_t from, size_t to) {
    const double k = std::tan(M_PI * 200 / rate);
    const double q = std::sqrt(0.5);
    const double norm = 1 / (1 + k / q + k * k);
    const double a1 = 2 * (k * k - 1) * norm, a2 = (1 - k / q + k * k) * norm;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0, sum = 0;
    const size_t settle = from > 4410 ? from - 4410 : 0;
    for (size_t i = settle; i < to; ++i) {
        const double y = norm * (x[i] - 2 * x1 + x2) - a1 * y1 - a2 * y2;
        x2 = x1;
        x1 = x[i];
        y2 = y1;
        y1 = y;
        if (i >= from)
            sum += y * y;
    }
    return 10 * std::log10(sum / static_cast<double>(to - from) + 1e-30);
}

TEST(DemoSide, RealisticSidesVaryAsRealSidesDo) {
    size_t fades = 0, quiet = 0, bursts = 0;
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        DemoSideOptions options;
        options.realistic = true;
        options.tracks = 0;
        options.seed = seed;
        DemoSideGenerator gen(options);
        const auto& side = gen.layout();
        EXPECT_GE(side.tracks.size(), 3u);
        EXPECT_LE(side.tracks.size(), 14u);
        ASSERT_EQ(side.gaps.size(), side.tracks.size() - 1);
        for (const auto& g : side.gaps) {
            EXPECT_GE(g.end - g.start, 1.0);
            EXPECT_LE(g.end - g.start, 5.0);
        }
        EXPECT_EQ(side.softIntros.size(), 1u);
        EXPECT_TRUE(side.humHz == 50 || side.humHz == 60);
        fades += side.fadeIns.size() + side.fadeOuts.size();
        quiet += side.quietPassages.size();
        bursts += side.crackleBursts.size();
    }
    EXPECT_GT(fades, 20u);
    EXPECT_GT(quiet, 10u);
    EXPECT_GT(bursts, 10u);
}

TEST(DemoSide, RealisticQuietPassagesLieAFewDecibelsAboveTheGrooveNoise) {
    DemoSideOptions options;
    options.realistic = true;
    options.tracks = 4;
    options.seed = 2;
    options.lengthSeconds = 300;
    options.realism.quietPassageChance = 1;
    options.realism.crackleInGapChance = 0;
    options.realism.minGapSeconds = 3;
    DemoSideGenerator gen(options);
    const auto& side = gen.layout();
    std::vector<float> left, right;
    renderAll(gen, left, right);
    const double rate = side.sampleRate;
    auto idx = [&](double s) { return static_cast<size_t>(s * rate); };

    ASSERT_GE(side.quietPassages.size(), 3u);
    double gapDb = 0;
    for (const auto& g : side.gaps)
        gapDb += bandDb(left, rate, idx(g.start + 0.5), idx(g.end - 0.5)) /
                 static_cast<double>(side.gaps.size());
    for (const auto& q : side.quietPassages) {
        const double above = bandDb(left, rate, idx(q.start + 0.3), idx(q.end - 0.3)) - gapDb;
        EXPECT_GT(above, 1.0) << q.start;
        EXPECT_LT(above, 12.0) << q.start;
        // Full music a few seconds before the passage is far louder.
        EXPECT_GT(bandDb(left, rate, idx(q.start - 3), idx(q.start - 1.5)) - gapDb, 15) << q.start;
    }
    // Each track dies away to near the groove noise by its end.
    for (const auto& t : side.tracks) {
        const double end = bandDb(left, rate, idx(t.end - 0.1), idx(t.end)) - gapDb;
        EXPECT_LT(end, 8) << t.end;
        EXPECT_GT(end, -1) << t.end;
    }
}

} // namespace
