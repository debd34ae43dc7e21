#include "exporting/UnknownNames.h"

#include <gtest/gtest.h>

#include <map>

namespace waxline::exporting {
namespace {

TEST(UnknownNames, TheTrackFormatTakesTheNumberForEveryPercentOne) {
    const std::pair<const char*, const char*> cases[] = {
        {"Track %1", "Track 7"},
        {"%1. Stück", "7. Stück"},
        {"Piste %1 (%1)", "Piste 7 (7)"},
        {"%10 stays", "%10 stays"},
        {"100%", "100%"},
        {"no marker", "no marker"},
        {"%%1", "%7"},
        {"%2 %1", "%2 7"},
    };
    for (const auto& [format, expected] : cases)
        EXPECT_EQ(withArgument(format, "7"), expected) << format;
}

TEST(UnknownNames, OnlyMissingNamesAreLookedUp) {
    const std::map<std::string, std::string> catalogue = {
        {"IDS_UNKNOWN_TRACK", "Piste %1"},
        {"IDS_UNKNOWN_ARTIST", "Artiste inconnu"},
        {"IDS_UNKNOWN_ALBUM", "Album inconnu"},
    };
    std::vector<std::string> asked;
    const TextLookup lookup = [&](const std::string& key) {
        asked.push_back(key);
        return catalogue.at(key);
    };
    struct Case {
        TrackNames given;
        TrackNames expected;
        size_t lookups;
    };
    const Case cases[] = {
        {{"A", "B", "C"}, {"A", "B", "C"}, 0},
        {{"", "", ""}, {"Artiste inconnu", "Album inconnu", "Piste 12"}, 3},
        {{"A", "", "C"}, {"A", "Album inconnu", "C"}, 1},
        {{"", "B", ""}, {"Artiste inconnu", "B", "Piste 12"}, 2},
    };
    for (const auto& c : cases) {
        asked.clear();
        const TrackNames names =
            namesOrUnknown(lookup, c.given.artist, c.given.album, c.given.title, "12");
        EXPECT_EQ(names.artist, c.expected.artist);
        EXPECT_EQ(names.album, c.expected.album);
        EXPECT_EQ(names.title, c.expected.title);
        EXPECT_EQ(asked.size(), c.lookups);
    }
    // Without a catalogue the keys show.
    const TrackNames bare = namesOrUnknown({}, "", "", "", "3");
    EXPECT_EQ(bare.artist, "IDS_UNKNOWN_ARTIST");
    EXPECT_EQ(bare.album, "IDS_UNKNOWN_ALBUM");
    EXPECT_EQ(bare.title, "IDS_UNKNOWN_TRACK");
}

} // namespace
} // namespace waxline::exporting
