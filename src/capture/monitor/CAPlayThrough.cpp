#include "capture/monitor/CAPlayThrough.h"

#include "util/Decibels.h"

#include <samplerate.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace waxline {

namespace {

constexpr const char* kSourcePath = "src/capture/monitor/CAPlayThrough";
constexpr uint32_t kDefaultBufferFrames = 512;
constexpr uint32_t kRingBuffers = 20; // the ring holds this many device buffers
constexpr uint32_t kResamplerOutFrames = 1024;
// Distance controller: proportional gain per second, integral gain (critically damped), the
// largest speed change it may apply, and how far the smoothed distance may wander before a
// straight play-through switches to resampling.
constexpr double kKp = 0.5;
constexpr double kKi = kKp * kKp / 4.0;
constexpr double kMaxCorrection = 0.005;
// After the output paused, an excess up to kCatchUpSeconds is played out this much faster
// (a third of a semitone, for well under a second) rather than skipped, so no audio is lost.
constexpr double kCatchUpCorrection = 0.02;
constexpr double kCatchUpSeconds = 0.015;
constexpr int kReferenceCycles = 32;
// Clock estimates further apart than this make straight play drift audibly within a minute.
constexpr double kClockTolerance = 2e-4;
// The monitor's buffers: short enough that both together stay well inside 20 ms.
constexpr double kMonitorBufferSeconds = 0.005;
// Input frames the resampler takes at a time; it holds up to this many inside.
constexpr uint32_t kResamplerChunkFrames = 64;
// Underruns this soon after the first output do not raise the target fill, nor one that comes
// alone, further than kRecurrenceSeconds after the last; once raised, the
// fill must hold this long before it is reported as settled.
constexpr double kWarmUpSeconds = 3.0;
constexpr double kRecurrenceSeconds = 2.0;
// However often it runs dry, the fill kept stays below what a listener hears as an echo.
constexpr double kMaxFillSeconds = 0.05;
constexpr double kRelaxSeconds = 10.0;
constexpr double kHoldSeconds = 3.0;
// A fill this far above the target is a jump, skipped rather than kept.
constexpr double kJumpSeconds = 0.040;
constexpr double kAverageWeight = 1.0 / 32.0;
constexpr double kAverageSeconds = 0.15;
// A clock estimate outside this band is taken as a stepped or paused stream, not a real clock.
constexpr double kPlausibleScalar = 0.01;
constexpr double kClockWindowSeconds = 2.0;

void PrintError(long status, int line) {
    std::printf("CAPlayThrough Error: %ld ->  %s:  %d\n", status, kSourcePath, line);
    std::fflush(stdout);
}

// A device's buffer, cut to the monitor's: the device's own may be long enough to be heard.
uint32_t MonitorBufferFrames(const AudioDevice& device) {
    const auto wanted =
        static_cast<uint32_t>(std::lround(device.mFormat.sampleRate * kMonitorBufferSeconds));
    return wanted > 0 ? std::min(device.mBufferSizeFrames, wanted) : device.mBufferSizeFrames;
}

double HostSeconds(uint64_t hostTime) {
    return static_cast<double>(platform::hostTimeToNanos(hostTime)) * 1e-9;
}

void ZeroChannels(float* const* channels, uint32_t count, uint32_t first, uint32_t frames) {
    for (uint32_t c = first; c < count; ++c) {
        std::memset(channels[c], 0, frames * sizeof(float));
    }
}

} // namespace

class CAPlayThrough::InputSide : public platform::InputHandler {
public:
    explicit InputSide(CAPlayThrough& owner)
        : mOwner(owner) {}
    void onInput(float* const* channels, uint32_t count, uint32_t frames, int64_t sampleTime,
                 uint64_t hostTime) override {
        mOwner.InputProc(channels, count, frames, sampleTime, hostTime);
    }
    void onOverflow(uint32_t /*lostFrames*/) override {
        mOwner.mInputOverflows.fetch_add(1, std::memory_order_relaxed);
    }

private:
    CAPlayThrough& mOwner;
};

class CAPlayThrough::OutputSide : public platform::OutputHandler {
public:
    explicit OutputSide(CAPlayThrough& owner)
        : mOwner(owner) {}
    void onOutput(float* const* channels, uint32_t count, uint32_t frames, int64_t sampleTime,
                  uint64_t hostTime) override {
        mOwner.OutputProc(channels, count, frames, sampleTime, hostTime);
    }

private:
    CAPlayThrough& mOwner;
};

namespace {
std::function<void(const MonitorStartFailure&)>& startFailureNotice() {
    static std::function<void(const MonitorStartFailure&)> notice;
    return notice;
}
} // namespace

