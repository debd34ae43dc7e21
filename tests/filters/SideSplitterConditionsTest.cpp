// The whole-side splitter under the conditions real media bring, one small generated side per
// condition: where each gap or cross-fade lies is known from how the side was put together.
#include "filters/ProposalTrust.h"
#include "filters/SideAnalyser.h"
#include "filters/SideSplitter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

using namespace Sonra::Audio::Filters;

namespace {

enum class Mode { Free, Count, Durations };

struct Condition {
    const char* name;
    unsigned rate;
    int tracks;
    double trackSeconds;
    double gapSeconds;  // 0: the tracks cross-fade over 4 s instead
    double fadeSeconds; // each track's fade-out, to digital silence when noiseInMusic is off
    double noiseDb;     // hiss per channel
    bool noiseInMusic;  // under the music too, or only where no track plays
    double quietDb;     // a passage this far down in the middle of track 1; 0 for none
    bool applause;      // clapping fills the gaps
    double peakDb;
    Mode mode;
    // The quiet passage is soft unpitched sound below 800 Hz (brushes, a pad) instead of chords.
    bool softLow = false;
};

struct Built {
    // Where each boundary may lie: the gap, from where the fade sinks under the noise, or
    // within 1 s of a cross-fade's middle.
    std::vector<double> earliest;
    std::vector<double> latest;
    std::vector<double> durations; // the sleeve's
    SideSplitter splitter;
};

double db(double v) {
    return std::pow(10.0, v / 20);
}

// Chords of three partials that change every half second or so, with a soft attack and decay
// and a little noise on each onset: enough like music for every cue the splitter reads.
Built build(const Condition& c) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> uniform(0, 1);
    std::normal_distribution<double> gauss(0, 1);
    const double rate = c.rate;
    const double lead = 3;
    const double crossFade = 4;
    const double step =
        c.gapSeconds > 0 ? c.trackSeconds + c.gapSeconds : c.trackSeconds - crossFade;
    const double length = lead + step * (c.tracks - 1) + c.trackSeconds + 6;
    const auto frames = static_cast<size_t>(length * rate);
    std::vector<float> music(frames, 0.0f);
    for (int t = 0; t < c.tracks; ++t) {
        const double start = lead + step * t;
        double noteEnd = start;
        double f[3] = {};
        double low = 0;
        for (size_t i = static_cast<size_t>(start * rate);
             i < std::min(frames, static_cast<size_t>((start + c.trackSeconds) * rate)); ++i) {
            const double s = static_cast<double>(i) / rate;
            if (s >= noteEnd) {
                const double root = 110 * std::pow(2.0, std::floor(uniform(random) * 24) / 12);
                f[0] = root, f[1] = root * 1.25, f[2] = root * 1.5;
                noteEnd = s + 0.4 + 0.4 * uniform(random);
            }
            const double age = s - (noteEnd - 0.6);
            double v = 0;
            for (double hz : f)
                v += std::sin(6.283185307 * hz * s) / 3;
            v *= std::exp(-2 * std::max(0.0, age)) + 0.2;
            v += 0.1 * gauss(random) * std::exp(-40 * std::max(0.0, age));
            double gain = std::min(1.0, (s - start) / 0.2);
            const double end = start + c.trackSeconds;
            if (c.gapSeconds == 0 && t + 1 < c.tracks)
                gain *= db(-40 * std::clamp(1 - (end - s) / crossFade, 0.0, 1.0));
            else if (s > end - c.fadeSeconds)
                gain *= db(-60 * (s - (end - c.fadeSeconds)) / c.fadeSeconds);
            if (c.gapSeconds == 0 && t > 0)
                gain *= db(-40 * std::clamp(1 - (s - start) / crossFade, 0.0, 1.0));
            const bool passage = t == 0 && c.quietDb < 0 && s > start + 20 && s < start + 35;
            if (passage)
                gain *= db(c.quietDb);
            if (passage && c.softLow) {
                low += 0.05 * (gauss(random) - low);
                v = 4 * low;
            }
            music[i] += static_cast<float>(v * gain * db(c.peakDb));
        }
    }
    Built b{{}, {}, {}, SideSplitter(SideFeatures{})};
    const double unheard = c.fadeSeconds * std::max(0.0, 1 - (c.peakDb - c.noiseDb) / 60);
    std::vector<double> middles;
    for (int t = 0; t + 1 < c.tracks; ++t) {
        const double end = lead + step * t + c.trackSeconds;
        middles.push_back(c.gapSeconds > 0 ? end + c.gapSeconds / 2 : end - crossFade / 2);
        b.earliest.push_back(c.gapSeconds > 0 ? end - unheard : middles.back() - 1);
        b.latest.push_back(c.gapSeconds > 0 ? end + c.gapSeconds : middles.back() + 1);
    }
    double previous = lead;
    for (double at : middles) {
        b.durations.push_back(std::round(at - previous));
        previous = at;
    }
    b.durations.push_back(std::round(lead + step * (c.tracks - 1) + c.trackSeconds - previous));

