#include "util/Decibels.h"

#include <gtest/gtest.h>

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

} // namespace