void setMonitorStartFailureNotice(std::function<void(const MonitorStartFailure&)> notice) {
    startFailureNotice() = std::move(notice);
}

CAPlayThrough::CAPlayThrough(platform::AudioSystem& system, platform::AudioObjectID input,
                             platform::AudioObjectID output)
    : mSystem(system)
    , mInputSide(std::make_unique<InputSide>(*this))
    , mOutputSide(std::make_unique<OutputSide>(*this)) {
    mInputDevice.mID = input;
    mOutputDevice.mID = output;
    if (const platform::Status status = Init(); status != platform::kNoError) {
        std::fprintf(stderr, "CAPlayThrough ERROR: Cannot Init CAPlayThrough\n");
        if (startFailureNotice())
            startFailureNotice()({status, input, output});
        std::exit(1);
    }
}

CAPlayThrough::~CAPlayThrough() {
    Cleanup();
}

platform::Status CAPlayThrough::Init() {
    using platform::Direction;
    // Input: the record stream on the input device, delivering one device buffer at a time.
    platform::AudioObjectID in = mInputDevice.mID;
    if (in == platform::kDefaultDevice) {
        in = mSystem.defaultDevice(Direction::Input);
    }
    if (!mInputDevice.Init(mSystem, in, true)) {
        PrintError(platform::kErrorUnknownDevice, __LINE__);
        return platform::kErrorUnknownDevice;
    }
    if (mInputDevice.mBufferSizeFrames == 0) {
        mInputDevice.SetBufferSize(kDefaultBufferFrames);
    }
    mInputDevice.SetBufferSize(MonitorBufferFrames(mInputDevice));
    const uint32_t bufferFrames = mInputDevice.mBufferSizeFrames;
    platform::Status status = platform::kNoError;
    mInputStream = mSystem.openInput(in, {}, bufferFrames, *mInputSide, status);
    if (!mInputStream || status != platform::kNoError) {
        PrintError(status != platform::kNoError ? status : platform::kErrorOpenFailed, __LINE__);
        return status != platform::kNoError ? status : platform::kErrorOpenFailed;
    }
    // A device may deliver more at a time than asked for; the fill and the latency follow what
    // it delivers.
    mInputPeriod = std::max(bufferFrames, mInputStream->periodFrames());

    // Output device; it is described even when the lookup fails, and the failure returned.
    // Without one the monitor only feeds the processing callback.
    platform::AudioObjectID out = mOutputDevice.mID;
    const bool plays = out != platform::kNoDevice;
    if (out == platform::kDefaultDevice) {
        out = mSystem.defaultDevice(Direction::Output);
    }
    if (plays && !mOutputDevice.Init(mSystem, out, false)) {
        PrintError(platform::kErrorUnknownDevice, __LINE__);
        return platform::kErrorUnknownDevice;
    }
    if (mOutputDevice.mBufferSizeFrames == 0) {
        mOutputDevice.SetBufferSize(kDefaultBufferFrames);
    }
    if (plays) {
        mOutputDevice.SetBufferSize(MonitorBufferFrames(mOutputDevice));
    }

    // Working format: the channels both devices have, at each device's nominal rate.
    mChannels = static_cast<int>(
        plays ? std::min(mInputDevice.CountChannels(), mOutputDevice.CountChannels())
              : mInputDevice.CountChannels());
    mChannels = std::min<int>(mChannels, AudioBufferList::kMaxBuffers);
    if (mChannels <= 0) {
        PrintError(platform::kErrorOpenFailed, __LINE__);
        return platform::kErrorOpenFailed;
    }
    const double inRate = mInputDevice.mFormat.sampleRate;
    const double outRate = plays ? mOutputDevice.mFormat.sampleRate : inRate;
    mRatesDiffer = inRate != outRate;

    mInputStorage.assign(static_cast<std::size_t>(mChannels) * bufferFrames, 0.0f);
    mInputBuffer.mNumberBuffers = static_cast<uint32_t>(mChannels);
    for (int c = 0; c < mChannels; ++c) {
        mInputBuffer.mBuffers[c] = {1, bufferFrames * static_cast<uint32_t>(sizeof(float)),
                                    mInputStorage.data() +
                                        static_cast<std::size_t>(c) * bufferFrames};
    }
    mBuffer = std::make_unique<AudioRingBuffer>();
    mBuffer->Allocate(mChannels, sizeof(float), mInputPeriod * kRingBuffers);

    // The resampler and its buffers, so varispeed never allocates on the output thread.
    int srcError = 0;
    mResampler = src_callback_new(&CAPlayThrough::ResamplerInput, SRC_SINC_FASTEST, mChannels,
                                  &srcError, this);
    if (mResampler == nullptr) {
        PrintError(srcError, __LINE__);
        return platform::kErrorOpenFailed;
    }
    mResamplerChunk = std::min(bufferFrames, kResamplerChunkFrames);
    mResamplerIn.assign(static_cast<std::size_t>(mChannels) * mResamplerChunk, 0.0f);
    mResamplerOut.assign(static_cast<std::size_t>(mChannels) * kResamplerOutFrames, 0.0f);
    mFetchStorage.assign(static_cast<std::size_t>(mChannels) * bufferFrames, 0.0f);
    mFetchBuffer.mNumberBuffers = static_cast<uint32_t>(mChannels);
    for (int c = 0; c < mChannels; ++c) {
        mFetchBuffer.mBuffers[c] = {
            1, 0, mFetchStorage.data() + static_cast<std::size_t>(c) * bufferFrames};
    }

    if (!plays) {
        mInToOutSampleOffset = static_cast<double>(ComputeThruOffset());
        mInitialFill = mInputPeriod / 2.0;
        ResetTimes();
        return platform::kNoError;
    }
    mOutputStream =
        mSystem.openOutput(out, platform::StreamFormat{outRate, static_cast<uint32_t>(mChannels)},
                           mOutputDevice.mBufferSizeFrames, *mOutputSide, status);
    if (!mOutputStream || status != platform::kNoError) {
        PrintError(status != platform::kNoError ? status : platform::kErrorOpenFailed, __LINE__);
        return status != platform::kNoError ? status : platform::kErrorOpenFailed;
    }
    mOutputPeriod = std::max(mOutputDevice.mBufferSizeFrames, mOutputStream->periodFrames());

    mInToOutSampleOffset = static_cast<double>(ComputeThruOffset());
    mInitialFill = mInputPeriod / 2.0 + mInputDevice.mSafetyOffset + mOutputDevice.mSafetyOffset;
    ResetTimes();
    return platform::kNoError;
}

