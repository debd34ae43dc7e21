#include "platform/virtual/VirtualAudioSystem.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

using namespace waxline::platform;
using waxline::test::readStereoWav;
using waxline::test::TempDir;
using waxline::test::WavContents;

namespace {

// Frames as channels of floats.
using Frames = std::vector<std::vector<float>>;

// A tone with noise on it, so that no two neighbouring frames are alike.
void writeWav(const std::string& path, int rate, int channels, int frames, bool floatSamples) {
    std::vector<float> data;
    uint32_t noise = 12345;
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c) {
            noise = noise * 1664525u + 1013904223u;
            const double tone = 0.5 * std::sin(2 * M_PI * (440.0 + 110 * c) * i / rate);
            data.push_back(static_cast<float>(tone + 0.3 * ((noise >> 8) / 16777216.0 - 0.5)));
        }
    ASSERT_TRUE(waxline::test::writeWav(path, data, channels, rate, floatSamples));
}

// The file's samples, one vector per channel.
Frames channelsOf(const WavContents& wav) {
    Frames frames;
    for (int c = 0; c < wav.channels; ++c)
        frames.push_back(wav.channel(c));
    return frames;
}

struct Recorder : InputHandler {
    std::mutex mutex;
    Frames frames{Frames(2)};
    std::vector<int64_t> starts;
    uint32_t largestBuffer = 0;
    int64_t expectedNext = -1;
    int gaps = 0;
    uint32_t overflowFrames = 0;
    int ended = 0;
    Status endedWhy = kNoError;

    void onInput(float* const* channels, uint32_t channelCount, uint32_t count, int64_t sampleTime,
                 uint64_t) override {
        std::lock_guard lock(mutex);
        frames.resize(channelCount);
        for (uint32_t c = 0; c < channelCount; ++c)
            frames[c].insert(frames[c].end(), channels[c], channels[c] + count);
        if (expectedNext >= 0 && sampleTime != expectedNext)
            ++gaps;
        if (starts.empty())
            starts.push_back(sampleTime);
        expectedNext = sampleTime + count;
        largestBuffer = std::max(largestBuffer, count);
    }
    void onOverflow(uint32_t lost) override { overflowFrames += lost; }
    void onStreamEnded(Status why) override {
        ++ended;
        endedWhy = why;
    }
    size_t size() {
        std::lock_guard lock(mutex);
        return frames[0].size();
    }
};

class VirtualAudioSystemTest : public ::testing::Test {
protected:
    TempDir dir;
    std::string wav = dir.file("side.wav");
    static constexpr int kRate = 44100;
    static constexpr int kFrames = 30011; // not a multiple of any buffer size

    void SetUp() override { writeWav(wav, kRate, 2, kFrames, false); }

    std::unique_ptr<VirtualAudioSystem> make(const std::string& extra) {
        return std::make_unique<VirtualAudioSystem>(parseVirtualSetup("file=" + wav + "," + extra));
    }
};

// The deck's frames at sample times 0.. as the file holds them, then digital zero.
void expectFileThenSilence(const Frames& got, const Frames& file, int64_t firstTime = 0) {
    ASSERT_EQ(got.size(), file.size());
    for (size_t c = 0; c < got.size(); ++c) {
        size_t mismatches = 0;
        for (size_t i = 0; i < got[c].size(); ++i) {
            const size_t t = i + static_cast<size_t>(firstTime);
            const float want = t < file[c].size() ? file[c][t] : 0.0f;
            if (got[c][i] != want && mismatches++ < 3)
                ADD_FAILURE() << "channel " << c << " time " << t << ": " << got[c][i]
                              << " instead of " << want;
        }
        EXPECT_EQ(mismatches, 0u) << "channel " << c;
    }
}

TEST_F(VirtualAudioSystemTest, ListsTheDeckAndTheOutput) {
    auto audio = make("name=USB Audio CODEC ,speed=step,clock=1.001,outrate=48000,extra=Mic");
    const auto inputs = audio->devices(Direction::Input);
    ASSERT_EQ(inputs.size(), 2u);
    EXPECT_EQ(inputs[0].name, "USB Audio CODEC ");
    EXPECT_EQ(inputs[0].channels, 2u);
    EXPECT_DOUBLE_EQ(inputs[0].nominalSampleRate, kRate);
    EXPECT_NEAR(inputs[0].actualSampleRate, kRate * 1.001, 1e-6);
    EXPECT_EQ(inputs[1].name, "Mic");
    EXPECT_NE(inputs[0].id, inputs[1].id);
    const auto outputs = audio->devices(Direction::Output);
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].channels, 2u);
    EXPECT_DOUBLE_EQ(outputs[0].nominalSampleRate, 48000);
    EXPECT_EQ(audio->defaultDevice(Direction::Input), inputs[0].id);
    EXPECT_EQ(audio->defaultDevice(Direction::Output), outputs[0].id);

    EXPECT_EQ(audio->setDefaultInput(inputs[1].id), kNoError);
    EXPECT_EQ(audio->defaultDevice(Direction::Input), inputs[1].id);
    EXPECT_EQ(audio->setDefaultInput(9999), kErrorUnknownDevice);
    EXPECT_EQ(audio->defaultDevice(Direction::Input), inputs[1].id);
    EXPECT_FALSE(audio->device(9999, Direction::Input).has_value());
    EXPECT_FALSE(audio->device(inputs[0].id, Direction::Output).has_value());
}

