#include "capture/Audio.h"
#include "support/FakePlatform.h"
#include "support/Signals.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <filesystem>

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

} // namespace
} // namespace waxline
