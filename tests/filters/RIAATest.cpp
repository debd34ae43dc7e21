#include "filters/RIAA.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <string>

using Sonra::Audio::Filters::RIAA;
using waxline::test::sine;
using waxline::test::toDb;
using waxline::test::toneAmplitude;

namespace {

struct RowCase {
    unsigned rate;
    double frequency;
    double expectedDb;
};

class RIAARow : public testing::TestWithParam<RowCase> {};

// Each row is the RIAA recording characteristic at its own rate, measured with a sine.
TEST_P(RIAARow, FollowsTheRecordingCurve) {
    const auto& c = GetParam();
    RIAA s(RIAA::ToSampleRate(c.rate));
    auto x = sine(c.frequency, 0.5, c.rate, 2 * c.rate);
    s(x.data(), x.size());
    EXPECT_NEAR(toDb(toneAmplitude(x, c.frequency, c.rate, c.rate) / 0.5), c.expectedDb, 0.5)
        << c.rate << " Hz rate, " << c.frequency << " Hz";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RIAARow,
    testing::Values(RowCase{44100, 20, -63.5}, RowCase{44100, 1000, -44},
                    RowCase{44100, 20000, -24.6}, RowCase{48000, 20, -63.5},
                    RowCase{48000, 1000, -44},
                    // The 48 kHz row is the 44.1 kHz one, so its top end moves with the rate.
                    RowCase{48000, 20000, -25.2}, RowCase{88200, 20, -63.5},
                    RowCase{88200, 1000, -44}, RowCase{88200, 20000, -24.6},
                    RowCase{96000, 20, -63.5}, RowCase{96000, 1000, -44},
                    RowCase{96000, 20000, -24.6}));

TEST(RIAA, RatesMapToRowsAndOthersThrow) {
    EXPECT_EQ(RIAA::ToSampleRate(44100), RIAA::SR_44100);
    EXPECT_EQ(RIAA::ToSampleRate(48000), RIAA::SR_48000);
    EXPECT_EQ(RIAA::ToSampleRate(88200), RIAA::SR_88200);
    EXPECT_EQ(RIAA::ToSampleRate(96000), RIAA::SR_96000);
    for (unsigned bad : {0u, 22050u, 44101u, 192000u}) {
        try {
            RIAA::ToSampleRate(bad);
            ADD_FAILURE() << bad << " did not throw";
        } catch (const std::string& text) {
            EXPECT_EQ(text, "RIAA filter: invalid sample rate");
        }
    }
}

TEST(RIAA, FortyFourAndFortyEightKilohertzGiveIdenticalSections) {
    RIAA a(RIAA::ToSampleRate(44100)), b(RIAA::ToSampleRate(48000));
    auto x = sine(1000, 0.5, 44100, 300), y = x;
    a(x.data(), x.size());
    b(y.data(), y.size());
    EXPECT_EQ(x, y);
}

TEST(RIAADeathTest, RowBeyondTheTableStopsTheProgram) {
    EXPECT_DEATH(RIAA(static_cast<RIAA::SampleRate>(4)), "sr < NumCoeffs");
}

} // namespace
