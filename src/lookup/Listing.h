#pragma once

#include <string>
#include <vector>

// What the music database says about a release: its media, their tracks and the names to tag.
// Plain values, so that the fitting and the command line use them without Qt.
namespace waxline::lookup {

struct ListedTrack {
    std::string number; // as printed: "A1", "B2", or "3"
    int position = 0;   // 1-based position on its medium, across its sides
    std::string title;
    double seconds = 0;      // 0 when the listing gives no length
    std::string artist;      // the track's credit, joined as printed
    std::string recordingId; // MBID of the recording
    std::string trackId;     // MBID of this track on this release
};

struct Medium {
    int position = 1;   // disc number within the release
    std::string format; // "12\" Vinyl", "Cassette", "CD"...
    std::vector<ListedTrack> tracks;

    bool isVinyl() const;
    bool isCassette() const;
    // The side letters in order ("A", "B"); empty when the tracks are numbered 1..N.
    std::vector<std::string> sideLetters() const;
};

// One hit of a search, as the candidate list shows it.
struct ReleaseSummary {
    std::string id;
    std::string title;
    std::string artist;
    std::string date;    // "1979", "1979-10-05" or empty
    std::string country; // "GB", "XE" or empty
    std::string barcode;
    std::string catalogueNumber;
    std::vector<std::string> formats; // one per medium
    std::vector<int> trackCounts;     // one per medium
    int score = 0;                    // the service's own, 0..100

    std::string year() const { return date.substr(0, 4); }
    // "2×12\" Vinyl", "Cassette", "12\" Vinyl + CD".
    std::string formatText() const;
    bool hasAnalogueMedium() const;
};

struct Release {
    ReleaseSummary summary;
    std::string artistId; // the first credited artist's MBID, for the album artist id
    std::vector<Medium> media;
    bool hasFrontCover = false;

    // Sides over all media: lettered ones counted, else two for a record or tape, one for a CD.
    int sideCount() const;
};

// The side letter of a printed track number ("B2" → "B", "AA1" → "AA"); empty for "7".
std::string sideLetterOf(const std::string& number);

} // namespace waxline::lookup
