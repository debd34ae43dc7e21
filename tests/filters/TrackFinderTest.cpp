#include "filters/GapDetector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
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

// Boundaries fall in the middle of a gap; the last track keeps five seconds after the music, or
// runs to the end of a side that ends in sound. Every value here is a whole number of samples.
TEST(TrackFinder, SplitsLevelHistories) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        const char* what;
        std::vector<float> levels;
        std::vector<std::pair<float, float>> tracks; // start and duration in seconds
    };
    const Case cases[] = {
        {"all sound", history({{120, kLoud}}), {{0, 120}}},
        {"two songs",
         history({{60, kLoud}, {3, kQuiet}, {60, kLoud}, {20, kQuiet}}),
         {{0, 61.5f}, {61.5f, 123 + 5 - 61.5f}}},
        {"lead-in silence belongs to the first track",
         history({{4, kQuiet}, {50, kLoud}, {3, kQuiet}, {50, kLoud}}),
         {{0, 55.5f}, {55.5f, 107 - 55.5f}}},
        // A 1 s dip inside a song does not split it; an 8 s burst inside a long gap is dropped,
        // and the boundary is the middle of the 28 s gap from 81 s.
        {"short dips and bursts are cleaned away",
         history({{50, kLoud},
                  {1, kQuiet},
                  {30, kLoud},
                  {10, kQuiet},
                  {8, kLoud},
                  {10, kQuiet},
                  {60, kLoud}}),
         {{0, 95}, {95, 169 - 95}}},
        {"noise before and after the music is silence",
         history({{12, kLoud}, {5, kQuiet}, {60, kLoud}, {5, kQuiet}, {12, kLoud}}),
         {{0, 77 + 5}}},
        {"NaN levels are silence",
         history({{60, kLoud}, {3, nan}, {60, kLoud}}),
         {{0, 61.5f}, {61.5f, 61.5f}}},
        {"noise only is one track", history({{5, kQuiet}, {8, kLoud}, {30, kQuiet}}), {{0, 43}}},
        {"a very short quiet history is one short gap", history({{1, kQuiet}}), {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto tracks = find(c.levels);
        ASSERT_EQ(tracks.size(), c.tracks.size());
        for (size_t i = 0; i < tracks.size(); ++i) {
            EXPECT_EQ(tracks[i].start, c.tracks[i].first) << i;
            EXPECT_EQ(tracks[i].duration, c.tracks[i].second) << i;
            EXPECT_EQ(tracks[i].startSample, std::llround(c.tracks[i].first * 44100.0)) << i;
            EXPECT_EQ(tracks[i].length, std::llround(c.tracks[i].second * 44100.0)) << i;
        }
    }

    // Gap frames at 60: silence when the threshold is 4 x 20 = 80, sound when it stays 50.
    const auto levels = history({{60, kLoud}, {4, 60}, {60, kLoud}});
    EXPECT_EQ(find(levels, 1000, 20).size(), 2u);
    EXPECT_EQ(find(levels, 1000, 10).size(), 1u);
    EXPECT_EQ(find(levels, 700, 20).size(), 1u) << "ratio 35 is not above 40";
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
