#include "filters/SideAnalyser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <vector>

using Sonra::Audio::Filters::SideAnalyser;
using Sonra::Audio::Filters::SideFeatures;

namespace {

// Ten seconds of a 660 Hz tone in noise, a second of it louder, as left and right channels.
void makeSignal(std::vector<float>& left, std::vector<float>& right, unsigned rate) {
    std::mt19937 random(3);
    std::normal_distribution<float> noise(0, 0.001f);
    const size_t n = 10 * rate;
    left.resize(n);
    right.resize(n);
    for (size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / rate;
        const double a = t > 4 && t < 5 ? 0.3 : 0.01;
        const float tone = static_cast<float>(a * std::sin(2 * M_PI * 660 * t));
        left[i] = tone + noise(random);
        right[i] = 0.5f * tone + noise(random);
    }
}

TEST(SideAnalyser, TheSameWhateverTheBlocksAndTheLayout) {
    for (unsigned rate : {44100u, 48000u, 96000u}) {
        SCOPED_TRACE(rate);
        std::vector<float> left, right;
        makeSignal(left, right, rate);
        SideAnalyser whole(rate);
        whole.addPlanar(left.data(), right.data(), left.size());
        const SideFeatures& want = whole.features();
        ASSERT_EQ(want.inputFrames, static_cast<int64_t>(left.size()));
        EXPECT_EQ(want.frames(), left.size() / want.hop);
        EXPECT_NEAR(want.frameSeconds(), 0.046, 0.004);

        for (size_t block : {1u, 7u, 1234u, 4096u}) {
            SCOPED_TRACE(block);
            SideAnalyser cut(rate);
            std::vector<float> interleaved(2 * block);
            for (size_t at = 0; at < left.size(); at += block) {
                const size_t n = std::min(block, left.size() - at);
                for (size_t i = 0; i < n; ++i) {
                    interleaved[2 * i] = left[at + i];
                    interleaved[2 * i + 1] = right[at + i];
                }
                cut.addInterleaved(interleaved.data(), n, 2);
            }
            const SideFeatures& got = cut.features();
            ASSERT_EQ(got.frames(), want.frames());
            ASSERT_EQ(got.spectrum.size(), want.spectrum.size());
            // Sums taken in another order round differently, by a hair.
            for (size_t f = 0; f < want.frames(); ++f) {
                EXPECT_NEAR(got.level[f], want.level[f], 1e-3) << f;
                EXPECT_NEAR(got.loudness[f], want.loudness[f], 1e-3) << f;
            }
            size_t offByMore = 0;
            for (size_t i = 0; i < want.spectrum.size(); ++i)
                offByMore += std::abs(got.spectrum[i] - want.spectrum[i]) > 1;
            EXPECT_EQ(offByMore, 0u);
        }
    }
}

TEST(SideAnalyser, TheToneStandsInItsBinAndTheLoudSecondInTheLevel) {
    std::vector<float> left, right;
    makeSignal(left, right, 44100);
    SideAnalyser analyser(44100);
    analyser.addPlanar(left.data(), right.data(), left.size());
    const SideFeatures& f = analyser.features();
    const auto toneBin = static_cast<size_t>(std::lround((660 - f.firstBinHz) / f.binHz));
    const size_t quiet = static_cast<size_t>(2.0 / f.frameSeconds());
    const size_t loud = static_cast<size_t>(4.5 / f.frameSeconds());
    const uint8_t* s = f.spectrumOf(quiet);
    // The tone (mono amplitude 0.0075) rises far above the noise bins around it.
    EXPECT_GT(s[toneBin] - s[toneBin + 20], static_cast<int>(20 / SideFeatures::kSpectrumStepDb));
    // 0.3 against 0.01: 29.5 dB, in the level and the loudness alike (noise adds a little).
    EXPECT_NEAR(f.level[loud] - f.level[quiet], 29.5, 1.5);
    EXPECT_NEAR(f.loudness[loud] - f.loudness[quiet], 29.5, 1.5);
}

TEST(SideAnalyser, RefusesRatesItCannotAnalyse) {
    EXPECT_THROW(SideAnalyser{0}, std::invalid_argument);
    EXPECT_THROW(SideAnalyser{7999}, std::invalid_argument);
}

} // namespace
