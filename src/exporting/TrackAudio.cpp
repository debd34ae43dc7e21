#include "exporting/TrackAudio.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>

namespace waxline::exporting {

namespace {

// The scale of integer samples; float files are taken as they are.
double fullScale(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
        return 128.0;
    case SF_FORMAT_PCM_16:
        return 32768.0;
    case SF_FORMAT_PCM_24:
        return 8388608.0;
    case SF_FORMAT_PCM_32:
        return 2147483648.0;
    default:
        return 1.0;
    }
}

} // namespace

std::vector<float> TrackAudio::channel(int c) const {
    std::vector<float> values(frames());
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = samples[i * static_cast<size_t>(channels) + static_cast<size_t>(c)];
    return values;
}

void TrackAudio::setChannel(int c, const std::vector<float>& values) {
    for (size_t i = 0; i < values.size() && i < frames(); ++i)
        samples[i * static_cast<size_t>(channels) + static_cast<size_t>(c)] = values[i];
}

TrackAudio readTrackAudio(const std::string& path) {
    TrackAudio audio;
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) {
        audio.error = sf_strerror(nullptr);
        return audio;
    }
    // libsndfile scales integers differently on reading and writing; raw values keep the
    // round trip exact, and the scale is applied here.
    sf_command(file, SFC_SET_NORM_FLOAT, nullptr, SF_FALSE);
    audio.rate = info.samplerate;
    audio.channels = info.channels;
    audio.format = info.format;
    audio.samples.resize(static_cast<size_t>(info.frames) * static_cast<size_t>(info.channels));
    const sf_count_t got = sf_readf_float(file, audio.samples.data(), info.frames);
    audio.samples.resize(static_cast<size_t>(std::max<sf_count_t>(got, 0)) *
                         static_cast<size_t>(info.channels));
    sf_close(file);
    const double scale = fullScale(audio.format);
    if (scale != 1.0)
        for (float& s : audio.samples)
            s = static_cast<float>(s / scale);
    return audio;
}

bool writeTrackAudio(const std::string& path, TrackAudio& audio) {
    SF_INFO info{};
    info.samplerate = audio.rate;
    info.channels = audio.channels;
    info.format = audio.format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) {
        audio.error = sf_strerror(nullptr);
        return false;
    }
    sf_command(file, SFC_SET_NORM_FLOAT, nullptr, SF_FALSE);
    const double scale = fullScale(audio.format);
    std::vector<float> raw(audio.samples);
    if (scale != 1.0)
        for (float& s : raw)
            s = static_cast<float>(
                std::clamp(std::round(static_cast<double>(s) * scale), -scale, scale - 1));
    const auto frames = static_cast<sf_count_t>(audio.frames());
    const bool written = sf_writef_float(file, raw.data(), frames) == frames;
    if (!written)
        audio.error = sf_strerror(file);
    const bool closed = sf_close(file) == 0;
    return written && closed;
}

} // namespace waxline::exporting
