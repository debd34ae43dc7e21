#include "capture/chain/InputChain.h"
#include "capture/chain/FilterSwap.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <vector>

using Sonra::Audio::Filters::AudioFilter;
using Sonra::Audio::Filters::GapDetector;
using waxline::AudioBufferList;
using waxline::test::sine;

namespace {

struct CountingListener : GapDetector::Listener {
    int events = 0;
    void TrackSilenceStarted() override { ++events; }
    void TrackSilenceEnded() override { ++events; }
    void AlbumEnded() override { ++events; }
};

// Starts every test from empty cells, a pass-through preset and no detector.
class InputChain : public testing::Test {
protected:
    void SetUp() override {
        waxline::ResetVUMax();
        waxline::GetVUMaxL();
        waxline::GetVUMaxR();
        waxline::setFilterType(AudioFilter::NoFilter);
        waxline::gapDetector.store(nullptr);
    }
    void TearDown() override {
        waxline::gapDetector.store(nullptr);
        waxline::setFilterType(AudioFilter::NoFilter);
    }

    static AudioBufferList listOf(std::vector<std::vector<float>>& channels) {
        AudioBufferList list;
        list.mNumberBuffers = static_cast<uint32_t>(channels.size());
        for (size_t c = 0; c < channels.size(); ++c)
            list.mBuffers[c].mData = channels[c].data();
        return list;
    }
};

// The cells hold the raw peaks, taken before the buffer is equalised in place, up to the last
// sample of a long odd-length buffer. Left and right are cleared as they are read, the overall
// cell only by ResetVUMax; a buffer of no frames raises nothing and reaches no detector.
TEST_F(InputChain, PeaksAreMeasuredBeforeEqualisationAndReadAsTheMetersNeed) {
    CountingListener listener;
    GapDetector detector(listener, 44100);
    waxline::setFilterType(AudioFilter::RIAAPlayback);
    std::vector<std::vector<float>> ch = {std::vector<float>(4099, 0.01f),
                                          std::vector<float>(4099, 0.0f)};
    ch[0][4098] = -0.9f;
    ch[1][13] = 0.7f;
    auto list = listOf(ch);
    waxline::InputProcCallback(&list, 4099, 0);
    EXPECT_NE(ch[0][0], 0.01f) << "equalised in place afterwards";
    EXPECT_EQ(waxline::GetVUMaxL(), 0.9f);
    EXPECT_EQ(waxline::GetVUMaxL(), 0.0f);
    EXPECT_EQ(waxline::GetVUMaxR(), 0.7f);
    EXPECT_EQ(waxline::GetVUMaxR(), 0.0f);
    EXPECT_EQ(waxline::GetVUMax(), 0.9f);
    EXPECT_EQ(waxline::GetVUMax(), 0.9f);
    waxline::ResetVUMax();
    EXPECT_EQ(waxline::GetVUMax(), 0.0f);
    EXPECT_EQ(waxline::GetVUMaxL3(), 0.0f);
    EXPECT_EQ(waxline::GetVUMaxR3(), 0.0f);

    waxline::gapDetector.store(&detector);
    ch = {{0.9f}, {0.9f}};
    list = listOf(ch);
    waxline::InputProcCallback(&list, 0, 0);
    EXPECT_EQ(waxline::GetVUMax(), 0.0f);
    EXPECT_EQ(waxline::GetVUMaxL(), 0.0f);
    EXPECT_EQ(waxline::GetVUMaxR(), 0.0f);
    EXPECT_EQ(ch[0][0], 0.9f);
    EXPECT_EQ(detector.framePosition(), 0u);
}

// Lists of one or of three and more buffers are metered on the left and overall cells only:
// neither equalised nor handed to the detector.
TEST_F(InputChain, OnlyStereoIsEqualisedAndDetected) {
    CountingListener listener;
    GapDetector detector(listener, 44100);
    waxline::gapDetector.store(&detector);
    waxline::setFilterType(AudioFilter::ChromeTape);
    for (size_t buffers : {1u, 3u, 4u}) {
        SCOPED_TRACE(buffers);
        std::vector<std::vector<float>> ch(buffers, sine(500, 0.5, 44100, 30000));
        ch[0][7] = 0.95f;
        const auto original = ch;
        auto list = listOf(ch);
        waxline::InputProcCallback(&list, 30000, 0);
        EXPECT_EQ(ch, original);
        EXPECT_EQ(waxline::GetVUMaxL(), 0.95f);
        EXPECT_EQ(waxline::GetVUMaxR(), 0.0f);
        EXPECT_EQ(waxline::GetVUMax(), 0.95f);
        EXPECT_EQ(detector.framePosition(), 0u);
        EXPECT_TRUE(detector.history().empty());
    }
}

// The detector hears exactly the equalised signal: the same as a detector fed with audio that
// was equalised by a separate filter object.
TEST_F(InputChain, DetectorIsFedTheEqualisedBuffers) {
    CountingListener a, b;
    GapDetector chained(a, 44100), reference(b, 44100);
    waxline::gapDetector.store(&chained);
    waxline::setFilterType(AudioFilter::RIAAPlayback);
    AudioFilter separate;
    separate.Set(AudioFilter::RIAAPlayback);

    auto left = sine(480, 0.4, 44100, 3 * 44100), right = sine(530, 0.3, 44100, 3 * 44100);
    auto refL = left, refR = right;
    for (size_t i = 0; i < left.size(); i += 4096) {
        const auto n = static_cast<uint32_t>(std::min<size_t>(4096, left.size() - i));
        std::vector<std::vector<float>> ch = {{left.begin() + i, left.begin() + i + n},
                                              {right.begin() + i, right.begin() + i + n}};
        auto list = listOf(ch);
        waxline::InputProcCallback(&list, n, static_cast<int64_t>(i));
        separate(refL.data() + i, refR.data() + i, n);
        reference(refL.data() + i, refR.data() + i, n);
        EXPECT_TRUE(std::equal(ch[0].begin(), ch[0].end(), refL.begin() + i));
    }
    ASSERT_EQ(chained.history().size(), 6u);
    EXPECT_EQ(chained.history(), reference.history());
}

// Every preset the selectors hand over is the one the next buffer is equalised with: the chain's
// output equals a fresh filter of that type run over the same buffer, with no detector set.
TEST_F(InputChain, EachHandedOverPresetEqualisesTheNextBuffer) {
    for (auto type : {AudioFilter::RIAAPlayback, AudioFilter::ChromeTape, AudioFilter::NoFilter,
                      AudioFilter::BrightSpin, AudioFilter::RIAAPlayback}) {
        SCOPED_TRACE(static_cast<int>(type));
        waxline::setFilterType(type);
        const auto tone = sine(200, 0.5, 44100, 2048);
        std::vector<std::vector<float>> ch = {tone, tone};
        auto list = listOf(ch);
        waxline::InputProcCallback(&list, 2048, 0);
        AudioFilter reference;
        reference.Set(type);
        auto refL = tone, refR = tone;
        reference(refL.data(), refR.data(), 2048);
        EXPECT_EQ(ch[0], refL);
        EXPECT_EQ(ch[1], refR);
        if (type != AudioFilter::NoFilter) {
            EXPECT_NE(ch[0], tone);
        }
    }
}

} // namespace
