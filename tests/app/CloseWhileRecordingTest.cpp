#include "app/AppDelegate.h"
#include "capture/Audio.h"
#include "capture/recorder/ExportFolderLock.h"
#include "capture/recorder/TrackFiles.h"
#include "exporting/TrackFileCheck.h"
#include "support/FakeAlerts.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"
#include "ui/window/CustomWindow.h"

#include <QTest>

#include <gtest/gtest.h>

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

std::string contentsOf(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(CloseWhileRecording, TrackFilesAreCompleteUpToTheCloseBeforeTheFolderIsEmptied) {
    waxline::test::TempDir dir;
    const std::string exports = dir.file("Exports");
    const std::string kept = dir.file("Kept");
    fs::create_directories(kept);
    const size_t sideFrames = size_t(120) * kRate;
    const std::vector<float> left = noise(sideFrames, 1), right = noise(sideFrames, 2);
    const std::string side = dir.file("side.wav");
    ASSERT_TRUE(waxline::test::writeStereoWav(side, left, right));

    ::setenv("WAXLINE_EXPORT_DIR", exports.c_str(), 1);
    waxline::platform::Platform platform = waxline::platform::openPlatform(
        "usb=0d8c:0121,name=USB PnP Audio Device,file=" + side + ",speed=20");
    waxline::Audio audio(platform);
    ::unsetenv("WAXLINE_EXPORT_DIR");
    waxline::test::FakeAlerts alerts;
    waxline::ui::CustomWindow window;
    waxline::app::AppDelegate controller(audio, window, alerts, dir.file("Music"));
    controller.awakeFromNib();
    window.show();

    controller.doNextButton1(nullptr);
    controller.doNextButtonSelectDevice(nullptr);
    ASSERT_EQ(controller.tabs().selectedPanel(), 2u);
    audio.setNoFilter(); // the files then hold the deck's samples as they came
    controller.doRecordButton(nullptr, false, false);
    ASSERT_EQ(controller.tabs().selectedPanel(), 3u);

    // Second names for the files: they keep whatever is written into them after the folder's
    // entries go. The count file stands as a recording in its first track leaves it.
    const std::string track = audio.fileNameForTrack(1);
    const std::string countFile = waxline::trackCountPath(exports);
    std::ofstream(countFile) << "0\n";
    fs::create_hard_link(track, kept + "/track.wav");
    fs::create_hard_link(countFile, kept + "/count");
    QTest::qWait(1500);

    alerts.answers = {true};
    controller.doCloseButton(nullptr);
    ASSERT_EQ(alerts.shown.size(), 1u);
    EXPECT_EQ(alerts.shown[0].title, "IDS_CANCEL_RECORDING");
    EXPECT_FALSE(window.isVisible());

    // Emptied, all but the lock file; the count was left final before that, in the same file
    // (written after the emptying it would be a new file still in the folder).
    std::vector<std::string> leftOver;
    for (const auto& entry : fs::directory_iterator(exports))
        if (entry.path().filename() != waxline::ExportFolderLock::lockFileName())
            leftOver.push_back(entry.path().filename().string());
    EXPECT_TRUE(leftOver.empty()) << leftOver.front();
    EXPECT_EQ(contentsOf(kept + "/count"), "1\nfinished\n");

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
