#include "capture/Audio.h"
#include "platform/virtual/VirtualAudioSystem.h"
#include "support/CoreApplication.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <thread>

namespace waxline {
namespace {

using Frames = std::vector<float>; // interleaved stereo

// The controller on the virtual devices, its export folder holding a side whose track files
// have the given lengths. Side frame k carries a value of its own on each channel, never zero,
// so silence and the excerpt tell apart in what the output heard.
struct Rig {
    test::CoreApplication app;
    test::TempDir dir;
    std::string heard = dir.file("heard.wav");
    platform::Platform platform;
    platform::VirtualAudioSystem* system = nullptr;
    std::unique_ptr<Audio> audio;
    Frames side; // the track files joined, as read back from them

    Rig(const std::vector<int>& trackFrames, const std::string& setup = "speed=step") {
        platform = platform::openPlatform(setup + ",output=" + heard);
        system = static_cast<platform::VirtualAudioSystem*>(platform.audio.get());
        audio = std::make_unique<Audio>(platform);
        audio->setExportFolder(dir.path());
        int64_t k = 0;
        for (size_t t = 0; t < trackFrames.size(); ++t) {
            std::vector<float> left, right;
            for (int i = 0; i < trackFrames[t]; ++i, ++k) {
                left.push_back(static_cast<float>(k % 3000 + 10) / 4096);
                right.push_back(-static_cast<float>((k * 7) % 3000 + 10) / 4096);
            }
            const std::string path = audio->fileNameForTrack(static_cast<int>(t) + 1);
            EXPECT_TRUE(test::writeStereoWav(path, left, right));
            const test::WavContents wav = test::readStereoWav(path);
            side.insert(side.end(), wav.samples.begin(), wav.samples.end());
        }
        audio->adoptRecordedTracks(static_cast<int>(trackFrames.size()));
    }

    // Side frames [first, end) as the track files hold them.
    Frames sideFrames(int64_t first, int64_t end) const {
        return Frames(side.begin() + 2 * first, side.begin() + 2 * end);
    }

