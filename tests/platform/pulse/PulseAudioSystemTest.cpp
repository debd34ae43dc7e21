#include "platform/pulse/PulseAudioSystem.h"
#include "platform/Platform.h"
#include "platform/PlatformError.h"
#include "support/MediaFiles.h"
#include "support/PulseDaemon.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <mutex>
#include <thread>

using namespace waxline::platform;
using waxline::test::PulseDaemon;

namespace {

TEST(PulseAudioDeviceName, FollowsCardThenProductThenDescription) {
    const std::string long70(70, 'x');
    // "é" is two bytes; placed across the 63-byte cut it must go entirely.
    const std::string accented = std::string(62, 'a') + "\xC3\xA9" + "bc";
    const struct {
        const char* card;
        const char* product;
        const char* description;
        std::string want;
    } cases[] = {
        {"USB Audio CODEC ", "PCM2900", "Burr-Brown Analog Stereo", "USB Audio CODEC "},
        {nullptr, "USB PnP Audio Device", "Generic Analog Stereo", "USB PnP Audio Device"},
        {"", "Product", "Description", "Product"},
        {nullptr, nullptr, "Monitor of Null Output", "Monitor of Null Output"},
        {nullptr, "", "", ""},
        {long70.c_str(), nullptr, nullptr, std::string(63, 'x')},
        {accented.c_str(), nullptr, nullptr, std::string(62, 'a')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.want);
        EXPECT_EQ(PulseAudioSystem::deviceName(c.card, c.product, c.description), c.want);
    }
}

bool eventually(const std::function<bool()>& done) {
    // A generous bound so a broken server cannot hang the suite; passing tests never reach it.
    for (int i = 0; i < 1000 && !done(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return done();
}

struct Capture : InputHandler {
    std::mutex mutex;
    std::vector<float> left, right;
    uint32_t largest = 0;
    int64_t next = 0;
    int gaps = 0;
    std::atomic<uint32_t> lost{0};
    std::atomic<int> ended{0};
    std::atomic<Status> why{kNoError};

    void onInput(float* const* channels, uint32_t count, uint32_t frames, int64_t sampleTime,
                 uint64_t) override {
        std::lock_guard lock(mutex);
        if (count >= 2) {
            left.insert(left.end(), channels[0], channels[0] + frames);
            right.insert(right.end(), channels[1], channels[1] + frames);
        }
        gaps += sampleTime != next;
        next = sampleTime + frames;
        largest = std::max(largest, frames);
    }
    void onOverflow(uint32_t frames) override { lost += frames; }
    void onStreamEnded(Status status) override {
        why = status;
        ++ended;
    }
};

struct Tone : OutputHandler {
    double phase = 0;
    double step = 2 * M_PI * 1000.0 / 44100.0;
    float amplitude = 0.5f;
    void onOutput(float* const* channels, uint32_t count, uint32_t frames, int64_t,
                  uint64_t) override {
        for (uint32_t i = 0; i < frames; ++i) {
            const auto s = static_cast<float>(amplitude * std::sin(phase));
            phase = std::fmod(phase + step, 2 * M_PI);
            for (uint32_t c = 0; c < count; ++c)
                channels[c][i] = s;
        }
    }
};

// Two channels of a 1 kHz sine, 16-bit.
void writeSine(const std::string& path, double amplitude, double seconds) {
    const auto tone =
        waxline::test::sine(1000, amplitude, 44100, static_cast<size_t>(seconds * 44100));
    ASSERT_TRUE(waxline::test::writeStereoWav(path, tone, tone));
}

// The level and pitch of the cleanest 0.2 s of tone: a loaded machine may underrun the null sink
// for a moment, and such a dropout says nothing about the path under test, while a wrong gain or
// rate shows in every window.
void measure(const std::vector<float>& samples, double rate, double& levelDb, double& frequency) {
    size_t first = 0, last = 0;
    for (size_t i = 0; i < samples.size(); ++i)
        if (std::fabs(samples[i]) > 0.05f) {
            if (!first)
                first = i;
            last = i;
        }
    ASSERT_GT(last - first, static_cast<size_t>(rate)) << "less than a second of tone arrived";
    const auto span = static_cast<size_t>(rate / 5); // 200 whole periods
    const auto step = static_cast<size_t>(rate / 100);
    double best = -1;
    size_t bestFrom = first;
    for (size_t from = first + step; from + span + step <= last; from += step) {
        const std::vector<float> window(samples.begin() + from, samples.begin() + from + span);
        const double amplitude = waxline::test::toneAmplitude(window, 1000.0, rate);
        if (amplitude > best) {
            best = amplitude;
            bestFrom = from;
        }
    }
    levelDb = waxline::test::toDb(best);
    int crossings = 0;
    for (size_t i = bestFrom + 1; i < bestFrom + span; ++i)
        crossings += (samples[i - 1] < 0) != (samples[i] < 0);
    frequency = crossings / 2.0 / 0.2;
}

class PulseAudioSystemTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!pulse.running())
            GTEST_SKIP() << "no PulseAudio daemon: " << pulse.whyNot();
        audio = std::make_unique<PulseAudioSystem>();
    }
    std::optional<DeviceInfo> find(Direction direction, const std::string& serverName) {
        for (const auto& d : audio->devices(direction))
            if (d.serverName == serverName)
                return d;
        return std::nullopt;
    }

