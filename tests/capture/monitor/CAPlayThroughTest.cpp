#include "capture/monitor/CAPlayThrough.h"
#include "capture/monitor/CAPlayThroughHost.h"
#include "filters/AudioFilter.h"
#include "support/FakeAudioSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <vector>

namespace waxline {
namespace {

using test::DeckAndSpeakers;
using test::kBlock;
using test::kDeck;
using test::kSpeakers;

// Two stereo signals that differ, so a swapped channel shows.
float SourceLeft(int64_t n) {
    return 0.5f * static_cast<float>(std::sin(2.0 * M_PI * 440.0 * n / 44100.0)) +
           0.05f * static_cast<float>((n * 7919) % 101 - 50) / 50.0f;
}
float SourceRight(int64_t n) {
    return 0.4f * static_cast<float>(std::sin(2.0 * M_PI * 1000.0 * n / 44100.0));
}

constexpr float kRampStep = 1e-6f;

// A stretch of real time during which one stream's callbacks do not come; they come late
// afterwards, as a busy machine or a stalled server makes them.
struct Stall {
    double at = -1, seconds = 0;
    bool output = true;     // the output's requests stop (else the input's deliveries)
    bool underflow = false; // the server reports the output's pause as an underflow
};

// Drives a monitor through its stream handlers. Input and output run on separate simulated
// clocks: each delivers a block when its clock reaches the block's start.
struct Session {
    explicit Session(test::FakeAudioSystem& s)
        : system(s) {}
    test::FakeAudioSystem& system;
    double inputClock = 1.0; // input frames per nominal frame of real time
    double outputRate = 44100;
    int64_t inTime = 0, outTime = 0;
    std::vector<float> heardLeft, heardRight;
    bool keepHeard = true;
    uint64_t silentBlocksAfter = 0; // all-zero output blocks once audio flowed
    bool flowing = false;
    // With `ramp` the input is its own frame number (scaled), so each output block tells how
    // many input frames behind the newest it plays: (real time, delay in input frames).
    bool ramp = false;
    std::vector<Stall> stalls;
    double outputPause = 0;
    std::vector<std::pair<double, double>> delays;
    // A server that keeps `serverQueue` frames ahead of what it plays asks for all of them at
    // once when it starts and after an underflow, which it tells of only after that burst; a
    // frame written is heard once the frames the server holds before it have played.
    uint32_t serverQueue = 0;
    double notBefore = 0;       // a request waits for the end of the last stall
    bool noticePending = false; // an underflow to tell once the burst is written

