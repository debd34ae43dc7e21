#include "lookup/ListingFit.h"

#include <gtest/gtest.h>

#include <random>

using namespace waxline::lookup;

namespace {

// Sides as sleeves list them: "A1 4:13" and so on, one medium each (the fourth is a double
// album, hence two media).
struct Sleeve {
    const char* format;
    std::vector<std::vector<int>> sides; // per side, the lengths in seconds
};
const std::vector<Sleeve> kSleeves = {
    {"12\" Vinyl", {{253, 232, 340, 178, 261}, {215, 372, 242, 198, 305}}},
    {"12\" Vinyl", {{465, 570, 250}, {680, 415}}},
    {"12\" Vinyl", {{165, 181, 150, 192, 170, 158}, {175, 200, 160, 185, 167, 242}}},
    {"12\" Vinyl", {{320, 288, 365, 235}, {270, 345, 430}}},
    {"12\" Vinyl", {{230, 265, 305, 390}, {520, 255, 215}}},
    {"Cassette", {{220, 245, 235, 270, 200}, {250, 225, 300, 210, 260}}},
    {"7\" Vinyl", {{184}, {201}}},
};

// Every sleeve a medium of one release, so each fit must also find the right medium.
Release releaseOf(bool letters, int withoutLength) {
    Release r;
    const char* names = "ABCDEFGH";
    for (size_t m = 0; m < kSleeves.size(); ++m) {
        Medium medium;
        medium.position = static_cast<int>(m) + 1;
        medium.format = kSleeves[m].format;
        int position = 0;
        for (size_t s = 0; s < kSleeves[m].sides.size(); ++s)
            for (size_t t = 0; t < kSleeves[m].sides[s].size(); ++t) {
                ++position;
                ListedTrack track;
                track.position = position;
                track.number =
                    letters ? names[s] + std::to_string(t + 1) : std::to_string(position);
                track.seconds =
                    static_cast<int>(t) + 1 == withoutLength ? 0 : kSleeves[m].sides[s][t];
                medium.tracks.push_back(track);
            }
        r.media.push_back(medium);
    }
    return r;
}

struct Recording {
    double speed;      // deck speed against the nominal
    double jitter;     // each found boundary off by up to this, seconds
    int merge;         // boundaries the recording misses
    int split;         // boundaries the recording adds
    bool letters;      // the listing names its sides
    int withoutLength; // the track of each side the listing gives no length for (0: none)
    bool at45;
};

SideShape simulate(const std::vector<int>& lengths, const Recording& r, std::mt19937& rng) {
    std::uniform_real_distribution<double> off(-r.jitter, r.jitter);
    std::uniform_real_distribution<double> fraction(0.3, 0.7);
    const double speed = r.speed * (r.at45 ? 1.35 : 1.0);
    SideShape shape;
    shape.musicStart = 1.5;
    double t = shape.musicStart;
    std::vector<double> starts{t};
    for (int length : lengths) {
        t += length / speed;
        starts.push_back(t);
    }
    shape.musicEnd = t + off(rng);
    for (size_t i = 1; i + 1 < starts.size(); ++i)
        shape.boundaries.push_back(starts[i] + off(rng));
    if (r.merge && !shape.boundaries.empty())
        shape.boundaries.erase(shape.boundaries.begin() +
                               static_cast<long>(rng() % shape.boundaries.size()));
    if (r.split) {
        const size_t track = rng() % lengths.size();
        shape.boundaries.push_back(starts[track] +
                                   fraction(rng) * (starts[track + 1] - starts[track]));
        std::sort(shape.boundaries.begin(), shape.boundaries.end());
    }
    return shape;
}

const std::vector<Recording> kRecordings = {
    {1.00, 0.0, 0, 0, true, 0, false},   {0.98, 2.0, 0, 0, true, 0, false},
    {1.02, 2.0, 0, 0, true, 0, false},   {1.01, 2.0, 1, 0, true, 0, false},
    {0.99, 2.0, 0, 1, true, 0, false},   {1.00, 2.0, 0, 0, true, 2, false},
    {1.015, 2.0, 0, 0, false, 0, false}, {0.985, 2.0, 1, 0, false, 0, false},
    {1.00, 1.0, 0, 0, true, 0, true},
};

} // namespace

