#include "filters/BiQuad.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <string>
#include <vector>

using Sonra::Audio::Filters::BiQuad;
using waxline::test::sine;
using waxline::test::toDb;
using waxline::test::toneAmplitude;

namespace {

constexpr double kRate = 48000;

// |H(e^jw)| of a section's coefficients, evaluated here rather than by running the filter.
double magnitude(const BiQuad& s, double frequency) {
    const auto c = s.coefficients();
    const std::complex<double> z1 = std::polar(1.0, -2 * M_PI * frequency / kRate);
    const std::complex<double> num = c.b0 + c.b1 * z1 + c.b2 * z1 * z1;
    const std::complex<double> den = 1.0 + c.a1 * z1 + c.a2 * z1 * z1;
    return std::abs(num / den);
}

// The resonance of the cookbook low- and high-pass at the corner: Q = 1 / (2 sinh(ln2/2 BW w0/sin
// w0)).
double cornerGain(double frequency, double bandwidth) {
    const double w0 = 2 * M_PI * frequency / kRate;
    return 1 / (2 * std::sinh(std::log(2.0) / 2 * bandwidth * w0 / std::sin(w0)));
}

struct DesignCase {
    BiQuad::Type type;
    double gainDb;
    unsigned frequency;
    unsigned bandwidth;
    double probe;      // where the response is checked
    double expectedDb; // known property of the design there
};

class BiQuadDesign : public testing::TestWithParam<DesignCase> {};

TEST_P(BiQuadDesign, MatchesTheKnownResponse) {
    const DesignCase& c = GetParam();
    BiQuad s(c.type, c.gainDb, c.frequency, static_cast<unsigned>(kRate), c.bandwidth);
    EXPECT_NEAR(toDb(magnitude(s, c.probe)), c.expectedDb, 0.05)
        << "type " << c.type << " at " << c.probe << " Hz";
}

INSTANTIATE_TEST_SUITE_P(
    Types, BiQuadDesign,
    testing::Values(
        DesignCase{BiQuad::LowPass, 0, 1000, 1, 1e-6, 0},                          // unity at DC
        DesignCase{BiQuad::LowPass, 0, 1000, 1, 1000, toDb(cornerGain(1000, 1))},  // Q at corner
        DesignCase{BiQuad::LowPass, 12, 1000, 2, 1000, toDb(cornerGain(1000, 2))}, // gain unused
        DesignCase{BiQuad::HighPass, 0, 2000, 1, 24000, 0}, // unity at Nyquist
        DesignCase{BiQuad::HighPass, 0, 2000, 1, 2000, toDb(cornerGain(2000, 1))},
        DesignCase{BiQuad::BandPass, 0, 1000, 1, 1000, 0}, // 0 dB peak
        DesignCase{BiQuad::Notch, 0, 3000, 1, 100, 0},
        DesignCase{BiQuad::Peak, 6, 1000, 1, 1000, 6}, // the gain at the centre
        DesignCase{BiQuad::Peak, -9, 5000, 2, 5000, -9},
        DesignCase{BiQuad::LowShelf, 6, 500, 1, 1e-6, 6}, // shelf gain at DC
        DesignCase{BiQuad::LowShelf, 6, 500, 1, 24000, 0},
        DesignCase{BiQuad::HighShelf, -6, 4000, 1, 24000, -6},
        DesignCase{BiQuad::HighShelf, -6, 4000, 1, 1e-6, 0}));

TEST(BiQuad, BandPassEdgesAreHalfPowerPointsAnOctaveApart) {
    BiQuad s(BiQuad::BandPass, 0, 1000, static_cast<unsigned>(kRate), 1);
    EXPECT_NEAR(toDb(magnitude(s, 1000 / std::sqrt(2.0))), -3.01, 0.15);
    EXPECT_NEAR(toDb(magnitude(s, 1000 * std::sqrt(2.0))), -3.01, 0.15);
}

TEST(BiQuad, NotchRemovesItsCentre) {
    BiQuad s(BiQuad::Notch, 0, 3000, static_cast<unsigned>(kRate), 1);
    EXPECT_LT(magnitude(s, 3000), 1e-9);
}

TEST(BiQuad, InvalidTypeThrowsItsText) {
    try {
        BiQuad s(static_cast<BiQuad::Type>(7), 0, 1000, 44100, 1);
        FAIL() << "no throw";
    } catch (const std::string& text) {
        EXPECT_EQ(text, "Invalid filter type");
    }
}

TEST(BiQuad, ShelvesIgnoreTheBandwidth) {
    for (auto type : {BiQuad::LowShelf, BiQuad::HighShelf}) {
        const auto a = BiQuad(type, 8, 800, 44100, 1).coefficients();
        const auto b = BiQuad(type, 8, 800, 44100, 5).coefficients();
        EXPECT_EQ(a.b0, b.b0);
        EXPECT_EQ(a.b1, b.b1);
        EXPECT_EQ(a.b2, b.b2);
        EXPECT_EQ(a.a1, b.a1);
        EXPECT_EQ(a.a2, b.a2);
    }
}

TEST(BiQuad, PeakWithNoGainIsUnity) {
    const auto c = BiQuad(BiQuad::Peak, 0, 1000, 44100, 1).coefficients();
    EXPECT_EQ(c.b0, 1.0);
    EXPECT_EQ(c.b1, c.a1);
    EXPECT_EQ(c.b2, c.a2);
}

TEST(BiQuad, IdentitySectionLeavesSamplesUnchanged) {
    BiQuad s(1, 0, 0, 0, 0);
    std::vector<float> x = {0.1f, -0.7f, 1.5f, 3e-8f, -0.0f};
    const std::vector<float> original = x;
    s(x.data(), x.size());
    EXPECT_EQ(x, original);
}

TEST(BiQuad, HandWorkedImpulseResponse) {
    // y[n] = 0.5x[n] + 0.25x[n-1] + 0.125x[n-2] - 0.5y[n-1] - 0.25y[n-2], worked by hand.
    BiQuad s(0.5, 0.25, 0.125, 0.5, 0.25);
    std::vector<float> x = {1, 0, 0, 0, 0};
    s(x.data(), x.size());
    const std::vector<float> expected = {0.5f, 0.0f, 0.0f, 0.0f, 0.0f};
    EXPECT_EQ(x, expected);
    std::vector<float> step = {1, 1, 1};
    BiQuad t(0.5, 0.25, 0.125, 0.5, 0.25);
    t(step.data(), step.size());
    // 0.5; 0.75 - 0.25 = 0.5; 0.875 - 0.25 - 0.125 = 0.5
    EXPECT_EQ(step, (std::vector<float>{0.5f, 0.5f, 0.5f}));
}

TEST(BiQuad, ProcessesAsItsTransferFunctionSays) {
    BiQuad s(BiQuad::Peak, 9, 2000, static_cast<unsigned>(kRate), 1);
    s.Reset();
    for (double f : {200.0, 2000.0, 9000.0}) {
        auto x = sine(f, 0.25, kRate, 48000);
        s.Reset();
        s(x.data(), x.size());
        const double measured = toneAmplitude(x, f, kRate, 24000) / 0.25;
        EXPECT_NEAR(toDb(measured), toDb(magnitude(s, f)), 0.02) << f << " Hz";
    }
}

TEST(BiQuad, BlockCutsDoNotChangeTheOutput) {
    const auto input = sine(997, 0.8, 44100, 9000);
    BiQuad reference(BiQuad::LowPass, 0, 3000, 44100, 1);
    reference.Reset();
    auto whole = input;
    reference(whole.data(), whole.size());

    for (size_t block : {1u, 7u, 1234u, 4096u}) {
        BiQuad s(BiQuad::LowPass, 0, 3000, 44100, 1);
        s.Reset();
        auto cut = input;
        for (size_t i = 0; i < cut.size(); i += block)
            s(cut.data() + i, std::min(block, cut.size() - i));
        EXPECT_EQ(cut, whole) << "blocks of " << block;
    }
}

TEST(BiQuad, StateCarriesOverUntilReset) {
    BiQuad s(BiQuad::HighPass, 0, 500, 44100, 1);
    s.Reset();
    const auto input = sine(300, 0.5, 44100, 64);
    auto first = input, second = input, third = input;
    s(first.data(), first.size());
    s(second.data(), second.size());
    EXPECT_NE(first, second) << "the second run continues from the first";
    s.Reset();
    s(third.data(), third.size());
    EXPECT_EQ(first, third);
}

TEST(BiQuad, ZeroCountChangesNothing) {
    BiQuad s(BiQuad::LowPass, 0, 500, 44100, 1);
    s.Reset();
    auto a = sine(300, 0.5, 44100, 32);
    auto b = a;
    BiQuad t = s;
    s(a.data(), a.size());
    s(nullptr, 0);
    std::vector<float> next(8, 0.25f), nextRef(8, 0.25f);
    s(next.data(), next.size());
    t(b.data(), b.size());
    t(nextRef.data(), nextRef.size());
    EXPECT_EQ(next, nextRef);
}

TEST(BiQuad, CopyStartsFromClearStateAndOriginalKeepsItsHistory) {
    BiQuad s(BiQuad::LowPass, 0, 2000, 44100, 1);
    s.Reset();
    auto warm = sine(440, 0.9, 44100, 500);
    s(warm.data(), warm.size());

    BiQuad copy(s);
    BiQuad fresh(BiQuad::LowPass, 0, 2000, 44100, 1);
    fresh.Reset();
    std::vector<float> a(16, 0.5f), b(16, 0.5f), c(16, 0.5f);
    copy(a.data(), a.size());
    fresh(b.data(), b.size());
    s(c.data(), c.size());
    EXPECT_EQ(a, b);
    EXPECT_NE(c, b);
}

} // namespace