    void Run(double seconds) {
        std::vector<float> inL(kBlock), inR(kBlock), outL(kBlock), outR(kBlock);
        float* in[2] = {inL.data(), inR.data()};
        float* out[2] = {outL.data(), outR.data()};
        const double end = seconds;
        for (;;) {
            // A block is delivered once its last frame was captured.
            double tIn = static_cast<double>(inTime + kBlock) / (44100.0 * inputClock);
            const double due =
                static_cast<double>(outTime - static_cast<int64_t>(serverQueue)) / outputRate +
                outputPause;
            double tOut = std::max(due, notBefore);
            for (Stall& stall : stalls) {
                const double resume = stall.at + stall.seconds;
                if (!stall.output && tIn >= stall.at && tIn < resume) {
                    tIn = resume;
                }
                if (stall.output && stall.seconds > 0 && tOut >= stall.at && tOut < resume) {
                    // The server plays what it holds, then silence until the requests resume.
                    outputPause += std::max(0.0, resume - tOut -
                                                     static_cast<double>(serverQueue) / outputRate);
                    notBefore = resume;
                    tOut = resume;
                    stall.seconds = 0;
                    noticePending = stall.underflow;
                }
            }
            if (noticePending && (due >= notBefore || serverQueue == 0)) {
                noticePending = false;
                ++system.lastOutputStream->xruns;
            }
            if (tIn >= end && tOut >= end) {
                break;
            }
            if (tIn <= tOut) {
                for (uint32_t i = 0; i < kBlock; ++i) {
                    inL[i] =
                        ramp ? kRampStep * static_cast<float>(inTime + i) : SourceLeft(inTime + i);
                    inR[i] = ramp ? inL[i] : SourceRight(inTime + i);
                }
                system.lastInputHandler->onInput(in, 2, kBlock, inTime,
                                                 static_cast<uint64_t>(tIn * 1e9));
                inTime += kBlock;
            } else {
                const double played = std::max(0.0, (tOut - outputPause) * outputRate);
                const uint32_t held = system.lastOutputStream->held = static_cast<uint32_t>(
                    std::clamp(static_cast<double>(outTime) - played, 0.0, 1.0 * serverQueue));
                system.lastOutputHandler->onOutput(out, 2, kBlock, outTime,
                                                   static_cast<uint64_t>(tOut * 1e9));
                outTime += kBlock;
                if (ramp && outL[0] != 0.0f) {
                    delays.emplace_back(tOut,
                                        static_cast<double>(inTime) + held - outL[0] / kRampStep);
                }
                bool silent = true;
                for (uint32_t i = 0; i < kBlock; ++i) {
                    silent = silent && outL[i] == 0.0f && outR[i] == 0.0f;
                }
                if (!silent) {
                    flowing = true;
                } else if (flowing) {
                    ++silentBlocksAfter;
                }
                if (keepHeard) {
                    heardLeft.insert(heardLeft.end(), outL.begin(), outL.end());
                    heardRight.insert(heardRight.end(), outR.begin(), outR.end());
                }
            }
        }
    }
};

Sonra::Audio::Filters::AudioFilter* gEqualiser = nullptr;

void Equalise(AudioBufferList* buffers, uint32_t frames, int64_t) {
    gEqualiser->operator()(buffers->mBuffers[0].mData, buffers->mBuffers[1].mData, frames);
}

// The listener hears the processed input, one block at a time in order, shifted by the offset
// that follows from the devices' buffers; compared with the same filter run separately over the
// source.
TEST(CAPlayThroughTest, HeardSignalIsTheProcessedInputDelayedAsTheDevicesGive) {
    DeckAndSpeakers system;
    CAPlayThrough monitor(system, platform::kDefaultDevice, platform::kDefaultDevice);

    Sonra::Audio::Filters::AudioFilter inChain;
    inChain.Set(Sonra::Audio::Filters::AudioFilter::RIAAPlayback);
    gEqualiser = &inChain;
    monitor.SetProcessingCallback(Equalise);
    ASSERT_EQ(monitor.Start(), platform::kNoError);
    EXPECT_TRUE(monitor.IsRunning());

    Session session(system);
    session.Run(5.0);
    EXPECT_EQ(monitor.ReAlignmentCount(), 0u);
    EXPECT_FALSE(monitor.VarispeedActive());
    EXPECT_EQ(session.silentBlocksAfter, 0u);

    // Worked out from the devices, not read back from the monitor. The monitor cuts both
    // buffers to 5 ms and keeps half an input buffer plus both safety offsets in its ring. Input
    // block 0 arrives with output block 1, which fixes the offset; the read of output block 2
    // reaches back before the first input frame and fails, so block 3 onwards reads where the
    // ring keeps that fill behind the newest input (block 1's end) and one output buffer more.
    const platform::DeviceInfo& in = system.inputs[0];
    const platform::DeviceInfo& out = system.outputs[0];
    const auto buffer = std::min<int64_t>(kBlock, std::lround(44100 * 0.005));
    const double fill = buffer / 2.0 + in.safetyOffsetFrames + out.safetyOffsetFrames;
    EXPECT_EQ(monitor.ComputeThruOffset(),
              in.safetyOffsetFrames + buffer + out.safetyOffsetFrames + buffer);
    const int64_t offset = 3 * kBlock - (2 * kBlock - std::lround(fill + kBlock));
    EXPECT_EQ(monitor.ThruOffsetFrames(), static_cast<double>(offset));
    EXPECT_NEAR(monitor.LatencyMilliseconds(), (fill + 2 * buffer) * 1000.0 / in.actualSampleRate,
                1e-9);

    Sonra::Audio::Filters::AudioFilter reference;
    reference.Set(Sonra::Audio::Filters::AudioFilter::RIAAPlayback);
    const int64_t total = session.inTime;
    std::vector<float> refL(total), refR(total);
    for (int64_t n = 0; n < total; ++n) {
        refL[n] = SourceLeft(n);
        refR[n] = SourceRight(n);
    }
    for (int64_t n = 0; n < total; n += kBlock) {
        reference(&refL[n], &refR[n], kBlock);
    }

    int64_t compared = 0, mismatches = 0;
    for (int64_t t = 4 * kBlock; t < static_cast<int64_t>(session.heardLeft.size()); ++t) {
        const int64_t n = t - offset;
        ASSERT_GE(n, 0);
        ++compared;
        if (std::abs(session.heardLeft[t] - refL[n]) > 1e-6f ||
            std::abs(session.heardRight[t] - refR[n]) > 1e-6f) {
            ++mismatches;
        }
    }
    EXPECT_GT(compared, 44100 * 4);
    EXPECT_EQ(mismatches, 0);
    monitor.Stop();
    EXPECT_FALSE(monitor.IsRunning());
}

// 10^(dB/20) with only the positive side clamped to 1.0; 0 dB passes values above 1.0.
TEST(CAPlayThroughTest, GainScalesAndClampsOnlyThePositiveSide) {
    struct Case {
        float dB, in, heard;
    };
    const Case cases[] = {
        {0.0f, 1.5f, 1.5f},     {0.0f, -1.5f, -1.5f},      {6.0f, 0.3f, 0.598579f},
        {6.0f, 0.7f, 1.0f},     {6.0f, -0.7f, -1.396684f}, {-20.0f, 0.8f, 0.08f},
        {-20.0f, -2.0f, -0.2f},
    };
    for (const Case& c : cases) {
        DeckAndSpeakers system;
        CAPlayThrough monitor(system, kDeck, kSpeakers);
        monitor.SetInputGain(c.dB);
        monitor.Start();
        std::vector<float> in(kBlock, c.in), out(kBlock * 2, -9.0f);
        float* inPtr[2] = {in.data(), in.data()};
        float* outPtr[2] = {out.data(), out.data() + kBlock};
        // Enough blocks that the output has caught up with the stored input.
        float heard = 0;
        for (int64_t b = 0; b < 8; ++b) {
            system.lastInputHandler->onInput(inPtr, 2, kBlock, b * kBlock, 0);
            system.lastOutputHandler->onOutput(outPtr, 2, kBlock, b * kBlock, 0);
            if (out[0] != 0.0f) {
                heard = out[0];
            }
        }
        EXPECT_NEAR(heard, c.heard, 1e-5) << c.dB << " dB on " << c.in;
        EXPECT_EQ(out[0], out[kBlock]) << "both channels get the same gain";
    }
}

// The factor is dbamp's, 10^(dB x 0.05) in double precision, as the level meter converts: at
// these levels single-precision arithmetic lands on a neighbouring float. Expected values worked
// out to 40 digits with Python's decimal module.
TEST(CAPlayThroughTest, GainFactorIsWorkedOutInDoublePrecision) {
    struct Case {
        float dB;
        double factor;
    };
    const Case cases[] = {
        {-59.5f, 0.001059253725177288878809280373278108619979},
        {-58.5f, 0.001188502227437018437730122464892177271202},
        {12.25f, 4.097321098135415007654980178448493148507},
    };
    DeckAndSpeakers system;
    CAPlayThrough monitor(system, kDeck, kSpeakers);
    for (const Case& c : cases) {
        monitor.SetInputGain(c.dB);
        EXPECT_EQ(monitor.GainFactor(), static_cast<float>(c.factor)) << c.dB << " dB";
    }
}

// The input clock runs 0.1 % fast. Without varispeed the ring overruns within five minutes;
// with it, ten minutes play without a single re-alignment after the start.
TEST(CAPlayThroughTest, FastInputClockPlaysTenMinutesWithoutReAlignment) {
    DeckAndSpeakers system;
    CAPlayThrough monitor(system, kDeck, kSpeakers);
    monitor.Start();
    Session session(system);
    session.inputClock = 1.001;
    session.keepHeard = false;
    session.Run(600.0);
    EXPECT_TRUE(monitor.VarispeedActive());
    EXPECT_EQ(monitor.ReAlignmentCount(), 0u);
    EXPECT_EQ(monitor.DroppedBufferCount(), 0u);
    EXPECT_EQ(session.silentBlocksAfter, 0u);
    // It consumes 1.001 input frames per output frame.
    EXPECT_NEAR(monitor.VarispeedRatio(), 1.0 / 1.001, 5e-4);
    EXPECT_LT(monitor.LatencyMilliseconds(), 200.0);
}

// 44.1 kHz in, 48 kHz out: resampled from the start, and a 440 Hz tone stays 440 Hz.
TEST(CAPlayThroughTest, DifferentRatesAreResampledKeepingThePitch) {
    DeckAndSpeakers system;
    system.outputs[0].nominalSampleRate = system.outputs[0].actualSampleRate = 48000;
    CAPlayThrough monitor(system, kDeck, kSpeakers);
    monitor.Start();
    Session session(system);
    session.outputRate = 48000;
    session.Run(20.0);
    EXPECT_TRUE(monitor.VarispeedActive());
    EXPECT_EQ(monitor.ReAlignmentCount(), 0u);
    EXPECT_EQ(session.silentBlocksAfter, 0u);
    EXPECT_NEAR(monitor.VarispeedRatio(), 48000.0 / 44100.0, 1e-3);

    // Right channel: a pure 1 kHz tone. Count rising zero crossings over the last 10 s.
    const auto& r = session.heardRight;
    const std::size_t from = r.size() - 480000;
    int crossings = 0;
    for (std::size_t i = from + 1; i < r.size(); ++i) {
        if (r[i - 1] < 0.0f && r[i] >= 0.0f) {
            ++crossings;
        }
    }
    EXPECT_NEAR(crossings, 10000, 3);
}

double MedianDelay(const std::vector<std::pair<double, double>>& delays, double from, double to) {
    std::vector<double> in;
    for (const auto& [t, d] : delays) {
        if (t >= from && t < to) {
            in.push_back(d);
        }
    }
    if (in.empty()) {
        return -1;
    }
    std::sort(in.begin(), in.end());
    return in[in.size() / 2];
}

// Scripted clocks and trouble. The delay heard (input frames from the newest input to what
// plays) neither drifts nor keeps a jump: after each event it returns to where it was, and it
// grows by half an input buffer only when underruns recur.
TEST(CAPlayThroughTest, TroubleLeavesTheDelayWhereItWas) {
    // Two milliseconds: what the resampler's steering leaves. A drift left alone would move the
    // delay by some 3000 frames over the run; a recovery to the ring's oldest data, by 16000.
    constexpr double kDelayTolerance = 88;
    struct Case {
        const char* name;
        double inputClock;
        double outputAsks; // frames the output asks for per second of real time
        double outputRate; // the output device's nominal rate
        std::vector<Stall> stalls;
        uint64_t reAlignments;
        int raises;
        uint32_t serverQueue = 0; // frames
    };
    const Case cases[] = {
        {"drift: the input clock 0.2 % fast", 1.002, 44100, 44100, {}, 0, 0},
        {"drift: the output asks 0.17 % more", 1.0, 44175, 44100, {}, 0, 0},
        {"jump: the output pauses 200 ms", 1.0, 44100, 44100, {{20, 0.2, true, false}}, 1, 0},
        {"underrun: the server reports a 30 ms pause",
         1.0,
         44100,
         44100,
         {{20, 0.03, true, true}},
         1,
         0},
        {"underrun: a 20 ms pause played out faster",
         1.0,
         44100,
         44100,
         {{20, 0.02, true, true}},
         0,
         0},
        {"underrun: the input comes 30 ms late", 1.0, 44100, 44100, {{20, 0.03, false}}, 1, 0},
        {"underruns that recur raise the fill",
         1.0,
         44100,
         44100,
         {{20, 0.03, false}, {21, 0.03, false}},
         2,
         1},
        {"two rates: 48 kHz out, a reported pause",
         1.0,
         48000,
         48000,
         {{20, 0.03, true, true}},
         1,
         0},
        {"growth: underflow told late", 1.0, 44100, 44100, {{20, 0.06, true, true}}, 0, 0, 2048},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DeckAndSpeakers system;
        system.outputs[0].nominalSampleRate = system.outputs[0].actualSampleRate = c.outputRate;
        CAPlayThrough monitor(system, kDeck, kSpeakers);
        system.lastOutputStream->queuedFrames = c.serverQueue;
        monitor.Start();
        Session session(system);
        session.inputClock = c.inputClock;
        session.outputRate = c.outputAsks;
        session.keepHeard = false;
        session.ramp = true;
        session.stalls = c.stalls;
        session.serverQueue = c.serverQueue;
        // Events come at 20 s; a raised fill has held by 30 s and comes down again a step at a
        // time, one every 10 s without an underrun, so by 60 s it is back where it started.
        session.Run(30.0);
        const double initial = std::lround(44100 * 0.005) / 2.0 + 32 + 64;
        const double step = std::lround(44100 * 0.005) / 2.0;
        const double grown = c.raises * step;
        EXPECT_EQ(monitor.TargetFillFrames(), initial + grown);
        double ms = 0;
        EXPECT_EQ(monitor.TakeSettledLatency(ms), c.raises > 0);
        if (c.raises > 0) {
            // Both 5 ms buffers and the fill, at the input's rate.
            EXPECT_NEAR(ms, (initial + grown + 4 * step) * 1000.0 / 44100, 1e-9);
        }
        session.Run(60.0);
        EXPECT_EQ(monitor.TargetFillFrames(), initial);
        const double before = MedianDelay(session.delays, 10, 19.5);
        const double after = MedianDelay(session.delays, 24, 30);
        const double late = MedianDelay(session.delays, 50, 60);
        ASSERT_GT(before, 0);
        if (c.stalls.empty()) {
            EXPECT_NEAR(after, before, kDelayTolerance);
            EXPECT_NEAR(late, before, kDelayTolerance);
        } else {
            // Recovered, the resampler may hold its fill up to a device block off where
            // straight play held it.
            EXPECT_LE(after, before + grown + kBlock);
            EXPECT_GE(after, before - 2.0 * kBlock);
            EXPECT_LE(late, before + kDelayTolerance);
        }
        EXPECT_EQ(monitor.ReAlignmentCount(), c.reAlignments);
        EXPECT_FALSE(monitor.TakeSettledLatency(ms));
    }
}

int64_t callbackFrames = 0;
void CountFrames(AudioBufferList*, uint32_t frames, int64_t) {
    callbackFrames += frames;
}

// Without an output the monitor plays nowhere, but the input still reaches the processing chain,
// which meters and splits.
TEST(CAPlayThroughTest, OpensTheDevicesAskedForAndOnlyTheDefaultForTheSentinel) {
    struct Case {
        const char* name;
        platform::AudioObjectID inputId; // the deck's id, and what the monitor is asked for
        platform::AudioObjectID askedIn;
        platform::AudioObjectID askedOut;
        platform::AudioObjectID opensIn;
        platform::AudioObjectID opensOut; // kNoDevice: no playback stream
    };
    const Case cases[] = {
        {"source 0 is a source", 0, 0, kSpeakers, 0, kSpeakers},
        {"the defaults", kDeck, platform::kDefaultDevice, platform::kDefaultDevice, kDeck,
         kSpeakers},
        {"no output: plays nowhere", kDeck, kDeck, platform::kNoDevice, kDeck, platform::kNoDevice},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        DeckAndSpeakers system;
        system.inputs[0].id = system.defaultInput = c.inputId;
        CAPlayThrough monitor(system, c.askedIn, c.askedOut);
        EXPECT_EQ(system.lastInputId(), c.opensIn);
        EXPECT_EQ(monitor.GetInputDeviceID(), c.opensIn);
        EXPECT_EQ(system.lastOutputId(), c.opensOut);
        EXPECT_EQ(monitor.GetOutputDeviceID(), c.opensOut);

        monitor.SetProcessingCallback(CountFrames);
        callbackFrames = 0;
        ASSERT_EQ(monitor.Start(), platform::kNoError);
        EXPECT_TRUE(monitor.IsRunning());
        ASSERT_NE(system.lastInputHandler, nullptr);
        EXPECT_EQ(system.lastOutputHandler != nullptr, c.opensOut != platform::kNoDevice);
        std::vector<float> left(kBlock, 0.25f), right(kBlock, -0.25f);
        float* in[2] = {left.data(), right.data()};
        for (int i = 0; i < 10; ++i)
            system.lastInputHandler->onInput(in, 2, kBlock, i * int64_t{kBlock}, 0);
        EXPECT_EQ(callbackFrames, 10 * int64_t{kBlock});
        EXPECT_EQ(monitor.Stop(), platform::kNoError);
        EXPECT_FALSE(monitor.IsRunning());
    }
}

TEST(CAPlayThroughDeathTest, UnknownDeviceEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            DeckAndSpeakers system;
            CAPlayThrough monitor(system, 4242, platform::kDefaultDevice);
        },
        ::testing::ExitedWithCode(1), "CAPlayThrough ERROR: Cannot Init CAPlayThrough");
}

