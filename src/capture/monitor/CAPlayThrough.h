#pragma once

#include "capture/devices/AudioDevice.h"
#include "capture/monitor/AudioBufferList.h"
#include "capture/monitor/AudioRingBuffer.h"
#include "capture/monitor/MonitorHost.h"
#include "platform/AudioSystem.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

struct SRC_STATE_tag;

namespace waxline {

// The play-through monitor: a record stream on the input device feeds the ring buffer after the
// gain and the processing callback (the input chain); a playback stream on the output device
// reads the ring a fixed number of frames behind. When the two devices' rates or clocks differ,
// the output reads through a resampler whose ratio keeps the read position at its distance from
// the write position.
//
// Construction, Start/Stop and the setters run on a control thread. InputProc runs on the input
// stream's audio thread, OutputProc on the output stream's; both follow the real-time rules.
// Why a monitor could not be set up: the failing step's status and the devices it was for.
struct MonitorStartFailure {
    platform::Status status = platform::kNoError;
    platform::AudioObjectID input = platform::kNoDevice;
    platform::AudioObjectID output = platform::kNoDevice;
};

// A monitor that cannot be set up ends the process. The notice set here runs first, on the
// thread building the monitor, so that a front end can tell the user why before the end; it
// must return (a modal alert that is answered). An empty notice removes it.
void setMonitorStartFailureNotice(std::function<void(const MonitorStartFailure&)> notice);

class CAPlayThrough {
public:
    using ProcessingCallback = void (*)(AudioBufferList* buffers, uint32_t frames,
                                        int64_t sampleTime);

    // platform::kDefaultDevice means the default device of that direction; an output of
    // platform::kNoDevice plays nowhere (the input still feeds the processing callback). A monitor
    // that cannot be set up ends the process with status 1 after a message on standard error.
    CAPlayThrough(platform::AudioSystem& system, platform::AudioObjectID input,
                  platform::AudioObjectID output);
    ~CAPlayThrough();
    CAPlayThrough(const CAPlayThrough&) = delete;
    CAPlayThrough& operator=(const CAPlayThrough&) = delete;

    platform::Status Start();
    platform::Status Stop();
    bool IsRunning() const;

    // Stores dbamp(dB), 10^(dB x 0.05) worked out in double precision, as the gain factor.
    void SetInputGain(float dB);
    float GainFactor() const { return mGainFactor.load(std::memory_order_relaxed); }
    void SetProcessingCallback(ProcessingCallback callback) { mCallback.store(callback); }

    platform::AudioObjectID GetInputDeviceID() const { return mInputDevice.mID; }
    platform::AudioObjectID GetOutputDeviceID() const { return mOutputDevice.mID; }
    int Channels() const { return mChannels; }

    // Safety offsets and buffer sizes of both devices, in frames.
    uint32_t ComputeThruOffset() const;
    // The input-to-output offset in effect: heard frame t is input frame t - offset.
    double ThruOffsetFrames() const { return mInToOutSampleOffset.load(); }
    // Input-to-output latency as the monitor keeps it: both devices' buffers and safety offsets
    // and the fill it keeps in its ring, in milliseconds of input.
    double LatencyMilliseconds() const;
    // The input frames the ring keeps beyond each read. It starts from the input buffer and the
    // safety offsets and grows after an underrun that was not a start-up one, so that it settles
    // where the streams no longer run dry.
    double TargetFillFrames() const { return mTargetReport.load(); }
    // True once after the fill was raised and then held for a few seconds; `ms` is the latency
    // it settled on. A fill raised in a busy spell comes down again a step at a time after
    // kRelaxSeconds without an underrun.
    bool TakeSettledLatency(double& ms);

    // Fetch errors after the first successful fetch since Start: each one is an audible gap.
    uint64_t ReAlignmentCount() const { return mReAlignments.load(); }
    // Buffers lost or late: input overflows, failed stores and re-alignments.
    uint64_t DroppedBufferCount() const;
    // Since the last Start: the input skipped to hold the latency, and the servers' xruns.
    MonitorDrops Drops() const;
    bool VarispeedActive() const { return mVarispeed.load(); }
    // The resampler's current output/input frame ratio (1 when not resampling).
    double VarispeedRatio() const { return mSrcRatio.load(); }

    // The stream callbacks; public so tests can drive a monitor without a platform thread.
    void InputProc(float* const* channels, uint32_t channelCount, uint32_t frames,
                   int64_t sampleTime, uint64_t hostTime);
    void OutputProc(float* const* channels, uint32_t channelCount, uint32_t frames,
                    int64_t sampleTime, uint64_t hostTime);

private:
    class InputSide;
    class OutputSide;

