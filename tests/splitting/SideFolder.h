#pragma once

#include <sndfile.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Track-file folders made and read back by the tests with libsndfile alone, so that what the
// splitting library reads and writes is checked against an independent reading.
namespace waxline::test {

struct SideShape {
    std::vector<int64_t> trackFrames;
    int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    int channels = 2;
    int rate = 44100;
};

// Writes WXRTTmpFile.1.wav .. N.wav and a finished count file; returns the side's samples as
// stored, interleaved: 16-bit values for PCM, float bit patterns for float files. The values
// come from a seeded generator and reach both ends of the range.
std::vector<int32_t> writeSideFolder(const std::string& folder, const SideShape& shape,
                                     unsigned seed = 1);

// A file read back as stored (same encoding as above).
struct StoredFile {
    bool readable = false;
    SF_INFO info{};
    std::vector<int32_t> samples;
};
StoredFile readStored(const std::string& path);

// The track files 1.. as long as they exist, read back.
std::vector<StoredFile> readTrackFiles(const std::string& folder);

// Every file of the folder with its size and a hash of its bytes, to compare folders by.
std::map<std::string, std::string> folderSnapshot(const std::string& folder);

std::string fileText(const std::string& path);

} // namespace waxline::test
