#include "filters/GapDetector.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using Sonra::Audio::Filters::GapDetector;
using waxline::test::sine;

namespace {

constexpr unsigned kRate = 44100;
constexpr size_t kFrame = 22050; // half a second at 44.1 kHz

// Records every event with the number of frames judged when it fired.
struct Recorder : GapDetector::Listener {
    const GapDetector* detector = nullptr;
    std::vector<std::pair<std::string, size_t>> events;
    size_t at() const { return detector ? detector->history().size() : 0; }
    void TrackSilenceStarted() override { events.emplace_back("started", at()); }
    void TrackSilenceEnded() override { events.emplace_back("ended", at()); }
    void AlbumEnded() override { events.emplace_back("album", at()); }
};

std::vector<std::string> diagnostics;
void collect(const char* line) {
    diagnostics.emplace_back(line);
}

struct Fixture {
    Recorder listener;
    GapDetector detector{listener, kRate};
    Fixture() {
        listener.detector = &detector;
        detector.SetDiagnosticWriter(collect);
        diagnostics.clear();
    }
    // Feeds a mono signal to both channels in buffers of `block` frames.
    bool feed(const std::vector<float>& x, size_t block = 4096) {
        bool last = false;
        for (size_t i = 0; i < x.size(); i += block) {
            const size_t n = std::min(block, x.size() - i);
            last = detector(x.data() + i, x.data() + i, n);
        }
        return last;
    }
};

std::vector<float> silence(double seconds) {
    return std::vector<float>(static_cast<size_t>(seconds * kRate), 0.0f);
}

std::vector<float> tone(double seconds, double frequency = 500, double amplitude = 0.25) {
    return sine(frequency, amplitude, kRate, static_cast<size_t>(seconds * kRate));
}

std::vector<float> concat(std::initializer_list<std::vector<float>> parts) {
    std::vector<float> out;
    for (const auto& p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

TEST(GapDetector, FrameSizeIsHalfASecondRoundedHalfAway) {
    const std::pair<unsigned, int64_t> cases[] = {{44100, 22050}, {48000, 24000}, {88200, 44100},
                                                  {96000, 48000}, {11025, 5513},  {1, 1}};
    for (auto [rate, frame] : cases) {
        Fixture f;
        EXPECT_TRUE(f.detector.isSilent());
        EXPECT_FALSE(f.detector.albumHasEnded());
        f.detector.SetSampleRate(rate);
        EXPECT_EQ(f.detector.frameLength(), frame) << rate;
        EXPECT_EQ(f.detector.rate(), float(rate));
    }
}

TEST(GapDetector, FramesCompleteRegardlessOfBufferCuts) {
    const auto input = concat({tone(12, 500, 0.3), silence(3), tone(11, 480, 0.2)});
    Fixture whole;
    whole.feed(input, input.size());
    ASSERT_EQ(whole.detector.history().size(), input.size() / kFrame);

    for (size_t block : {1u, 7u, 4096u, 22049u}) {
        Fixture cut;
        cut.feed(input, block);
        EXPECT_EQ(cut.detector.history(), whole.detector.history()) << "buffers of " << block;
        EXPECT_EQ(cut.listener.events, whole.listener.events) << "buffers of " << block;
    }
}

TEST(GapDetector, DigitalSilenceEndsTheAlbumOnceAndNeverStartsAGap) {
    Fixture f;
    const auto frame = silence(0.5);
    for (int n = 1; n <= 125; ++n) {
        const bool verdict = f.feed(frame, frame.size());
        EXPECT_EQ(verdict, n >= 121) << "frame " << n; // 60.5 s of silence passes 60
    }
    ASSERT_EQ(f.listener.events.size(), 1u);
    EXPECT_EQ(f.listener.events[0], std::make_pair(std::string("album"), size_t{121}));
    EXPECT_TRUE(diagnostics.empty()) << "the flag was already set: no transition";
}

TEST(GapDetector, ToneThenSilenceEndsAndStartsASilence) {
    Fixture f;
    f.feed(tone(11));
    ASSERT_EQ(f.listener.events.size(), 1u);
    EXPECT_EQ(f.listener.events[0], std::make_pair(std::string("ended"), size_t{21}));
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0], "Audio has transitioned out of silence\n");

    f.feed(silence(2));
    ASSERT_EQ(f.listener.events.size(), 2u);
    EXPECT_EQ(f.listener.events[1], std::make_pair(std::string("started"), size_t{22 + 4}));
    EXPECT_EQ(diagnostics.back(), "Audio has transitioned into silence\n");
}

TEST(GapDetector, DiagnosticLineGoesToStandardErrorByDefault) {
    Recorder listener;
    GapDetector detector(listener, kRate);
    testing::internal::CaptureStderr();
    const auto x = tone(11);
    detector(x.data(), x.data(), x.size());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Audio has transitioned out of silence\n");
}

TEST(GapDetector, ShortBurstInsideALongGapOnlyPausesTheCount) {
    Fixture f;
    f.feed(concat({silence(40), tone(5), silence(40)}));
    ASSERT_FALSE(f.listener.events.empty());
    // 80 silent frames, 10 sounding ones, then 41 more silent frames pass 60 s.
    EXPECT_EQ(f.listener.events.back(), std::make_pair(std::string("album"), size_t{131}));
    for (const auto& e : f.listener.events)
        EXPECT_NE(e.first, "ended");
}

TEST(GapDetector, AfterAGapNoNewGapUntilTenSecondsOfSound) {
    Fixture f;
    f.feed(concat({tone(11), silence(2), tone(6), silence(3)}));
    int gaps = 0;
    for (const auto& e : f.listener.events)
        gaps += e.first == "started";
    EXPECT_EQ(gaps, 1);
}

TEST(GapDetector, QuietMusicCountsAsSilenceUntilSomethingIsClearlyLoud) {
    Fixture f;
    // A faint tone never reaches an AAM of 500: everything is silence, the album ends.
    f.feed(tone(61, 500, 0.002));
    EXPECT_LT(f.detector.loudestFrame(), 500);
    ASSERT_EQ(f.listener.events.size(), 1u);
    EXPECT_EQ(f.listener.events[0].first, "album");
}

TEST(GapDetector, SamplesBeyondFullScaleWrapInSixteenBits) {
    Fixture f;
    const float big = 1.5f; // 1.5 * 32767 = 49150.5 -> 49150 -> -16386 as a 16-bit value
    f.detector(&big, &big, 1);
    EXPECT_EQ(f.detector.filter().x1, -16386);
    const float mixed[2] = {0.5f, 0.25f}; // 16383 and 8191 after truncation
    f.detector(&mixed[0], &mixed[1], 1);
    EXPECT_EQ(f.detector.filter().x1, 12287);
    const float odd[2] = {-0.5f, 0.0f}; // -16383, halved toward minus infinity
    f.detector(&odd[0], &odd[1], 1);
    EXPECT_EQ(f.detector.filter().x1, -8192);
}

TEST(GapDetector, NewRateClearsSilentTimeButKeepsSoundTimeAndHistory) {
    Fixture f;
    f.feed(concat({tone(11), silence(1)}));
    ASSERT_GT(f.detector.silentTime(), 0);
    f.feed(tone(3.2));
    ASSERT_FALSE(f.detector.isSilent());
    const auto position = f.detector.framePosition();
    ASSERT_GT(position, 0u);
    f.detector.SetSampleRate(44100);
    EXPECT_FALSE(f.detector.isSilent()) << "the same rate changes nothing";
    EXPECT_EQ(f.detector.framePosition(), position);
    const float sound = f.detector.soundTime();
    ASSERT_GT(sound, 0);
    const auto history = f.detector.history();
    f.detector.SetSampleRate(48000);
    EXPECT_EQ(f.detector.silentTime(), 0);
    EXPECT_EQ(f.detector.soundTime(), sound);
    EXPECT_EQ(f.detector.history(), history);
    EXPECT_EQ(f.detector.loudestFrame(), 0);
    EXPECT_TRUE(f.detector.isSilent());
}

// After an album end the next side may be started while the run-out still plays: with the
// album count restarted, that side needs 60 s of its own silence (the 121st silent frame) to
// end; without, the run-out's silence ends it at the first frame.
TEST(GapDetector, RestartedAlbumCountIgnoresTheLastSidesRunOut) {
    struct Case {
        const char* name;
        bool restart;
        double silenceBeforeEnd; // seconds of new silence after which the album ends again
    };
    const Case cases[] = {{"reset only", false, 0.5}, {"restarted", true, 60.5}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Fixture f;
        f.feed(concat({tone(11), silence(70)}));
        ASSERT_TRUE(f.detector.albumHasEnded());
        if (c.restart)
            f.detector.RestartAlbumCount();
        f.detector.Reset();
        f.listener.events.clear();
        const size_t before = f.detector.history().size();
        f.feed(silence(61));
        ASSERT_EQ(f.listener.events.size(), 1u);
        EXPECT_EQ(f.listener.events[0].first, "album");
        EXPECT_EQ(f.listener.events[0].second - before, size_t(c.silenceBeforeEnd * 2));
        EXPECT_TRUE(f.detector.isSilent()) << "the gap state is left as Reset sets it";
    }
}

TEST(GapDetector, RestartKeepsTheSoundCountAndLevels) {
    Fixture f;
    f.feed(concat({tone(11), silence(3), tone(4)}));
    const float loudest = f.detector.loudestFrame();
    const float sound = f.detector.soundTime();
    f.detector.RestartAlbumCount();
    f.feed(tone(0.5));
    EXPECT_EQ(f.detector.silentTime(), 0) << "the count restarts at the next frame";
    EXPECT_EQ(f.detector.soundTime(), sound + 0.5f);
    EXPECT_EQ(f.detector.loudestFrame(), loudest);
}

TEST(GapDetector, ZeroRateMakesEverySampleASoundingFrame) {
    Fixture f;
    f.detector.SetSampleRate(0);
    EXPECT_EQ(f.detector.frameLength(), 0);
    const auto x = silence(0.001);
    f.detector(x.data(), x.data(), 21);
    ASSERT_EQ(f.detector.history().size(), 21u);
    EXPECT_TRUE(std::isnan(f.detector.history()[0]));
    ASSERT_EQ(f.listener.events.size(), 1u);
    EXPECT_EQ(f.listener.events[0].first, "ended");
}

// The Q13 band-pass keeps roughly 425 to 575 Hz with a peak gain of 2.
TEST(GapDetector, BandPassAroundFiveHundredHertz) {
    Recorder listener;
    GapDetector detector(listener, kRate);
    auto gainAt = [&](double frequency) {
        double peak = 0;
        for (size_t i = 0; i < kRate; ++i) {
            const long x = std::lround(8000 * std::sin(2 * M_PI * frequency * i / kRate));
            const short y = detector.ApplyFilter(x);
            if (i > kRate / 2)
                peak = std::max(peak, std::fabs(static_cast<double>(y)));
        }
        return peak / 8000;
    };
    EXPECT_NEAR(gainAt(500), 2.0, 0.05);
    EXPECT_NEAR(gainAt(425), 2.0 / std::sqrt(2.0), 0.1);
    EXPECT_NEAR(gainAt(575), 2.0 / std::sqrt(2.0), 0.1);
    EXPECT_LT(gainAt(2000), 0.2);
    EXPECT_LT(gainAt(100), 0.2);
}

TEST(GapDetector, BandPassDesignIsTwoGainInQ13AndWrapsItsWidth) {
    GapDetector::FilterParams p{}, q{};
    GapDetector::SetFilter_BP(&p, 500, 75, 44100);
    EXPECT_EQ(p.frequency, 500.0f);
    EXPECT_EQ(p.b1, 0);
    EXPECT_EQ(p.b2, -p.b0);
    // Worked out to 50 digits apart from the code: C = cot(150 pi / 44100) = 93.5795446144874,
    // D = 2 cos(1000 pi / 44100) = 1.99492730332709, g = 1 / (C + 1) = 0.0105731107511256;
    // 8192 x (2g, -DCg, (C - 1)g) = (173.2298, -16169.6540, 8018.7702), truncated toward zero.
    // As a check on the literals: the poles lie at radius 0.9894 and angle 494 Hz, a band-pass
    // about 150 Hz wide around 500 Hz.
    EXPECT_EQ(p.b0, 173);
    EXPECT_EQ(p.b1, 0);
    EXPECT_EQ(p.b2, -173);
    EXPECT_EQ(p.a1, -16169);
    EXPECT_EQ(p.a2, 8018);

    // 2 x 20000 wraps to -25536 in 16 bits: the same as asking for -12768 directly.
    GapDetector::SetFilter_BP(&p, 500, 20000, 44100);
    GapDetector::SetFilter_BP(&q, 500, -12768, 44100);
    EXPECT_EQ(p.b0, q.b0);
    EXPECT_EQ(p.a1, q.a1);
    EXPECT_EQ(p.a2, q.a2);
}

TEST(GapDetector, LowPassDesignSkipsAnUnchangedCutoff) {
    GapDetector::FilterParams p{};
    p.frequency = -1;
    GapDetector::SetFilter_LP(&p, 1000, 0, 44100);
    EXPECT_EQ(p.frequency, 1000.0f);
    EXPECT_EQ(p.b1, 2 * p.b0);
    EXPECT_EQ(p.b2, p.b0);
    const auto before = p.b0;
    p.b0 = 12345;
    GapDetector::SetFilter_LP(&p, 1000, 0, 44100);
    EXPECT_EQ(p.b0, 12345) << "same cutoff: nothing recomputed";
    GapDetector::SetFilter_LP(&p, 1000.5, 0, 44100);
    EXPECT_NE(p.b0, 12345);
    EXPECT_GT(before, 0);
}

} // namespace
