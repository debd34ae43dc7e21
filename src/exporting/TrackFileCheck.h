#pragma once

#include "exporting/ExportProblem.h"

#include <cstdint>
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

// A WAV track file's layout as its bytes have it: the format from its "fmt " chunk and the
// audio from the size of the file, whatever the header's sizes say. A recording cut off by a
// crash leaves a header written up to a few seconds before the end, or never.
struct TrackFileLayout {
    uint16_t channels = 0;
    uint32_t sampleRate = 0;
    uint16_t blockAlign = 0;    // bytes per frame
    uint64_t dataOffset = 0;    // where the audio starts
    uint64_t frames = 0;        // whole frames present after dataOffset
    uint32_t announcedData = 0; // the data chunk's size as the header says
    bool headerRight() const { return uint64_t(announcedData) == frames * blockAlign; }
    double seconds() const { return sampleRate ? double(frames) / sampleRate : 0; }
};

// The layout of a RIFF/WAVE file with a format and a data chunk; nothing when it is none.
std::optional<TrackFileLayout> measureTrackFile(const std::string& path);

// Makes the header's RIFF and data sizes say what the file holds, cutting off a torn last
// frame, so every reader (libsndfile, ffmpeg) takes all of the audio. A file whose header is
// right is not written. False when the file is no WAV file or cannot be written.
bool repairTrackFile(const std::string& path);

// The largest absolute sample over the given files, read as floats of full scale 1.0; files
// that cannot be read are skipped.
float peakOfFiles(const std::string& folder, int tracks);

} // namespace waxline::exporting