    PulseDaemon pulse;
    std::unique_ptr<PulseAudioSystem> audio;
    waxline::test::TempDir dir;
};

TEST_F(PulseAudioSystemTest, ListsSourcesAndSinksWithTheirNamesFormatsAndMonitors) {
    const auto monitor = find(Direction::Input, "deck.monitor");
    ASSERT_TRUE(monitor);
    EXPECT_EQ(monitor->channels, 2u);
    EXPECT_DOUBLE_EQ(monitor->nominalSampleRate, 44100);
    EXPECT_DOUBLE_EQ(monitor->actualSampleRate, 44100);
    EXPECT_GT(monitor->bufferFrames, 0u);
    const auto sink = find(Direction::Output, "deck");
    ASSERT_TRUE(sink);
    EXPECT_EQ(sink->channels, 2u);

    std::atomic<int> listChanges{0};
    audio->onDeviceListChanged([&] { ++listChanges; });
    ASSERT_GE(pulse.addRemappedSource("turntable", {{"alsa.card_name", "USB Audio CODEC "},
                                                    {"device.description", "Turntable"}}),
              0);
    ASSERT_GE(pulse.addRemappedSource("described", {{"device.description", "Line In "}}), 0);
    EXPECT_TRUE(eventually([&] { return listChanges > 0; }));
    const auto turntable = find(Direction::Input, "turntable");
    const auto described = find(Direction::Input, "described");
    ASSERT_TRUE(turntable && described);
    EXPECT_EQ(turntable->name, "USB Audio CODEC ");
    EXPECT_EQ(described->name, "Line In ");

    // The process-wide default input moves; the server's default stays.
    std::string before, after;
    pulse.pactl("get-default-source", before);
    EXPECT_EQ(audio->setDefaultInput(turntable->id), kNoError);
    EXPECT_EQ(audio->defaultDevice(Direction::Input), turntable->id);
    pulse.pactl("get-default-source", after);
    EXPECT_EQ(before, after);
    EXPECT_EQ(audio->setDefaultInput(kNoDevice - 1), kErrorUnknownDevice);
    EXPECT_EQ(audio->defaultDevice(Direction::Output), sink->id);

    // A USB codec's monitor carries the card's name like its capture source; only the capture
    // source is unmarked, the monitors name the sink they monitor.
    ASSERT_TRUE(pulse.addCard("codec", "USB Audio CODEC ", 48000));
    const auto capture = find(Direction::Input, "codec_in");
    const auto codecMonitor = find(Direction::Input, "codec.monitor");
    const auto codec = find(Direction::Output, "codec");
    ASSERT_TRUE(capture && codecMonitor && codec);
    EXPECT_EQ(capture->name, "USB Audio CODEC ");
    EXPECT_EQ(codecMonitor->name, "USB Audio CODEC ");
    EXPECT_EQ(capture->monitorOf, kNoDevice);
    EXPECT_EQ(codecMonitor->monitorOf, codec->id);
    EXPECT_EQ(monitor->monitorOf, sink->id);
    for (const auto& output : audio->devices(Direction::Output))
        EXPECT_EQ(output.monitorOf, kNoDevice) << output.serverName;
}