uint32_t CAPlayThrough::ComputeThruOffset() const {
    return mInputDevice.mSafetyOffset + mInputDevice.mBufferSizeFrames +
           mOutputDevice.mSafetyOffset + mOutputDevice.mBufferSizeFrames;
}

void CAPlayThrough::ResetTimes() {
    mFirstInputTime = -1.0;
    mFirstOutputTime = -1.0;
    mFetchedOnce = false;
    mResampling = false;
    mReadFailed = false;
    mDistanceSamples = 0;
    mDistanceIntegral = 0;
    mCatchingUp = false;
    mVarispeed = mRatesDiffer;
    mTargetFill = mInitialFill;
    mTargetReport = mInitialFill;
    mPlayedFrames = 0;
    mHeldFrames = 0;
    mSinceUnderrunFrames = 0;
    mSeenOutputXruns = mOutputStream ? mOutputStream->xrunCount() : 0;
    mSeenOutputQueue = mOutputStream ? mOutputStream->queuedFramesTarget() : 0;
    mOutputQueueReport = mSeenOutputQueue;
    mRaised = false;
    mSettled = false;
    mSrcRatio = 1.0;
    mInputClock = ClockEstimate{};
    mOutputClock = ClockEstimate{};
    mInputScalar = 1.0;
    mOutputScalar = 1.0;
    if (mResampler != nullptr) {
        src_reset(mResampler);
    }
}

platform::Status CAPlayThrough::Start() {
    if (IsRunning()) {
        return platform::kNoError;
    }
    // Stream state is reset while no callback can run; the first times again after the start,
    // so buffers delivered before the output runs do not fix the offset.
    ResetTimes();
    mSkips = 0;
    mSkippedFrames = 0;
    mXrunsAtStart = mOutputStream ? mOutputStream->xrunCount() : 0;
    mOverflowsAtStart = mInputOverflows.load();
    platform::Status status = mInputStream->start();
    if (status != platform::kNoError) {
        PrintError(status, __LINE__);
        return status;
    }
    status = mOutputStream ? mOutputStream->start() : platform::kNoError;
    if (status != platform::kNoError) {
        PrintError(status, __LINE__);
        mInputStream->stop();
        return status;
    }
    mFirstInputTime = -1.0;
    mFirstOutputTime = -1.0;
    return platform::kNoError;
}

