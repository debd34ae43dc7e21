#pragma once

#include "lookup/Listing.h"

#include <string>
#include <vector>

// Fitting a release's listing to a recorded side: which side of which medium it was (or a
// whole cassette in one go), how fast the deck ran, and how its boundaries line up. Standard
// library only.
namespace waxline::lookup {

// What the recording shows, in seconds on the side's own clock.
struct SideShape {
    double musicStart = 0;
    double musicEnd = 0;
    std::vector<double> boundaries; // where tracks 2..N were found to start, rising
};

// Below this score a listing does not describe the side at all.
constexpr double kNoFit = 0.3;

struct ListingFit {
    int medium = -1;       // index into Release::media
    std::string side;      // "A", "B"... or empty for the whole medium
    size_t firstTrack = 0; // into the medium's tracks
    size_t trackCount = 0;
    double speed = 1;  // the deck's speed against the nominal: recorded = listed / speed
    bool at45 = false; // a 33⅓ record played at 45
    double score = 0;  // 0..1, higher is better
    bool confident = false;
    int merged = 0; // listed boundaries the recording does not show (two tracks as one)
    int split = 0;  // recorded boundaries the listing does not have (one track as two)
    int missingLengths = 0;
    // The listed lengths in seconds at the nominal speed, missing ones filled in from the
    // recording; what the splitter's durations mode is given.
    std::vector<double> durations;
};

// Every medium and side of the release fitted to the shape, best first. `onlySide` keeps the
// fits of that side letter only (empty: all).
std::vector<ListingFit> fitRelease(const Release& release, const SideShape& shape,
                                   const std::string& onlySide = {});

// The best fit of one run of tracks (first..first+count on `medium`) at any allowed speed.
ListingFit fitTracks(const Medium& medium, size_t first, size_t count, const SideShape& shape);

} // namespace waxline::lookup
