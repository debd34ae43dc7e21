// Recording through a real PulseAudio server: a private daemon, a tone played into the null sink
// "deck", its monitor recorded by `waxline-cli record --input deck.monitor` as a user would.
#include "capture/Audio.h"
#include "cli/RecordSession.h"
#include "support/MediaFiles.h"
#include "support/PulseDaemon.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <thread>

namespace waxline {
namespace {

constexpr double kToneSeconds = 3.0;
constexpr double kTonePeak = 0.5; // -6.02 dBFS

// A daemon whose default output is a second null sink, so the monitor's playback cannot feed
// back into "deck"; the deck runs at 44.1 kHz, the speakers at 48 kHz.
class RecordSessionPulse : public testing::Test {
protected:
    void SetUp() override {
        unsetenv("WAXLINE_VIRTUAL_DEVICE");
        if (!pulse.running())
            GTEST_SKIP() << "no PulseAudio daemon: " << pulse.whyNot();
        std::string output;
        ASSERT_GE(pulse.loadModule("module-null-sink sink_name=speakers norewinds=1 rate=48000 "
                                   "channels=2"),
                  0);
        ASSERT_EQ(pulse.pactl("set-default-sink speakers", output), 0) << output;
    }
    test::PulseDaemon pulse;
    test::TempDir dir;
};

// The span of the tone in a track: from the first to the last sample above half its peak, in
// seconds; negative when there is none.
double toneSpan(const std::vector<float>& samples, int rate, size_t* firstOut = nullptr) {
    size_t first = samples.size(), last = 0;
    for (size_t i = 0; i < samples.size(); ++i)
        if (std::fabs(samples[i]) > kTonePeak / 2) {
            first = std::min(first, i);
            last = i;
        }
    if (firstOut)
        *firstOut = first;
    return first < last ? static_cast<double>(last - first) / rate : -1;
}

// Records `input` while paplay plays `tone` into `sink` once, a quarter second into the recording,
// and stops `after` seconds of audio after the tone has been played.
int recordWhilePlaying(const std::string& input, const std::string& tone, const std::string& sink,
                       double after, const test::TempDir& dir, cli::RecordResult& result) {
    cli::RecordOptions options;
    options.input = input;
    options.exportDir = dir.file("exports");
    options.automaticSplit = false;
    options.showStatus = false;
    std::atomic<bool> played{false};
    std::thread player;
    uint64_t capturedWhenPlayed = 0;
    int ticks = 0;
    options.onTick = [&](Audio& audio, platform::Platform&) {
        if (++ticks > 300) // 30 s: the server stopped delivering; fail rather than hang
            audio.stopRecording();
        const uint64_t captured = audio.recorderCounters().capturedFrames;
        const double rate = audio.fileSampleRate();
        if (!player.joinable() && captured > rate / 4)
            player = std::thread([&] {
                std::string output;
                played = test::runCommand("paplay -d " + sink + " " + test::shellQuote(tone),
                                          output) == 0;
            });
        if (played && !capturedWhenPlayed)
            capturedWhenPlayed = captured;
        if (capturedWhenPlayed && captured > capturedWhenPlayed + after * rate)
            audio.stopRecording();
    };
    const int status = cli::recordSide(options, result);
    if (player.joinable())
        player.join();
    return played ? status : -1;
}

// The deck runs at 44.1 kHz and the speakers at 48 kHz: the track file takes the output's rate
// and holds the tone at its pitch and length, not played 8.8 % fast.
TEST_F(RecordSessionPulse, RecordsAToneFromTheDeckMonitorAtTheFilesRate) {
    const std::string tone = dir.file("tone.wav");
    ASSERT_TRUE(test::writeToneWav(tone, kToneSeconds, kTonePeak, 1000));

    cli::RecordResult result;
    const int status = recordWhilePlaying("deck.monitor", tone, "deck", 0.5, dir, result);
    ASSERT_EQ(status, 0) << result.endedBy;
    ASSERT_EQ(result.files.size(), 1u);
    EXPECT_EQ(result.droppedBuffers, 0u);

    const test::WavContents track = test::readStereoWav(result.files[0].path);
    const int rate = track.rate;
    const std::vector<float> left = track.channel(0);
    ASSERT_EQ(rate, 48000);
    size_t first = 0;
    const double span = toneSpan(left, rate, &first);
    ASSERT_GT(span, 0) << "no tone in the recording";
    // paplay may stall under load, which can only stretch the span.
    EXPECT_GT(span, kToneSeconds - 0.01);
    EXPECT_LT(span, kToneSeconds + 0.25);

    // One second from the middle of the tone: a thousand whole periods.
    const size_t from = first + static_cast<size_t>(span * rate) / 2 - rate / 2;
    const std::vector<float> middle(left.begin() + from, left.begin() + from + rate);
    size_t rising = 0;
    for (size_t i = 1; i < middle.size(); ++i)
        rising += middle[i - 1] < 0 && middle[i] >= 0;
    EXPECT_NEAR(static_cast<double>(rising), 1000.0, 2.0);
    const double level = test::toDb(test::toneAmplitude(middle, 1000, rate));
    EXPECT_NEAR(level, test::toDb(kTonePeak), 0.5);
}

// Recording the monitor of the default sink, into which the play-through would play: it plays
// into the other sink instead, so the tone is recorded once and then silence, never again.
TEST_F(RecordSessionPulse, RecordingTheOutputsMonitorNeverHearsItself) {
    const std::string tone = dir.file("tone.wav");
    ASSERT_TRUE(test::writeToneWav(tone, 1.0, kTonePeak, 1000));

    cli::RecordResult result;
    testing::internal::CaptureStderr();
    const int status = recordWhilePlaying("speakers.monitor", tone, "speakers", 1.5, dir, result);
    const std::string errors = testing::internal::GetCapturedStderr();
    ASSERT_EQ(status, 0) << result.endedBy;
    EXPECT_NE(errors.find("warning: the input is the monitor of the output"), std::string::npos)
        << errors;
    ASSERT_EQ(result.files.size(), 1u);
    const test::WavContents track = test::readStereoWav(result.files[0].path);
    const std::vector<float> left = track.channel(0);
    const double span = toneSpan(left, track.rate);
    EXPECT_GT(span, 0.99);
    EXPECT_LT(span, 1.25) << "the recording heard its own play-through";
}

} // namespace
} // namespace waxline
