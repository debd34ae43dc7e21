#include "filters/GapDetector.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace Sonra::Audio::Filters {
namespace {

constexpr float kGapFrameSeconds = 0.5f;
constexpr float kGapStartSeconds = 1.5f;  // silence longer than this starts a gap
constexpr float kSoundReturnSeconds = 10; // sound longer than this ends the silence
constexpr float kAlbumEndSeconds = 60;    // silence longer than this ends the side
constexpr float kClearlyPresentAAM = 500; // until a frame this loud, everything counts as silent
constexpr float kSilenceThresholdAAM = 100;
// Reserve two hours of half-second frames so the history never grows on the input path.
constexpr size_t kReservedFrames = 2 * 3600 * 2;

void writeToStandardError(const char* line) {
    std::fputs(line, stderr);
}

} // namespace

GapDetector::SilenceState& GapDetector::SilenceState::operator=(bool value) {
    if (value == flag)
        return *this;
    flag = value;
    if (diagnostic)
        diagnostic(value ? "Audio has transitioned into silence\n"
                         : "Audio has transitioned out of silence\n");
    if (value)
        listener.TrackSilenceStarted();
    else
        listener.TrackSilenceEnded();
    return *this;
}

GapDetector::AlbumEnd& GapDetector::AlbumEnd::operator=(bool value) {
    if (value == flag)
        return *this;
    flag = value;
    if (value)
        listener.AlbumEnded();
    return *this;
}

GapDetector::GapDetector(Listener& listener, unsigned /*sampleRate*/)
    : silence(listener)
    , albumEnd(listener) {
    silence.diagnostic = writeToStandardError;
    aamHistory.reserve(kReservedFrames);
    SetSampleRate(44100);
}

void GapDetector::SetSampleRate(unsigned rate) {
    const float r = static_cast<float>(rate);
    if (r == sampleRate)
        return;
    sampleRate = r;
    frameSize = std::llround(static_cast<double>(r) * 0.5);
    // A zero rate gives zero-length frames; keep one slot so the store stays in bounds.
    frameBuffer = std::make_unique<int16_t[]>(frameSize > 0 ? static_cast<size_t>(frameSize) : 1);
    frameFill = 0;
    frameSum = 0;
    maxAAM = 0;
    minAAM = 9999999;
    bandPass = FilterParams{};
    bandPass.frequency = -1;
    SetFilter_BP(&bandPass, 500, 75, r);
    silentSeconds = 0;
    silence.flag = true;
    albumEnd.flag = false;
}

void GapDetector::Reset() {
    silence.flag = true;
    albumEnd.flag = false;
}

short GapDetector::ApplyFilter(long sample) {
    const int64_t y = filterStep(bandPass, sample);
    frameSum += y;
    return static_cast<int16_t>(y);
}

bool GapDetector::operator()(const float* left, const float* right, unsigned long count) {
    Feed feed(*this);
    for (unsigned long i = 0; i < count;) {
        const unsigned long n = std::min<unsigned long>(count - i, feed.room());
        for (unsigned long end = i + n; i < end; ++i)
            feed.add(left[i], right[i]);
        feed.endRun();
    }
    return feed.finish();
}

float GapDetector::CalcAAMFrame() {
    if (frameSize < 1)
        return 0.0f / static_cast<float>(frameSize);
    const float n = static_cast<float>(frameSize);
    const float mean = static_cast<float>(frameSum) / n;
    float deviation = 0;
    for (int64_t i = 0; i < frameSize; ++i)
        deviation += std::fabs(static_cast<float>(frameBuffer[i]) - mean);
    return deviation / n;
}

bool GapDetector::ProcessFrameBuffer() {
    if (albumCountRestart.exchange(false, std::memory_order_acq_rel))
        silentSeconds = 0;
    const float a = CalcAAMFrame();
    if (a > maxAAM)
        maxAAM = a;
    if (minAAM > a)
        minAAM = a;
    aamHistory.push_back(a);

    const float threshold = maxAAM < kClearlyPresentAAM ? maxAAM + 1 : kSilenceThresholdAAM;
    if (threshold > a) {
        silentSeconds += kGapFrameSeconds;
        soundSeconds = 0;
        if (silentSeconds > kGapStartSeconds)
            silence = true;
        if (silentSeconds > kAlbumEndSeconds) {
            albumEnd = true;
            return true;
        }
        return false;
    }
    // A sounding frame; a NaN level lands here too.
    soundSeconds += kGapFrameSeconds;
    if (soundSeconds > kSoundReturnSeconds) {
        silence = false;
        silentSeconds = 0;
    }
    return false;
}

void GapDetector::setHistoryForAnalysis(std::vector<float> history, float maxLevel,
                                        float minLevel) {
    aamHistory = std::move(history);
    maxAAM = maxLevel;
    minAAM = minLevel;
}

} // namespace Sonra::Audio::Filters
