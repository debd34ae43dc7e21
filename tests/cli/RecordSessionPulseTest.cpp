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
constexpr double kRate = 44100;

// A daemon whose default output is a second null sink, so the monitor's playback cannot feed
// back into "deck".
struct PulseRig {
    test::PulseDaemon pulse;
    bool ready = false;
    PulseRig() {
        unsetenv("WAXLINE_VIRTUAL_DEVICE");
        if (!pulse.running())
            return;
        std::string output;
        ready = pulse.loadModule("module-null-sink sink_name=speakers norewinds=1 rate=44100 "
                                 "channels=2") >= 0 &&
                pulse.pactl("set-default-sink speakers", output) == 0;
    }
};

TEST(RecordSessionPulse, RecordsAToneFromTheDeckMonitor) {
    PulseRig rig;
    if (!rig.pulse.running())
        GTEST_SKIP() << "no PulseAudio daemon: " << rig.pulse.whyNot();
    ASSERT_TRUE(rig.ready) << "cannot add the second null sink";
    test::TempDir dir;
    const std::string tone = dir.file("tone.wav");
    ASSERT_TRUE(test::writeToneWav(tone, kToneSeconds, kTonePeak, 1000));

    cli::RecordOptions options;
    options.input = "deck.monitor";
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
        if (!player.joinable() && captured > kRate / 4)
            player = std::thread([&] {
                rig.pulse.play(tone);
                played = true;
            });
        if (played && !capturedWhenPlayed)
            capturedWhenPlayed = captured;
        // Half a second of silence after the tone, then stop as the Stop button does.
        if (capturedWhenPlayed && captured > capturedWhenPlayed + kRate / 2)
            audio.stopRecording();
    };
    cli::RecordResult result;
    const int status = cli::recordSide(options, result);
    if (player.joinable())
        player.join();
    ASSERT_EQ(status, 0) << result.endedBy;
    ASSERT_TRUE(played);
    ASSERT_EQ(result.files.size(), 1u);
    EXPECT_EQ(result.droppedBuffers, 0u);

    const test::WavContents track = test::readStereoWav(result.files[0].path);
    const int rate = track.rate;
    const std::vector<float> left = track.channel(0);
    ASSERT_EQ(rate, 44100);
    // The tone's span: from the first to the last sample above half its peak.
    size_t first = left.size(), last = 0;
    for (size_t i = 0; i < left.size(); ++i)
        if (std::fabs(left[i]) > kTonePeak / 2) {
            first = std::min(first, i);
            last = i;
        }
    ASSERT_LT(first, last) << "no tone in the recording";
    const double span = static_cast<double>(last - first) / rate;
    // paplay may stall under load, which can only stretch the span.
    EXPECT_GT(span, kToneSeconds - 0.01);
    EXPECT_LT(span, kToneSeconds + 0.25);

    // One second from the middle of the tone: a thousand whole periods.
    const size_t from = first + (last - first) / 2 - rate / 2;
    const std::vector<float> middle(left.begin() + from, left.begin() + from + rate);
    size_t rising = 0;
    for (size_t i = 1; i < middle.size(); ++i)
        rising += middle[i - 1] < 0 && middle[i] >= 0;
    EXPECT_NEAR(static_cast<double>(rising), 1000.0, 2.0);
    const double level = test::toDb(test::toneAmplitude(middle, 1000, rate));
    EXPECT_NEAR(level, test::toDb(kTonePeak), 0.5);
}

// Unloading the sink takes its monitor source away mid-recording: the recording ends as if
// Stop had been pressed, says so, and keeps its file.
TEST(RecordSessionPulse, VanishedSourceEndsTheRecordingAndKeepsTheTrack) {
    PulseRig rig;
    if (!rig.pulse.running())
        GTEST_SKIP() << "no PulseAudio daemon: " << rig.pulse.whyNot();
    ASSERT_TRUE(rig.ready) << "cannot add the second null sink";
    test::TempDir dir;
    cli::RecordOptions options;
    options.input = "deck.monitor";
    options.exportDir = dir.file("exports");
    options.automaticSplit = false;
    options.showStatus = false;
    bool unloaded = false;
    int ticks = 0;
    options.onTick = [&](Audio& audio, platform::Platform&) {
        if (++ticks > 300) // 30 s: the end was never noticed; fail rather than hang
            audio.stopRecording();
        if (!unloaded && audio.recorderCounters().capturedFrames > kRate / 2)
            unloaded = rig.pulse.unloadModule(rig.pulse.sinkModule());
    };
    cli::RecordResult result;
    const int status = cli::recordSide(options, result);
    ASSERT_TRUE(unloaded);
    EXPECT_EQ(status, 1);
    EXPECT_NE(result.endedBy.find("disconnected"), std::string::npos) << result.endedBy;
    ASSERT_EQ(result.files.size(), 1u);
    const test::SoundInfo info = test::soundInfo(result.files[0].path);
    EXPECT_GE(info.frames, static_cast<long long>(kRate / 2) - 4096);
}

} // namespace
} // namespace waxline
