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
double cornerDb(double frequency, double bandwidth) {
    const double w0 = 2 * M_PI * frequency / kRate;
    return toDb(1 / (2 * std::sinh(std::log(2.0) / 2 * bandwidth * w0 / std::sin(w0))));
}

TEST(BiQuad, EachDesignHasItsKnownResponse) {
    struct Case {
        BiQuad::Type type;
        double gainDb;
        unsigned frequency, bandwidth;
        double probe;      // where the response is checked
        double expectedDb; // known property of the design there
        double toleranceDb = 0.05;
    };
    const double edge = std::sqrt(2.0);
    const Case cases[] = {
        {BiQuad::LowPass, 0, 1000, 1, 1e-6, 0},                   // unity at DC
        {BiQuad::LowPass, 0, 1000, 1, 1000, cornerDb(1000, 1)},   // Q at the corner
        {BiQuad::LowPass, 12, 1000, 2, 1000, cornerDb(1000, 2)},  // gain unused
        {BiQuad::HighPass, 0, 2000, 1, 24000, 0},                 // unity at Nyquist
        {BiQuad::HighPass, 0, 2000, 1, 2000, cornerDb(2000, 1)},  //
        {BiQuad::BandPass, 0, 1000, 1, 1000, 0},                  // 0 dB peak
        {BiQuad::BandPass, 0, 1000, 1, 1000 / edge, -3.01, 0.15}, // half power an octave apart
        {BiQuad::BandPass, 0, 1000, 1, 1000 * edge, -3.01, 0.15}, //
        {BiQuad::Notch, 0, 3000, 1, 100, 0},                      //
        {BiQuad::Peak, 6, 1000, 1, 1000, 6},                      // the gain at the centre
        {BiQuad::Peak, -9, 5000, 2, 5000, -9},                    //
        {BiQuad::LowShelf, 6, 500, 1, 1e-6, 6},                   // shelf gain at DC
        {BiQuad::LowShelf, 6, 500, 1, 24000, 0},                  //
        {BiQuad::HighShelf, -6, 4000, 1, 24000, -6},              //
        {BiQuad::HighShelf, -6, 4000, 1, 1e-6, 0}};
    for (const Case& c : cases) {
        BiQuad s(c.type, c.gainDb, c.frequency, static_cast<unsigned>(kRate), c.bandwidth);
        EXPECT_NEAR(toDb(magnitude(s, c.probe)), c.expectedDb, c.toleranceDb)
            << "type " << c.type << " at " << c.probe << " Hz";
    }
    EXPECT_LT(magnitude(BiQuad(BiQuad::Notch, 0, 3000, static_cast<unsigned>(kRate), 1), 3000),
              1e-9)
        << "the notch removes its centre";
}

TEST(BiQuad, ExactCoefficientsAndTheInvalidType) {
    for (auto type : {BiQuad::LowShelf, BiQuad::HighShelf}) {
        const auto a = BiQuad(type, 8, 800, 44100, 1).coefficients();
        const auto b = BiQuad(type, 8, 800, 44100, 5).coefficients();
        EXPECT_TRUE(a.b0 == b.b0 && a.b1 == b.b1 && a.b2 == b.b2 && a.a1 == b.a1 && a.a2 == b.a2)
            << "shelves ignore the bandwidth: " << type;
    }
    const auto flat = BiQuad(BiQuad::Peak, 0, 1000, 44100, 1).coefficients();
    EXPECT_EQ(flat.b0, 1.0) << "a peak with no gain is unity";
    EXPECT_EQ(flat.b1, flat.a1);
    EXPECT_EQ(flat.b2, flat.a2);
    try {
        BiQuad s(static_cast<BiQuad::Type>(7), 0, 1000, 44100, 1);
        FAIL() << "no throw";
    } catch (const std::string& text) {
        EXPECT_EQ(text, "Invalid filter type");
    }
}

TEST(BiQuad, HandWorkedOutputs) {
    BiQuad identity(1, 0, 0, 0, 0);
    std::vector<float> x = {0.1f, -0.7f, 1.5f, 3e-8f, -0.0f};
    const std::vector<float> original = x;
    identity(x.data(), x.size());
    EXPECT_EQ(x, original);

    // y[n] = 0.5x[n] + 0.25x[n-1] + 0.125x[n-2] - 0.5y[n-1] - 0.25y[n-2], worked by hand.
    BiQuad s(0.5, 0.25, 0.125, 0.5, 0.25);
    std::vector<float> impulse = {1, 0, 0, 0, 0};
    s(impulse.data(), impulse.size());
    EXPECT_EQ(impulse, (std::vector<float>{0.5f, 0.0f, 0.0f, 0.0f, 0.0f}));
    std::vector<float> step = {1, 1, 1};
    BiQuad t(0.5, 0.25, 0.125, 0.5, 0.25);
    t(step.data(), step.size());
    // 0.5; 0.75 - 0.25 = 0.5; 0.875 - 0.25 - 0.125 = 0.5
    EXPECT_EQ(step, (std::vector<float>{0.5f, 0.5f, 0.5f}));
}

TEST(BiQuad, ProcessesAsItsTransferFunctionSays) {
    BiQuad s(BiQuad::Peak, 9, 2000, static_cast<unsigned>(kRate), 1);
    for (double f : {200.0, 2000.0, 9000.0}) {
        auto x = sine(f, 0.25, kRate, 48000);
        s.Reset();
        s(x.data(), x.size());
        const double measured = toneAmplitude(x, f, kRate, 24000) / 0.25;
        EXPECT_NEAR(toDb(measured), toDb(magnitude(s, f)), 0.02) << f << " Hz";
    }
}

// Empty calls between the blocks must not disturb the state either.
TEST(BiQuad, BlockCutsAndEmptyCallsDoNotChangeTheOutput) {
    const auto input = sine(997, 0.8, 44100, 9000);
    BiQuad reference(BiQuad::LowPass, 0, 3000, 44100, 1);
    reference.Reset();
    auto whole = input;
    reference(whole.data(), whole.size());

    for (size_t block : {1u, 7u, 1234u, 4096u}) {
        BiQuad s(BiQuad::LowPass, 0, 3000, 44100, 1);
        s.Reset();
        auto cut = input;
        for (size_t i = 0; i < cut.size(); i += block) {
            s(cut.data() + i, std::min(block, cut.size() - i));
            s(nullptr, 0);
        }
        EXPECT_EQ(cut, whole) << "blocks of " << block;
    }
}

TEST(BiQuad, CopiesAndResetStartFromClearState) {
    BiQuad s(BiQuad::LowPass, 0, 2000, 44100, 1);
    s.Reset();
    auto run = [](BiQuad& section) {
        std::vector<float> x(16, 0.5f);
        section(x.data(), x.size());
        return x;
    };
    BiQuad fresh(s);
    const auto fromClear = run(fresh);
    auto warm = sine(440, 0.9, 44100, 500);
    s(warm.data(), warm.size());

    BiQuad copy(s);
    EXPECT_EQ(run(copy), fromClear) << "a copy never inherits the history";
    BiQuad assigned(BiQuad::HighPass, 0, 500, 44100, 1);
    assigned.Reset();
    run(assigned); // a history of its own, which assignment must clear
    assigned = s;
    EXPECT_EQ(run(assigned), fromClear);
    EXPECT_NE(run(s), fromClear) << "the original keeps its history";
    s.Reset();
    EXPECT_EQ(run(s), fromClear);
}

} // namespace