// Streams started together get the same frames whatever their buffer size; one started later
// joins the shared timeline at the frame then due, and one stopped gets nothing more.
TEST_F(VirtualAudioSystemTest, SteppedStreamsGetTheFileFrameForFrameThenSilence) {
    const Frames file = channelsOf(readStereoWav(wav));
    auto audio = make("speed=step");
    Recorder small, large, late;
    Status status = kErrorUnknownDevice;
    auto a = audio->openInput(audio->deckId(), {}, 100, small, status);
    ASSERT_EQ(status, kNoError);
    auto b = audio->openInput(kDefaultDevice, {}, 4096, large, status);
    ASSERT_EQ(status, kNoError);
    auto c = audio->openInput(kDefaultDevice, {}, 333, late, status);
    ASSERT_EQ(a->start(), kNoError);
    ASSERT_EQ(b->start(), kNoError);
    EXPECT_EQ(a->format().channels, 2u);
    EXPECT_DOUBLE_EQ(a->format().sampleRate, kRate);

    const uint64_t steps[] = {1, 7, 1234, 4096, 1, 30000, 5000};
    int64_t stepped = 0;
    for (size_t i = 0; i < std::size(steps); ++i) {
        if (i == 3) {
            ASSERT_EQ(c->start(), kNoError); // at frame 1242
        }
        if (i == 6)
            c->stop(); // 5000 frames before the end
        audio->step(steps[i]);
        stepped += static_cast<int64_t>(steps[i]);
    }
    EXPECT_EQ(audio->framesDelivered(), stepped);
    ASSERT_EQ(small.size(), static_cast<size_t>(stepped));
    ASSERT_EQ(large.size(), static_cast<size_t>(stepped));
    EXPECT_EQ(small.starts.front(), 0);
    EXPECT_EQ(small.gaps + large.gaps + late.gaps, 0);
    EXPECT_LE(small.largestBuffer, 100u);
    EXPECT_LE(large.largestBuffer, 4096u);
    expectFileThenSilence(small.frames, file);
    EXPECT_EQ(small.frames, large.frames);
    EXPECT_EQ(late.starts.front(), 1242);
    EXPECT_EQ(late.size(), static_cast<size_t>(stepped - 1242 - 5000));
    expectFileThenSilence(late.frames, file, 1242);
}

TEST_F(VirtualAudioSystemTest, MonoFilesFeedEveryChannelAndOverflowSkipsFrames) {
    const std::string mono = dir.file("mono.wav");
    writeWav(mono, 22050, 1, 5000, true);
    const Frames file = channelsOf(readStereoWav(mono));
    VirtualAudioSystem audio(parseVirtualSetup("file=" + mono + ",speed=step"));
    Recorder rec;
    Status status;
    auto stream = audio.openInput(kDefaultDevice, {}, 512, rec, status);
    stream->start();
    EXPECT_DOUBLE_EQ(stream->format().sampleRate, 22050);
    audio.step(1000);
    audio.simulateOverflow(300);
    audio.step(1000);
    EXPECT_EQ(rec.overflowFrames, 300u);
    EXPECT_EQ(stream->xrunCount(), 1u);
    EXPECT_EQ(rec.gaps, 1);
    EXPECT_EQ(audio.framesDelivered(), 2300);
    ASSERT_EQ(rec.size(), 2000u);
    for (size_t i = 0; i < 2000; ++i) {
        const size_t t = i < 1000 ? i : i + 300;
        ASSERT_EQ(rec.frames[0][i], file[0][t]) << i;
        ASSERT_EQ(rec.frames[1][i], file[0][t]) << i;
    }
}