    SideAnalyser analyser(c.rate);
    std::vector<float> block(2 * 4096);
    const double noise = db(c.noiseDb);
    for (size_t i = 0; i < frames; i += 4096) {
        const size_t n = std::min<size_t>(4096, frames - i);
        for (size_t k = 0; k < n; ++k) {
            const double s = static_cast<double>(i + k) / rate;
            bool inTrack = false;
            bool inGap = false;
            for (int t = 0; t < c.tracks; ++t) {
                const double start = lead + step * t;
                inTrack = inTrack || (s >= start && s < start + c.trackSeconds);
                inGap = inGap || (t + 1 < c.tracks && s >= start + c.trackSeconds &&
                                  s < start + c.trackSeconds + c.gapSeconds);
            }
            double hiss = c.noiseInMusic || !inTrack ? noise * gauss(random) : 0;
            // Claps: bright bursts dense enough to keep the gap loud throughout.
            if (c.applause && inGap && uniform(random) < 0.004)
                hiss += db(c.peakDb - 12) * gauss(random) * 4;
            block[2 * k] = music[i + k] + static_cast<float>(hiss);
            block[2 * k + 1] =
                music[i + k] +
                static_cast<float>(c.noiseInMusic || !inTrack ? noise * gauss(random) : 0);
        }
        analyser.addInterleaved(block.data(), n, 2);
    }
    b.splitter = SideSplitter(analyser.takeFeatures());
    return b;
}

class SideSplitterConditions : public testing::TestWithParam<Condition> {};

// Each gap or cross-fade gets its one boundary and nothing else does.
TEST_P(SideSplitterConditions, FindsEveryBoundaryAndNothingElse) {
    const Condition& c = GetParam();
    const Built b = build(c);
    const SplitProposal p = c.mode == Mode::Free    ? b.splitter.propose()
                            : c.mode == Mode::Count ? b.splitter.proposeCount(c.tracks)
                                                    : b.splitter.proposeDurations(b.durations);
    ASSERT_EQ(p.problem, SplitProposal::Problem::None);
    ASSERT_EQ(p.boundaries.size(), b.earliest.size());
    for (size_t i = 0; i < b.earliest.size(); ++i) {
        const double at = static_cast<double>(p.boundaries[i].sample) / c.rate;
        EXPECT_GE(at, b.earliest[i]) << "boundary " << i + 1;
        EXPECT_LE(at, b.latest[i]) << "boundary " << i + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Conditions, SideSplitterConditions,
    testing::Values(
        // name, rate, tracks, track s, gap s, fade s, noise dB, under music, quiet dB,
        // applause, peak dB, mode
        Condition{"DigitalSilenceFadeTails", 44100, 4, 40, 2.5, 6, -50, false, 0, false, -12,
                  Mode::Free},
        Condition{"NoiseUnderTheMusic", 44100, 4, 40, 2, 3, -46, true, 0, false, -18, Mode::Free},
        Condition{"Pianissimo", 44100, 3, 60, 2.5, 3, -62, true, -30, false, -10, Mode::Count},
        Condition{"LiveApplauseGap", 44100, 3, 40, 6, 1, -50, true, 0, true, -10, Mode::Count},
        Condition{"At48kHz", 48000, 4, 40, 1.2, 4, -52, true, 0, false, -15, Mode::Free},
        Condition{"LoudTapeHissShortGaps", 44100, 6, 40, 1.5, 2, -35, true, 0, false, -8,
                  Mode::Free},
        Condition{"SegueWithDurations", 44100, 4, 40, 0, 3, -55, true, 0, false, -12,
                  Mode::Durations},
        Condition{"SoftLowPassage", 44100, 3, 60, 2.5, 3, -60, true, -45, false, -10, Mode::Free,
                  true}),
    [](const testing::TestParamInfo<Condition>& info) { return std::string(info.param.name); });

} // namespace

namespace {

struct TrustCase {
    const char* name;
    int extraTracks;          // asked of the splitter beyond the side's own count
    std::vector<double> live; // live splits: gap numbers (1-based) or seconds when negative
    ProposalTrust::Choice choice;
    ProposalTrust::Reason reason;
};

class ProposalTrustCases : public testing::TestWithParam<TrustCase> {};

// The proposal replaces the live splits only when every difference is sure.
TEST_P(ProposalTrustCases, TrustsTheProposalOnlyWhenSure) {
    const TrustCase& t = GetParam();
    // Four tracks; the first holds a passage 30 dB down from 20 s to 35 s of it (23-38 s).
    const Condition c{"", 44100, 4, 60, 2.5, 3, -62, true, -30, false, -10, Mode::Count};
    const Built b = build(c);
    std::vector<int64_t> live;
    for (double g : t.live) {
        const double at = g > 0 ? 0.5 * (b.earliest[size_t(g) - 1] + b.latest[size_t(g) - 1]) : -g;
        live.push_back(static_cast<int64_t>(at * c.rate));
    }
    const SplitProposal p = b.splitter.proposeCount(c.tracks + t.extraTracks);
    const ProposalTrust verdict = ProposalTrust::judge(b.splitter, p, live);
    EXPECT_EQ(verdict.choice, t.choice);
    EXPECT_EQ(verdict.reason, t.reason);
}

using Choice = ProposalTrust::Choice;
using Reason = ProposalTrust::Reason;
INSTANTIATE_TEST_SUITE_P(
    Cases, ProposalTrustCases,
    testing::Values(
        TrustCase{"SameSplits", 0, {1, 2, 3}, Choice::Proposal, Reason::Agrees},
        TrustCase{"AddsAClearGap", 0, {1, 3}, Choice::Proposal, Reason::Confident},
        TrustCase{
            "DropsASplitInLoudMusic", 0, {1, 2, 3, -100}, Choice::Proposal, Reason::Confident},
        TrustCase{
            "DropsASplitInAPianissimo", 0, {-30, 1, 2, 3}, Choice::Live, Reason::DoubtfulRemoved},
        TrustCase{"ACountLeavingOutAClearGap", -1, {}, Choice::Live, Reason::DoubtfulAdded}),
    [](const testing::TestParamInfo<TrustCase>& info) { return std::string(info.param.name); });

} // namespace
