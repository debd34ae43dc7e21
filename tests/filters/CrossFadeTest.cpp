// Where a cross-fade's middle is read from a side's level: shapes of level whose hand-over
// point is known from how they were drawn.
#include "filters/CrossFade.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace Sonra::Audio::Filters;

namespace {

constexpr double kRate = 11025;
constexpr size_t kHop = 512;

struct Shape {
    const char* name;
    // Level in dB against seconds, piecewise linear through these corners.
    std::vector<std::pair<double, double>> corners;
    double searchFrom; // seconds
    double searchTo;
    double earliest; // where the answer may lie, seconds
    double latest;
};

SideFeatures draw(const Shape& s) {
    SideFeatures f;
    f.sampleRate = kRate;
    f.hop = kHop;
    const double frameSeconds = static_cast<double>(kHop) / kRate;
    const double end = s.corners.back().first;
    for (double t = 0; t < end; t += frameSeconds) {
        size_t i = 1;
        while (i + 1 < s.corners.size() && s.corners[i].first < t)
            ++i;
        const auto [t0, l0] = s.corners[i - 1];
        const auto [t1, l1] = s.corners[i];
        f.level.push_back(static_cast<float>(l0 + (l1 - l0) * (t - t0) / (t1 - t0)));
    }
    f.inputFrames = static_cast<int64_t>(f.level.size() * kHop);
    return f;
}

class CrossFadeShapes : public testing::TestWithParam<Shape> {};

TEST_P(CrossFadeShapes, FindsWhereTheIncomingPieceTakesOver) {
    const Shape& s = GetParam();
    const SideFeatures f = draw(s);
    const double frameSeconds = f.frameSeconds();
    const auto from = static_cast<size_t>(s.searchFrom / frameSeconds);
    const auto to = static_cast<size_t>(s.searchTo / frameSeconds);
    const size_t fallback = (from + to) / 2;
    const size_t at = CrossFade::middle(f, from, to, fallback);
    const double seconds = (static_cast<double>(at) + 0.5) * frameSeconds;
    EXPECT_GE(seconds, s.earliest);
    EXPECT_LE(seconds, s.latest);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, CrossFadeShapes,
    testing::Values(
        // Both pieces at -20 dB, each falling or rising 40 dB over 4 s: a V whose bottom,
        // at 10 s, is where they cross.
        Shape{"EvenVee", {{0, -20}, {8, -20}, {10, -40}, {12, -20}, {20, -20}}, 7, 13, 9.8, 10.3},
        // The outgoing piece gone under the noise at 6 s; the incoming one rises out of it at
        // 11 s, and only there does it take over.
        Shape{"OutgoingFadedEarly",
              {{0, -20}, {6, -60}, {11, -60}, {13, -20}, {20, -20}},
              8,
              14,
              10.7,
              11.3},
        // A softer incoming piece: the crossing, and the bottom, lie later.
        Shape{"SofterIncoming",
              {{0, -20}, {8, -20}, {11, -50}, {12, -35}, {20, -35}},
              8,
              14,
              10.8,
              11.3},
        // Nothing to search: the caller's own guess stands.
        Shape{"EmptyRange", {{0, -20}, {20, -20}}, 12, 12, 11.9, 12.1}),
    [](const testing::TestParamInfo<Shape>& info) { return std::string(info.param.name); });

} // namespace
