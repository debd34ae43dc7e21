#pragma once

#include "lookup/Listing.h"
#include "lookup/ListingFit.h"
#include "tagging/ReleaseTags.h"

#include <QByteArray>

#include <optional>
#include <string>
#include <vector>

// The names a lookup chose for the side in the export folder, kept beside its track files so
// that a later export tags them without anything typed again.
namespace waxline::lookup {

struct KeptTrack {
    std::string title;
    std::string number; // the track number to tag: its position on its medium
    std::string artist;
    std::string recordingId;
    std::string trackId;
};

struct KeptNames {
    std::string artist; // the release's credit: album artist, and the library folder's name
    std::string album;
    std::string artistId;
    std::string date;
    std::string releaseId;
    std::string discNumber; // "2/3" on a set of several media, else empty
    std::vector<KeptTrack> tracks;
};

// The names of the fitted tracks.
KeptNames namesOf(const Release& release, const ListingFit& fit);

// Writes "WXRTLookup.json" (and the cover as "WXRTCover.jpg" when there is one) into the
// folder, replacing earlier ones; false when either cannot be written.
bool keepNames(const std::string& folder, const KeptNames& names, const QByteArray& cover);
std::optional<KeptNames> keptNames(const std::string& folder);
// The kept cover's bytes; empty when there is none.
QByteArray keptCover(const std::string& folder);
// Forgets them (a new recording, or names typed by hand).
void forgetNames(const std::string& folder);

// Per kept track: the number to tag (its place on its medium) and the release's further tags,
// the cover's JPEG bytes included.
std::vector<std::string> trackNumbersOf(const KeptNames& names);
std::vector<ReleaseTags> releaseTagsOf(const KeptNames& names, const QByteArray& cover);

// The cover as it goes into the tags: at most `maxPixels` on its longer edge, as JPEG.
// Empty when the bytes are no picture.
QByteArray coverForTags(const QByteArray& picture, int maxPixels = 1200);

} // namespace waxline::lookup