TEST(ListingFit, findsTheMediumAndSideFirstOnSimulatedSides) {
    std::mt19937 rng(20);
    int cases = 0, right = 0;
    std::string misses;
    for (int round = 0; round < 4; ++round)
        for (const Recording& r : kRecordings) {
            const Release release = releaseOf(r.letters, r.withoutLength);
            for (size_t m = 0; m < kSleeves.size(); ++m)
                for (size_t s = 0; s < kSleeves[m].sides.size(); ++s) {
                    const std::vector<int>& lengths = kSleeves[m].sides[s];
                    if (lengths.size() < 3)
                        continue;
                    const auto fits = fitRelease(release, simulate(lengths, r, rng));
                    ASSERT_FALSE(fits.empty());
                    ++cases;
                    const std::string side =
                        r.letters ? std::string(1, "ABCD"[s]) : (s ? "B" : "A");
                    const bool ok = fits[0].medium == static_cast<int>(m) && fits[0].side == side &&
                                    fits[0].trackCount == lengths.size() && fits[0].at45 == r.at45;
                    right += ok;
                    if (!ok)
                        misses += " [medium " + std::to_string(m) + " side " + side + " speed " +
                                  std::to_string(r.speed) + ": chose " +
                                  std::to_string(fits[0].medium) + fits[0].side + "]";
                }
        }
    EXPECT_GE(right * 100, cases * 95) << right << " of " << cases << misses;
}

TEST(ListingFit, estimatesTheSpeedAndFlagsItsDoubts) {
    struct Row {
        Recording recording;
        bool confident;
    };
    const std::vector<Row> rows = {
        {{1.00, 0.5, 0, 0, true, 0, false}, true},  {{0.975, 1.0, 0, 0, true, 0, false}, true},
        {{1.025, 1.0, 1, 0, true, 0, false}, true}, {{1.00, 1.0, 1, 1, true, 0, false}, false},
        {{1.01, 0.5, 0, 0, true, 0, true}, true},
    };
    std::mt19937 rng(7);
    const Release release = releaseOf(true, 0);
    for (const Row& row : rows) {
        const auto& lengths = kSleeves[0].sides[1];
        const auto fits = fitRelease(release, simulate(lengths, row.recording, rng), "B");
        ASSERT_FALSE(fits.empty());
        const ListingFit& best = fits[0];
        EXPECT_EQ(best.medium, 0);
        EXPECT_NEAR(best.speed, row.recording.speed * (row.recording.at45 ? 1.35 : 1.0), 0.006);
        EXPECT_EQ(best.at45, row.recording.at45);
        EXPECT_EQ(best.confident, row.confident) << "score " << best.score;
        ASSERT_EQ(best.durations.size(), lengths.size());
        for (size_t i = 0; i < lengths.size(); ++i)
            EXPECT_DOUBLE_EQ(best.durations[i], lengths[i]);
    }
}

TEST(ListingFit, takesAWholeCassetteInOneGo) {
    std::mt19937 rng(3);
    const Release release = releaseOf(true, 0);
    std::vector<int> both = kSleeves[5].sides[0];
    both.insert(both.end(), kSleeves[5].sides[1].begin(), kSleeves[5].sides[1].end());
    const auto fits = fitRelease(release, simulate(both, {1.01, 1.5, 0, 0, true, 0, false}, rng));
    ASSERT_FALSE(fits.empty());
    EXPECT_EQ(fits[0].medium, 5);
    EXPECT_EQ(fits[0].side, "");
    EXPECT_EQ(fits[0].trackCount, both.size());
}
