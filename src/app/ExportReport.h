#pragma once

#include "exporting/ExportPipeline.h"

#include <QString>

#include <vector>

// What the window says about an export's tracks, in the catalogue's words (Qt rich text).
namespace waxline::app {

// Why a track did not reach the library and what the user can do about it.
QString trackProblemText(const exporting::ExportProblem& problem);

// Track numbers as runs: "1–3, 5".
QString trackRunsText(const std::vector<int>& tracks);

// The tracks of an export that are not in the library, ascending.
std::vector<int> missingTracks(const std::vector<exporting::TrackOutcome>& outcomes);

// Panel 6's account of the missing tracks: which, of how many, and each distinct reason once.
QString missingTracksText(const std::vector<exporting::TrackOutcome>& outcomes);

} // namespace waxline::app
