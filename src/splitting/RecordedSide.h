#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// A recorded side as its track files hold it: WXRTTmpFile.1.wav .. WXRTTmpFile.<N>.wav joined
// are the side, frame for frame.
namespace waxline {

struct RecordedSide {
    std::string folder;
    unsigned sampleRate = 0;
    unsigned channels = 0;
    int format = 0;                   // libsndfile's SF_FORMAT_* of the files, kept by a re-cut
    std::vector<int64_t> trackFrames; // frames of track 1..N, in order

    int tracks() const { return static_cast<int>(trackFrames.size()); }
    int64_t frames() const;                      // the whole side
    std::vector<int64_t> liveBoundaries() const; // first frame of tracks 2..N, side-relative
};

enum class SideProblem { None, NoTracks, MissingFile, UnreadableFile, FormatsDiffer };

struct SideOpen {
    SideProblem problem = SideProblem::None;
    std::string path; // the file concerned
    RecordedSide side;
};

// Reads the headers of WXRTTmpFile.1.wav .. WXRTTmpFile.<tracks>.wav.
SideOpen openRecordedSide(const std::string& folder, int tracks);

// Streams the joined side in blocks of interleaved float frames; stops early (returns false)
// when `cancel` becomes true or a read fails, a file holding fewer frames than its header
// said included.
bool readSide(const RecordedSide& side,
              const std::function<void(const float* interleaved, size_t frames)>& consume,
              const std::atomic<bool>* cancel = nullptr);

// Frames [first, first + count) of the joined side, interleaved; shorter at the side's end,
// empty outside it or when a file cannot be read.
std::vector<float> readSideRange(const RecordedSide& side, int64_t first, int64_t count);

} // namespace waxline
