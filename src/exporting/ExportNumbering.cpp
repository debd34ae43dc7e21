#include "exporting/ExportNumbering.h"

namespace waxline::exporting {

uint32_t ExportNumbering::begin(const std::string& artist, const std::string& album) {
    if (_saveTrackArtist && _saveTrackAlbum && *_saveTrackArtist == artist &&
        *_saveTrackAlbum == album)
        return _saveTracks;
    _saveTrackArtist = artist;
    _saveTrackAlbum = album;
    _saveTracks = 0;
    return 0;
}

} // namespace waxline::exporting
