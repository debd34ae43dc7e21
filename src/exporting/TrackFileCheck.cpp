#include "exporting/TrackFileCheck.h"

#include "exporting/ExportFolders.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace waxline::exporting {

namespace fs = std::filesystem;

namespace {

uint32_t littleEndian32(const unsigned char* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

uint16_t littleEndian16(const unsigned char* p) {
    return uint16_t(p[0] | p[1] << 8);
}

void putLittleEndian32(unsigned char* p, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

// The byte counts of the data chunk that the RIFF header announces and that the file holds;
// false when the file is no RIFF/WAVE file with a data chunk.
bool dataChunkSizes(const std::string& path, uint64_t& announced, uint64_t& present) {
    std::ifstream in(path, std::ios::binary);
    unsigned char header[12];
    if (!in.read(reinterpret_cast<char*>(header), sizeof header) ||
        std::string(reinterpret_cast<char*>(header), 4) != "RIFF" ||
        std::string(reinterpret_cast<char*>(header) + 8, 4) != "WAVE")
        return false;
    std::error_code ec;
    const uint64_t fileSize = fs::file_size(path, ec);
    uint64_t offset = 12;
    unsigned char chunk[8];
    while (in.read(reinterpret_cast<char*>(chunk), sizeof chunk)) {
        const uint32_t size = littleEndian32(chunk + 4);
        offset += 8;
        if (std::string(reinterpret_cast<char*>(chunk), 4) == "data") {
            announced = size;
            present = fileSize > offset ? fileSize - offset : 0;
            return true;
        }
        offset += size + (size & 1);
        in.seekg(static_cast<std::streamoff>(offset));
    }
    return false;
}

} // namespace

std::optional<TrackFileLayout> measureTrackFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    unsigned char header[12];
    if (!in.read(reinterpret_cast<char*>(header), sizeof header) ||
        std::string(reinterpret_cast<char*>(header), 4) != "RIFF" ||
        std::string(reinterpret_cast<char*>(header) + 8, 4) != "WAVE")
        return std::nullopt;
    std::error_code ec;
    const uint64_t fileSize = fs::file_size(path, ec);
    if (ec)
        return std::nullopt;
    TrackFileLayout layout;
    bool haveFormat = false;
    uint64_t offset = 12;
    unsigned char chunk[8];
    while (in.read(reinterpret_cast<char*>(chunk), sizeof chunk)) {
        const std::string id(reinterpret_cast<char*>(chunk), 4);
        const uint32_t size = littleEndian32(chunk + 4);
        offset += 8;
        if (id == "fmt " && size >= 16) {
            unsigned char format[16];
            if (!in.read(reinterpret_cast<char*>(format), sizeof format))
                return std::nullopt;
            layout.channels = littleEndian16(format + 2);
            layout.sampleRate = littleEndian32(format + 4);
            layout.blockAlign = littleEndian16(format + 12);
            haveFormat = true;
        } else if (id == "data") {
            // The audio runs to the end of the file: nothing is written after it while recording.
            if (!haveFormat || layout.blockAlign == 0)
                return std::nullopt;
            layout.dataOffset = offset;
            layout.announcedData = size;
            layout.frames = fileSize > offset ? (fileSize - offset) / layout.blockAlign : 0;
            return layout;
        }
        offset += size + (size & 1);
        in.seekg(static_cast<std::streamoff>(offset));
    }
    return std::nullopt;
}

bool repairTrackFile(const std::string& path) {
    const std::optional<TrackFileLayout> layout = measureTrackFile(path);
    if (!layout)
        return false;
    // The sizes are 32 bits wide: a longer file keeps what they can say (over six hours).
    const uint64_t limit = (uint64_t(0xFFFFFFFFu) - layout->dataOffset) / layout->blockAlign;
    const uint64_t frames = std::min(layout->frames, limit);
    const uint64_t data = frames * layout->blockAlign;
    std::error_code ec;
    if (fs::file_size(path, ec) != layout->dataOffset + data) {
        fs::resize_file(path, layout->dataOffset + data, ec);
        if (ec)
            return false;
    }
    if (layout->headerRight() && layout->frames == frames)
        return true;
    std::fstream out(path, std::ios::binary | std::ios::in | std::ios::out);
    unsigned char size[4];
    putLittleEndian32(size, static_cast<uint32_t>(layout->dataOffset + data - 8));
    out.seekp(4);
    out.write(reinterpret_cast<char*>(size), 4);
    putLittleEndian32(size, static_cast<uint32_t>(data));
    out.seekp(static_cast<std::streamoff>(layout->dataOffset - 4));
    out.write(reinterpret_cast<char*>(size), 4);
    out.flush();
    return bool(out);
}

TrackFileCheck inspectTrackFile(const std::string& path) {
    TrackFileCheck check;
    check.problem.path = path;
    std::error_code ec;
    if (!fs::exists(path, ec)) {
        check.problem.kind = ExportProblem::Kind::TrackFileMissing;
        return check;
    }
    if (fs::file_size(path, ec) == 0) {
        check.problem.kind = ExportProblem::Kind::TrackFileEmpty;
        return check;
    }
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) {
        check.problem.kind = ExportProblem::Kind::TrackFileUnreadable;
        check.problem.detail = sf_strerror(nullptr);
        return check;
    }
    sf_close(file);
    if (info.frames <= 0 || info.samplerate <= 0) {
        check.problem.kind = ExportProblem::Kind::TrackFileHoldsNoAudio;
        return check;
    }
    check.problem = {};
    check.usable = true;
    check.seconds = static_cast<double>(info.frames) / info.samplerate;
    uint64_t announced = 0, present = 0;
    if (dataChunkSizes(path, announced, present) && announced > present && announced != 0xFFFFFFFFu)
        check.warning =
            TrackWarning{TrackWarning::Kind::Truncated, path, present, announced, check.seconds};
    return check;
}

float peakOfFiles(const std::string& folder, int tracks) {
    float peak = 0;
    std::vector<float> block;
    for (int track = 1; track <= tracks; ++track) {
        SF_INFO info{};
        SNDFILE* file = sf_open(trackFileName(folder, track).c_str(), SFM_READ, &info);
        if (!file)
            continue;
        block.resize(4096 * static_cast<size_t>(info.channels));
        sf_count_t n;
        while ((n = sf_readf_float(file, block.data(), 4096)) > 0) {
            for (sf_count_t i = 0; i < n * info.channels; ++i)
                peak = std::max(peak, std::fabs(block[static_cast<size_t>(i)]));
        }
        sf_close(file);
    }
    return peak;
}

} // namespace waxline::exporting
