#include "splitting/SideFolder.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>

namespace waxline::test {

namespace fs = std::filesystem;

namespace {

bool isFloat(int format) {
    return (format & SF_FORMAT_SUBMASK) == SF_FORMAT_FLOAT;
}

int32_t floatBits(float f) {
    int32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    return bits;
}

std::string trackName(const std::string& folder, int t) {
    return folder + "/WXRTTmpFile." + std::to_string(t) + ".wav";
}

} // namespace

std::vector<int32_t> writeSideFolder(const std::string& folder, const SideShape& shape,
                                     unsigned seed) {
    fs::create_directories(folder);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> pcm(-32768, 32767);
    std::uniform_real_distribution<float> real(-1.5f, 1.5f);
    std::vector<int32_t> all;
    for (size_t t = 0; t < shape.trackFrames.size(); ++t) {
        SF_INFO info{};
        info.samplerate = shape.rate;
        info.channels = shape.channels;
        info.format = shape.format;
        SNDFILE* f = sf_open(trackName(folder, static_cast<int>(t + 1)).c_str(), SFM_WRITE, &info);
        if (!f)
            return {};
        const auto count = static_cast<size_t>(shape.trackFrames[t] * shape.channels);
        if (isFloat(shape.format)) {
            std::vector<float> samples(count);
            for (size_t i = 0; i < count; ++i) {
                samples[i] = real(random);
                all.push_back(floatBits(samples[i]));
            }
            sf_writef_float(f, samples.data(), shape.trackFrames[t]);
        } else {
            std::vector<short> samples(count);
            for (size_t i = 0; i < count; ++i) {
                // Both extremes of the range, which a scaled copy would get wrong.
                const int v = i % 97 == 0 ? -32768 : i % 89 == 0 ? 32767 : pcm(random);
                samples[i] = static_cast<short>(v);
                all.push_back(v);
            }
            sf_writef_short(f, samples.data(), shape.trackFrames[t]);
        }
        sf_close(f);
    }
    std::ofstream(folder + "/WXRTTmpFile.count") << shape.trackFrames.size() << "\nfinished\n";
    return all;
}

StoredFile readStored(const std::string& path) {
    StoredFile file;
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &file.info);
    if (!f)
        return file;
    const auto count = static_cast<size_t>(file.info.frames * file.info.channels);
    if (isFloat(file.info.format)) {
        std::vector<float> samples(count);
        file.readable = sf_readf_float(f, samples.data(), file.info.frames) == file.info.frames;
        for (float s : samples)
            file.samples.push_back(floatBits(s));
    } else {
        std::vector<short> samples(count);
        file.readable = sf_readf_short(f, samples.data(), file.info.frames) == file.info.frames;
        file.samples.assign(samples.begin(), samples.end());
    }
    sf_close(f);
    return file;
}

std::vector<StoredFile> readTrackFiles(const std::string& folder) {
    std::vector<StoredFile> files;
    for (int t = 1; fs::exists(trackName(folder, t)); ++t)
        files.push_back(readStored(trackName(folder, t)));
    return files;
}

std::map<std::string, std::string> folderSnapshot(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string bytes = fileText(entry.path().string());
        files[entry.path().filename().string()] = std::to_string(bytes.size()) + " bytes, hash " +
                                                  std::to_string(std::hash<std::string>{}(bytes));
    }
    return files;
}

std::string fileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
}

} // namespace waxline::test
