#include "capture/excerpt/JoinedTracks.h"

#include "capture/recorder/TrackFiles.h"

#include <sndfile.h>

#include <algorithm>
#include <memory>

namespace waxline {

namespace {

struct SndFileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SndFile = std::unique_ptr<SNDFILE, SndFileCloser>;

} // namespace

SideFrames readJoinedTracks(const std::string& folder, int tracks, int64_t first, int64_t count) {
    SideFrames out;
    if (tracks <= 0 || count <= 0)
        return out;
    std::vector<SndFile> files;
    std::vector<int64_t> lengths;
    SF_INFO format{};
    for (int track = 1; track <= tracks; ++track) {
        SF_INFO info{};
        SndFile file(sf_open(trackFilePath(folder, track).c_str(), SFM_READ, &info));
        if (!file)
            return out;
        if (track == 1)
            format = info;
        else if (info.samplerate != format.samplerate || info.channels != format.channels)
            return out;
        files.push_back(std::move(file));
        lengths.push_back(info.frames);
    }
    if (format.channels <= 0)
        return out;

    int64_t sideFrames = 0;
    for (int64_t n : lengths)
        sideFrames += n;
    const int64_t begin = std::max<int64_t>(first, 0);
    const int64_t end = std::min(sideFrames, first + count);
    if (end <= begin)
        return out;

    const auto channels = static_cast<size_t>(format.channels);
    std::vector<float> frames(static_cast<size_t>(end - begin) * channels);
    int64_t trackStart = 0; // side frame of the track's first frame
    int64_t done = 0;
    for (size_t t = 0; t < files.size() && begin + done < end; ++t) {
        const int64_t trackEnd = trackStart + lengths[t];
        const int64_t at = begin + done;
        if (at < trackEnd) {
            const int64_t n = std::min(end, trackEnd) - at;
            if (sf_seek(files[t].get(), at - trackStart, SEEK_SET) < 0 ||
                sf_readf_float(files[t].get(), frames.data() + static_cast<size_t>(done) * channels,
                               n) != n)
                return out;
            done += n;
        }
        trackStart = trackEnd;
    }
    out.sampleRate = format.samplerate;
    out.channels = static_cast<unsigned>(format.channels);
    out.interleaved = std::move(frames);
    return out;
}

} // namespace waxline
