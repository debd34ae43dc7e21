#pragma once

#include "tagging/TagText.h"

#include <string>

namespace waxline {

// The tags a looked-up release adds to the four of every export, under the names that music
// taggers read. An empty value is not written.
struct ReleaseTags {
    std::string artist; // the track's own credit, when it differs from the album's
    std::string albumArtist;
    std::string date;       // "1979" or "1979-10-05"
    std::string discNumber; // "2/3"
    std::string releaseId;  // database ids (MBIDs)
    std::string recordingId;
    std::string releaseTrackId;
    std::string albumArtistId;
    std::string frontCover; // JPEG bytes

    bool empty() const;
};

// Writes them into the file (saved when done); false when it could not be opened for tagging.
bool writeReleaseTags(const std::string& path, const ReleaseTags& tags,
                      TagText text = TagText::Latin1Bytes);

} // namespace waxline