platform::Status CAPlayThrough::Stop() {
    if (!IsRunning()) {
        return platform::kNoError;
    }
    platform::Status status = mInputStream->stop();
    if (status != platform::kNoError) {
        PrintError(status, __LINE__);
    }
    platform::Status outStatus = mOutputStream ? mOutputStream->stop() : platform::kNoError;
    if (outStatus != platform::kNoError) {
        PrintError(outStatus, __LINE__);
        status = outStatus;
    }
    mFirstInputTime = -1.0;
    mFirstOutputTime = -1.0;
    return status;
}

bool CAPlayThrough::IsRunning() const {
    return (mInputStream && mInputStream->isRunning()) ||
           (mOutputStream && mOutputStream->isRunning());
}

void CAPlayThrough::SetInputGain(float dB) {
    mGainFactor.store(gainFactor(dB), std::memory_order_relaxed);
}

double CAPlayThrough::LatencyMilliseconds() const {
    const double rate = mInputDevice.mFormat.sampleRate;
    if (rate <= 0) {
        return 0;
    }
    // The output's own buffer, or the queue the server keeps for it where that is longer.
    const double outputFrames = std::max<double>(mOutputPeriod, mOutputQueueReport.load());
    const double outRate =
        mOutputDevice.mFormat.sampleRate > 0 ? mOutputDevice.mFormat.sampleRate : rate;
    const double frames = mTargetReport.load() + mInputPeriod + outputFrames * rate / outRate;
    return frames / rate * 1000.0;
}

uint64_t CAPlayThrough::DroppedBufferCount() const {
    return mInputOverflows.load() + mStoreErrors.load() + mReAlignments.load();
}

MonitorDrops CAPlayThrough::Drops() const {
    const double rate = mInputDevice.mFormat.sampleRate;
    MonitorDrops drops;
    drops.skips = mSkips.load();
    drops.skippedMs = rate > 0 ? static_cast<double>(mSkippedFrames.load()) * 1000.0 / rate : 0.0;
    drops.outputUnderflows = (mOutputStream ? mOutputStream->xrunCount() : 0) - mXrunsAtStart;
    drops.inputOverflows = mInputOverflows.load() - mOverflowsAtStart;
    return drops;
}

void CAPlayThrough::Cleanup() {
    Stop();
    // Destroying the streams waits until no callback runs; only then go the buffers.
    mInputStream.reset();
    mOutputStream.reset();
    if (mResampler != nullptr) {
        src_delete(mResampler);
        mResampler = nullptr;
    }
    mBuffer.reset();
    mInputBuffer.mNumberBuffers = 0;
    mInputStorage.clear();
}

// ---- input stream's audio thread -------------------------------------------------------------

void CAPlayThrough::InputProc(float* const* channels, uint32_t channelCount, uint32_t frames,
                              int64_t sampleTime, uint64_t hostTime) {
    if (mFirstInputTime.load() < 0) {
        mFirstInputTime = static_cast<double>(sampleTime);
    }
    if (!mInputClock.started) {
        mInputClock = {true, false, sampleTime, hostTime};
    } else {
        const double seconds =
            static_cast<double>(platform::hostTimeToNanos(hostTime - mInputClock.host0)) * 1e-9;
        if (seconds >= kClockWindowSeconds && !mInputClock.settled) {
            // The first seconds hold the streams' start-up bursts: measure from after them.
            mInputClock = {true, true, sampleTime, hostTime};
        } else if (seconds >= kClockWindowSeconds) {
            mInputScalar = static_cast<double>(sampleTime - mInputClock.sample0) / seconds /
                           mInputDevice.mFormat.sampleRate;
        }
    }

    const uint32_t capacity = mInputDevice.mBufferSizeFrames;
    const uint32_t used = std::min<uint32_t>(channelCount, static_cast<uint32_t>(mChannels));
    const float gain = mGainFactor.load(std::memory_order_relaxed);
    const ProcessingCallback callback = mCallback.load();
    for (uint32_t done = 0; done < frames;) {
        const uint32_t n = std::min(capacity, frames - done);
        for (uint32_t c = 0; c < mInputBuffer.mNumberBuffers; ++c) {
            AudioBuffer& buffer = mInputBuffer.mBuffers[c];
            if (c < used) {
                std::memcpy(buffer.mData, channels[c] + done, n * sizeof(float));
            } else {
                std::memset(buffer.mData, 0, n * sizeof(float));
            }
            buffer.mDataByteSize = n * static_cast<uint32_t>(sizeof(float));
            applyGain(buffer.mData, n, gain);
        }
        const int64_t t = sampleTime + done;
        // Before the store, so what the callback changes is also what is heard.
        if (callback != nullptr) {
            callback(&mInputBuffer, n, t);
        }
        if (mBuffer->Store(&mInputBuffer, n, t) != AudioRingBuffer::kOK) {
            mStoreErrors.fetch_add(1, std::memory_order_relaxed);
        }
        done += n;
    }
    mInputOrigin = HostSeconds(hostTime) -
                   static_cast<double>(sampleTime + frames) / mInputDevice.mFormat.sampleRate;
    mLastInputFrames = frames;
}

