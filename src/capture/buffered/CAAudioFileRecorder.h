#pragma once

#include "capture/buffered/CAAudioFileWriter.h"
#include "platform/AudioSystem.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace waxline {

// Records one input device to a file: the input stream's callback applies the gain and pushes
// the frames into the writer's buffers; the shared worker thread writes them.
// Construction, SetFile, Start and Stop run on a control thread; failures throw CAXException
// carrying the operation and the platform status.
class CAAudioFileRecorder : public CAAudioFileWriter {
public:
    // platform::kDefaultDevice records the default input device.
    CAAudioFileRecorder(platform::AudioSystem& system, platform::AudioObjectID device,
                        int nBuffers = 3, uint32_t bufferSizeFrames = 32768);
    // Ready to record `path` as interleaved float stereo at the device's rate, with the gain
    // set; not started.
    CAAudioFileRecorder(platform::AudioSystem& system, platform::AudioObjectID device,
                        const std::string& path, float gainDb = 0.0f, int nBuffers = 3,
                        uint32_t bufferSizeFrames = 32768);
    ~CAAudioFileRecorder() override;

    // A sample rate of 0 takes the device's.
    void SetFile(const std::string& parentFolder, const std::string& fileName, Format format);
    void Start() override;
    void Stop() override;
    void SetInputGain(float dB);
    float GainFactor() const { return mGainFactor.load(std::memory_order_relaxed); }

    platform::AudioObjectID DeviceID() const { return mDevice; }
    double DeviceSampleRate() const { return mDeviceFormat.sampleRate; }
    // Buffers the input stream lost before they reached the callback.
    uint64_t InputOverflows() const { return mOverflows.load(); }

private:
    class Input;
    // Input stream's audio thread.
    void InputProc(float* const* channels, uint32_t count, uint32_t frames);

    platform::AudioSystem& mSystem;
    platform::AudioObjectID mDevice = 0;
    Format mDeviceFormat;
    uint32_t mFramesPerSlice = 0;
    std::unique_ptr<Input> mInput;
    std::unique_ptr<platform::Stream> mStream;
    std::atomic<float> mGainFactor{1.0f};
    // "audio input ptrs": the gain is applied here, not in the stream's own buffers.
    std::vector<float> mInputStorage;
    AudioBufferList mAudioInputPtrs;
    std::atomic<uint64_t> mOverflows{0};
};

} // namespace waxline
