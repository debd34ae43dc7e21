#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace waxline::exporting {

// Track numbers across the sides of one album: a side exported under the same artist and
// album as the one before is numbered on from that side's count; any change starts at 1.
// Lives as long as the application run; driven by the export thread, one export at a time.
class ExportNumbering {
public:
    // Called at the start of an export; returns the offset added to the track index (the
    // first track gets offset + 1).
    uint32_t begin(const std::string& artist, const std::string& album);

    // Called at the end: remembers this export's own count (not added to the offset, so a
    // third side under the same names numbers on from the second side's count).
    void finish(uint32_t recordedTracks) { _saveTracks = recordedTracks; }

private:
    std::optional<std::string> _saveTrackArtist;
    std::optional<std::string> _saveTrackAlbum;
    uint32_t _saveTracks = 0;
};

} // namespace waxline::exporting