// Record streams at once on source 0, the 44.1 kHz monitor of "deck": one at its own rate, one
// asking for 48 kHz, which the server converts. Each gets the tone whole, at its level and pitch
// at its own rate, in buffers no larger than asked for, and ends once when the source goes. A
// stream on the default input, another source, hears none of it: 0 is a source like any other.
TEST_F(PulseAudioSystemTest, RecordsAToneAtTheRateAskedForAndEndsWhenTheSourceGoes) {
    const std::string wav = dir.file("tone.wav");
    const double amplitude = std::pow(10.0, -6.0 / 20);
    writeSine(wav, amplitude, 2.0);
    ASSERT_TRUE(pulse.addCard("codec", "USB Audio CODEC ", 44100));
    const auto monitor = find(Direction::Input, "deck.monitor");
    const auto other = find(Direction::Input, "codec_in");
    ASSERT_TRUE(monitor && other);
    ASSERT_EQ(monitor->id, 0u);
    ASSERT_EQ(monitor->nominalSampleRate, 44100);
    ASSERT_EQ(audio->setDefaultInput(other->id), kNoError);

    struct Row {
        AudioObjectID source;
        double asked; // 0: the source's own
        uint32_t buffer;
        double delivered;
        bool hearsTone;
    };
    const Row rows[] = {
        {0, 0, 256, 44100, true},
        {0, 48000, 480, 48000, true},
        {kDefaultDevice, 0, 441, 44100, false},
    };
    Capture captures[std::size(rows)];
    std::unique_ptr<Stream> streams[std::size(rows)];
    for (size_t i = 0; i < std::size(rows); ++i) {
        Status status = kErrorOpenFailed;
        streams[i] = audio->openInput(rows[i].source, {rows[i].asked, 0}, rows[i].buffer,
                                      captures[i], status);
        ASSERT_EQ(status, kNoError);
        ASSERT_TRUE(streams[i]);
        EXPECT_EQ(streams[i]->format().channels, 2u);
        EXPECT_EQ(streams[i]->format().sampleRate, rows[i].delivered);
        ASSERT_EQ(streams[i]->start(), kNoError);
        EXPECT_TRUE(streams[i]->isRunning());
    }
    ASSERT_TRUE(pulse.play(wav));
    EXPECT_TRUE(eventually([&] {
        std::lock_guard lock(captures[0].mutex);
        return captures[0].left.size() > 2 * 44100;
    }));

    std::atomic<int> listChanges{0};
    audio->onDeviceListChanged([&] { ++listChanges; });
    ASSERT_TRUE(pulse.unloadModule(pulse.sinkModule()));
    EXPECT_TRUE(eventually(
        [&] { return captures[0].ended > 0 && captures[1].ended > 0 && listChanges > 0; }));
    for (size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(i);
        Capture& capture = captures[i];
        std::lock_guard lock(capture.mutex);
        if (!rows[i].hearsTone) {
            float peak = 0;
            for (float x : capture.left)
                peak = std::max(peak, std::fabs(x));
            EXPECT_LT(peak, 0.01f);
            EXPECT_EQ(capture.ended, 0);
            continue;
        }
        EXPECT_EQ(capture.ended, 1);
        EXPECT_EQ(capture.why, kErrorUnknownDevice);
        EXPECT_FALSE(streams[i]->isRunning());
        EXPECT_LE(capture.largest, rows[i].buffer);
        EXPECT_EQ(capture.gaps, 0);
        EXPECT_EQ(capture.lost, 0u);
        for (const auto* channel : {&capture.left, &capture.right}) {
            double levelDb = 0, frequency = 0;
            measure(*channel, rows[i].delivered, levelDb, frequency);
            EXPECT_NEAR(levelDb, -6.0, 0.5);
            EXPECT_NEAR(frequency, 1000.0, 5.0);
        }
    }
}

