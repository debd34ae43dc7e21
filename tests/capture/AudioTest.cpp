#include "capture/Audio.h"
#include "capture/buffered/CAAudioFileRecorder.h"
#include "support/FakeAudioSystem.h"
#include "support/FakeUsbBus.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <sndfile.h>

#include <cmath>
#include <filesystem>
#include <fstream>

namespace waxline {
namespace {

class CountingMonitor : public MonitorHost {
public:
    bool running = false;
    float gain = 0;
    int Start() override {
        running = true;
        return 0;
    }
    int Stop() override {
        running = false;
        return 0;
    }
    bool IsRunning() override { return running; }
    void SetInputGain(float db) override { gain = db; }
};

struct Rig {
    int argc = 1;
    char name[8] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication app{argc, argv};
    platform::Platform platform;
    test::FakeAudioSystem* audioSystem;
    test::FakeUsbBus* bus;
    int monitorsMade = 0;
    std::unique_ptr<Audio> audio;

    Rig(std::vector<platform::UsbDevice> usb, std::vector<std::string> inputs) {
        auto a = std::make_unique<test::FakeAudioSystem>();
        auto b = std::make_unique<test::FakeUsbBus>();
        audioSystem = a.get();
        bus = b.get();
        b->attached = std::move(usb);
        platform::AudioObjectID id = 10;
        for (const auto& n : inputs)
            a->add(platform::Direction::Input, id++, n);
        a->add(platform::Direction::Output, 50, "Speakers", 2, 48000);
        a->defaultInput = 10;
        a->defaultOutput = 50;
        platform.audio = std::move(a);
        platform.usb = std::move(b);
        audio = std::make_unique<Audio>(
            platform,
            [this](platform::AudioSystem&, platform::AudioObjectID, platform::AudioObjectID) {
                ++monitorsMade;
                return std::make_unique<CountingMonitor>();
            });
    }
};

TEST(Audio, DetectionResultCodes) {
    struct Case {
        const char* name;
        std::vector<platform::UsbDevice> usb;
        std::vector<std::string> inputs;
        int code;
        bool deviceSet;
        platform::AudioObjectID selected; // kNoDevice: not checked
    };
    const Case cases[] = {
        {"empty bus", {}, {"USB Audio CODEC"}, 0, false, platform::kNoDevice},
        {"one device, its input second",
         {{0x08BB, 0x2900, 1, ""}},
         {"Built-in", "USB Audio CODEC"},
         1,
         true,
         11},
        {"two supported devices, one input",
         {{0x08BB, 0x2900, 1, ""}, {0x0D8C, 0x0131, 1, ""}},
         {"USB Audio CODEC"},
         2,
         false,
         platform::kNoDevice},
        {"two inputs match",
         {{0x08BB, 0x2900, 1, ""}},
         {"USB Audio CODEC", "USB Audio CODEC 2"},
         3,
         true,
         platform::kNoDevice},
        {"device without input",
         {{0x08BB, 0x2900, 1, ""}},
         {"Built-in"},
         0,
         true,
         platform::kNoDevice},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig(c.usb, c.inputs);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(rig.audio->detectAudioDevice(), c.code);
        testing::internal::GetCapturedStdout();
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(rig.audio->device() != nullptr, c.deviceSet);
        if (c.selected != platform::kNoDevice) {
            EXPECT_EQ(rig.audio->inputDeviceID(), c.selected);
            EXPECT_EQ(rig.monitorsMade, 1);
        } else {
            EXPECT_EQ(rig.monitorsMade, 0);
        }
    }
}

// A USB codec with a playback side: the monitor of its sink carries the card's name too, but only
// the capture source is an input.
TEST(Audio, TheMonitorOfACodecsSinkIsNotASecondInput) {
    Rig rig({{0x08BB, 0x2900, 1, ""}}, {"Built-in", "USB Audio CODEC ", "USB Audio CODEC "});
    rig.audioSystem->add(platform::Direction::Output, 51, "USB Audio CODEC ");
    rig.audioSystem->inputs[1].monitorOf = 51;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(rig.audio->detectAudioDevice(), 1);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(rig.audio->inputDeviceID(), 12u);
    EXPECT_EQ(rig.audio->countDevicesWithMatchingName(), 1u);
}

// Recording the monitor of the output the play-through plays into would record itself: the
// monitor goes to another output, or nowhere, and says which.
TEST(Audio, PlayThroughNeverPlaysIntoTheOutputItsInputMonitors) {
    struct Case {
        const char* name;
        platform::AudioObjectID monitorOf; // of input 11
        bool secondOutput;                 // output 51 exists besides the default 50
        platform::AudioObjectID playsTo;
        PlayThroughRoute route;
    };
    const Case cases[] = {
        {"a capture device", platform::kNoDevice, true, 50, PlayThroughRoute::Direct},
        {"the monitor of another output", 51, true, 50, PlayThroughRoute::Direct},
        {"the output's monitor, another output", 50, true, 51, PlayThroughRoute::OtherOutput},
        {"the output's monitor, no other output", 50, false, platform::kNoDevice,
         PlayThroughRoute::Nowhere},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig({}, {"Built-in", "Monitor of Speakers"});
        rig.audioSystem->inputs[1].monitorOf = c.monitorOf;
        if (c.secondOutput)
            rig.audioSystem->add(platform::Direction::Output, 51, "Headphones");
        platform::AudioObjectID playsTo = 0;
        rig.audio = std::make_unique<Audio>(
            rig.platform,
            [&](platform::AudioSystem&, platform::AudioObjectID, platform::AudioObjectID output) {
                playsTo = output;
                return std::make_unique<CountingMonitor>();
            });
        rig.audio->selectInput(11);
        EXPECT_EQ(playsTo, c.playsTo);
        EXPECT_EQ(rig.audio->playThroughTarget().output, c.playsTo);
        EXPECT_EQ(rig.audio->playThroughTarget().route, c.route);
        // The file's rate still follows the output device, whatever the monitor plays into.
        EXPECT_EQ(rig.audio->outputDeviceID(), 50u);
    }
}

// PulseAudio numbers sources from 0: choosing source 0 must put the monitor (meters, equaliser,
// gap detector) and the recorder on that same source, not on the default one.
TEST(Audio, SourceZeroIsWatchedAndRecordedAlike) {
    test::TempDir dir;
    Rig rig({}, {"Built-in"});
    rig.audioSystem->add(platform::Direction::Input, 0, "Monitor of Null Output");
    rig.audioSystem->defaultInput = 10;
    rig.audio = std::make_unique<Audio>(rig.platform); // the real play-through monitor
    rig.audio->setExportFolder(dir.path());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    rig.audio->selectInput(0);
    ASSERT_EQ(rig.audioSystem->inputIds.size(), 1u); // the monitor's stream
    EXPECT_EQ(rig.audioSystem->inputIds[0], 0u);
    rig.audio->resetTrackCounter();
    ASSERT_TRUE(rig.audio->newTrack());
    ASSERT_EQ(rig.audioSystem->inputIds.size(), 2u); // and the recorder's
    EXPECT_EQ(rig.audioSystem->inputIds[1], 0u);
    rig.audio->stopRecording();
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(rig.audioSystem->defaultInput, 10u);
}

TEST(Audio, RedetectionKeepsTheMonitor) {
    Rig rig({{0x08BB, 0x2900, 1, ""}}, {"USB Audio CODEC"});
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(rig.audio->detectAudioDevice(), 1);
    MonitorHost* first = rig.audio->playThru();
    EXPECT_EQ(rig.audio->detectAudioDevice(), 1);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(rig.audio->playThru(), first);
    EXPECT_EQ(rig.monitorsMade, 1);
}

TEST(Audio, PresetChosenByDevice) {
    struct Case {
        UsbID id;
        const char* expected;
    };
    const Case cases[] = {
        {{0x0D8C, 0x0131}, "setRIAAFilter: Setting no filter"},
        {{0x0D8C, 0x0121}, "setRIAAFilter: Setting RIAA filter"},
        {{0x2034, 0x0105}, "setRIAAFilter: Setting BrightSpin filter"},
        {{0x0C76, 0x1600}, "setRIAAFilter: Setting BrightSpin filter"},
    };
    for (const auto& c : cases) {
        Rig rig({{c.id.vendor, c.id.product, 1, ""}}, {"USB PnP Audio Device", "USB Microphone"});
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        rig.audio->detectAudioDevice();
        testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        rig.audio->setRIAAFilter();
        const std::string log = testing::internal::GetCapturedStderr();
        testing::internal::GetCapturedStdout();
        EXPECT_NE(log.find(c.expected), std::string::npos) << log;
        rig.audio->setNoFilter();
    }
}

TEST(Audio, TrackFilesAlbumEndAndGain) {
    test::TempDir dir;
    Rig rig({{0x08BB, 0x2900, 1, ""}}, {"USB Audio CODEC"});
    rig.audio->setExportFolder(dir.file("Exports"));
    EXPECT_EQ(rig.audio->fileNameForTrack(0), dir.file("Exports") + "/WXRTTmpFile.0.wav");
    EXPECT_EQ(rig.audio->fileNameForTrack(-1), dir.file("Exports") + "/WXRTTmpFile.-1.wav");

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    rig.audio->detectAudioDevice();
    rig.audio->resetTrackCounter();
    rig.audio->setAutomaticTrackSplit(true);
    // A gap event while not recording does nothing.
    rig.audio->trackGapDetected();
    rig.audio->processPendingEvents();
    EXPECT_FALSE(rig.audio->recording());
    EXPECT_EQ(rig.audio->numRecordedTracks(), 0);

    ASSERT_TRUE(rig.audio->newTrack());
    EXPECT_TRUE(rig.audio->recording());
    // The monitor was stopped: newTrack must not start it.
    auto* monitor = static_cast<CountingMonitor*>(rig.audio->playThru());
    EXPECT_FALSE(monitor->running);
    rig.audio->setGainDb(-6);
    EXPECT_FLOAT_EQ(monitor->gain, -6);

    rig.audio->trackGapDetected();
    rig.audio->processPendingEvents();
    EXPECT_EQ(rig.audio->numRecordedTracks(), 2);
    rig.audio->albumEndDetected();
    rig.audio->processPendingEvents();
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(rig.audio->recording());
    EXPECT_EQ(rig.audio->numRecordedTracks(), 1);
    EXPECT_TRUE(std::filesystem::exists(rig.audio->fileNameForTrack(1)));
    EXPECT_TRUE(std::filesystem::exists(rig.audio->fileNameForTrack(2)));
    // The file rate is the output device's, read second.
    EXPECT_EQ(rig.audio->fileSampleRate(), 48000);
}

// The buffered recorder: float stereo at the input's rate (not the output's, as track files
// are), the gain of the moment, a stale file of the same name replaced; a missing folder is
// reported and yields no recorder.
TEST(Audio, NewRecorderWritesFloatStereoAtTheInputRate) {
    test::TempDir dir;
    Rig rig({{0x08BB, 0x2900, 1, ""}}, {"USB Audio CODEC"});
    rig.audio->setExportFolder(dir.file("Exports"));
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    rig.audio->detectAudioDevice();
    rig.audio->setGainDb(-6);
    const std::string path = dir.file("Exports") + "/buffered.wav";
    std::filesystem::create_directories(dir.file("Exports"));
    std::ofstream(path) << "stale contents that are not a WAV file";

    auto recorder = rig.audio->newRecorder(path);
    ASSERT_NE(recorder, nullptr);
    recorder->Start();
    ASSERT_NE(rig.audioSystem->lastInputHandler, nullptr);
    constexpr uint32_t kFrames = 1000;
    std::vector<float> left(kFrames), right(kFrames);
    for (uint32_t i = 0; i < kFrames; ++i) {
        left[i] = 0.25f * std::sin(0.05f * static_cast<float>(i));
        right[i] = -0.125f;
    }
    float* channels[2] = {left.data(), right.data()};
    for (int64_t t = 0; t < 5 * kFrames; t += kFrames)
        rig.audioSystem->lastInputHandler->onInput(channels, 2, kFrames, t, 0);
    recorder->Stop();
    recorder.reset();

    const std::string missing = rig.audio->newRecorder(dir.file("nowhere/x.wav")) ? "" : "null";
    testing::internal::GetCapturedStdout();
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(missing, "null");
    EXPECT_NE(errors.find("newRecorder Error: couldn't find output directory"), std::string::npos)
        << errors;

    const test::WavContents wav = test::readStereoWav(path);
    ASSERT_EQ(wav.error, "");
    EXPECT_EQ(wav.rate, 44100); // the input's; the output runs at 48000
    EXPECT_EQ(wav.channels, 2);
    EXPECT_EQ(wav.format & SF_FORMAT_SUBMASK, SF_FORMAT_FLOAT);
    ASSERT_EQ(wav.frames(), 5 * kFrames);
    const std::vector<float>& frames = wav.samples;
    const float gain = static_cast<float>(std::pow(10.0, -6.0 / 20.0));
    for (uint32_t i = 0; i < 5 * kFrames; i += 37) {
        EXPECT_NEAR(frames[2 * i], left[i % kFrames] * gain, 1e-6f) << i;
        EXPECT_NEAR(frames[2 * i + 1], -0.125f * gain, 1e-6f) << i;
    }
}

} // namespace
} // namespace waxline
