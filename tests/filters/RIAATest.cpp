#include "filters/RIAA.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using Sonra::Audio::Filters::RIAA;
using waxline::test::sine;
using waxline::test::toDb;
using waxline::test::toneAmplitude;

namespace {

// Each rate's row follows the RIAA recording characteristic, measured with a sine. The 48 kHz
// row is the 44.1 kHz one, so its top end moves with the rate.
TEST(RIAA, EachRateFollowsTheRecordingCurve) {
    const std::pair<unsigned, double> rates[] = {
        {44100, -24.6}, {48000, -25.2}, {88200, -24.6}, {96000, -24.6}};
    for (auto [rate, topDb] : rates)
        for (auto [frequency, expectedDb] :
             {std::pair{20.0, -63.5}, std::pair{1000.0, -44.0}, std::pair{20000.0, topDb}}) {
            RIAA s(RIAA::ToSampleRate(rate));
            auto x = sine(frequency, 0.5, rate, 2 * rate);
            s(x.data(), x.size());
            EXPECT_NEAR(toDb(toneAmplitude(x, frequency, rate, rate) / 0.5), expectedDb, 0.5)
                << rate << " Hz rate, " << frequency << " Hz";
        }
}

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
    // The two rows share their sections, sample for sample.
    RIAA a(RIAA::SR_44100), b(RIAA::SR_48000);
    auto x = sine(1000, 0.5, 44100, 300), y = x;
    a(x.data(), x.size());
    b(y.data(), y.size());
    EXPECT_EQ(x, y);
}

TEST(RIAADeathTest, RowBeyondTheTableStopsTheProgram) {
    EXPECT_DEATH(RIAA(static_cast<RIAA::SampleRate>(4)), "sr < NumCoeffs");
}

} // namespace
