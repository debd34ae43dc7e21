#include "support/MediaFiles.h"

#include "support/Signals.h"

#include <gtest/gtest.h>

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace waxline::test {

std::map<std::string, std::string> probeTags(const std::string& path) {
    std::string out;
    runCommand("ffprobe -v error -show_entries format_tags -of default=noprint_wrappers=1 " +
                   shellQuote(path),
               out, false);
    std::map<std::string, std::string> tags;
    std::istringstream lines(out);
    std::string line;
    while (std::getline(lines, line)) {
        const auto eq = line.find('=');
        if (line.rfind("TAG:", 0) != 0 || eq == std::string::npos)
            continue;
        std::string key = line.substr(4, eq - 4);
        std::transform(key.begin(), key.end(), key.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        tags[key] = line.substr(eq + 1);
    }
    return tags;
}

double probeDuration(const std::string& path) {
    std::string out;
    if (runCommand("ffprobe -v error -show_entries format=duration -of csv=p=0 " + shellQuote(path),
                   out, false) != 0 ||
        out.empty())
        return -1;
    return std::atof(out.c_str());
}

bool makeMp3(const std::string& path, double seconds,
             const std::map<std::string, std::string>& tags) {
    std::string command = "ffmpeg -nostdin -y -v error -f lavfi -i sine=frequency=440:duration=" +
                          std::to_string(seconds) + " -ac 2 -codec:a libmp3lame -qscale:a 2";
    for (const auto& [key, value] : tags)
        command += " -metadata " + shellQuote(key + "=" + value);
    std::string out;
    return runCommand(command + " " + shellQuote(path), out) == 0;
}

bool writeWav(const std::string& path, const std::vector<float>& interleaved, int channels,
              int rate, bool floatSamples) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | (floatSamples ? SF_FORMAT_FLOAT : SF_FORMAT_PCM_16);
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file)
        return false;
    const auto frames = static_cast<sf_count_t>(interleaved.size() / channels);
    const bool ok = sf_writef_float(file, interleaved.data(), frames) == frames;
    return sf_close(file) == 0 && ok;
}

bool writeStereoWav(const std::string& path, const std::vector<float>& left,
                    const std::vector<float>& right) {
    std::vector<float> interleaved(left.size() * 2);
    for (size_t i = 0; i < left.size(); ++i) {
        interleaved[2 * i] = left[i];
        interleaved[2 * i + 1] = right[i];
    }
    return writeWav(path, interleaved, 2);
}

bool writeToneWav(const std::string& path, double seconds, double peak, double frequency) {
    const auto frames = static_cast<size_t>(seconds * 44100);
    const std::vector<float> left = sine(frequency, peak, 44100, frames);
    const std::vector<float> right = sine(frequency * 1.5, peak, 44100, frames);
    return writeStereoWav(path, left, right);
}

WavContents readStereoWav(const std::string& path) {
    WavContents w;
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) {
        w.error = path + ": " + sf_strerror(nullptr);
        return w;
    }
    w.rate = info.samplerate;
    w.channels = info.channels;
    w.format = info.format;
    w.samples.resize(static_cast<size_t>(info.frames) * static_cast<size_t>(info.channels));
    const sf_count_t got = sf_readf_float(file, w.samples.data(), info.frames);
    w.samples.resize(static_cast<size_t>(std::max<sf_count_t>(got, 0)) *
                     static_cast<size_t>(info.channels));
    sf_close(file);
    return w;
}

std::vector<float> WavContents::channel(int c) const {
    std::vector<float> one(frames());
    for (size_t i = 0; i < one.size(); ++i)
        one[i] = samples[i * static_cast<size_t>(channels) + static_cast<size_t>(c)];
    return one;
}

double filePeak(const std::string& path) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return -1;
    std::vector<float> block(4096 * static_cast<size_t>(info.channels));
    double peak = 0;
    sf_count_t n;
    while ((n = sf_readf_float(file, block.data(), 4096)) > 0) {
        for (sf_count_t i = 0; i < n * info.channels; ++i)
            peak = std::max(peak, static_cast<double>(std::fabs(block[static_cast<size_t>(i)])));
    }
    sf_close(file);
    return peak;
}

SoundInfo soundInfo(const std::string& path) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return {};
    sf_close(file);
    return {info.frames, info.samplerate, info.channels};
}

std::vector<std::string> filesBelow(const std::string& root) {
    namespace fs = std::filesystem;
    std::vector<std::string> files;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(root, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
        if (it->is_regular_file())
            files.push_back(fs::relative(it->path(), root).string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string latin1BytesAsUtf8(const std::string& bytes) {
    std::string out;
    for (unsigned char b : bytes) {
        if (b < 0x80) {
            out += static_cast<char>(b);
        } else {
            out += static_cast<char>(0xC0 | (b >> 6));
            out += static_cast<char>(0x80 | (b & 0x3F));
        }
    }
    return out;
}

std::string decodedPcm(const std::string& path) {
    std::string pcm;
    const int status = runCommand("ffmpeg -nostdin -v error -i " + shellQuote(path) +
                                      " -f s16le -acodec pcm_s16le -ac 2 -",
                                  pcm, false);
    EXPECT_EQ(status, 0) << "ffmpeg cannot decode " << path;
    return status == 0 ? pcm : std::string();
}

} // namespace waxline::test
