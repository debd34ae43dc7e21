#include "filters/RealFft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <stdexcept>
#include <vector>

using Sonra::Audio::Filters::RealFft;

namespace {

// The power spectrum straight from the definition of the DFT, in double precision.
std::vector<double> directPower(const std::vector<float>& x) {
    const size_t n = x.size();
    std::vector<double> p(n / 2 + 1);
    for (size_t k = 0; k <= n / 2; ++k) {
        double re = 0, im = 0;
        for (size_t t = 0; t < n; ++t) {
            const double a = -2 * M_PI * static_cast<double>(k * t) / static_cast<double>(n);
            re += x[t] * std::cos(a);
            im += x[t] * std::sin(a);
        }
        p[k] = re * re + im * im;
    }
    return p;
}

TEST(RealFft, MatchesTheDefinitionForEverySize) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> u(-1, 1);
    for (size_t n : {4u, 8u, 64u, 512u}) {
        SCOPED_TRACE(n);
        std::vector<float> x(n);
        for (float& v : x)
            v = u(random);
        std::vector<float> got(n / 2 + 1);
        RealFft fft(n);
        fft.powerSpectrum(x.data(), got.data());
        const auto want = directPower(x);
        // Float arithmetic: relative to the total energy, errors stay near 1e-6.
        double energy = 0;
        for (double w : want)
            energy += w;
        for (size_t k = 0; k <= n / 2; ++k)
            EXPECT_NEAR(got[k], want[k], 1e-5 * energy) << "bin " << k;
    }
}

TEST(RealFft, RefusesSizesThatAreNotPowersOfTwo) {
    for (size_t n : {0u, 2u, 3u, 6u, 100u})
        EXPECT_THROW(RealFft{n}, std::invalid_argument) << n;
}

} // namespace