    // Closes the devices and returns what the output heard from its first sound to its last.
    Frames heardSound() {
        audio.reset();
        platform.audio.reset();
        const test::WavContents wav = test::readStereoWav(heard);
        EXPECT_EQ(wav.error, "");
        size_t first = 0, end = 0;
        for (size_t i = 0; i < wav.frames(); ++i)
            if (wav.samples[2 * i] != 0 || wav.samples[2 * i + 1] != 0) {
                if (end == 0)
                    first = i;
                end = i + 1;
            }
        return Frames(wav.samples.begin() + 2 * first, wav.samples.begin() + 2 * end);
    }
};

// A quarter of a second of silence follows the excerpt before the stream is closed.
constexpr int64_t kTail = 11025;

TEST(ExcerptPlayer, TheOutputHearsExactlyTheStretchAskedForThenTheStreamCloses) {
    struct Case {
        const char* name;
        std::vector<int> tracks;
        int64_t first, frames;
        int64_t expectFirst, expectEnd; // side frames heard
        const char* setup;
    };
    const Case cases[] = {
        {"across a track boundary", {3000, 4000}, 2500, 1200, 2500, 3700, "speed=step"},
        {"over a whole middle track", {1000, 500, 1500}, 800, 1000, 800, 1800, "speed=step"},
        {"starting before the side", {3000, 4000}, -300, 1000, 0, 700, "speed=step"},
        {"running past its end", {3000, 4000}, 6500, 2000, 6500, 7000, "speed=step"},
        {"paced by the audio thread", {3000, 4000}, 2900, 600, 2900, 3500, "speed=max"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig(c.tracks, c.setup);
        ASSERT_TRUE(rig.audio->playExcerpt(c.first, c.frames));
        const int64_t played = c.expectEnd - c.expectFirst;
        if (std::string(c.setup) == "speed=step") {
            rig.system->step(played + kTail - 512);
            rig.audio->processPendingEvents();
            EXPECT_TRUE(rig.audio->excerptPlaying()) << "closed before the silence after it";
            rig.system->step(1024);
        } else {
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
            while (std::chrono::steady_clock::now() < deadline &&
                   rig.system->outputFramesConsumed() < played + kTail)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        rig.audio->processPendingEvents();
        EXPECT_FALSE(rig.audio->excerptPlaying());
        EXPECT_EQ(rig.heardSound(), rig.sideFrames(c.expectFirst, c.expectEnd));
    }
}

// Track 2 spoiled after the recording: cut short to a broken header, or rewritten in mono.
enum class Spoil { None, Unreadable, Mono };

void spoil(const std::string& path, Spoil how) {
    if (how == Spoil::Unreadable) {
        std::filesystem::resize_file(path, 20);
    } else if (how == Spoil::Mono) {
        ASSERT_TRUE(test::writeWav(path, test::sine(440, 0.5, 44100, 4000), 1));
    }
}

TEST(ExcerptPlayer, NothingToPlayIsRefusedAndPlaysNothing) {
    struct Case {
        const char* name;
        int counted; // tracks the controller counts; two files are on disk
        Spoil track2;
        int64_t first, frames;
    };
    const Case cases[] = {
        {"past the side's end", 2, Spoil::None, 7000, 100},
        {"before its start", 2, Spoil::None, -500, 500},
        {"no frames", 2, Spoil::None, 100, 0},
        {"no recording", 0, Spoil::None, 0, 1000},
        {"a counted track is missing", 3, Spoil::None, 0, 1000},
        {"a track unreadable", 2, Spoil::Unreadable, 0, 1000},
        {"a track in mono", 2, Spoil::Mono, 0, 1000},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig({3000, 4000});
        spoil(rig.audio->fileNameForTrack(2), c.track2);
        rig.audio->adoptRecordedTracks(c.counted);
        EXPECT_FALSE(rig.audio->playExcerpt(c.first, c.frames));
        EXPECT_FALSE(rig.audio->excerptPlaying());
        rig.system->step(4096);
        EXPECT_TRUE(rig.heardSound().empty());
    }
}

// A second excerpt takes over where the first was; stopping leaves silence at once.
TEST(ExcerptPlayer, ASecondCallReplacesTheFirstAndStopStops) {
    for (bool stop : {false, true}) {
        SCOPED_TRACE(stop ? "stop" : "replace");
        Rig rig({3000, 4000});
        ASSERT_TRUE(rig.audio->playExcerpt(100, 2000));
        rig.system->step(1024);
        if (stop) {
            rig.audio->stopExcerpt();
            EXPECT_FALSE(rig.audio->excerptPlaying());
        } else {
            ASSERT_TRUE(rig.audio->playExcerpt(5000, 1500));
        }
        rig.system->step(1500 + kTail + 1024);
        Frames expected = rig.sideFrames(100, 1124);
        if (!stop) {
            const Frames second = rig.sideFrames(5000, 6500);
            expected.insert(expected.end(), second.begin(), second.end());
        }
        EXPECT_EQ(rig.heardSound(), expected);
    }
}

TEST(ExcerptPlayer, RefusedWhileRecordingOrMonitoringAndEitherStopsIt) {
    for (bool record : {false, true}) {
        SCOPED_TRACE(record ? "recording" : "monitoring");
        Rig rig({3000, 4000});
        testing::internal::CaptureStderr();
        rig.audio->selectInput(rig.system->deckId());
        ASSERT_TRUE(rig.audio->playExcerpt(0, 3000));
        if (record)
            ASSERT_TRUE(rig.audio->newTrack());
        else
            rig.audio->startPlayThru();
        EXPECT_FALSE(rig.audio->excerptPlaying());
        EXPECT_FALSE(rig.audio->playExcerpt(0, 3000));
        EXPECT_FALSE(rig.audio->excerptPlaying());
        if (record) {
            rig.audio->stopRecording();
            rig.audio->adoptRecordedTracks(2);
        } else {
            rig.audio->stopPlayThru();
        }
        EXPECT_TRUE(rig.audio->playExcerpt(0, 3000));
        testing::internal::GetCapturedStderr();
    }
}

// Track files at 44.1 kHz on an output at 48 kHz: the excerpt is converted, so it lasts as long
// and its tone keeps its pitch and level.
TEST(ExcerptPlayer, AnOutputAtAnotherRateHearsTheExcerptConverted) {
    Rig rig({}, "speed=step,outrate=48000");
    const std::vector<float> tone = test::sine(1000, 0.5, 44100, 44100, M_PI / 2);
    ASSERT_TRUE(test::writeStereoWav(rig.audio->fileNameForTrack(1), tone, tone));
    rig.audio->adoptRecordedTracks(1);
    ASSERT_TRUE(rig.audio->playExcerpt(0, 22050));
    rig.system->step(22050 + kTail + 2048);
    const Frames heard = rig.heardSound();
    EXPECT_NEAR(static_cast<double>(heard.size() / 2), 24000, 8);
    ASSERT_GE(heard.size(), 2u * 24000 - 16);
    std::vector<float> left;
    for (size_t i = 0; i < heard.size(); i += 2)
        left.push_back(heard[i]);
    // 100 periods of 48 frames from the middle.
    const std::vector<float> middle(left.begin() + 9600, left.begin() + 14400);
    EXPECT_NEAR(test::toDb(test::toneAmplitude(middle, 1000, 48000) / 0.5), 0, 0.1);
}

} // namespace
} // namespace waxline
