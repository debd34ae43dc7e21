#pragma once

#include "exporting/ExportProblem.h"

#include <string>

namespace waxline::exporting {

struct NormaliseResult {
    bool ok = false;
    std::string path;      // "normalized.wav" beside the track
    ExportProblem problem; // why it failed
};

// Writes "normalized.wav" in the track's folder (deleting any earlier one): the track times
// `gain`, read 8192 bytes' worth of float frames at a time, stored as 32-bit float WAV so
// that nothing is clipped or requantised on the way.
NormaliseResult normaliseTrack(const std::string& wavPath, float gain);

// The gain that brings `peak` to 0.97 of full scale. A silent recording (peak 0) gets 1 rather
// than an infinite gain.
float normalisationGain(float peak);

} // namespace waxline::exporting
