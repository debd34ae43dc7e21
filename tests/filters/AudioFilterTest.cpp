#include "filters/AudioFilter.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <vector>

using Sonra::Audio::Filters::AudioFilter;
using Sonra::Audio::Filters::BiQuad;
using waxline::test::sine;
using waxline::test::toDb;
using waxline::test::toneAmplitude;

namespace {

constexpr double kRate = 44100;

// The gain of a preset at one frequency, measured by running a sine through the real object on
// both channels after it has settled.
double presetGainDb(AudioFilter::Type type, double frequency) {
    AudioFilter f;
    f.Set(type);
    const size_t frames = 3 * 44100;
    auto left = sine(frequency, 0.1, kRate, frames);
    auto right = left;
    for (size_t i = 0; i < frames; i += 4096)
        f(left.data() + i, right.data() + i, std::min<size_t>(4096, frames - i));
    EXPECT_EQ(left, right);
    return toDb(toneAmplitude(left, frequency, kRate, 44100) / 0.1);
}

TEST(AudioFilter, PresetsWithinHalfADecibelOfTheirCurves) {
    const struct {
        AudioFilter::Type type;
        double frequency, expectedDb;
    } cases[] = {{AudioFilter::RIAAPlayback, 20, 19},       {AudioFilter::RIAAPlayback, 100, 12.8},
                 {AudioFilter::RIAAPlayback, 1000, 0},      {AudioFilter::RIAAPlayback, 10000, -14},
                 {AudioFilter::RIAAPlayback, 20000, -19.9}, {AudioFilter::ChromeTape, 50, 0},
                 {AudioFilter::ChromeTape, 1000, -0.8},     {AudioFilter::ChromeTape, 3000, -3.7},
                 {AudioFilter::ChromeTape, 20000, -5},      {AudioFilter::BrightSpin, 20, 19.4},
                 {AudioFilter::BrightSpin, 100, 13},        {AudioFilter::BrightSpin, 1000, 1},
                 {AudioFilter::BrightSpin, 10000, 0},       {AudioFilter::NoFilter, 1000, 0}};
    for (const auto& c : cases)
        EXPECT_NEAR(presetGainDb(c.type, c.frequency), c.expectedDb, 0.5)
            << "preset " << c.type << " at " << c.frequency << " Hz";
}

// The presets as independent sections built from the published single-precision values, run
// block by block, section after section.
std::vector<BiQuad> referenceChain(AudioFilter::Type type) {
    switch (type) {
    case AudioFilter::RIAAPlayback:
        return {BiQuad(0.225f, 0.2321032f, 0.052797012f, 0.9147276f, 0.16572149f),
                BiQuad(1.0f, -0.871538f, -0.055509713f, -1.7317901f, 0.7336619f)};
    case AudioFilter::ChromeTape:
        return {BiQuad(0.6013478f, -0.8847261f, 0.33175603f, -1.5921159f, 0.64049363f)};
    case AudioFilter::BrightSpin:
        return {BiQuad(1.0319743f, -0.9609203f, 0.0f, -0.9928946f, 0.0f)};
    default:
        return {};
    }
}

// Different signals on the two channels: a section shared between them would show.
TEST(AudioFilter, BitIdenticalToSectionAfterSectionPerBlock) {
    for (auto type : {AudioFilter::NoFilter, AudioFilter::RIAAPlayback, AudioFilter::ChromeTape,
                      AudioFilter::BrightSpin}) {
        SCOPED_TRACE(type);
        AudioFilter f;
        f.Set(type);
        auto leftRef = referenceChain(type), rightRef = referenceChain(type);
        auto left = sine(440, 0.6, kRate, 20000);
        auto right = sine(97, 0.9, kRate, 20000, 1.0);
        auto expectL = left, expectR = right;
        size_t pos = 0;
        for (size_t block : {1u, 7u, 4096u, 333u, 15563u}) {
            f(left.data() + pos, right.data() + pos, block);
            for (auto& s : leftRef)
                s(expectL.data() + pos, block);
            for (auto& s : rightRef)
                s(expectR.data() + pos, block);
            pos += block;
        }
        ASSERT_EQ(pos, left.size());
        EXPECT_EQ(left, expectL);
        EXPECT_EQ(right, expectR);
    }
}

// NoFilter and unknown types leave nothing of the preset before them.
TEST(AudioFilter, NoFilterAndUnknownTypesPassThrough) {
    for (int type : {0, 7, -1}) {
        AudioFilter f;
        f.Set(AudioFilter::RIAAPlayback);
        f.Set(static_cast<AudioFilter::Type>(type));
        auto left = sine(1234, 1.7, kRate, 512), right = sine(55, 0.3, kRate, 512);
        const auto l0 = left, r0 = right;
        f(left.data(), right.data(), left.size());
        EXPECT_EQ(left, l0) << type;
        EXPECT_EQ(right, r0) << type;
    }
}

TEST(AudioFilter, SettingAgainClearsTheHistory) {
    AudioFilter f;
    f.Set(AudioFilter::ChromeTape);
    auto warmL = sine(300, 0.9, kRate, 1000), warmR = warmL;
    f(warmL.data(), warmR.data(), warmL.size());
    f.Set(AudioFilter::ChromeTape);

    AudioFilter fresh;
    fresh.Set(AudioFilter::ChromeTape);
    std::vector<float> a(8, 0.5f), b(8, 0.5f), c(8, 0.5f), d(8, 0.5f);
    f(a.data(), b.data(), 8);
    fresh(c.data(), d.data(), 8);
    EXPECT_EQ(a, c);
    EXPECT_EQ(b, d);
}

} // namespace
