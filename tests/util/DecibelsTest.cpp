#include "util/Decibels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

// Expected values worked out to 40 digits with Python's decimal module.
TEST(Decibels, DbampAndAmpdbInDoublePrecision) {
    struct Case {
        double dB, amplitude;
    };
    const Case cases[] = {
        {0.0, 1.0},
        {20.0, 10.0},
        {-20.0, 0.1},
        {6.0, 1.995262314968879601352455396739535557986},
        {-6.0, 0.5011872336272722850015541868849457680605},
        {-3.0, 0.7079457843841379108022149421893127093544},
        {2.3, 1.303166778452299387277965397863411011072},
        {-59.5, 0.001059253725177288878809280373278108619979},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.dB);
        EXPECT_NEAR(waxline::dbamp(c.dB), c.amplitude, 4e-16 * c.amplitude);
        EXPECT_NEAR(waxline::ampdb(c.amplitude), c.dB, 1e-13);
    }
    EXPECT_NEAR(waxline::ampdb(0.5), -6.020599913279623904274777894489860535364, 1e-14);
}

// The gain stage holds the gain to -60..+40 dB, so no factor is 0 or infinite, and a NaN gain is
// unity; samples are clamped to full scale above only.
TEST(Decibels, GainFactorAndItsClamp) {
    struct Case {
        double dB;
        float factor;
    };
    const Case cases[] = {{0, 1.0f},     {20, 10.0f},    {40, 100.0f}, {400, 100.0f},
                          {-60, 0.001f}, {-1e9, 0.001f}, {NAN, 1.0f},  {-20, 0.1f}};
    for (const Case& c : cases)
        EXPECT_FLOAT_EQ(waxline::gainFactor(c.dB), c.factor) << c.dB;
    float samples[] = {0.5f, -0.9f, 0.2f, 1.0f};
    waxline::applyGain(samples, 4, 2.0f);
    EXPECT_EQ(std::vector<float>(samples, samples + 4),
              (std::vector<float>{1.0f, -1.8f, 0.4f, 1.0f}));
}

} // namespace
