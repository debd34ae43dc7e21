#include "capture/buffered/CAAudioFileRecorder.h"

#include "capture/buffered/CAXException.h"
#include "util/Decibels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>

namespace waxline {

namespace {
constexpr uint32_t kFramesPerSlice = 1024;
}

class CAAudioFileRecorder::Input : public platform::InputHandler {
public:
    explicit Input(CAAudioFileRecorder& owner)
        : mOwner(owner) {}
    void onInput(float* const* channels, uint32_t count, uint32_t frames, int64_t,
                 uint64_t) override {
        mOwner.InputProc(channels, count, frames);
    }
    void onOverflow(uint32_t) override { mOwner.mOverflows.fetch_add(1); }

private:
    CAAudioFileRecorder& mOwner;
};

CAAudioFileRecorder::CAAudioFileRecorder(platform::AudioSystem& system,
                                         platform::AudioObjectID device, int nBuffers,
                                         uint32_t bufferSizeFrames)
    : CAAudioFileWriter(nBuffers, bufferSizeFrames)
    , mSystem(system)
    , mInput(std::make_unique<Input>(*this)) {
    using platform::Direction;
    if (device == platform::kDefaultDevice) {
        device = mSystem.defaultDevice(Direction::Input);
        if (device == platform::kNoDevice) {
            throw CAXException("failed to get default input device", platform::kErrorUnknownDevice);
        }
    }
    const auto info = mSystem.device(device, Direction::Input);
    if (!info) {
        throw CAXException("failed to select input device", platform::kErrorUnknownDevice);
    }
    mDevice = device;
    mDeviceFormat.sampleRate =
        info->actualSampleRate > 0 ? info->actualSampleRate : info->nominalSampleRate;
    mDeviceFormat.channels = info->channels;
    mFramesPerSlice = info->bufferFrames > 0 ? info->bufferFrames : kFramesPerSlice;
    platform::Status status = platform::kNoError;
    mStream = mSystem.openInput(device, {}, mFramesPerSlice, *mInput, status);
    if (!mStream || status != platform::kNoError) {
        throw CAXException("connect input proc to output unit",
                           status != platform::kNoError ? status : platform::kErrorOpenFailed);
    }
    if (mStream->format().channels == 0) {
        throw CAXException("couldn't get input unit's stream format", platform::kErrorOpenFailed);
    }
}

CAAudioFileRecorder::CAAudioFileRecorder(platform::AudioSystem& system,
                                         platform::AudioObjectID device, const std::string& path,
                                         float gainDb, int nBuffers, uint32_t bufferSizeFrames)
    : CAAudioFileRecorder(system, device, nBuffers, bufferSizeFrames) {
    const std::filesystem::path p(path);
    std::error_code error;
    const auto parent = p.has_parent_path() ? p.parent_path() : std::filesystem::current_path();
    if (!std::filesystem::is_directory(parent, error) || p.filename().empty()) {
        throw CAXException("couldn't find output directory", platform::kErrorOpenFailed);
    }
    SetInputGain(gainDb);
    SetFile(parent.string(), p.filename().string(), Format{0, 2});
}

CAAudioFileRecorder::~CAAudioFileRecorder() {
    if (IsRunning()) {
        Stop();
    }
    mStream.reset(); // waits until no callback runs
}

void CAAudioFileRecorder::SetFile(const std::string& parentFolder, const std::string& fileName,
                                  Format format) {
    if (format.sampleRate == 0) {
        format.sampleRate = mDeviceFormat.sampleRate;
    }
    CAAudioFileWriter::SetFile(parentFolder, fileName, format);
    // One slice per callback at most; longer deliveries are cut into slices.
    mInputStorage.assign(static_cast<std::size_t>(mFramesPerSlice) * format.channels, 0.0f);
    mAudioInputPtrs.mNumberBuffers =
        std::min<uint32_t>(format.channels, AudioBufferList::kMaxBuffers);
    for (uint32_t c = 0; c < mAudioInputPtrs.mNumberBuffers; ++c) {
        mAudioInputPtrs.mBuffers[c] = {1, mFramesPerSlice * static_cast<uint32_t>(sizeof(float)),
                                       mInputStorage.data() +
                                           static_cast<std::size_t>(c) * mFramesPerSlice};
    }
}

void CAAudioFileRecorder::Start() {
    CAAudioFileWriter::Start();
    const platform::Status status = mStream->start();
    if (status != platform::kNoError) {
        CAAudioFileWriter::Stop();
        throw CAXException("start audio input unit", status);
    }
}

void CAAudioFileRecorder::Stop() {
    const platform::Status status = mStream->stop();
    CAAudioFileWriter::Stop();
    if (status != platform::kNoError) {
        throw CAXException("stop audio input unit", status);
    }
}

void CAAudioFileRecorder::SetInputGain(float dB) {
    mGainFactor.store(gainFactor(dB), std::memory_order_relaxed);
}

void CAAudioFileRecorder::InputProc(float* const* channels, uint32_t count, uint32_t frames) {
    if (count == 0 || mAudioInputPtrs.mNumberBuffers == 0) {
        return;
    }
    const float gain = mGainFactor.load(std::memory_order_relaxed);
    for (uint32_t done = 0; done < frames;) {
        const uint32_t n = std::min(mFramesPerSlice, frames - done);
        for (uint32_t c = 0; c < mAudioInputPtrs.mNumberBuffers; ++c) {
            float* dst = mAudioInputPtrs.mBuffers[c].mData;
            // A mono device feeds both channels of the file.
            std::memcpy(dst, channels[std::min(c, count - 1)] + done, n * sizeof(float));
            applyGain(dst, n, gain);
        }
        PushBuffer(n, &mAudioInputPtrs);
        done += n;
    }
}

} // namespace waxline