TEST_F(VirtualAudioSystemTest, PacedStreamsGetTheFileThenSilenceAndMayOutliveTheSystem) {
    const Frames file = channelsOf(readStereoWav(wav));
    auto audio = make("speed=20,buffer=256");
    Recorder one, two;
    Status status;
    auto a = audio->openInput(kDefaultDevice, {}, 128, one, status);
    auto b = audio->openInput(kDefaultDevice, {}, 1000, two, status);
    // Started under the lock of neither: both join before the first frame only if started
    // together, so compare from the later stream's first sample time.
    a->start();
    b->start();
    const int64_t want = kFrames + kRate / 2;
    ASSERT_TRUE(audio->waitForFrames(want, std::chrono::seconds(60)));
    EXPECT_THROW(audio->step(10), std::logic_error); // stepping is for stepped systems only
    b->stop();
    // A stream may outlive the system, even one still running when the system goes.
    audio.reset();
    EXPECT_FALSE(a->isRunning());
    EXPECT_EQ(a->start(), kErrorUnknownDevice);
    EXPECT_EQ(one.gaps + two.gaps, 0);
    EXPECT_GE(static_cast<int64_t>(one.size()), want - one.starts.front());
    EXPECT_LE(one.largestBuffer, 128u);
    expectFileThenSilence(one.frames, file, one.starts.front());
    expectFileThenSilence(two.frames, file, two.starts.front());
    const int64_t skew = two.starts.front() - one.starts.front();
    ASSERT_GE(skew, 0);
    const size_t common = std::min(one.size() - skew, two.size());
    for (size_t c = 0; c < 2; ++c)
        EXPECT_TRUE(std::equal(two.frames[c].begin(), two.frames[c].begin() + common,
                               one.frames[c].begin() + skew));
}

TEST_F(VirtualAudioSystemTest, RemovingTheDeckEndsItsStreamsOnceAndFiresListeners) {
    auto audio = make("speed=step,extra=Other");
    Recorder deckRec, otherRec;
    Status status;
    const AudioObjectID deck = audio->deckId();
    const AudioObjectID other = audio->devices(Direction::Input)[1].id;
    auto a = audio->openInput(deck, {}, 512, deckRec, status);
    auto b = audio->openInput(other, {}, 512, otherRec, status);
    a->start();
    b->start();
    int listChanges = 0, formatChanges = 0;
    const auto listToken = audio->onDeviceListChanged([&] { ++listChanges; });
    const auto formatToken = audio->onStreamFormatChanged(deck, [&] { ++formatChanges; });
    audio->step(600);

    audio->removeInput();
    audio->removeInput(); // nothing more to remove
    EXPECT_EQ(deckRec.ended, 1);
    EXPECT_EQ(deckRec.endedWhy, kErrorUnknownDevice);
    EXPECT_EQ(otherRec.ended, 0);
    EXPECT_EQ(listChanges, 1);
    EXPECT_FALSE(a->isRunning());
    EXPECT_EQ(a->start(), kErrorUnknownDevice);
    EXPECT_EQ(audio->deckId(), kNoDevice);
    EXPECT_EQ(audio->defaultDevice(Direction::Input), other);
    Recorder late;
    EXPECT_EQ(audio->openInput(deck, {}, 512, late, status), nullptr);
    EXPECT_EQ(status, kErrorUnknownDevice);

    audio->step(600);
    EXPECT_EQ(deckRec.size(), 600u);
    EXPECT_EQ(otherRec.size(), 1200u);
    for (float s : otherRec.frames[0])
        ASSERT_EQ(s, 0.0f); // extra inputs are silent

    audio->addInput();
    EXPECT_EQ(listChanges, 2);
    EXPECT_NE(audio->deckId(), kNoDevice);
    EXPECT_NE(audio->deckId(), deck);
    EXPECT_EQ(audio->devices(Direction::Input).size(), 2u);

    audio->notifyFormatChanged(); // the new deck: the old deck's listener stays silent
    EXPECT_EQ(formatChanges, 0);
    audio->onStreamFormatChanged(audio->deckId(), [&] { ++formatChanges; });
    audio->notifyFormatChanged();
    EXPECT_EQ(formatChanges, 1);

    audio->removeListener(listToken);
    audio->removeListener(formatToken);
    audio->removeOutput();
    EXPECT_EQ(listChanges, 2);
    EXPECT_TRUE(audio->devices(Direction::Output).empty());
}

struct RampPlayer : OutputHandler {
    int ended = 0;
    uint32_t largest = 0;
    void onOutput(float* const* channels, uint32_t channelCount, uint32_t frames,
                  int64_t sampleTime, uint64_t) override {
        largest = std::max(largest, frames);
        for (uint32_t c = 0; c < channelCount; ++c)
            for (uint32_t i = 0; i < frames; ++i)
                channels[c][i] = value(sampleTime + i, c);
    }
    void onStreamEnded(Status) override { ++ended; }
    static float value(int64_t t, uint32_t c) {
        return static_cast<float>((t % 1000) / 1000.0 - 0.5) * (c == 0 ? 1.0f : -0.5f);
    }
};

