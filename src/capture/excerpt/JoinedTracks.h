#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace waxline {

// A stretch of a recorded side, read into memory: interleaved float frames at the files' rate.
struct SideFrames {
    double sampleRate = 0;
    unsigned channels = 0;
    std::vector<float> interleaved;
    int64_t frames() const {
        return channels ? static_cast<int64_t>(interleaved.size() / channels) : 0;
    }
};

// Frames [first, first + count) of the track files 1..tracks in `folder` joined into one side,
// cut to the side (a stretch reaching before its start or past its end comes back shorter).
// Empty when nothing of it lies inside the side, or a file is missing, unreadable or of another
// rate or channel count than track 1. Main thread: it reads the files.
SideFrames readJoinedTracks(const std::string& folder, int tracks, int64_t first, int64_t count);

} // namespace waxline
