// The whole-side splitter on realistic synthetic sides: every expectation comes from the truth
// the generator prints (where the gaps, fades, quiet passages and crackle bursts lie).
#include "filters/SideSplitter.h"
#include "demoside/DemoSide.h"
#include "filters/SideAnalyser.h"
#include "filters/SleeveTimes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace Sonra::Audio::Filters;
using waxline::demoside::DemoSideGenerator;
using waxline::demoside::DemoSideLayout;
using waxline::demoside::DemoSideOptions;
using Span = waxline::demoside::DemoSideLayout::Span;
using Problem = SplitProposal::Problem;

namespace {

struct Side {
    DemoSideLayout layout;
    SideSplitter splitter;
};

// Renders the side and analyses it in blocks of an odd size, as a caller reading files would.
Side analyse(const DemoSideOptions& options) {
    DemoSideGenerator generator(options);
    SideAnalyser analyser(options.sampleRate);
    std::vector<float> left(1234), right(1234), interleaved(2 * 1234);
    while (size_t n = generator.render(left.data(), right.data(), left.size())) {
        for (size_t i = 0; i < n; ++i) {
            interleaved[2 * i] = left[i];
            interleaved[2 * i + 1] = right[i];
        }
        analyser.addInterleaved(interleaved.data(), n, 2);
    }
    return {generator.layout(), SideSplitter(analyser.takeFeatures())};
}

DemoSideOptions realistic(int tracks, uint32_t seed, double seconds) {
    DemoSideOptions o;
    o.realistic = true;
    o.tracks = tracks;
    o.seed = seed;
    o.lengthSeconds = seconds;
    return o;
}

double secondsOf(const SplitBoundary& b, const DemoSideLayout& side) {
    return static_cast<double>(b.sample) / side.sampleRate;
}

bool inside(double t, const Span& s) {
    return t >= s.start && t <= s.end;
}

// One boundary in each true gap, in order, and nothing else.
void expectOnePerGap(const SplitProposal& p, const DemoSideLayout& side) {
    EXPECT_EQ(p.problem, Problem::None);
    ASSERT_EQ(p.boundaries.size(), side.gaps.size());
    for (size_t i = 0; i < side.gaps.size(); ++i) {
        const double t = secondsOf(p.boundaries[i], side);
        EXPECT_TRUE(inside(t, side.gaps[i]))
            << "boundary " << t << " s, gap " << side.gaps[i].start << " .. " << side.gaps[i].end;
    }
}

void expectNoneInside(const SplitProposal& p, const DemoSideLayout& side,
                      const std::vector<Span>& spans, const char* what) {
    for (const auto& b : p.boundaries)
        for (const auto& s : spans)
            EXPECT_FALSE(inside(secondsOf(b, side), s))
                << "boundary " << secondsOf(b, side) << " s inside " << what << " " << s.start
                << " .. " << s.end;
}

TEST(SideSplitter, QuietPassagesAreKeptWhole) {
    for (uint32_t seed : {2u, 5u}) {
        SCOPED_TRACE(seed);
        auto o = realistic(4, seed, 420);
        o.realism.quietPassageChance = 1;
        const Side side = analyse(o);
        ASSERT_GE(side.layout.quietPassages.size(), 3u);
        const SplitProposal p = side.splitter.propose();
        expectOnePerGap(p, side.layout);
        expectNoneInside(p, side.layout, side.layout.quietPassages, "quiet passage");
        expectNoneInside(p, side.layout, side.layout.softIntros, "soft intro");
    }
}

TEST(SideSplitter, FadesAreNotCut) {
    auto o = realistic(5, 3, 480);
    o.realism.fadeInChance = 1;
    o.realism.fadeOutChance = 1;
    o.realism.minGapSeconds = 1;
    o.realism.maxGapSeconds = 1.5;
    const Side side = analyse(o);
    ASSERT_GE(side.layout.fadeOuts.size(), 5u);
    const SplitProposal p = side.splitter.propose();
    expectOnePerGap(p, side.layout);
    expectNoneInside(p, side.layout, side.layout.fadeOuts, "fade-out");
    expectNoneInside(p, side.layout, side.layout.fadeIns, "fade-in");
    // The music it reports starts after the lead-in and ends before the run-out.
    const double rate = side.layout.sampleRate;
    EXPECT_GE(static_cast<double>(p.musicStart) / rate, side.layout.leadIn.end - 0.1);
    EXPECT_LE(static_cast<double>(p.musicEnd) / rate, side.layout.runOut.start + 0.1);
}

TEST(SideSplitter, CrackleInAGapNeitherHidesItNorTakesTheBoundary) {
    auto o = realistic(5, 4, 420);
    o.realism.crackleInGapChance = 1;
    o.realism.minGapSeconds = 2.5;
    o.realism.maxGapSeconds = 4;
    const Side side = analyse(o);
    size_t burstsInGaps = 0;
    for (const auto& b : side.layout.crackleBursts)
        for (const auto& g : side.layout.gaps)
            burstsInGaps += b.start >= g.start && b.end <= g.end;
    ASSERT_EQ(burstsInGaps, side.layout.gaps.size());
    const SplitProposal p = side.splitter.propose();
    expectOnePerGap(p, side.layout);
    expectNoneInside(p, side.layout, side.layout.crackleBursts, "crackle burst");
}

TEST(SideSplitter, AGivenCountFindsGapsTooShortToConvinceAlone) {
    auto o = realistic(6, 6, 420);
    o.realism.minGapSeconds = 0.5;
    o.realism.maxGapSeconds = 0.7;
    const Side side = analyse(o);
    const SplitProposal alone = side.splitter.propose();
    EXPECT_LT(alone.boundaries.size(), side.layout.gaps.size())
        << "the side no longer tests what the count adds";
    expectOnePerGap(side.splitter.proposeCount(6), side.layout);

    // Asked for more tracks than gaps: every gap still holds one, the extra ones are doubtful.
    const SplitProposal more = side.splitter.proposeCount(8);
    ASSERT_EQ(more.boundaries.size(), 7u);
    size_t inGaps = 0;
    for (const auto& b : more.boundaries) {
        bool inGap = false;
        for (const auto& g : side.layout.gaps)
            inGap = inGap || inside(secondsOf(b, side.layout), g);
        inGaps += inGap;
        if (!inGap) {
            EXPECT_LT(b.confidence, 0.1);
        }
    }
    EXPECT_EQ(inGaps, side.layout.gaps.size());

    EXPECT_TRUE(side.splitter.proposeCount(1).boundaries.empty());
    for (int bad : {0, -1, SideSplitter::kMaxTracks + 1})
        EXPECT_EQ(side.splitter.proposeCount(bad).problem, Problem::CountOutOfRange) << bad;
}

TEST(SideSplitter, SleeveDurationsPlaceTheBoundaries) {
    auto o = realistic(5, 8, 400);
    o.realism.minGapSeconds = 0.5;
    o.realism.maxGapSeconds = 0.8;
    const Side side = analyse(o);
    // As a sleeve prints them: each track to the next one's start, in whole seconds.
    std::string sleeve;
    const auto& tracks = side.layout.tracks;
    for (size_t i = 0; i < tracks.size(); ++i) {
        const double end = i + 1 < tracks.size() ? tracks[i + 1].start : tracks[i].end;
        const long seconds = std::lround(end - tracks[i].start);
        char entry[96];
        std::snprintf(entry, sizeof entry, "A%zu %ld:%02ld ", i + 1, seconds / 60, seconds % 60);
        sleeve += entry;
    }
    const SleeveTimes times = SleeveTimes::parse(sleeve);
    ASSERT_EQ(times.problem, SleeveTimes::Problem::None) << sleeve;
    ASSERT_EQ(times.count, 5);
    expectOnePerGap(side.splitter.proposeDurations(times.durations), side.layout);

    // Durations that add up to twice the side cannot be fitted.
    std::vector<double> doubled = times.durations;
    for (double& d : doubled)
        d *= 2;
    EXPECT_EQ(side.splitter.proposeDurations(doubled).problem, Problem::DurationsDoNotFit);
    EXPECT_EQ(side.splitter.proposeDurations({}).problem, Problem::CountOutOfRange);
}

TEST(SideSplitter, AOneTrackSideIsOneTrack) {
    auto o = realistic(1, 9, 200);
    o.realism.quietPassageChance = 1;
    const Side side = analyse(o);
    ASSERT_EQ(side.layout.tracks.size(), 1u);
    const SplitProposal p = side.splitter.propose();
    EXPECT_EQ(p.problem, Problem::None);
    EXPECT_TRUE(p.boundaries.empty());
    const double rate = side.layout.sampleRate;
    const Span& track = side.layout.tracks[0];
    EXPECT_NEAR(static_cast<double>(p.musicStart) / rate, track.start, 1.0);
    EXPECT_NEAR(static_cast<double>(p.musicEnd) / rate, track.end, 2.0);
    EXPECT_TRUE(side.splitter.proposeCount(1).boundaries.empty());
}

TEST(SideSplitter, TracksThatRunIntoEachOtherHaveNoGapToFind) {
    auto o = realistic(4, 10, 300);
    o.realism.minGapSeconds = 0;
    o.realism.maxGapSeconds = 0;
    o.realism.fadeInChance = 0;
    o.realism.fadeOutChance = 0;
    const Side side = analyse(o);
    for (const auto& g : side.layout.gaps)
        ASSERT_EQ(g.start, g.end);
    EXPECT_TRUE(side.splitter.propose().boundaries.empty());
    // A count still gets its tracks, each boundary marked as a guess.
    const SplitProposal counted = side.splitter.proposeCount(4);
    ASSERT_EQ(counted.boundaries.size(), 3u);
    for (const auto& b : counted.boundaries)
        EXPECT_LT(b.confidence, 0.1);
}

TEST(SideSplitter, SilenceAndNothingHaveNoMusic) {
    SideAnalyser silent(48000);
    std::vector<float> zeros(2 * 48000, 0.0f);
    for (int s = 0; s < 20; ++s)
        silent.addInterleaved(zeros.data(), 48000, 2);
    const SideSplitter quiet(silent.takeFeatures());
    EXPECT_EQ(quiet.propose().problem, Problem::NoMusic);
    EXPECT_TRUE(quiet.propose().boundaries.empty());

    const SideSplitter empty(SideAnalyser(44100).takeFeatures());
    EXPECT_EQ(empty.propose().problem, Problem::NoMusic);
    EXPECT_EQ(empty.proposeCount(3).problem, Problem::NoMusic);
}

} // namespace
