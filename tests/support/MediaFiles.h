#pragma once

#include "support/Signals.h"

#include <map>
#include <string>
#include <vector>

// Helpers for tests that make and inspect real audio files with the command-line tools the
// export relies on (ffmpeg, ffprobe) and with libsndfile.
namespace waxline::test {

// The format tags of a media file as ffprobe reads them, keys in lower case.
std::map<std::string, std::string> probeTags(const std::string& path);

// The duration ffprobe gives for the file, in seconds; negative when it cannot read it.
double probeDuration(const std::string& path);

// A short MP3 of a 440 Hz tone made by ffmpeg, carrying the given tags; false on failure.
bool makeMp3(const std::string& path, double seconds,
             const std::map<std::string, std::string>& tags = {});

// Writes a WAV of interleaved full-scale float frames: 16-bit PCM, or 32-bit float samples.
bool writeWav(const std::string& path, const std::vector<float>& interleaved, int channels,
              int rate = 44100, bool floatSamples = false);

// Writes a 16-bit PCM stereo WAV at 44.1 kHz; `left`/`right` in full-scale floats.
bool writeStereoWav(const std::string& path, const std::vector<float>& left,
                    const std::vector<float>& right);

// A sound file read whole with libsndfile: its format, and its samples as floats (full scale
// 1.0, so 16-bit sample k reads as k / 32768 exactly), frames interleaved. Mostly the stereo
// track files; a mono or multichannel file comes back as stored.
struct WavContents {
    int rate = 0;
    int channels = 0;
    int format = 0;    // libsndfile's SF_FORMAT_* of the file
    std::string error; // why the file could not be read; empty when it was
    std::vector<float> samples;
    size_t frames() const { return channels ? samples.size() / static_cast<size_t>(channels) : 0; }
    std::vector<float> channel(int c) const;
};
WavContents readStereoWav(const std::string& path);

// A stereo tone of the given length and peak written as a 16-bit WAV.
bool writeToneWav(const std::string& path, double seconds, double peak, double frequency = 440);

// The largest absolute sample of a sound file read as floats, or -1 when unreadable.
double filePeak(const std::string& path);

// The number of frames and sample rate of a sound file; frames -1 when unreadable.
struct SoundInfo {
    long long frames = -1;
    int sampleRate = 0;
    int channels = 0;
    double seconds() const { return sampleRate ? double(frames) / sampleRate : -1; }
};
SoundInfo soundInfo(const std::string& path);

// The samples a media file decodes to with ffmpeg, as 16-bit stereo little-endian bytes;
// empty (and the test failed) when ffmpeg cannot read it.
std::string decodedPcm(const std::string& path);

// Every regular file below `root`, as paths relative to it, sorted.
std::vector<std::string> filesBelow(const std::string& root);

// Each byte of `bytes` taken as one Latin-1 character, written out as UTF-8.
std::string latin1BytesAsUtf8(const std::string& bytes);

} // namespace waxline::test
