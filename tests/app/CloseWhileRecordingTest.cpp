#include "app/AppRig.h"
#include "exportfolder/ExportFolder.h"
#include "exporting/TrackFileCheck.h"
#include "support/MediaFiles.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

// The confirmed close while the real engine records from the virtual deck: the recording is
// stopped cleanly, its files complete up to the close, before the export folder is emptied.
namespace {

namespace fs = std::filesystem;

constexpr int kRate = 44100;

// Noise that no stretch of repeats, so the end of a track shows where in the side it was.
std::vector<float> noise(size_t frames, uint32_t seed) {
    std::vector<float> x(frames);
    for (float& v : x) {
        seed = seed * 1664525u + 1013904223u;
        v = 0.3f * (float(seed >> 8) / float(1u << 24) * 2.0f - 1.0f);
    }
    return x;
}

// Where `tail` (interleaved stereo) lies in the side, to within two 16-bit steps; -1 if nowhere.
long findInSide(const std::vector<float>& left, const std::vector<float>& right, const float* tail,
                size_t frames) {
    const float tolerance = 2.0f / 32768;
    for (size_t k = 0; k + frames <= left.size(); ++k) {
        size_t i = 0;
        while (i < frames && std::fabs(left[k + i] - tail[2 * i]) <= tolerance &&
               std::fabs(right[k + i] - tail[2 * i + 1]) <= tolerance)
            ++i;
        if (i == frames)
            return long(k);
    }
    return -1;
}

TEST(CloseWhileRecording, TrackFilesAreCompleteUpToTheCloseBeforeTheFolderIsEmptied) {
    waxline::test::DeckApp app;
    const std::string kept = app.dir.file("Kept");
    fs::create_directories(kept);
    const size_t sideFrames = size_t(120) * kRate;
    const std::vector<float> left = noise(sideFrames, 1), right = noise(sideFrames, 2);
    ASSERT_TRUE(waxline::test::writeStereoWav(app.dir.file("side.wav"), left, right));
    app.open(app.dir.file("side.wav"));
    app.controller->doNextButton1(nullptr);
    app.controller->doNextButtonSelectDevice(nullptr);
    ASSERT_EQ(app.shown(), 2u);
    app.audio->setNoFilter(); // the files then hold the deck's samples as they came
    app.controller->doRecordButton(nullptr, false, false);
    ASSERT_EQ(app.shown(), 3u);

    // Second names for the files: they keep whatever is written into them after the folder's
    // entries go. The count file stands as a recording in its first track leaves it.
    const std::string track = app.audio->fileNameForTrack(1);
    const std::string countFile = waxline::trackCountPath(app.exports);
    std::ofstream(countFile) << "0\n";
    fs::create_hard_link(track, kept + "/track.wav");
    fs::create_hard_link(countFile, kept + "/count");
    QTest::qWait(1500);

    app.alerts.choices = {QStringLiteral("IDS_QUIT_DISCARD")};
    app.controller->doCloseButton(nullptr);
    ASSERT_EQ(app.alerts.shown.size(), 1u);
    EXPECT_EQ(app.alerts.shown[0].title, "IDS_CLOSE_RECORDING");
    EXPECT_FALSE(app.window.isVisible());

    // Emptied, all but the lock file; the count was left final before that, in the same file
    // (written after the emptying it would be a new file still in the folder).
    const auto leftOver = waxline::test::entriesBesidesLock(app.exports);
    EXPECT_TRUE(leftOver.empty()) << leftOver.front();
    std::stringstream count;
    count << std::ifstream(kept + "/count").rdbuf();
    EXPECT_EQ(count.str(), "1\nfinished\n");

    // A valid WAV whose header says all it holds, ending in the deck's audio.
    const auto layout = waxline::exporting::measureTrackFile(kept + "/track.wav");
    ASSERT_TRUE(layout);
    EXPECT_TRUE(layout->headerRight());
    const auto wav = waxline::test::readStereoWav(kept + "/track.wav");
    ASSERT_TRUE(wav.error.empty()) << wav.error;
    ASSERT_GT(wav.frames(), size_t(5 * kRate));
    EXPECT_EQ(wav.frames(), layout->frames);
    const size_t tail = 2048;
    const long at = findInSide(left, right, wav.samples.data() + 2 * (wav.frames() - tail), tail);
    EXPECT_GE(at, 0) << "the last frames are not the deck's audio";
}

} // namespace
