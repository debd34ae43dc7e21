#pragma once

#include "exporting/ExportPipeline.h"

#include <string>
#include <vector>

namespace waxline::exporting {

// One track as a sheet lists it: its file in the library, its title and its length.
struct SheetTrack {
    std::string file; // the library file, named in the CUE sheet by its name alone
    std::string number;
    std::string title;
    double seconds = 0;
};

// A CUE sheet of the side: PERFORMER and TITLE of the album, then a FILE entry per track with
// its TRACK, TITLE, PERFORMER and INDEX 01 00:00:00.
std::string cueSheet(const std::vector<SheetTrack>& tracks, const std::string& artist,
                     const std::string& album);

// A label file: "start<TAB>end<TAB>title" a line, the times in seconds on the side's own clock
// (the tracks laid end to end), six decimals.
std::string labelSheet(const std::vector<SheetTrack>& tracks);

// The sheets' paths for a side whose tracks lie in `folder`, numbered first to last:
// "<folder>/<first>-<last> <album>.cue" and ".txt" (numbers two digits at least).
std::string sheetBaseName(const std::string& folder, const std::string& first,
                          const std::string& last, const std::string& album);

// Writes both sheets beside the library files of the exported tracks (the FLACs when there are,
// the archive; else the MP3s), each track's length taken from its track file. False when
// there was no track or a sheet could not be written.
bool writeSideSheets(const std::vector<TrackOutcome>& outcomes, const std::string& artist,
                     const std::string& album);

} // namespace waxline::exporting
