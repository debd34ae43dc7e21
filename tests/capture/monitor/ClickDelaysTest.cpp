#include "capture/monitor/ClickDelays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace waxline {
namespace {

// A recording of the output: every click of a train heard straight, and again `delays[k]`
// milliseconds later (negative: its copy never came); click `unheard` only as its copy.
std::vector<float> Heard(double rate, const std::vector<double>& delays, int unheard) {
    const std::vector<float> train =
        makeClickTrain(rate, 1.0, static_cast<int>(delays.size()), 0.25);
    std::vector<float> heard(train.size() + static_cast<std::size_t>(rate), 0.0f);
    const auto lead = static_cast<std::size_t>(0.25 * rate);
    const auto burst = static_cast<std::size_t>(kClickSeconds * rate);
    for (std::size_t i = 0; i < train.size(); ++i)
        heard[i] += train[i];
    if (unheard >= 0)
        std::fill_n(heard.begin() + static_cast<std::ptrdiff_t>(lead + unheard * rate), burst,
                    0.0f);
    for (std::size_t k = 0; k < delays.size(); ++k) {
        if (delays[k] < 0)
            continue;
        const std::size_t from = lead + k * static_cast<std::size_t>(rate);
        const auto shift = static_cast<std::size_t>(delays[k] / 1000.0 * rate + 0.5);
        for (std::size_t i = 0; i < burst; ++i)
            heard[from + shift + i] += 0.5f * train[from + i];
    }
    return heard;
}

TEST(ClickDelaysTest, EveryClickGetsTheDelayOfItsCopy) {
    struct Case {
        const char* name;
        double rate;
        std::vector<double> delays; // ms; negative: lost
        double median, worst;
        std::size_t lost;
        int unheard = -1; // a click heard only as its copy
    };
    const Case cases[] = {
        {"steady", 44100, {20, 20, 20, 20}, 20, 20, 0},
        {"shorter than 12 ms", 44100, {6, 8, 10}, 8, 10, 0},
        {"a jump to 370 ms", 44100, {22, 30, 370, 375, 360}, 360, 375, 0},
        {"a lost click", 48000, {15, -1, 25}, 20, 25, 1},
        {"a straight click missing", 44100, {15, 16, 15, 17, 15}, 15, 17, 0, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto found = findClickDelays(Heard(c.rate, c.delays, c.unheard), c.rate, 1.0);
        ASSERT_EQ(found.size(), c.delays.size());
        for (std::size_t k = 0; k < found.size(); ++k) {
            EXPECT_EQ(found[k].lost, c.delays[k] < 0) << k;
            EXPECT_NEAR(found[k].atSeconds, 0.25 + static_cast<double>(k), 1.0 / c.rate);
            if (c.delays[k] >= 0) {
                EXPECT_NEAR(found[k].delayMs, c.delays[k], 1000.0 / c.rate) << k;
            }
        }
        const DelaySummary summary = summarise(found);
        EXPECT_EQ(summary.lost, c.lost);
        EXPECT_NEAR(summary.medianMs, c.median, 1000.0 / c.rate);
        EXPECT_NEAR(summary.worstMs, c.worst, 1000.0 / c.rate);
    }
}

} // namespace
} // namespace waxline
