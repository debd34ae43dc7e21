#pragma once

#include "exporting/EncoderFormat.h"
#include "restoration/Cleaning.h"

#include <optional>

namespace waxline::exporting {

// What an export makes of each track beyond the plain MP3 the application always made.
struct ExportChoices {
    ExportFormat format = ExportFormat::Mp3;
    // Cleaning applies to the MP3; the FLAC is the archive and keeps the recording as it is
    // unless `cleanFlac` asks otherwise. The track files are never changed.
    restoration::CleaningChoice clean;
    bool cleanFlac = false;
    // The side's hum, found once from the quiet stretches of all its tracks; each track looks
    // in its own when the side's is not known.
    std::optional<restoration::HumProfile> sideHum;
    // EBU R128 loudness of every track and of the side, written as ReplayGain 2.0 tags; the
    // audio is not changed.
    bool loudness = false;
    // A CUE sheet and a label file of the side beside its files in the library.
    bool sheets = false;
};

} // namespace waxline::exporting
