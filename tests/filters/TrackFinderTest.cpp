#include "filters/GapDetector.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using Sonra::Audio::Filters::GapDetector;
using TrackItem = GapDetector::TrackItem;
using ZoneItem = GapDetector::ZoneItem;

namespace {

struct NoListener : GapDetector::Listener {
    void TrackSilenceStarted() override {}
    void TrackSilenceEnded() override {}
    void AlbumEnded() override {}
};

constexpr float kLoud = 1000;
constexpr float kQuiet = 10;

// A level history built from (seconds, level) stretches of half-second frames.
std::vector<float> history(std::initializer_list<std::pair<double, float>> stretches) {
    std::vector<float> h;
    for (auto [seconds, level] : stretches)
        h.insert(h.end(), static_cast<size_t>(seconds * 2), level);
    return h;
}

std::vector<TrackItem> find(std::vector<float> levels, float maxLevel = kLoud,
                            float minLevel = kQuiet) {
    NoListener listener;
    GapDetector detector(listener, 44100);
    detector.setHistoryForAnalysis(std::move(levels), maxLevel, minLevel);
    std::vector<TrackItem> tracks;
    detector.FindTracks(tracks);
    EXPECT_TRUE(detector.history().empty());
    return tracks;
}

TEST(TrackFinder, AllSoundIsOneTrack) {
    const auto tracks = find(history({{120, kLoud}}));
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(tracks[0].start, 0);
    EXPECT_EQ(tracks[0].duration, 120);
    EXPECT_EQ(tracks[0].startSample, 0);
    EXPECT_EQ(tracks[0].length, 120 * 44100);
}

TEST(TrackFinder, TwoSongsSplitInTheMiddleOfTheGapAndKeepFiveSecondsOfTheEnd) {
    const auto tracks = find(history({{60, kLoud}, {3, kQuiet}, {60, kLoud}, {20, kQuiet}}));
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0].start, 0);
    EXPECT_EQ(tracks[0].duration, 61.5f);
    EXPECT_EQ(tracks[0].length, 2712150);
    EXPECT_EQ(tracks[1].start, 61.5f);
    EXPECT_EQ(tracks[1].startSample, 2712150);
    EXPECT_EQ(tracks[1].duration, 123 + 5 - 61.5f);
    EXPECT_EQ(tracks[1].length, 2932650);
}

TEST(TrackFinder, LeadInSilenceBelongsToTheFirstTrack) {
    const auto tracks = find(history({{4, kQuiet}, {50, kLoud}, {3, kQuiet}, {50, kLoud}}));
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0].start, 0);
    EXPECT_EQ(tracks[0].duration, 55.5f);
    EXPECT_EQ(tracks[1].duration, 107 - 55.5f) << "a side ending in sound runs to the end";
}

TEST(TrackFinder, ShortDipsAndShortBurstsAreCleanedAway) {
    // A 1 s dip inside a song does not split it; an 8 s burst inside a long gap is dropped.
    const auto tracks = find(history({{50, kLoud},
                                      {1, kQuiet},
                                      {30, kLoud},
                                      {10, kQuiet},
                                      {8, kLoud},
                                      {10, kQuiet},
                                      {60, kLoud}}));
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0].duration, 81 + 14 - 0.0f); // middle of the 28 s gap from 81 s
    EXPECT_EQ(tracks[1].start, 95);
}

TEST(TrackFinder, NoiseBeforeAndAfterTheMusicIsSilence) {
    // Short noise bursts before the first and after the last long stretch of sound.
    const auto tracks =
        find(history({{12, kLoud}, {5, kQuiet}, {60, kLoud}, {5, kQuiet}, {12, kLoud}}));
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(tracks[0].start, 0);
    EXPECT_EQ(tracks[0].duration, 77 + 5); // to the run-out plus five seconds
}

TEST(TrackFinder, ThresholdFollowsTheQuietestFrame) {
    // Gap frames at 60: silence when the threshold is 4 x 20 = 80, sound when it stays 50.
    const auto levels = history({{60, kLoud}, {4, 60}, {60, kLoud}});
    EXPECT_EQ(find(levels, 1000, 20).size(), 2u);
    EXPECT_EQ(find(levels, 1000, 10).size(), 1u);
    EXPECT_EQ(find(levels, 700, 20).size(), 1u) << "ratio 35 is not above 40";
}

TEST(TrackFinder, NanLevelsAreSilence) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(find(history({{60, kLoud}, {3, nan}, {60, kLoud}})).size(), 2u);
}

TEST(TrackFinder, SampleValuesUseTheFloatClock) {
    // The boundary at 1000.25 s is 44111025 samples, which a float rounds to 44111024.
    const auto tracks = find(history({{999, kLoud}, {2.5, kQuiet}, {60, kLoud}}));
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0].duration, 1000.25f);
    EXPECT_EQ(tracks[0].length, 44111024);
    EXPECT_EQ(tracks[1].startSample, 44111024);
    EXPECT_EQ(tracks[1].length, 2701125);
}

TEST(TrackFinder, EmptyHistoryOrSecondCallAppendsNothing) {
    NoListener listener;
    GapDetector detector(listener, 44100);
    std::vector<TrackItem> tracks(1);
    detector.FindTracks(tracks);
    EXPECT_EQ(tracks.size(), 1u);
    detector.setHistoryForAnalysis(history({{60, kLoud}}), kLoud, kQuiet);
    detector.FindTracks(tracks);
    EXPECT_EQ(tracks.size(), 2u) << "appends, never clears";
    detector.FindTracks(tracks);
    EXPECT_EQ(tracks.size(), 2u);
}

TEST(TrackFinder, NoiseOnlyIsOneTrackAndAVeryShortQuietHistoryNone) {
    const auto tracks = find(history({{5, kQuiet}, {8, kLoud}, {30, kQuiet}}));
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(tracks[0].duration, 43);
    EXPECT_TRUE(find(history({{1, kQuiet}})).empty()) << "its one zone is a short gap";
}

TEST(TrackFinder, ReduceMergesRunsAndCleanupRecomputesDurations) {
    std::vector<ZoneItem> zones{{1, 0, 0, 0}, {0, 2, 0, 0}, {0, 5, 0, 0},
                                {0, 7, 0, 0}, {1, 9, 0, 0}, {1, 10, 0, 0}};
    GapDetector::CleanupZones(zones, 20);
    ASSERT_EQ(zones.size(), 3u);
    EXPECT_EQ(zones[0].duration, 2);
    EXPECT_EQ(zones[0].previousDuration, 9999999);
    EXPECT_EQ(zones[1].start, 2);
    EXPECT_EQ(zones[1].duration, 7);
    EXPECT_EQ(zones[1].previousDuration, 2);
    EXPECT_EQ(zones[2].duration, 11);
    EXPECT_EQ(zones[2].previousDuration, 7);

    std::vector<ZoneItem> none;
    GapDetector::CleanupZones(none, 10);
    EXPECT_TRUE(none.empty());
}

} // namespace
