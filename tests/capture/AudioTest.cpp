#include "capture/Audio.h"
#include "capture/buffered/CAAudioFileRecorder.h"
#include "capture/chain/InputChain.h"
#include "support/CoreApplication.h"
#include "support/FakeAudioSystem.h"
#include "support/FakeUsbBus.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <sndfile.h>

#include <array>
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
    test::CoreApplication app;
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

// Swallows what the controller prints while it lives; errors() hands over standard error so far.
struct Quiet {
    Quiet() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    std::string errors() {
        std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }
    ~Quiet() {
        testing::internal::GetCapturedStdout();
        testing::internal::GetCapturedStderr();
    }
};

// Detecting again keeps the monitor made the first time. A USB codec with a playback side: the
// monitor of its sink carries the card's name too, but only the capture source is an input.
TEST(Audio, DetectionResultCodes) {
    struct Case {
        const char* name;
        std::vector<platform::UsbDevice> usb;
        std::vector<std::string> inputs;
        int code;
        bool deviceSet;
        platform::AudioObjectID selected; // kNoDevice: not checked
        int monitorOfSink = -1;           // the input that monitors output 51, if any
    };
    const platform::UsbDevice codec = {0x08BB, 0x2900, 1, ""}, pnp = {0x0D8C, 0x0131, 1, ""};
    const auto none = platform::kNoDevice;
    const Case cases[] = {
        {"empty bus", {}, {"USB Audio CODEC"}, 0, false, none},
        {"one device, its input second", {codec}, {"Built-in", "USB Audio CODEC"}, 1, true, 11},
        {"two supported devices", {codec, pnp}, {"USB Audio CODEC"}, 2, false, none},
        {"two inputs match", {codec}, {"USB Audio CODEC", "USB Audio CODEC 2"}, 3, true, none},
        {"device without input", {codec}, {"Built-in"}, 0, true, none},
        {"sink monitor", {codec}, {"USB Audio CODEC ", "USB Audio CODEC "}, 1, true, 11, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig(c.usb, c.inputs);
        if (c.monitorOfSink >= 0) {
            rig.audioSystem->add(platform::Direction::Output, 51, "USB Audio CODEC ");
            rig.audioSystem->inputs[c.monitorOfSink].monitorOf = 51;
        }
        Quiet quiet;
        EXPECT_EQ(rig.audio->detectAudioDevice(), c.code);
        EXPECT_EQ(rig.audio->device() != nullptr, c.deviceSet);
        if (c.selected != platform::kNoDevice) {
            EXPECT_EQ(rig.audio->inputDeviceID(), c.selected);
            MonitorHost* first = rig.audio->playThru();
            EXPECT_EQ(rig.audio->detectAudioDevice(), c.code);
            EXPECT_EQ(rig.audio->playThru(), first);
            EXPECT_EQ(rig.monitorsMade, 1);
        } else {
            EXPECT_EQ(rig.monitorsMade, 0);
        }
    }
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
        {"the output's monitor, alone", 50, false, platform::kNoDevice, PlayThroughRoute::Nowhere},
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
    Quiet quiet;
    rig.audio->selectInput(0);
    ASSERT_EQ(rig.audioSystem->inputIds.size(), 1u); // the monitor's stream
    EXPECT_EQ(rig.audioSystem->inputIds[0], 0u);
    rig.audio->resetTrackCounter();
    ASSERT_TRUE(rig.audio->newTrack());
    ASSERT_EQ(rig.audioSystem->inputIds.size(), 2u); // and the recorder's
    EXPECT_EQ(rig.audioSystem->inputIds[1], 0u);
    rig.audio->stopRecording();
    EXPECT_EQ(rig.audioSystem->defaultInput, 10u);
}

using Sonra::Audio::Filters::AudioFilter;
using Levels = std::array<double, 2>;

// A 300 Hz tone on the left and a 3 kHz tone on the right, one second of it, run through
// `process` in blocks; the levels in dB of the last half second, where the presets have settled.
// The two tones tell all four presets apart (RIAA lifts 300 Hz by about 5 dB and cuts 3 kHz by 5,
// chrome cuts 3 kHz by almost 4, BrightSpin lifts 300 Hz by almost 6 and leaves 3 kHz alone).
template <typename Process> Levels tonesThrough(Process process) {
    constexpr uint32_t kFrames = 44100;
    std::vector<float> tones[2] = {test::sine(300, 0.25, 44100, kFrames),
                                   test::sine(3000, 0.25, 44100, kFrames)};
    for (uint32_t i = 0; i < kFrames; i += 4096)
        process(tones[0].data() + i, tones[1].data() + i, std::min<uint32_t>(4096, kFrames - i), i);
    Levels db{};
    for (int c = 0; c < 2; ++c) {
        double sum = 0;
        for (uint32_t i = kFrames / 2; i < kFrames; ++i)
            sum += static_cast<double>(tones[c][i]) * tones[c][i];
        db[c] = 10 * std::log10(sum / (kFrames / 2));
    }
    return db;
}

// The chain's levels are those of `type` (to 0.01 dB) and of no other preset.
void expectPreset(AudioFilter::Type type, const char* after) {
    SCOPED_TRACE(after);
    const Levels heard = tonesThrough([](float* left, float* right, uint32_t n, uint32_t at) {
        AudioBufferList list;
        list.mNumberBuffers = 2;
        list.mBuffers[0].mData = left;
        list.mBuffers[1].mData = right;
        InputProcCallback(&list, n, at);
    });
    for (int t = AudioFilter::NoFilter; t <= AudioFilter::BrightSpin; ++t) {
        AudioFilter reference; // the preset's response, from a filter of that type of its own
        reference.Set(static_cast<AudioFilter::Type>(t));
        const Levels preset = tonesThrough(
            [&](float* left, float* right, uint32_t n, uint32_t) { reference(left, right, n); });
        const bool same =
            std::fabs(heard[0] - preset[0]) < 0.01 && std::fabs(heard[1] - preset[1]) < 0.01;
        EXPECT_EQ(same, t == type) << "preset " << t << ": heard " << heard[0] << " / " << heard[1]
                                   << " dB, preset " << preset[0] << " / " << preset[1] << " dB";
    }
}

// The log line names the choice, and the audio shows it: a tone through the input chain comes
// out at the response of the preset each selector should have put in force.
TEST(Audio, PresetChosenByDevice) {
    struct Case {
        UsbID id;
        const char* expected;
        AudioFilter::Type type;
    };
    const Case cases[] = {
        {{0x0D8C, 0x0131}, "setRIAAFilter: Setting no filter", AudioFilter::NoFilter},
        {{0x0D8C, 0x0121}, "setRIAAFilter: Setting RIAA filter", AudioFilter::RIAAPlayback},
        {{0x2034, 0x0105}, "setRIAAFilter: Setting BrightSpin filter", AudioFilter::BrightSpin},
        {{0x0C76, 0x1600}, "setRIAAFilter: Setting BrightSpin filter", AudioFilter::BrightSpin},
    };
    for (const auto& c : cases) {
        Rig rig({{c.id.vendor, c.id.product, 1, ""}}, {"USB PnP Audio Device", "USB Microphone"});
        Quiet quiet;
        rig.audio->detectAudioDevice();
        quiet.errors();
        rig.audio->setRIAAFilter();
        const std::string log = quiet.errors();
        EXPECT_NE(log.find(c.expected), std::string::npos) << log;
        expectPreset(c.type, "setRIAAFilter");
        rig.audio->setChromeFilter();
        expectPreset(AudioFilter::ChromeTape, "setChromeFilter");
        rig.audio->setNoFilter();
        expectPreset(AudioFilter::NoFilter, "setNoFilter");
    }
}

// Feeds `frames` of a constant 0.5 on both channels to the recorder, as its stream would.
void feedRecorder(test::FakeAudioSystem& system, uint32_t frames) {
    std::vector<float> left(frames, 0.5f), right(frames, 0.5f);
    float* channels[2] = {left.data(), right.data()};
    system.lastInputHandler->onInput(channels, 2, frames, 0, 0);
}

// Every sample of a track file lies within 1.5 LSB of `value`; false for an empty file.
bool holdsOnly(const std::string& path, double value, size_t frames) {
    const test::WavContents wav = test::readStereoWav(path);
    if (wav.frames() != frames)
        return false;
    for (float s : wav.samples)
        if (std::fabs(s - value) > 1.5 / 32768)
            return false;
    return true;
}

// A gain change reaches the monitor at once and the track files only from the next track: the
// file being written keeps the gain it was opened with.
TEST(Audio, TrackFilesAlbumEndAndGain) {
    test::TempDir dir;
    Rig rig({{0x08BB, 0x2900, 1, ""}}, {"USB Audio CODEC"});
    rig.audio->setExportFolder(dir.file("Exports"));
    EXPECT_EQ(rig.audio->fileNameForTrack(0), dir.file("Exports") + "/WXRTTmpFile.0.wav");
    EXPECT_EQ(rig.audio->fileNameForTrack(-1), dir.file("Exports") + "/WXRTTmpFile.-1.wav");

    Quiet quiet;
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
    feedRecorder(*rig.audioSystem, 4096);
    rig.audio->setGainDb(-6);
    EXPECT_FLOAT_EQ(monitor->gain, -6);
    feedRecorder(*rig.audioSystem, 4096);

    rig.audio->trackGapDetected();
    rig.audio->processPendingEvents();
    EXPECT_EQ(rig.audio->numRecordedTracks(), 2);
    // A count from outside cannot change a recording under way.
    rig.audio->adoptRecordedTracks(7);
    EXPECT_EQ(rig.audio->numRecordedTracks(), 2);
    feedRecorder(*rig.audioSystem, 4096);
    rig.audio->albumEndDetected();
    rig.audio->processPendingEvents();
    EXPECT_FALSE(rig.audio->recording());
    EXPECT_EQ(rig.audio->numRecordedTracks(), 1);
    EXPECT_TRUE(std::filesystem::exists(rig.audio->fileNameForTrack(1)));
    EXPECT_TRUE(std::filesystem::exists(rig.audio->fileNameForTrack(2)));
    // Once stopped, a side cut anew (or found after a crash) brings its own count.
    rig.audio->adoptRecordedTracks(3);
    EXPECT_EQ(rig.audio->numRecordedTracks(), 3);
    rig.audio->adoptRecordedTracks(1);
    EXPECT_TRUE(std::filesystem::exists(rig.audio->fileNameForTrack(2)));
    // The file rate is the output device's, read second.
    EXPECT_EQ(rig.audio->fileSampleRate(), 48000);

    // 0.5 at 0 dB before and after the change in track 1; at -6 dB in track 2, the factor
    // 10^(-6/20) worked out here.
    EXPECT_TRUE(holdsOnly(rig.audio->fileNameForTrack(1), 0.5, 8192));
    EXPECT_TRUE(holdsOnly(rig.audio->fileNameForTrack(2), 0.5 * 0.5011872336272722, 4096));
}

class StopRecorder : public AudioDelegate {
public:
    std::vector<RecordingStop> stops;
    void audioRecordingStopped(const RecordingStop& stop) override { stops.push_back(stop); }
};

// A recording that ends by itself reaches the delegate once, as a reason with the file it
// concerns; the tracks before stay counted.
TEST(Audio, RecordingThatEndsByItselfReachesTheDelegateAsATypedReason) {
    enum class Fault { DeviceGone, FolderGone, NextFileIsAFolder };
    struct Case {
        const char* name;
        Fault fault;
        RecordingStopReason reason;
        bool namesTrack2;
    };
    const Case cases[] = {
        {"device unplugged", Fault::DeviceGone, RecordingStopReason::DeviceGone, false},
        {"export folder removed", Fault::FolderGone, RecordingStopReason::FolderGone, true},
        {"next file cannot be made", Fault::NextFileIsAFolder, RecordingStopReason::FileNotCreated,
         true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        Rig rig({{0x08BB, 0x2900, 1, ""}}, {"USB Audio CODEC"});
        StopRecorder delegate;
        rig.audio->setDelegate(&delegate);
        const std::string folder = dir.file("Exports");
        rig.audio->setExportFolder(folder);
        Quiet quiet;
        rig.audio->detectAudioDevice();
        rig.audio->resetTrackCounter();
        rig.audio->setAutomaticTrackSplit(true);
        ASSERT_TRUE(rig.audio->newTrack());
        feedRecorder(*rig.audioSystem, 4096);
        switch (c.fault) {
        case Fault::DeviceGone:
            rig.audioSystem->lastInputHandler->onStreamEnded(platform::kErrorNotConnected);
            break;
        case Fault::FolderGone:
            std::filesystem::remove_all(folder);
            rig.audio->trackGapDetected();
            break;
        case Fault::NextFileIsAFolder:
            std::filesystem::create_directory(rig.audio->fileNameForTrack(2));
            rig.audio->trackGapDetected();
            break;
        }
        rig.audio->processPendingEvents();
        EXPECT_FALSE(rig.audio->recording());
        EXPECT_EQ(rig.audio->numRecordedTracks(), 1);
        ASSERT_EQ(delegate.stops.size(), 1u);
        EXPECT_EQ(delegate.stops[0].reason, c.reason);
        // A vanished folder may be noticed first by the open track's watcher (its link count
        // drops) or by the split that cannot make track 2: either file is the honest one.
        const std::string& path = delegate.stops[0].path;
        EXPECT_TRUE(path == (c.namesTrack2 ? rig.audio->fileNameForTrack(2) : "") ||
                    (c.fault == Fault::FolderGone && path == rig.audio->fileNameForTrack(1)))
            << path;
        EXPECT_EQ(delegate.stops[0].errorText.empty(), !c.namesTrack2);
    }
}

// The buffered recorder: float stereo at the input's rate (not the output's, as track files
// are), the gain of the moment, a stale file of the same name replaced; a missing folder is
// reported and yields no recorder.
TEST(Audio, NewRecorderWritesFloatStereoAtTheInputRate) {
    test::TempDir dir;
    Rig rig({{0x08BB, 0x2900, 1, ""}}, {"USB Audio CODEC"});
    rig.audio->setExportFolder(dir.file("Exports"));
    Quiet quiet;
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

    EXPECT_FALSE(rig.audio->newRecorder(dir.file("nowhere/x.wav")));
    const std::string errors = quiet.errors();
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

// Without a supported deck any listed input can be chosen: it is recorded from, the user is to
// say turntable or cassette, and a turntable gets the RIAA curve. Detection forgets the choice.
TEST(Audio, AnInputChosenWithoutADeckIsRecordedFromAndAskedAbout) {
    struct Case {
        const char* name;
        platform::AudioObjectID chosen;
        bool taken;
    };
    const Case cases[] = {{"the second input", 11, true}, {"an input not listed", 99, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig({}, {"Built-in Audio Analog Stereo", "Scarlett 2i2 USB"});
        Quiet quiet;
        EXPECT_EQ(rig.audio->detectAudioDevice(), 0);
        const std::vector<InputChoice> inputs = rig.audio->audioInputs();
        ASSERT_EQ(inputs.size(), 2u);
        EXPECT_EQ(inputs[1].id, 11u);
        EXPECT_EQ(inputs[1].name, "Scarlett 2i2 USB");
        EXPECT_EQ(rig.audio->selectOtherInput(c.chosen), c.taken);
        EXPECT_EQ(rig.audio->mightBeTurntableOrTape(), c.taken);
        EXPECT_EQ(rig.monitorsMade, c.taken ? 1 : 0);
        if (!c.taken)
            continue;
        EXPECT_EQ(rig.audio->inputDeviceID(), 11u);
        rig.audio->setRIAAFilter();
        expectPreset(AudioFilter::RIAAPlayback, "setRIAAFilter");
        rig.audio->detectAudioDevice();
        EXPECT_FALSE(rig.audio->mightBeTurntableOrTape());
    }
}

} // namespace
} // namespace waxline
