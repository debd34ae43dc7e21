#pragma once

#include "tagging/TagText.h"

#include <functional>
#include <string>

namespace waxline::exporting {

// Looks up the text of a key: the window passes its catalogue, the command line its own words.
using TextLookup = std::function<std::string(const std::string& key)>;

// The keys of the names that stand in for missing ones. The track's is a format whose "%1"
// is the track number.
inline const std::string kUnknownTrackKey = "IDS_UNKNOWN_TRACK";
inline const std::string kUnknownArtistKey = "IDS_UNKNOWN_ARTIST";
inline const std::string kUnknownAlbumKey = "IDS_UNKNOWN_ALBUM";

struct TrackNames {
    std::string artist;
    std::string album;
    std::string title;
    TagText text = TagText::Latin1Bytes; // how the tagger reads the names' bytes
};

// The names with each empty one replaced by its looked-up text. Without a lookup the keys
// themselves stand in, so that a missing catalogue shows rather than hides.
TrackNames namesOrUnknown(const TextLookup& text, const std::string& artist,
                          const std::string& album, const std::string& title,
                          const std::string& number);

// `format` with every "%1" (not followed by another digit) replaced by `argument`.
std::string withArgument(const std::string& format, const std::string& argument);

} // namespace waxline::exporting
