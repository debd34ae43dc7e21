#pragma once

#include <string>
#include <vector>

namespace waxline::exporting {

// A track file read whole: interleaved samples at full scale 1.0, exactly as stored (a 16-bit
// sample k reads as k / 32768), so that writing them back gives the same bytes.
struct TrackAudio {
    int rate = 0;
    int channels = 0;
    int format = 0;    // libsndfile's SF_FORMAT_* of the file
    std::string error; // the system's reason when it could not be read or written
    std::vector<float> samples;
    size_t frames() const { return channels ? samples.size() / static_cast<size_t>(channels) : 0; }
    // One channel's samples, and the same written back into the interleaved frames.
    std::vector<float> channel(int c) const;
    void setChannel(int c, const std::vector<float>& values);
};

TrackAudio readTrackAudio(const std::string& path);

// Writes the samples in the file's own format (`audio.format`); false with `error` set when
// it cannot. Samples beyond full scale are clipped for integer formats.
bool writeTrackAudio(const std::string& path, TrackAudio& audio);

} // namespace waxline::exporting