TEST(CAPlayThroughHostTest, FormatChangeRebuildsTheMonitorOffTheNotifyingThread) {
    DeckAndSpeakers system;
    std::deque<std::function<void()>> posted;
    CAPlayThroughHost host(system, kDeck, kSpeakers,
                           [&](std::function<void()> work) { posted.push_back(std::move(work)); });
    ASSERT_TRUE(host.PlayThroughExists());
    ASSERT_EQ(system.listeners.size(), 1u);
    EXPECT_EQ(system.listeners.begin()->second.first, kDeck);

    CAPlayThrough* first = host.PlayThrough();
    first->SetInputGain(6.0f);
    first->SetProcessingCallback(Equalise);
    EXPECT_EQ(host.Start(), platform::kNoError);
    EXPECT_TRUE(host.IsRunning());

    system.listeners.begin()->second.second(); // the notification
    EXPECT_EQ(host.ResetCount(), 0) << "nothing is rebuilt on the notifying thread";
    ASSERT_EQ(posted.size(), 1u);
    posted.front()();
    posted.pop_front();

    EXPECT_EQ(host.ResetCount(), 1);
    ASSERT_TRUE(host.PlayThroughExists());
    EXPECT_TRUE(host.IsRunning());
    EXPECT_EQ(host.PlayThrough()->GainFactor(), 1.0f) << "a rebuilt monitor has unity gain";
    EXPECT_EQ(system.listeners.size(), 1u) << "the old listener was removed";

    host.DeletePlayThrough();
    EXPECT_FALSE(host.PlayThroughExists());
    EXPECT_TRUE(system.listeners.empty());
    EXPECT_EQ(host.Start(), platform::kNoError);
    EXPECT_FALSE(host.IsRunning());
    EXPECT_EQ(host.Stop(), platform::kNoError);
}

TEST(CAPlayThroughHostTest, WithoutAPosterTheHostRebuildsOnItsOwnThread) {
    DeckAndSpeakers system;
    {
        CAPlayThroughHost host(system, kDeck, kSpeakers);
        host.Start();
        system.listeners.begin()->second.second();
        for (int i = 0; i < 2000 && host.ResetCount() == 0; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_EQ(host.ResetCount(), 1);
        EXPECT_TRUE(host.IsRunning());
    }
    EXPECT_TRUE(system.listeners.empty());
}

} // namespace
} // namespace waxline
