#include "exporting/EarlyEncoder.h"

#include "exporting/ExportFolders.h"
#include "exporting/ExportPipeline.h"
#include "support/MediaFiles.h"
#include "support/Signals.h"
#include "support/StandInEncoder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <thread>

namespace waxline::exporting {
namespace {

namespace fs = std::filesystem;
using test::shellQuote;

// The MP3 the export's command makes of a WAV, run here by hand as a user would type it.
std::string referenceMp3(const std::string& wav, const std::string& mp3) {
    std::string output;
    EXPECT_EQ(test::runCommand("ffmpeg -nostdin -v error -y -i " + shellQuote(wav) +
                                   " -codec:a libmp3lame -qscale:a 2 " + shellQuote(mp3),
                               output),
              0)
        << output;
    return mp3;
}

bool waitFor(const std::function<bool()>& condition, std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

struct Side {
    test::TempDir dir;
    std::string exports = dir.file("Exports");
    std::string music = dir.file("Music");
    Side() { fs::create_directories(exports); }
    std::string track(int n) const { return trackFileName(exports, n); }
    // Encodes tracks 1..n behind the "recording" and waits for the encoder to end.
    void encodeEarly(EarlyEncoder& early, int n) const {
        early.begin(exports);
        early.tracksClosed(n);
        early.finish();
    }
    bool encoding(int n) const {
        return waitFor([&] { return fs::exists(earlyPartialPath(track(n))); },
                       std::chrono::seconds(20));
    }
};

std::vector<TrackOutcome> exportSide(const Side& side, int tracks, EarlyEncoder* early = nullptr) {
    const LibraryImporter importer(side.music);
    ExportPipeline pipeline(importer);
    ExportRequest request;
    request.exportFolder = side.exports;
    request.artist = "Artist";
    request.album = "Album";
    for (int i = 1; i <= tracks; ++i)
        request.titles.push_back("Song " + std::to_string(i));
    request.numRecordedTracks = [tracks] { return tracks; };
    if (early)
        request.beforeEncoding = [early](int track) { early->settle(track); };
    ExportNumbering numbering;
    return pipeline.run(request, numbering);
}

TEST(TrackRuns, GathersConsecutiveTracks) {
    const struct {
        std::vector<int> tracks;
        std::vector<std::pair<int, int>> runs;
    } cases[] = {
        {{}, {}},
        {{4}, {{4, 4}}},
        {{1, 2, 3}, {{1, 3}}},
        {{1, 2, 3, 5}, {{1, 3}, {5, 5}}},
        {{2, 4, 6, 7}, {{2, 2}, {4, 4}, {6, 7}}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(trackRuns(c.tracks), c.runs);
}

// The MP3s made behind the recording sound exactly like the ones the export makes itself, and
// the export then only tags and files them: the library holds the same audio either way.
TEST(EarlyEncoder, EarlyMp3sDecodeToTheSameSamplesAsTheExportsOwn) {
    Side side;
    const double lengths[] = {2.5, 1.2, 3.3};
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(test::writeToneWav(side.track(i + 1), lengths[i], 0.4, 220.0 * (i + 1)));
    std::vector<std::string> expected;
    for (int i = 1; i <= 3; ++i)
        expected.push_back(test::decodedPcm(
            referenceMp3(side.track(i), side.dir.file(std::to_string(i) + ".mp3"))));

    EarlyEncoder early;
    early.begin(side.exports);
    early.tracksClosed(2);
    early.tracksClosed(3);
    early.tracksClosed(1); // a smaller count adds nothing
    early.finish();
    EXPECT_EQ(early.finishedCount(), 3);
    for (int i = 1; i <= 3; ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(earlyMp3Ready(side.track(i)));
        EXPECT_EQ(test::decodedPcm(earlyMp3Path(side.track(i))), expected[size_t(i) - 1]);
        EXPECT_FALSE(fs::exists(earlyPartialPath(side.track(i))));
    }

    const auto outcomes = exportSide(side, 3, &early);
    ASSERT_EQ(outcomes.size(), 3u);
    for (const auto& o : outcomes) {
        SCOPED_TRACE(o.index);
        ASSERT_TRUE(o.ok);
        EXPECT_TRUE(o.readyBeforeExport);
        EXPECT_TRUE(o.encodedEarly);
        EXPECT_EQ(test::decodedPcm(o.libraryPath), expected[size_t(o.index) - 1]);
        EXPECT_EQ(test::probeTags(o.libraryPath)["title"], "Song " + std::to_string(o.index));
        EXPECT_EQ(test::probeTags(o.libraryPath)["track"], std::to_string(o.index));
        // Taken, the early files are gone: nothing is left to be taken a second time.
        EXPECT_FALSE(fs::exists(earlyMp3Path(o.wavPath)));
        EXPECT_FALSE(fs::exists(earlyStampPath(o.wavPath)));
    }
}

using Change = std::function<void(const std::string& wav)>;

// Track 1 is encoded early, then `change` is done to it; the export must not take the early MP3
// but encode the track from what it holds now. With `encoderLives` the export runs beside the
// encoder that made the MP3 (a file changed since), else after it is gone (a kill).
void expectEncodedAfresh(const Change& change, bool encoderLives) {
    Side side;
    ASSERT_TRUE(test::writeToneWav(side.track(1), 2.0, 0.4, 440));
    auto early = std::make_unique<EarlyEncoder>();
    side.encodeEarly(*early, 1);
    ASSERT_TRUE(earlyMp3Ready(side.track(1)));
    if (!encoderLives)
        early.reset();
    change(side.track(1));
    EXPECT_FALSE(earlyMp3Ready(side.track(1)));
    const std::string expected =
        test::decodedPcm(referenceMp3(side.track(1), side.dir.file("now.mp3")));

    const auto outcomes = exportSide(side, 1, early.get());
    ASSERT_EQ(outcomes.size(), 1u);
    ASSERT_TRUE(outcomes[0].ok);
    EXPECT_FALSE(outcomes[0].readyBeforeExport);
    EXPECT_FALSE(outcomes[0].encodedEarly);
    EXPECT_EQ(test::decodedPcm(outcomes[0].libraryPath), expected);
}

// A track file that changed after its MP3 was made early (cut again, recorded anew, touched)
// is encoded again, from what it holds now.
TEST(EarlyEncoder, ATrackChangedAfterItsEarlyEncodingIsEncodedAgain) {
    const std::pair<const char*, Change> cases[] = {
        {"cut again, other length",
         [](const std::string& wav) { ASSERT_TRUE(test::writeToneWav(wav, 1.7, 0.4, 330)); }},
        {"recorded anew, same length",
         [](const std::string& wav) { ASSERT_TRUE(test::writeToneWav(wav, 2.0, 0.3, 550)); }},
        {"same audio, touched",
         [](const std::string& wav) {
             std::this_thread::sleep_for(std::chrono::milliseconds(20));
             fs::last_write_time(wav, fs::file_time_type::clock::now());
         }},
        {"changed in place, time put back",
         [](const std::string& wav) {
             struct stat before {};
             ASSERT_EQ(::stat(wav.c_str(), &before), 0);
             {
                 std::fstream f(wav, std::ios::in | std::ios::out | std::ios::binary);
                 f.seekp(100);
                 f.write("\x7f\x7f\x7f\x7f", 4);
             }
             const timespec times[2] = {before.st_atim, before.st_mtim};
             ASSERT_EQ(::utimensat(AT_FDCWD, wav.c_str(), times, 0), 0);
         }},
    };
    for (const auto& [what, change] : cases) {
        SCOPED_TRACE(what);
        expectEncodedAfresh(change, true);
    }
}

// A kill at any step of the background encoding (the process dies, its files stay as they
// were) leaves nothing the export takes for a finished MP3: it encodes the track itself.
TEST(EarlyEncoder, WhatAKillLeavesIsNeverTakenForAFinishedMp3) {
    const std::pair<const char*, Change> cases[] = {
        {"killed while ffmpeg wrote",
         [](const std::string& wav) {
             fs::rename(earlyMp3Path(wav), earlyPartialPath(wav));
             fs::remove(earlyStampPath(wav));
         }},
        {"killed after the MP3 was renamed, before the stamp",
         [](const std::string& wav) { fs::remove(earlyStampPath(wav)); }},
        {"killed while the stamp was written",
         [](const std::string& wav) {
             fs::rename(earlyStampPath(wav), earlyStampPath(wav) + ".part");
         }},
        {"a stamp cut short",
         [](const std::string& wav) {
             std::string text;
             std::getline(std::ifstream(earlyStampPath(wav)), text);
             std::ofstream(earlyStampPath(wav), std::ios::trunc) << text << "\n12";
         }},
        {"an MP3 cut short to nothing",
         [](const std::string& wav) { std::ofstream(earlyMp3Path(wav), std::ios::trunc); }},
    };
    for (const auto& [step, leave] : cases) {
        SCOPED_TRACE(step);
        expectEncodedAfresh(leave, false);
    }
}

// Cancelled while ffmpeg runs (Record on a new side): the encoder is gone when cancelAndWait
// returns, and so are its half-made files.
TEST(EarlyEncoder, CancelKillsTheEncoderAndRemovesPartialFiles) {
    Side side;
    ASSERT_TRUE(test::writeToneWav(side.track(1), 0.5, 0.4, 440));
    ASSERT_TRUE(test::writeToneWav(side.track(2), 0.5, 0.4, 660));
    // An encoder that has written part of its file and never ends by itself.
    test::StandInEncoder never(side.dir.file("bin"), test::kEncoderThatNeverEnds);
    EarlyEncoder early;
    early.begin(side.exports);
    early.tracksClosed(2);
    ASSERT_TRUE(side.encoding(1));
    ASSERT_FALSE(test::processesMentioning(side.exports).empty()) << "ffmpeg should be running";

    early.cancelAndWait();
    EXPECT_EQ(test::processesMentioning(side.exports), std::vector<std::string>{});
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(side.exports))
        left.push_back(entry.path().filename().string());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<std::string>{"WXRTTmpFile.1.wav", "WXRTTmpFile.2.wav"}));
    EXPECT_EQ(early.finishedCount(), 0);
}

// The encoder runs only on what the machine leaves over: nice 19, the idle scheduling class,
// idle I/O. A stand-in ffmpeg on PATH reports what it was given.
TEST(EarlyEncoder, EncodesAtTheLowestProcessorAndDiskPriority) {
    Side side;
    ASSERT_TRUE(test::writeToneWav(side.track(1), 0.5, 0.4, 440));
    const std::string report = side.dir.file("priority.txt");
    EarlyEncoder early;
    {
        test::StandInEncoder reporting(side.dir.file("bin"),
                                       "stat=$(cat /proc/$$/stat | sed 's/.*) //')\n"
                                       "nice=$(echo \"$stat\" | cut -d' ' -f17)\n"
                                       "policy=$(echo \"$stat\" | cut -d' ' -f39)\n"
                                       "echo \"$nice $policy $(ionice -p $$)\" > " +
                                           shellQuote(report) + "\necho mp3 > \"$out\"");
        side.encodeEarly(early, 1);
    }

    std::ifstream in(report);
    std::string line;
    ASSERT_TRUE(std::getline(in, line)) << "the stand-in ffmpeg did not run";
    // Field 19 of /proc/PID/stat is the nice value, field 41 the policy (5: SCHED_IDLE).
    EXPECT_EQ(line, "19 5 idle");
    EXPECT_TRUE(earlyMp3Ready(side.track(1)));
}

// The export takes over the track being encoded behind it (at idle priority on a busy
// machine it might not end for long) and the ones still waiting: each is encoded once more at
// the export's priority, to the same audio, and nothing of the encoder's is left.
TEST(EarlyEncoder, TheExportTakesOverTheTrackUnderWayAndTheRest) {
    Side side;
    for (int i = 1; i <= 4; ++i)
        ASSERT_TRUE(test::writeToneWav(side.track(i), 20, 0.4, 200.0 + 100 * i));
    EarlyEncoder early;
    early.begin(side.exports);
    early.tracksClosed(4);
    ASSERT_TRUE(side.encoding(1));
    const auto outcomes = exportSide(side, 4, &early);
    ASSERT_EQ(outcomes.size(), 4u);
    for (const auto& o : outcomes) {
        SCOPED_TRACE(o.index);
        EXPECT_TRUE(o.ok);
        EXPECT_FALSE(o.readyBeforeExport);
        EXPECT_EQ(test::decodedPcm(o.libraryPath),
                  test::decodedPcm(referenceMp3(o.wavPath, side.dir.file("r.mp3"))));
    }
    early.finish();
    EXPECT_EQ(test::processesMentioning(side.exports), std::vector<std::string>{});
    for (int i = 1; i <= 4; ++i) {
        EXPECT_FALSE(fs::exists(earlyMp3Path(side.track(i))));
        EXPECT_FALSE(fs::exists(earlyPartialPath(side.track(i))));
    }
}

} // namespace
} // namespace waxline::exporting