TEST_F(VirtualAudioSystemTest, TheOutputConsumesAtItsOwnClockAndWritesWhatItHears) {
    const std::string heard = dir.file("heard.wav");
    {
        auto audio = make("speed=step,clock=1.001,outrate=48000,output=" + heard);
        RampPlayer player;
        Status status;
        auto out = audio->openOutput(kDefaultDevice, StreamFormat{48000, 2}, 300, player, status);
        ASSERT_EQ(status, kNoError);
        EXPECT_DOUBLE_EQ(out->format().sampleRate, 48000);
        audio->step(1000); // the output hears silence before its stream starts
        out->start();
        audio->step(kRate * 10 - 1000);
        // Ten seconds of deck time at a clock 1.001 times fast are 10 / 1.001 s of output time.
        const auto want = static_cast<int64_t>(std::floor(10.0 / 1.001 * 48000));
        EXPECT_EQ(audio->outputFramesConsumed(), want);
        EXPECT_LE(player.largest, 300u);
        audio->removeOutput();
        EXPECT_EQ(player.ended, 1);
    }
    const WavContents heardWav = readStereoWav(heard);
    const int rate = heardWav.rate;
    const Frames got = channelsOf(heardWav);
    EXPECT_EQ(rate, 48000);
    ASSERT_EQ(got.size(), 2u);
    ASSERT_EQ(got[0].size(), static_cast<size_t>(std::floor(10.0 / 1.001 * 48000)));
    const auto startedAt = static_cast<int64_t>(std::floor(1000.0 / 1.001 / kRate * 48000));
    // The stream started at the output period boundary at or after that time.
    int64_t firstSound = -1;
    for (size_t i = 0; i < got[0].size() && firstSound < 0; ++i)
        if (got[0][i] != 0.0f)
            firstSound = static_cast<int64_t>(i);
    ASSERT_GE(firstSound, startedAt);
    ASSERT_LE(firstSound, startedAt + 512);
    size_t mismatches = 0;
    for (size_t i = static_cast<size_t>(firstSound); i < got[0].size(); ++i)
        for (uint32_t c = 0; c < 2; ++c)
            mismatches += got[c][i] != RampPlayer::value(static_cast<int64_t>(i), c);
    EXPECT_EQ(mismatches, 0u);
}

// Rising zero crossings per second of `samples` at `rate`: the frequency of a clean tone.
double toneFrequency(const std::vector<float>& samples, size_t from, size_t count, double rate) {
    size_t rising = 0;
    for (size_t i = from + 1; i < from + count; ++i)
        rising += samples[i - 1] < 0 && samples[i] >= 0;
    return static_cast<double>(rising) * rate / static_cast<double>(count);
}

// A stream asked for 48 kHz from a 44.1 kHz deck gets 48 kHz, as a real server converts: as
// many frames as the time covered holds, continuous sample times, and the tone at its pitch.
TEST_F(VirtualAudioSystemTest, AnInputAskedForAnotherRateIsResampled) {
    const std::string tone = dir.file("tone.wav");
    ASSERT_TRUE(waxline::test::writeToneWav(tone, 2.0, 0.5, 1000));
    VirtualAudioSystem audio(parseVirtualSetup("file=" + tone + ",speed=step"));
    for (const double rate : {48000.0, 32000.0}) {
        SCOPED_TRACE(rate);
        Recorder rec;
        Status status = kErrorOpenFailed;
        auto stream = audio.openInput(audio.deckId(), {rate, 2}, 700, rec, status);
        ASSERT_EQ(status, kNoError);
        EXPECT_EQ(stream->format().sampleRate, rate);
        EXPECT_EQ(stream->format().channels, 2u);
        ASSERT_EQ(stream->start(), kNoError);
        audio.step(kRate); // one second of the deck
        stream->stop();
        std::lock_guard lock(rec.mutex);
        EXPECT_NEAR(static_cast<double>(rec.frames[0].size()), rate, 64);
        EXPECT_EQ(rec.gaps, 0);
        EXPECT_LE(rec.largestBuffer, 700u);
        const auto span = static_cast<size_t>(rate / 2);
        EXPECT_NEAR(toneFrequency(rec.frames[0], span / 4, span, rate), 1000.0, 4.0);
        EXPECT_NEAR(toneFrequency(rec.frames[1], span / 4, span, rate), 1500.0, 4.0);
    }
}

} // namespace