    platform::Status Init();
    void Cleanup();
    void ResetTimes();
    // Output thread: plays `frames` from the ring at output time `t` straight or resampled.
    void OutputDirect(float* const* channels, uint32_t count, uint32_t frames, double t);
    void OutputResampled(float* const* channels, uint32_t count, uint32_t frames,
                         uint64_t hostTime);
    // After a failed read: the next read starts where the ring keeps its target fill behind the
    // newest input, never at the oldest data. `underrun` raises the target once playing settled.
    // Without `underrun` the read only skips ahead; false when it stays where it was.
    bool ReAlign(double nextOutputTime, uint32_t frames, bool underrun);
    // The server told of an output underflow: the input went on meanwhile. A small excess is
    // played out faster by the resampler, a larger one skipped.
    void RecoverFromPause(double t, uint32_t frames);
    // Counts input frames a re-alignment passed over unplayed (a read that went back passes
    // over none).
    void NoteSkip(int64_t frames);
    // The fill the resampled path keeps after a read, measured at the interpolated write end.
    double ResampledReference() const;
    double WrittenPosition(int64_t end, uint64_t hostTime) const;
    bool ClocksDiffer() const;
    void SwitchToVarispeed(int64_t readPos);
    void NoteGoodCycle(uint32_t frames);
    void UpdateRatio(uint32_t outputFrames);
    double JumpFrames() const;
    static long ResamplerInput(void* self, float** data);

    platform::AudioSystem& mSystem;
    std::unique_ptr<InputSide> mInputSide;
    std::unique_ptr<OutputSide> mOutputSide;
    std::unique_ptr<platform::Stream> mInputStream;
    std::unique_ptr<platform::Stream> mOutputStream;

    AudioBufferList mInputBuffer;
    std::vector<float> mInputStorage;
    AudioDevice mInputDevice;
    AudioDevice mOutputDevice;
    std::unique_ptr<AudioRingBuffer> mBuffer;
    int mChannels = 0;
    uint32_t mInputPeriod = 0;  // what the input delivers at a time, at least its buffer
    uint32_t mOutputPeriod = 0; // what the output takes at a time, at least its buffer

    std::atomic<double> mFirstInputTime{-1.0};
    std::atomic<double> mFirstOutputTime{-1.0};
    std::atomic<double> mInToOutSampleOffset{0.0};
    std::atomic<float> mGainFactor{1.0f};
    std::atomic<ProcessingCallback> mCallback{nullptr};

    // Varispeed state. The resampler and its buffers are made in Init; the output thread alone
    // touches them afterwards.
    SRC_STATE_tag* mResampler = nullptr;
    bool mRatesDiffer = false;
    std::atomic<bool> mVarispeed{false};
    std::atomic<double> mSrcRatio{1.0};
    std::vector<float> mResamplerIn;  // interleaved chunk handed to the resampler
    std::vector<float> mResamplerOut; // interleaved resampler output
    std::vector<float> mFetchStorage; // per-channel fetch area
    AudioBufferList mFetchBuffer;
    uint32_t mResamplerChunk = 0;      // input frames fetched for the resampler at once
    int64_t mReadPos = 0;              // next input frame the resampler will take
    bool mReadFailed = false;          // a resampler fetch failed during this cycle
    double mDistanceAvg = 0;           // smoothed write end minus read position
    double mDistanceRef = 0;           // straight play: the distance the first cycles show
    int mDistanceSamples = 0;          // successful cycles measured since the last alignment
    double mDistanceIntegral = 0;      // integral term of the distance controller
    bool mCatchingUp = false;          // playing out a pause's excess faster
    bool mFetchedOnce = false;         // a fetch succeeded since Start
    bool mResampling = false;          // the resampler has enough input buffered and plays
    double mTargetFill = 0;            // frames kept in the ring beyond each read
    double mInitialFill = 0;           // the target a start begins with
    uint64_t mPlayedFrames = 0;        // output frames played since the first fetch
    uint64_t mHeldFrames = 0;          // output frames played since the target was raised
    uint64_t mSinceUnderrunFrames = 0; // output frames played since the last underrun
    uint64_t mSeenOutputXruns = 0;     // the output stream's underflows handled so far
    uint32_t mSeenOutputQueue = 0;     // the output's server-side queue last seen
    std::atomic<uint32_t> mOutputQueueReport{0};
    bool mRaised = false; // the target grew and has not yet been reported
    std::atomic<double> mTargetReport{0.0};
    std::atomic<bool> mSettled{false};
    std::atomic<double> mSettledMs{0.0};

    // Rate scalars estimated from sample times against host times (1 = nominal).
    struct ClockEstimate {
        bool started = false;
        bool settled = false; // measuring from after the start-up
        int64_t sample0 = 0;
        uint64_t host0 = 0;
    };
    ClockEstimate mInputClock;  // input thread only
    ClockEstimate mOutputClock; // output thread only
    // Host seconds at which input sample time 0 would have arrived, from the latest input.
    std::atomic<double> mInputOrigin{0.0};
    std::atomic<uint32_t> mLastInputFrames{0};
    std::atomic<double> mInputScalar{1.0};
    std::atomic<double> mOutputScalar{1.0};

    std::atomic<uint64_t> mReAlignments{0};
    std::atomic<uint64_t> mStoreErrors{0};
    std::atomic<uint64_t> mInputOverflows{0};
    std::atomic<uint64_t> mSkips{0};
    std::atomic<uint64_t> mSkippedFrames{0};
    uint64_t mXrunsAtStart = 0;
    uint64_t mOverflowsAtStart = 0;
};

} // namespace waxline
