#include "lookup/KeptNames.h"

#include "support/Signals.h"

#include <gtest/gtest.h>

namespace waxline::lookup {
namespace {

// A double album: two records of two sides, five tracks a side.
Release doubleAlbum() {
    Release r;
    r.summary.artist = "Harbour Lights";
    r.summary.title = "Night Ferry";
    for (int disc = 1; disc <= 2; ++disc) {
        Medium m;
        m.position = disc;
        m.format = "12\" Vinyl";
        for (int i = 0; i < 10; ++i) {
            const char side = static_cast<char>('A' + (disc - 1) * 2 + i / 5);
            m.tracks.push_back({side + std::to_string(i % 5 + 1), i + 1, "T" + std::to_string(i),
                                200, i == 7 ? "Guest" : "Harbour Lights", "r", "t"});
        }
        r.media.push_back(m);
    }
    return r;
}

TEST(KeptNames, numbersEachTrackByItsPlaceOnItsDisc) {
    struct Row {
        int medium;
        size_t first;
        std::vector<std::string> numbers;
        std::string disc;
    };
    const Row rows[] = {
        {0, 0, {"1", "2", "3", "4", "5"}, "1/2"},
        {0, 5, {"6", "7", "8", "9", "10"}, "1/2"}, // B1 of a five-a-side record is track 6
        {1, 0, {"1", "2", "3", "4", "5"}, "2/2"},  // side C starts disc 2 anew
    };
    const Release release = doubleAlbum();
    for (const Row& row : rows) {
        ListingFit fit;
        fit.medium = row.medium;
        fit.firstTrack = row.first;
        fit.trackCount = 5;
        const KeptNames names = namesOf(release, fit);
        EXPECT_EQ(trackNumbersOf(names), row.numbers);
        EXPECT_EQ(names.discNumber, row.disc);
        const auto tags = releaseTagsOf(names, "cover");
        ASSERT_EQ(tags.size(), 5u);
        EXPECT_EQ(tags[0].albumArtist, "Harbour Lights");
        EXPECT_EQ(tags[0].frontCover, "cover");
        // Only a track credited otherwise names its own artist.
        EXPECT_EQ(tags[2].artist, row.first == 5 ? "Guest" : "");
    }
}

TEST(KeptNames, survivesTheFolderAndIsForgotten) {
    test::TempDir dir;
    ListingFit fit;
    fit.medium = 1;
    fit.firstTrack = 5;
    fit.trackCount = 5;
    const KeptNames names = namesOf(doubleAlbum(), fit);
    ASSERT_TRUE(keepNames(dir.path(), names, "\xFF\xD8 jpeg"));
    const auto back = keptNames(dir.path());
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->album, "Night Ferry");
    EXPECT_EQ(trackNumbersOf(*back), trackNumbersOf(names));
    EXPECT_EQ(back->tracks[2].artist, "Guest");
    EXPECT_EQ(keptCover(dir.path()), QByteArray("\xFF\xD8 jpeg"));
    forgetNames(dir.path());
    EXPECT_FALSE(keptNames(dir.path()).has_value());
    EXPECT_TRUE(keptCover(dir.path()).isEmpty());
}

} // namespace
} // namespace waxline::lookup
