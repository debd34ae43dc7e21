#pragma once

#include <string>

namespace waxline::exporting {

// Whether a track file holds nothing but groove noise (or silence): the gap detector, run over
// the whole file from a quiet start, never hears sound begin. False for a file that cannot be
// read, which is left to the export to report. Music loud on average for a tenth of a second
// counts as sound even when the file is too short for the detector to decide.
bool holdsOnlyGrooveNoise(const std::string& wavPath);

} // namespace waxline::exporting