// ---- output stream's audio thread ------------------------------------------------------------

void CAPlayThrough::OutputProc(float* const* channels, uint32_t channelCount, uint32_t frames,
                               int64_t sampleTime, uint64_t hostTime) {
    const double firstInput = mFirstInputTime.load();
    if (firstInput < 0) {
        ZeroChannels(channels, channelCount, 0, frames);
        return;
    }
    if (!mOutputClock.started) {
        mOutputClock = {true, false, sampleTime, hostTime};
    } else {
        const double seconds =
            static_cast<double>(platform::hostTimeToNanos(hostTime - mOutputClock.host0)) * 1e-9;
        if (seconds >= kClockWindowSeconds && !mOutputClock.settled) {
            mOutputClock = {true, true, sampleTime, hostTime};
        } else if (seconds >= kClockWindowSeconds) {
            mOutputScalar = static_cast<double>(sampleTime - mOutputClock.sample0) / seconds /
                            mOutputDevice.mFormat.sampleRate;
        }
    }

    const double t = static_cast<double>(sampleTime);
    if (mFirstOutputTime.load() < 0) {
        mFirstOutputTime = t;
        mInToOutSampleOffset = t - firstInput + static_cast<double>(ComputeThruOffset());
        if (mVarispeed.load()) {
            // Resampling from the start: play once the reference fill is buffered.
            AudioRingBuffer::SampleTime start = 0, end = 0;
            mBuffer->GetTimeBounds(start, end);
            mReadPos = start;
            mResampling = false;
        }
        ZeroChannels(channels, channelCount, 0, frames);
        return;
    }

    // The server ran out of what it had to play and held the stream until it was refilled:
    // meanwhile the input went on, and keeping all of it would keep the delay of the pause.
    // Drop back to the target fill instead.
    const uint64_t outputXruns = mOutputStream ? mOutputStream->xrunCount() : 0;
    if (outputXruns != mSeenOutputXruns) {
        mSeenOutputXruns = outputXruns;
        if (mFetchedOnce) {
            RecoverFromPause(t, frames);
        }
    }
    if (!mVarispeed.load() && ClocksDiffer()) {
        // The clocks measurably differ: straight play would drift towards an underrun or away
        // from the input, so the resampler takes over where straight play stands.
        SwitchToVarispeed(static_cast<int64_t>(t - mInToOutSampleOffset.load()));
    }
    if (mVarispeed.load()) {
        OutputResampled(channels, channelCount, frames, hostTime);
    } else {
        OutputDirect(channels, channelCount, frames, t);
    }
}

bool CAPlayThrough::ClocksDiffer() const {
    const double in = mInputScalar.load();
    const double out = mOutputScalar.load();
    if (std::abs(in - 1.0) >= kPlausibleScalar || std::abs(out - 1.0) >= kPlausibleScalar) {
        return false;
    }
    return std::abs(in / out - 1.0) > kClockTolerance;
}

void CAPlayThrough::SwitchToVarispeed(int64_t readPos) {
    mReadPos = readPos;
    mResampling = true;
    mDistanceSamples = kReferenceCycles;
    mDistanceIntegral = 0;
    mDistanceAvg = ResampledReference();
    src_reset(mResampler);
    mVarispeed = true;
}

double CAPlayThrough::ResampledReference() const {
    // The fill is measured where the input stands between two arrivals; just before the next
    // arrival the ring holds up to an input buffer less than that.
    return mTargetFill + std::max(mInputPeriod, mLastInputFrames.load());
}

double CAPlayThrough::WrittenPosition(int64_t end, uint64_t hostTime) const {
    // The input arrives a buffer at a time; where it stands between two arrivals follows from
    // the host clock. Without that the fill would saw by a whole input buffer and the rate
    // would follow the saw.
    return std::clamp((HostSeconds(hostTime) - mInputOrigin.load()) *
                          mInputDevice.mFormat.sampleRate,
                      static_cast<double>(end), static_cast<double>(end + mLastInputFrames.load()));
}

