#pragma once

#include "exporting/ExportProblem.h"

#include <optional>
#include <string>

namespace waxline::exporting {

// What a track file looks like before it is encoded.
struct TrackFileCheck {
    bool usable = false;                 // there is audio to export
    ExportProblem problem;               // why not, when not usable
    std::optional<TrackWarning> warning; // usable, but something is off (the file was cut short)
    double seconds = 0;                  // the audio that is there
};

// Looks at a track WAV file: missing, empty, unreadable, without audio, or shorter than its
// header announces (a recording cut off before the header was updated).
TrackFileCheck inspectTrackFile(const std::string& path);

// The largest absolute sample over the given files, read as floats of full scale 1.0; files
// that cannot be read are skipped.
float peakOfFiles(const std::string& folder, int tracks);

} // namespace waxline::exporting
