#include "splitting/RecordedSide.h"

#include "splitting/SoundFile.h"
#include "util/TrackFileNames.h"

#include <algorithm>
#include <filesystem>

namespace waxline {

namespace {

constexpr size_t kReadBlockFrames = 16384;

} // namespace

int64_t RecordedSide::frames() const {
    int64_t sum = 0;
    for (int64_t f : trackFrames)
        sum += f;
    return sum;
}

std::vector<int64_t> RecordedSide::liveBoundaries() const {
    std::vector<int64_t> starts;
    int64_t at = 0;
    for (size_t i = 0; i + 1 < trackFrames.size(); ++i) {
        at += trackFrames[i];
        starts.push_back(at);
    }
    return starts;
}

SideOpen openRecordedSide(const std::string& folder, int tracks) {
    SideOpen result;
    result.side.folder = folder;
    if (tracks < 1) {
        result.problem = SideProblem::NoTracks;
        return result;
    }
    for (int t = 1; t <= tracks; ++t) {
        const std::string path = trackFilePath(folder, t);
        std::error_code ec;
        if (!std::filesystem::is_regular_file(path, ec)) {
            result.problem = SideProblem::MissingFile;
            result.path = path;
            return result;
        }
        SoundFile file(path);
        if (!file) {
            result.problem = SideProblem::UnreadableFile;
            result.path = path;
            return result;
        }
        const SF_INFO& info = file.info();
        if (t == 1) {
            result.side.sampleRate = static_cast<unsigned>(info.samplerate);
            result.side.channels = static_cast<unsigned>(info.channels);
            result.side.format = info.format;
        } else if (static_cast<unsigned>(info.samplerate) != result.side.sampleRate ||
                   static_cast<unsigned>(info.channels) != result.side.channels ||
                   info.format != result.side.format) {
            // Joined, they would not be one side: a re-cut could not keep every file's format.
            result.problem = SideProblem::FormatsDiffer;
            result.path = path;
            return result;
        }
        result.side.trackFrames.push_back(info.frames);
    }
    return result;
}

bool readSide(const RecordedSide& side,
              const std::function<void(const float* interleaved, size_t frames)>& consume,
              const std::atomic<bool>* cancel) {
    std::vector<float> block(kReadBlockFrames * std::max(1u, side.channels));
    for (int t = 1; t <= side.tracks(); ++t) {
        SoundFile file(trackFilePath(side.folder, t));
        if (!file || static_cast<unsigned>(file.info().channels) != side.channels)
            return false;
        int64_t left = side.trackFrames[static_cast<size_t>(t - 1)];
        while (left > 0) {
            if (cancel && cancel->load(std::memory_order_relaxed))
                return false;
            const auto want = static_cast<sf_count_t>(std::min<int64_t>(left, kReadBlockFrames));
            const sf_count_t got = sf_readf_float(file.get(), block.data(), want);
            if (got != want)
                return false;
            consume(block.data(), static_cast<size_t>(got));
            left -= got;
        }
    }
    return true;
}

std::vector<float> readSideRange(const RecordedSide& side, int64_t first, int64_t count) {
    std::vector<float> out;
    const int64_t total = side.frames();
    if (first < 0 || count <= 0 || first >= total)
        return out;
    const int64_t end = std::min(total, first + count);
    out.resize(static_cast<size_t>((end - first) * side.channels));
    int64_t trackStart = 0;
    int64_t at = first;
    for (int t = 1; t <= side.tracks() && at < end; ++t) {
        const int64_t frames = side.trackFrames[static_cast<size_t>(t - 1)];
        const int64_t trackEnd = trackStart + frames;
        if (at < trackEnd) {
            SoundFile file(trackFilePath(side.folder, t));
            if (!file || static_cast<unsigned>(file.info().channels) != side.channels ||
                sf_seek(file.get(), at - trackStart, SEEK_SET) < 0)
                return {};
            const int64_t take = std::min(end, trackEnd) - at;
            float* into = out.data() + (at - first) * side.channels;
            if (sf_readf_float(file.get(), into, take) != take)
                return {};
            at += take;
        }
        trackStart = trackEnd;
    }
    return out;
}

} // namespace waxline