void CAPlayThrough::RecoverFromPause(double t, uint32_t frames) {
    if (!mVarispeed.load()) {
        SwitchToVarispeed(static_cast<int64_t>(t - mInToOutSampleOffset.load()));
    }
    AudioRingBuffer::SampleTime start = 0, end = 0;
    mBuffer->GetTimeBounds(start, end);
    const double held = mOutputStream ? mOutputStream->heldFrames() : 0.0;
    const double queue = std::max<double>(
        frames, std::max<double>(mSeenOutputQueue, mOutputPeriod) - std::max(0.0, held));
    const double inPerOut = mInputDevice.mFormat.sampleRate / mOutputDevice.mFormat.sampleRate;
    const double excess =
        static_cast<double>(end - mReadPos) - (ResampledReference() + queue * inPerOut);
    if (excess <= 0) {
        return;
    }
    if (excess <= kCatchUpSeconds * mInputDevice.mFormat.sampleRate) {
        mCatchingUp = true;
        return;
    }
    // This cycle already plays from the new place: nothing is lost beyond the excess.
    if (ReAlign(t, frames, false)) {
        mReAlignments.fetch_add(1, std::memory_order_relaxed);
    }
}

void CAPlayThrough::NoteSkip(int64_t frames) {
    if (frames > 0) {
        mSkips.fetch_add(1, std::memory_order_relaxed);
        mSkippedFrames.fetch_add(static_cast<uint64_t>(frames), std::memory_order_relaxed);
    }
}

bool CAPlayThrough::ReAlign(double nextOutputTime, uint32_t frames, bool underrun) {
    mCatchingUp = false;
    if (underrun && mFetchedOnce) {
        mReAlignments.fetch_add(1, std::memory_order_relaxed);
        // Start-up runs dry now and then while the streams find their pace, and so may a single
        // late wake-up; underruns that recur once playing settled mean the fill kept is too
        // small for these streams.
        const auto rate = mOutputDevice.mFormat.sampleRate;
        const bool settled = mPlayedFrames >= static_cast<uint64_t>(rate * kWarmUpSeconds);
        const bool recurring =
            mSinceUnderrunFrames < static_cast<uint64_t>(rate * kRecurrenceSeconds);
        if (settled && recurring) {
            mTargetFill = std::min(mTargetFill + mInputPeriod / 2.0,
                                   kMaxFillSeconds * mInputDevice.mFormat.sampleRate);
            mTargetReport = mTargetFill;
            mRaised = true;
            mHeldFrames = 0;
        }
        mSinceUnderrunFrames = 0;
    }
    AudioRingBuffer::SampleTime start = 0, end = 0;
    mBuffer->GetTimeBounds(start, end);
    // The data to play from must cover what the server's queue lacks as well as the fill to
    // keep: after a pause it asks for all of it at once. An underflow told only once the queue
    // was full again costs nothing more, and assuming it empty would add the queue to the
    // delay at every such notice.
    const double held = mOutputStream ? mOutputStream->heldFrames() : 0.0;
    const double queue = std::max<double>(
        frames, std::max<double>(mSeenOutputQueue, mOutputPeriod) - std::max(0.0, held));
    // Only a read that came up short goes back; otherwise the read skips ahead or stays, as
    // going back would replay what was heard and add to the delay.
    if (mVarispeed.load()) {
        // Skipping ahead, the read that follows at once must still leave the fill the
        // resampler steers to.
        const double fill = underrun ? mTargetFill : ResampledReference();
        const double needed =
            fill + queue * mInputDevice.mFormat.sampleRate / mOutputDevice.mFormat.sampleRate;
        const int64_t read =
            std::max<int64_t>(start, end - static_cast<int64_t>(std::lround(needed)));
        if (!underrun && read <= mReadPos) {
            return false;
        }
        NoteSkip(read - mReadPos);
        mReadPos = read;
        mResampling = false;
        src_reset(mResampler);
        return true;
    }
    // Straight play: the next read leaves the target fill behind it, however long the ring is.
    const int64_t read =
        std::max<int64_t>(start, end - static_cast<int64_t>(std::lround(mTargetFill + queue)));
    const auto current = static_cast<int64_t>(nextOutputTime - mInToOutSampleOffset.load());
    if (!underrun && read <= current) {
        return false;
    }
    NoteSkip(read - current);
    mInToOutSampleOffset = nextOutputTime - static_cast<double>(read);
    mDistanceSamples = 0;
    return true;
}

