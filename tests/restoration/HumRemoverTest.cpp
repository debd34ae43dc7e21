#include "restoration/HumRemover.h"

#include "support/Signals.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace waxline::restoration;
using waxline::test::sine;
using waxline::test::toDb;
using waxline::test::toneAmplitude;

TEST(HumRemover, FindsHumOnlyWhereThereIsHumAndNotchesIt) {
    const struct {
        const char* name;
        double mains; // 0: no hum
        double level;
        HumChoice choice;
    } rows[] = {
        {"50 Hz mains, found by itself", 50.03, 0.01, HumChoice::Auto},
        {"60 Hz mains, found by itself", 59.97, 0.005, HumChoice::Auto},
        {"50 Hz asked for", 50.0, 0.003, HumChoice::Hz50},
        {"no hum", 0, 0, HumChoice::Auto},
        {"60 Hz asked for on 50 Hz hum", 50.0, 0.01, HumChoice::Hz60},
    };
    const double rate = 44100;
    const size_t frames = 44100 * 6;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::mt19937 random(5);
        std::normal_distribution<double> noise(0, 0.001);
        std::vector<float> x(frames);
        for (auto& v : x)
            v = static_cast<float>(noise(random));
        // Hum as a power supply makes it: a fundamental and odd and even harmonics.
        const std::vector<std::pair<int, double>> harmonics{{1, 1.0}, {2, 0.5}, {3, 0.3}};
        if (row.mains > 0)
            for (auto [h, share] : harmonics) {
                const auto tone = sine(row.mains * h, row.level * share, rate, frames, h);
                for (size_t i = 0; i < frames; ++i)
                    x[i] += tone[i];
            }
        // A probe tone well away from the notches, whose level must not move.
        const auto probe = sine(1237, 0.1, rate, frames);
        for (size_t i = 0; i < frames; ++i)
            x[i] += probe[i];

        const HumProfile hum = findHum(x, rate, row.choice);
        const bool expected = row.mains > 0 && !(row.choice == HumChoice::Hz60 && row.mains < 55);
        ASSERT_EQ(hum.present(), expected);
        if (!expected)
            continue;
        EXPECT_NEAR(hum.fundamental, row.mains, 0.02);
        EXPECT_EQ(hum.harmonics, (std::vector<int>{1, 2, 3}));

        std::vector<float> cleaned = x;
        removeHum(cleaned, rate, hum);
        const size_t from = 44100; // past the notches' settling at the ends
        const std::vector<float> middle(cleaned.begin() + from, cleaned.end() - from);
        const std::vector<float> original(x.begin() + from, x.end() - from);
        for (auto [h, share] : harmonics) {
            const double before = toneAmplitude(original, row.mains * h, rate);
            const double after = toneAmplitude(middle, row.mains * h, rate);
            EXPECT_GT(toDb(before / after), 30.0) << "harmonic " << h;
        }
        EXPECT_NEAR(toDb(toneAmplitude(middle, 1237, rate) / 0.1), 0.0, 0.01);
    }
}

} // namespace