TEST_F(PulseAudioSystemTest, PlaysThroughTheSinkWhatTheOutputHandlerGives) {
    const auto monitor = find(Direction::Input, "deck.monitor");
    const auto sink = find(Direction::Output, "deck");
    ASSERT_TRUE(monitor && sink);
    Capture capture;
    Tone tone;
    Status status = kErrorOpenFailed;
    auto input = audio->openInput(monitor->id, {}, 441, capture, status);
    ASSERT_EQ(status, kNoError);
    // 50 ms buffers: with 10 ms ones a loaded machine underruns the sink, and the gaps, not the
    // path under test, decide the level.
    auto output = audio->openOutput(sink->id, StreamFormat{44100, 2}, 2205, tone, status);
    ASSERT_EQ(status, kNoError);
    ASSERT_EQ(input->start(), kNoError);
    ASSERT_EQ(output->start(), kNoError);
    EXPECT_TRUE(eventually([&] {
        std::lock_guard lock(capture.mutex);
        return capture.left.size() > static_cast<size_t>(1.6 * 44100);
    }));
    output->stop();
    input->stop();
    std::lock_guard lock(capture.mutex);
    double levelDb = 0, frequency = 0;
    measure(capture.left, 44100, levelDb, frequency);
    EXPECT_NEAR(levelDb, waxline::test::toDb(tone.amplitude), 0.5);
    EXPECT_NEAR(frequency, 1000.0, 5.0);
}

// The reason is typed for the front ends to word; the detail is libpulse's own.
TEST(OpenPlatformReal, SaysTheServerIsUnreachableWhenNoneAnswers) {
    waxline::test::TempDir empty;
    const char* saved = std::getenv("PULSE_SERVER");
    const std::string previous = saved ? saved : "";
    ::unsetenv("WAXLINE_VIRTUAL_DEVICE");
    ::setenv("PULSE_SERVER", ("unix:" + empty.file("no-such-socket")).c_str(), 1);
    try {
        openPlatform();
        ADD_FAILURE() << "a platform without a server";
    } catch (const waxline::platform::PlatformError& error) {
        EXPECT_EQ(error.reason(), waxline::platform::PlatformError::Reason::AudioServerUnreachable);
        EXPECT_STREQ(error.what(), "Connection refused");
    }
    if (saved)
        ::setenv("PULSE_SERVER", previous.c_str(), 1);
    else
        ::unsetenv("PULSE_SERVER");
}

TEST(OpenPlatformReal, GivesPulseAudioAndUdevWithoutASetup) {
    PulseDaemon pulse;
    if (!pulse.running())
        GTEST_SKIP() << "no PulseAudio daemon: " << pulse.whyNot();
    ::unsetenv("WAXLINE_VIRTUAL_DEVICE");
    Platform platform = openPlatform();
    EXPECT_NE(dynamic_cast<PulseAudioSystem*>(platform.audio.get()), nullptr);
    ASSERT_NE(platform.usb, nullptr);
    bool monitorListed = false;
    for (const auto& d : platform.audio->devices(Direction::Input))
        monitorListed |= d.serverName == pulse.monitorSource();
    EXPECT_TRUE(monitorListed);
}

} // namespace
