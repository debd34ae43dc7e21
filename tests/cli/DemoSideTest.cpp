#include "cli/DemoSide.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using waxline::cli::DemoSideGenerator;
using waxline::cli::DemoSideOptions;

namespace {

double rmsDb(const std::vector<float>& x, size_t from, size_t to) {
    double sum = 0;
    for (size_t i = from; i < to; ++i)
        sum += static_cast<double>(x[i]) * x[i];
    return 10 * std::log10(sum / static_cast<double>(to - from) + 1e-30);
}

TEST(DemoSide, MusicIsLoudAndGapsLeadInAndRunOutAreQuiet) {
    DemoSideOptions options;
    options.tracks = 3;
    options.seed = 3;
    DemoSideGenerator gen(options);
    const auto& layout = gen.layout();
    std::vector<float> left(gen.totalFrames()), right(gen.totalFrames());
    size_t pos = 0;
    while (size_t n = gen.render(left.data() + pos, right.data() + pos, 4096))
        pos += n;
    ASSERT_EQ(pos, gen.totalFrames());

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

TEST(DemoSide, LengthOptionFillsTheSide) {
    DemoSideOptions options;
    options.tracks = 7;
    options.lengthSeconds = 1800;
    DemoSideGenerator gen(options);
    EXPECT_NEAR(gen.layout().length(), 1800, 1e-6);
    EXPECT_EQ(gen.totalFrames(), 1800u * 44100u);
}

TEST(DemoSide, ImpossibleOptionsAreRefused) {
    DemoSideOptions tooMany;
    tooMany.tracks = 41;
    EXPECT_THROW(DemoSideGenerator{tooMany}, std::invalid_argument);
    DemoSideOptions tooShort;
    tooShort.tracks = 5;
    tooShort.lengthSeconds = 120;
    EXPECT_THROW(DemoSideGenerator{tooShort}, std::invalid_argument);
}

} // namespace