void CAPlayThrough::NoteGoodCycle(uint32_t frames) {
    mFetchedOnce = true;
    // The output's queue may have grown on the server's side too.
    const uint32_t queued = mOutputStream ? mOutputStream->queuedFramesTarget() : 0;
    if (queued != mSeenOutputQueue) {
        if (mSeenOutputQueue != 0) {
            mRaised = true;
            mHeldFrames = 0;
        }
        mSeenOutputQueue = queued;
        mOutputQueueReport = queued;
    }
    mPlayedFrames += frames;
    mHeldFrames += frames;
    mSinceUnderrunFrames += frames;
    const double rate = mOutputDevice.mFormat.sampleRate;
    if (mRaised && mHeldFrames >= static_cast<uint64_t>(rate * kHoldSeconds)) {
        mRaised = false;
        mSettledMs = LatencyMilliseconds();
        mSettled = true;
    }
    // A fill raised in a busy spell comes down a step at a time once it held long enough; the
    // resampler takes the frames out gently, and an underrun that comes back raises it again.
    if (mTargetFill > mInitialFill &&
        mSinceUnderrunFrames >= static_cast<uint64_t>(rate * kRelaxSeconds)) {
        mTargetFill = std::max(mInitialFill, mTargetFill - mInputPeriod / 2.0);
        mTargetReport = mTargetFill;
        mSinceUnderrunFrames = 0;
    }
}

bool CAPlayThrough::TakeSettledLatency(double& ms) {
    if (!mSettled.exchange(false)) {
        return false;
    }
    ms = mSettledMs.load();
    return true;
}

