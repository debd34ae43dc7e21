#pragma once

#include "cli/ExportSession.h"
#include "lookup/KeptNames.h"

#include <string>

// Looking the record up from the command line: candidates listed with their fit to the
// recorded side, a release applied (the side re-cut to its listing, its names kept in the
// export folder), and the kept names taken up by the export.
namespace waxline::cli {

// For digitize --lookup "Artist - Album": finds the release that fits the side just recorded
// (`tracks` counted in `folder`, whose lock the caller holds), re-cuts the side to it when the
// fit is confident and keeps its names. Returns true when names were kept (`tracksNow` is
// then the count on disk); false with the reason said in one line, the side as it was.
bool lookupAfterRecording(const std::string& folder, int tracks, const std::string& text,
                          int& tracksNow);

// "Artist - Album" split at its first " - "; the whole text is the album when there is none.
std::pair<std::string, std::string> artistAndAlbum(const std::string& text);

// Names, numbers and release tags from names kept by a lookup; titles typed win.
void useKeptNames(ExportOptions& options, const lookup::KeptNames& names, const QByteArray& cover);

} // namespace waxline::cli
