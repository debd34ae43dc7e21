#include "capture/excerpt/ExcerptPlayer.h"

#include <samplerate.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

namespace waxline {

namespace {

// Silence played after the excerpt before the stream closes, so the last frames have left the
// server's buffer by then.
constexpr double kTailSeconds = 0.25;

// `frames` interleaved frames converted by `ratio` (output rate over input rate); empty when the
// converter fails.
std::vector<float> resampled(const std::vector<float>& interleaved, unsigned channels,
                             double ratio) {
    const long inFrames = static_cast<long>(interleaved.size() / channels);
    const long capacity = static_cast<long>(std::ceil(static_cast<double>(inFrames) * ratio)) + 16;
    std::vector<float> out(static_cast<size_t>(capacity) * channels);
    SRC_DATA data{};
    data.data_in = interleaved.data();
    data.input_frames = inFrames;
    data.data_out = out.data();
    data.output_frames = capacity;
    data.src_ratio = ratio;
    if (src_simple(&data, SRC_SINC_MEDIUM_QUALITY, static_cast<int>(channels)) != 0)
        return {};
    out.resize(static_cast<size_t>(data.output_frames_gen) * channels);
    return out;
}

} // namespace

class ExcerptPlayer::Playback : public platform::OutputHandler {
public:
    // `planar`: `channels` runs of `frames` samples each.
    Playback(std::vector<float> planar, unsigned channels, int64_t frames, int64_t tailFrames)
        : planar(std::move(planar))
        , channels(channels)
        , frames(frames)
        , tailFrames(tailFrames) {}

    // Audio thread: copies and fills with zeros, nothing else. Output channels beyond the
    // excerpt's repeat its channels (a mono excerpt plays on both speakers).
    void onOutput(float* const* out, uint32_t outChannels, uint32_t count, int64_t,
                  uint64_t) override {
        const int64_t available = std::clamp<int64_t>(frames - position, 0, count);
        for (uint32_t c = 0; c < outChannels; ++c) {
            if (available > 0) {
                const float* from =
                    planar.data() + static_cast<size_t>(c % channels) * frames + position;
                std::copy(from, from + available, out[c]);
            }
            std::fill(out[c] + available, out[c] + count, 0.0f);
        }
        position += count;
        if (position >= frames + tailFrames)
            done.store(true, std::memory_order_release);
    }
    // A platform thread: the device went away.
    void onStreamEnded(platform::Status) override { done.store(true, std::memory_order_release); }

    bool finished() const { return done.load(std::memory_order_acquire); }

private:
    const std::vector<float> planar;
    const unsigned channels;
    const int64_t frames;
    const int64_t tailFrames;
    int64_t position = 0; // audio thread only
    std::atomic<bool> done{false};
};

ExcerptPlayer::ExcerptPlayer() = default;

ExcerptPlayer::~ExcerptPlayer() {
    stop();
}

bool ExcerptPlayer::play(platform::AudioSystem& system, platform::AudioObjectID output,
                         const ExcerptAudio& excerpt) {
    stop();
    if (excerpt.frames() == 0 || excerpt.sampleRate <= 0)
        return false;
    if (output == platform::kDefaultDevice)
        output = system.defaultDevice(platform::Direction::Output);
    const auto device = system.device(output, platform::Direction::Output);
    if (!device || device->channels == 0)
        return false;
    double rate =
        device->actualSampleRate > 0 ? device->actualSampleRate : device->nominalSampleRate;
    if (rate <= 0)
        rate = excerpt.sampleRate;

    const unsigned channels = excerpt.channels;
    std::vector<float> interleaved;
    if (rate != excerpt.sampleRate) {
        interleaved = resampled(excerpt.interleaved, channels, rate / excerpt.sampleRate);
        if (interleaved.empty())
            return false;
    }
    const std::vector<float>& source = interleaved.empty() ? excerpt.interleaved : interleaved;
    const auto frames = static_cast<int64_t>(source.size() / channels);
    std::vector<float> planar(source.size());
    for (int64_t i = 0; i < frames; ++i)
        for (unsigned c = 0; c < channels; ++c)
            planar[static_cast<size_t>(c) * frames + i] =
                source[static_cast<size_t>(i) * channels + c];

    auto next = std::make_unique<Playback>(std::move(planar), channels, frames,
                                           std::llround(kTailSeconds * rate));
    platform::Status status = platform::kNoError;
    auto opened = system.openOutput(output, {rate, channels}, device->bufferFrames, *next, status);
    if (!opened || status != platform::kNoError)
        return false;
    if (opened->start() != platform::kNoError)
        return false;
    playback = std::move(next);
    stream = std::move(opened);
    return true;
}

void ExcerptPlayer::stop() {
    // The stream's destructor waits for a running callback; only then may the data go.
    stream.reset();
    playback.reset();
}

void ExcerptPlayer::closeWhenDone() {
    if (playback && playback->finished())
        stop();
}

} // namespace waxline