void CAPlayThrough::OutputDirect(float* const* channels, uint32_t count, uint32_t frames,
                                 double t) {
    const uint32_t used = std::min<uint32_t>(count, static_cast<uint32_t>(mChannels));
    AudioBufferList out;
    out.mNumberBuffers = used;
    for (uint32_t c = 0; c < used; ++c) {
        out.mBuffers[c] = {1, frames * static_cast<uint32_t>(sizeof(float)), channels[c]};
    }
    const auto read = static_cast<int64_t>(t - mInToOutSampleOffset.load());
    if (mBuffer->Fetch(&out, frames, read) != AudioRingBuffer::kOK) {
        ZeroChannels(channels, count, 0, frames);
        const bool played = mFetchedOnce;
        ReAlign(t + frames, frames, true);
        // Straight play ran dry after it played: the output does not take frames at the
        // input's pace, and only the resampler can follow that.
        if (played) {
            SwitchToVarispeed(static_cast<int64_t>(t + frames - mInToOutSampleOffset.load()));
        }
        return;
    }
    NoteGoodCycle(frames);
    ZeroChannels(channels, count, used, frames);

    AudioRingBuffer::SampleTime start = 0, end = 0;
    if (mBuffer->GetTimeBounds(start, end) != AudioRingBuffer::kOK) {
        return;
    }
    const double distance = static_cast<double>(end - (read + frames));
    // A jump: the input ran far ahead (the output stalled). Skip to the target fill rather
    // than keep the delay.
    if (distance > mTargetFill + JumpFrames()) {
        ReAlign(t + frames, frames, false);
        mReAlignments.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    // Watch the distance from the write end to the next read: when the clocks drift apart
    // before their estimates show it, the resampler takes over before the ring runs dry.
    if (mDistanceSamples < kReferenceCycles) {
        ++mDistanceSamples;
        mDistanceRef = mDistanceSamples == 1
                           ? distance
                           : mDistanceRef + (distance - mDistanceRef) / mDistanceSamples;
        mDistanceAvg = mDistanceRef;
        return;
    }
    mDistanceAvg += (distance - mDistanceAvg) * kAverageWeight;
    const double threshold = std::max<double>(mInputPeriod, 128.0);
    if (std::abs(mDistanceAvg - mDistanceRef) > threshold) {
        SwitchToVarispeed(read + frames);
    }
}

double CAPlayThrough::JumpFrames() const {
    // Past the server's queue, which it may ask for at once after a pause.
    const double queue = std::max(mSeenOutputQueue, mOutputPeriod) *
                         mInputDevice.mFormat.sampleRate /
                         std::max(1.0, mOutputDevice.mFormat.sampleRate);
    return queue + std::max(4.0 * mInputPeriod, kJumpSeconds * mInputDevice.mFormat.sampleRate);
}

void CAPlayThrough::UpdateRatio(uint32_t outputFrames) {
    const double inRate = mInputDevice.mFormat.sampleRate;
    const double outRate = mOutputDevice.mFormat.sampleRate;
    const double dt = outputFrames / outRate;
    // The fill alone steers: the integral term is the estimate of how fast the input clock runs
    // against what the output takes, the proportional term pulls the fill back to its
    // reference. Estimates from the callbacks' host times are thrown off by servers that ask
    // for a few frames at a time, and would push the fill away.
    const double error = mDistanceAvg - ResampledReference();
    if (mCatchingUp && error < mInputPeriod / 2.0) {
        mCatchingUp = false;
    }
    if (mCatchingUp) {
        // The excess of a pause is no clock difference: the integral is left as it was.
        mSrcRatio = (outRate / inRate) / (1.0 + kCatchUpCorrection);
        return;
    }
    const double integralLimit = kMaxCorrection * inRate / kKi;
    mDistanceIntegral = std::clamp(mDistanceIntegral + error * dt, -integralLimit, integralLimit);
    const double correction = std::clamp((kKp * error + kKi * mDistanceIntegral) / inRate,
                                         -kMaxCorrection, kMaxCorrection);
    mSrcRatio = (outRate / inRate) / (1.0 + correction);
}

long CAPlayThrough::ResamplerInput(void* self, float** data) {
    auto& m = *static_cast<CAPlayThrough*>(self);
    const uint32_t chunk = m.mResamplerChunk;
    const auto channels = static_cast<uint32_t>(m.mChannels);
    for (uint32_t c = 0; c < channels; ++c) {
        m.mFetchBuffer.mBuffers[c].mDataByteSize = chunk * static_cast<uint32_t>(sizeof(float));
    }
    if (m.mReadFailed || m.mBuffer->Fetch(&m.mFetchBuffer, chunk, m.mReadPos) != 0) {
        m.mReadFailed = true;
        std::fill(m.mResamplerIn.begin(), m.mResamplerIn.end(), 0.0f);
    } else {
        for (uint32_t c = 0; c < channels; ++c) {
            const float* src = m.mFetchBuffer.mBuffers[c].mData;
            for (uint32_t i = 0; i < chunk; ++i) {
                m.mResamplerIn[i * channels + c] = src[i];
            }
        }
        m.mReadPos += chunk;
    }
    *data = m.mResamplerIn.data();
    return static_cast<long>(chunk);
}

void CAPlayThrough::OutputResampled(float* const* channels, uint32_t count, uint32_t frames,
                                    uint64_t hostTime) {
    AudioRingBuffer::SampleTime start = 0, end = 0;
    if (mBuffer->GetTimeBounds(start, end) != AudioRingBuffer::kOK) {
        ZeroChannels(channels, count, 0, frames);
        return;
    }
    const double inPerOut = mInputDevice.mFormat.sampleRate / mOutputDevice.mFormat.sampleRate;
    if (!mResampling) {
        // Wait until the target fill and this cycle's input are buffered, then play from there.
        if (static_cast<double>(end - mReadPos) < mTargetFill + frames * inPerOut) {
            ZeroChannels(channels, count, 0, frames);
            return;
        }
        mResampling = true;
        mDistanceIntegral = 0;
        mDistanceAvg = ResampledReference();
    }
    const double ratio = mSrcRatio.load();
    const uint32_t used = std::min<uint32_t>(count, static_cast<uint32_t>(mChannels));
    const auto nch = static_cast<uint32_t>(mChannels);

    mReadFailed = false;
    for (uint32_t done = 0; done < frames;) {
        const uint32_t want = std::min(kResamplerOutFrames, frames - done);
        const long got = src_callback_read(mResampler, ratio, want, mResamplerOut.data());
        if (got <= 0) {
            mReadFailed = true;
            break;
        }
        for (uint32_t c = 0; c < used; ++c) {
            float* dst = channels[c] + done;
            for (long i = 0; i < got; ++i) {
                dst[i] = mResamplerOut[static_cast<std::size_t>(i) * nch + c];
            }
        }
        done += static_cast<uint32_t>(got);
    }
    if (mReadFailed) {
        ZeroChannels(channels, count, 0, frames);
        mReadFailed = false;
        ReAlign(0.0, frames, true);
        return;
    }
    NoteGoodCycle(frames);
    ZeroChannels(channels, count, used, frames);

    // The fill left after this read, averaged over time rather than callbacks: a server may
    // ask for a frame at a time or for a whole buffer.
    const double distance = WrittenPosition(end, hostTime) - static_cast<double>(mReadPos);
    if (distance > ResampledReference() + JumpFrames()) {
        ReAlign(0.0, frames, false);
        mReAlignments.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    const double weight =
        std::min(1.0, frames / mOutputDevice.mFormat.sampleRate / kAverageSeconds);
    mDistanceAvg += (distance - mDistanceAvg) * weight;
    UpdateRatio(frames);
}

} // namespace waxline
