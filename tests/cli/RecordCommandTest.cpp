// `waxline-cli record` as a process: a file-size limit that makes the writes fail, and a kill
// without warning. The track file must stay a WAV that libsndfile and ffprobe open.
#include "cli/CliRun.h"
#include "exportfolder/ExportFolderLock.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>

namespace waxline {
namespace {

// The data chunk's size as the file's header states it.
long long headerDataBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), {});
    const size_t at = bytes.find("data");
    if (at == std::string::npos || at + 8 > bytes.size())
        return -1;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + at + 4);
    return p[0] | p[1] << 8 | p[2] << 16 | static_cast<long long>(p[3]) << 24;
}

// Writes fail once the track file reaches the limit (SIGXFSZ ignored, so they fail with EFBIG):
// the recording stops with a message that says so, and the file holds what fitted with a header
// that tells its true length.
TEST(RecordCommand, FileSizeLimitStopsTheRecordingAndKeepsWhatFitted) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    constexpr long long kLimit = 1'000'000; // about 5.7 s of 16-bit stereo at 44.1 kHz
    std::string text;
    EXPECT_EQ(test::runCommand(
                  "trap '' XFSZ; exec prlimit --fsize=" + std::to_string(kLimit) + " " +
                      test::cli("record" +
                                test::deckArgs(test::makeDemoSideFile(dir, 1, 4), "40", exports) +
                                " --split off --preset none --max-seconds 60"),
                  text),
              1)
        << text;
    EXPECT_NE(text.find("could not be written"), std::string::npos) << text;
    EXPECT_NE(text.find("What was recorded before is kept"), std::string::npos) << text;

    const std::string track = exports + "/WXRTTmpFile.1.wav";
    const test::SoundInfo info = test::soundInfo(track);
    ASSERT_GT(info.frames, 0) << text;
    EXPECT_EQ(info.sampleRate, 44100);
    EXPECT_LE(44 + 4 * info.frames, kLimit);
    // At most the last 4096-frame block may be cut short by the limit.
    EXPECT_GE(44 + 4 * info.frames, kLimit - 4 * 4096);
    EXPECT_EQ(headerDataBytes(track), 4 * info.frames);
    EXPECT_NEAR(test::probeDuration(track), info.seconds(), 0.01);
}

// Killed mid-track, the process leaves a file whose header covers all it had been fed but the
// last second. What it had been fed is at least what its last live line showed (rounded to the
// second, so minus half a second); off a terminal that line comes every five seconds.
TEST(RecordCommand, KilledMidTrackLeavesAReadableFile) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    const std::string log = dir.file("output.txt");
    EXPECT_EQ(
        test::signalWhen(
            test::cli("record" + test::deckArgs(test::makeDemoSideFile(dir, 1, 6), "4", exports) +
                      " --split off --preset none"),
            log, "grep -qE 'track 1  00:(00:0[3-9]|00:[1-5]|0[1-9]:)' " + test::shellQuote(log),
            "KILL"),
        128 + SIGKILL);
    const std::string text = test::readFile(log);
    const std::regex live(R"(track 1  (\d\d):(\d\d):(\d\d)  L )");
    double shownSeconds = -1;
    for (std::sregex_iterator it(text.begin(), text.end(), live), end; it != end; ++it)
        shownSeconds = std::stoi((*it)[1]) * 3600 + std::stoi((*it)[2]) * 60 + std::stoi((*it)[3]);
    ASSERT_GE(shownSeconds, 3) << "no live line before the kill:\n" << text;

    const std::string track = exports + "/WXRTTmpFile.1.wav";
    const test::SoundInfo info = test::soundInfo(track);
    ASSERT_GT(info.frames, 0) << "libsndfile cannot read " << track;
    const double fedAtLeast = shownSeconds - 0.5;
    EXPECT_GE(info.seconds(), fedAtLeast - 1.0) << text;
    const double probed = test::probeDuration(track);
    EXPECT_GE(probed, fedAtLeast - 1.0) << "ffprobe: " << probed;
}

// The time limit counts recorded audio, not the status ticks: a deck running 20 times as fast
// as real time gives 2 s of audio between two ticks, and none of it may pass the limit.
TEST(RecordCommand, MaxSecondsHoldsAtAnySpeed) {
    test::TempDir dir;
    const std::string side = test::makeDemoSideFile(dir, 1, 2);
    for (const std::string speed : {"1", "20", "max"}) {
        SCOPED_TRACE(speed);
        const std::string exports = dir.file("exports-" + speed);
        std::string out;
        ASSERT_EQ(test::runCommand(test::cli("record" + test::deckArgs(side, speed, exports) +
                                             " --split off --preset none --max-seconds 1.5"),
                                   out),
                  0)
            << out;
        const test::SoundInfo info = test::soundInfo(exports + "/WXRTTmpFile.1.wav");
        EXPECT_EQ(info.sampleRate, 44100);
        EXPECT_EQ(info.frames, 66150) << out; // 1.5 s at 44.1 kHz, to the frame
    }
}

// Killed during the second track, the recording leaves a count of the tracks closed so far, not
// marked finished; the export then says it was interrupted and takes the cut-off track too.
TEST(RecordCommand, KilledMidSideLeavesACurrentCountThatExportReadsAsInterrupted) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    const std::string second = test::shellQuote(exports + "/WXRTTmpFile.2.wav");
    const std::string countFile = exports + "/WXRTTmpFile.count";
    // Killed once track 2 holds a few seconds of its music and the count, brought up to date at
    // the next status tick, says 1.
    EXPECT_EQ(
        test::signalWhen(
            test::cli("record" + test::deckArgs(test::makeDemoSideFile(dir, 2, 5), "10", exports) +
                      " --preset none"),
            dir.file("output.txt"),
            "[ -e " + second + " ] && [ $(stat -c %s " + second + ") -ge 1764000 ] && [ \"$(cat " +
                test::shellQuote(countFile) + ")\" = 1 ]",
            "KILL"),
        128 + SIGKILL);
    const std::string text = test::readFile(dir.file("output.txt"));
    EXPECT_EQ(test::readFile(countFile), "1\n") << text;

    // A child the recorder had forked but not yet replaced by its program keeps the lock's
    // descriptor until its exec, which a sanitizer build makes slow: wait for the folder first.
    for (int i = 0; i < 100; ++i) {
        ExportFolderLock probe;
        if (probe.tryLock(exports, FolderUse::Exporting, "test") ==
            ExportFolderLock::Outcome::Taken)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    std::string exported;
    EXPECT_EQ(test::runCommand(test::exportCommand(exports, dir.file("Music")), exported), 0)
        << exported;
    EXPECT_NE(exported.find("was interrupted"), std::string::npos) << exported;
    EXPECT_EQ(test::filesBelow(dir.file("Music")).size(), 2u) << exported;
}

// Killed while a closed track is encoded behind the recording: the encoder goes with the
// recorder, and nothing it left is taken for a finished MP3. The export encodes that track
// itself, to the same audio as the export's command makes of it.
TEST(RecordCommand, KilledDuringBackgroundEncodingLeavesNoMp3TheExportWouldTake) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    const std::string track = exports + "/WXRTTmpFile.1.wav";
    const std::string partial = exports + "/WXRTTmpFile.1.encoding.mp3";
    EXPECT_EQ(
        test::signalWhen(
            test::cli("record" + test::deckArgs(test::makeDemoSideFile(dir, 2, 5), "10", exports) +
                      " --preset none"),
            dir.file("output.txt"), "[ -e " + test::shellQuote(partial) + " ]", "KILL", "0.002"),
        128 + SIGKILL)
        << "track 1 was never seen being encoded:\n"
        << test::readFile(dir.file("output.txt"));

    for (int i = 0; i < 250 && !test::processesMentioning(exports).empty(); ++i)
        usleep(20'000);
    EXPECT_EQ(test::processesMentioning(exports), std::vector<std::string>{})
        << "the encoder outlived the recorder";

    std::string exported;
    EXPECT_EQ(
        test::runCommand(test::exportCommand(exports, dir.file("Music"), " --tracks 1"), exported),
        0)
        << exported;
    EXPECT_NE(exported.find("No track was ready before the export"), std::string::npos) << exported;
    const std::vector<std::string> made = test::filesBelow(dir.file("Music"));
    ASSERT_EQ(made.size(), 1u) << exported;
    std::string reference;
    ASSERT_EQ(test::runCommand("ffmpeg -nostdin -v error -i " + test::shellQuote(track) +
                                   " -codec:a libmp3lame -qscale:a 2 " +
                                   test::shellQuote(dir.file("reference.mp3")),
                               reference),
              0)
        << reference;
    EXPECT_EQ(test::decodedPcm(dir.file("Music") + "/" + made[0]),
              test::decodedPcm(dir.file("reference.mp3")));
}

// `record` makes each counted track's MP3 behind the recording unless told not to, and
// `export` says which tracks were ready and takes them.
TEST(RecordCommand, ExportSaysWhichTracksWereEncodedWhileRecording) {
    const struct {
        bool early;
        const char* recordSays; // null: nothing about encoding while recording
        const char* exportSays;
    } cases[] = {
        {true, "2 of 2 tracks encoded to MP3 while recording",
         "Encoded while recording, ready before the export: tracks 1-2 of 2"},
        {false, nullptr, "No track was ready before the export: each is encoded now"},
    };
    test::TempDir dir;
    const std::string side = test::makeDemoSideFile(dir, 2, 5);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.early);
        const std::string exports = dir.file(c.early ? "early" : "late");
        std::string recorded;
        ASSERT_EQ(
            test::runCommand(test::cli("record" + test::deckArgs(side, "20", exports) +
                                       " --preset none" + (c.early ? "" : " --no-early-encoding")),
                             recorded),
            0)
            << recorded;
        EXPECT_EQ(recorded.find(c.recordSays ? c.recordSays : "while recording") !=
                      std::string::npos,
                  c.recordSays != nullptr)
            << recorded;

        std::string exported;
        ASSERT_EQ(test::runCommand(test::exportCommand(exports, exports + "-Music"), exported), 0)
            << exported;
        EXPECT_NE(exported.find(c.exportSays), std::string::npos) << exported;
        // Each track's line ends in the mark exactly when its MP3 was made early.
        const std::regex marked(R"(track [12]/2[^\n]*  \(encoded while recording\)\n)");
        EXPECT_EQ(std::distance(std::sregex_iterator(exported.begin(), exported.end(), marked),
                                std::sregex_iterator()),
                  c.early ? 2 : 0)
            << exported;
    }
}

// A full disk: the recording stops, says so once in words a person can act on, and the summary
// does not repeat it. The disk is a 600 kB tmpfs in a private mount namespace.
TEST(RecordCommand, AFullDiskIsSaidOnceWithWhatToDo) {
    test::TempDir dir;
    const std::string side = test::makeDemoSideFile(dir, 1, 2);
    const std::string disk = dir.file("disk");
    std::filesystem::create_directories(disk);
    const std::string mount = "mount -t tmpfs -o size=600k tmpfs " + test::shellQuote(disk);
    std::string probe;
    if (test::runCommand("unshare -rm sh -c " + test::shellQuote(mount), probe) != 0)
        GTEST_SKIP() << "no private tmpfs here: " << probe;
    const std::string exports = disk + "/exports";
    std::string out;
    const int status = test::runCommand(
        "unshare -rm sh -c " +
            test::shellQuote(mount + " && exec " +
                             test::cli("record" + test::deckArgs(side, "max", exports) +
                                       " --split off --preset none")),
        out);
    EXPECT_EQ(status, 1) << out;
    const std::string said = "The disk is full";
    ASSERT_NE(out.find(said), std::string::npos) << out;
    EXPECT_EQ(out.find(said, out.find(said) + 1), std::string::npos) << "said twice:\n" << out;
    EXPECT_NE(out.find("free space on the disk that holds " + exports + " and record again"),
              std::string::npos)
        << out;
    EXPECT_EQ(out.find("No Error"), std::string::npos) << out;
    EXPECT_EQ(out.find("err = "), std::string::npos) << out;
    EXPECT_NE(out.find("Recording ended (stopped): 1 track"), std::string::npos) << out;
}

// A logout (SIGHUP) or a shutdown (SIGTERM) stops a recording as cleanly as Ctrl-C: exit 0, the
// track file complete and the count left for the export.
TEST(RecordCommand, TermAndHangUpStopAsCleanlyAsInterrupt) {
    test::TempDir dir;
    const std::string side = test::makeDemoSideFile(dir, 1, 6);
    for (const int sig : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(sig);
        const std::string exports = dir.file("exports-" + std::to_string(sig));
        const std::string track = exports + "/WXRTTmpFile.1.wav";
        const std::string log = dir.file("output.txt");
        // Half a second after the track file appears; exit 0, not killed by the signal.
        EXPECT_EQ(test::signalWhen(test::cli("record" + test::deckArgs(side, "4", exports) +
                                             " --split off --preset none"),
                                   log, "[ -e " + test::shellQuote(track) + " ] && sleep 0.5",
                                   std::to_string(sig)),
                  0);
        const std::string text = test::readFile(log);
        EXPECT_NE(text.find("Recording ended (interrupted)"), std::string::npos) << text;
        EXPECT_EQ(test::readFile(exports + "/WXRTTmpFile.count"), "1\nfinished\n") << text;
        const test::SoundInfo info = test::soundInfo(track);
        EXPECT_GT(info.frames, 44100);
        EXPECT_EQ(headerDataBytes(track), 4 * info.frames);
    }
}

// The engine's diagnostic lines go to the log beside the export folder; the terminal sees them
// only with --verbose, and the user's lines always.
TEST(RecordCommand, DiagnosticsGoToTheLogAndToTheTerminalOnlyWhenVerbose) {
    test::TempDir dir;
    const std::string side = test::makeDemoSideFile(dir, 1, 2);
    const std::string log = dir.file("exports.log");
    const char* const diagnostics[] = {"selectInputFromDeviceList Device = ", "setNoFilter",
                                       "Found device VID 0x08BB"};
    for (const bool verbose : {false, true}) {
        SCOPED_TRACE(verbose);
        std::string out;
        ASSERT_EQ(
            test::runCommand(
                test::cli("record --discard" + test::deckArgs(side, "20", dir.file("exports")) +
                          " --preset none --max-seconds 1" + (verbose ? " --verbose" : "")),
                out),
            0)
            << out;
        EXPECT_NE(out.find("Recording from input"), std::string::npos) << out;
        EXPECT_NE(out.find("Recording ended (time limit)"), std::string::npos) << out;
        const std::string logged = test::readFile(log);
        for (const char* line : diagnostics) {
            EXPECT_EQ(out.find(line) != std::string::npos, verbose) << line << " in\n" << out;
            EXPECT_NE(logged.find(line), std::string::npos) << line << " in\n" << logged;
        }
        EXPECT_EQ(logged.find("Recording from input"), std::string::npos) << logged;
    }
    // Each run appends under its own heading.
    const std::string logged = test::readFile(log);
    size_t runs = 0;
    for (size_t at = logged.find("waxline-cli record"); at != std::string::npos;
         at = logged.find("waxline-cli record", at + 1))
        ++runs;
    EXPECT_EQ(runs, 2u) << logged;
}

// A recording that was never exported is not thrown away by the next one unless asked; once
// exported (or discarded) the folder is free again.
TEST(RecordCommand, KeepsAnUnexportedRecordingUnlessToldToDiscardIt) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    const std::string record =
        test::cli("record" + test::deckArgs(test::makeDemoSideFile(dir, 1, 2), "max", exports) +
                  " --split off --preset none");
    std::string out;
    ASSERT_EQ(test::runCommand(record + " --max-seconds 1", out), 0) << out;
    const std::string track = exports + "/WXRTTmpFile.1.wav";
    ASSERT_EQ(test::soundInfo(track).frames, 44100) << out;

    // The second recording refuses and leaves the first as it was.
    EXPECT_EQ(test::runCommand(record + " --max-seconds 2", out), 2) << out;
    EXPECT_NE(out.find("never exported"), std::string::npos) << out;
    EXPECT_NE(out.find("--discard"), std::string::npos) << out;
    EXPECT_EQ(test::soundInfo(track).frames, 44100) << out;

    EXPECT_EQ(test::runCommand(record + " --max-seconds 2 --discard", out), 0) << out;
    EXPECT_EQ(test::soundInfo(track).frames, 88200) << out;

    // Exported in full, the recording may be replaced without --discard.
    ASSERT_EQ(test::runCommand(test::exportCommand(exports, dir.file("Music")), out), 0) << out;
    EXPECT_EQ(test::runCommand(record + " --max-seconds 1", out), 0) << out;
    EXPECT_EQ(test::soundInfo(track).frames, 44100) << out;
}

// Every command that writes into the export folder refuses at once while another run holds it,
// names the holder and what it does there, and touches nothing; once let go, the folder is free.
TEST(RecordCommand, EveryCommandRefusesAnExportFolderInUse) {
    test::TempDir dir;
    const std::string side = test::makeDemoSideFile(dir, 1, 2);
    const std::string exports = dir.file("exports");
    const std::string track = exports + "/WXRTTmpFile.1.wav";
    std::filesystem::create_directories(exports);
    ASSERT_TRUE(test::writeToneWav(track, 0.8, 0.5));
    std::ofstream(exports + "/WXRTTmpFile.count") << "1\nfinished\n";
    const std::string before = test::readFile(track);
    const std::string library = " --library " + test::shellQuote(dir.file("Music"));
    const struct {
        std::string command;
        FolderUse use;
    } cases[] = {
        {test::cli("record --discard --max-seconds 1" + test::deckArgs(side, "max", exports)),
         FolderUse::Exporting},
        {test::cli("digitize --artist A --album B --discard --max-seconds 1" + library +
                   test::deckArgs(side, "max", exports)),
         FolderUse::Recording},
        {test::exportCommand(exports, dir.file("Music")), FolderUse::Exporting},
        {test::exportCommand(exports, dir.file("Music")), FolderUse::Recording},
        {test::cli("splits --apply --tracks 2 --folder " + test::shellQuote(exports)),
         FolderUse::Recording},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        ExportFolderLock held;
        ASSERT_EQ(held.tryLock(exports, c.use, "Waxline"), ExportFolderLock::Outcome::Taken);
        std::string out;
        EXPECT_EQ(test::runCommand(c.command, out), 1) << out;
        EXPECT_NE(
            out.find("the export folder " + exports + " is in use: Waxline (process " +
                     std::to_string(getpid()) + ") is " +
                     (c.use == FolderUse::Recording ? "recording into it" : "exporting from it")),
            std::string::npos)
            << out;
        EXPECT_EQ(test::readFile(track), before);
        EXPECT_FALSE(std::filesystem::exists(exports + "/WXRTTmpFile.2.wav"));
        EXPECT_FALSE(std::filesystem::exists(exports + "/WXRTTmpFile.1.mp3"));
        EXPECT_FALSE(std::filesystem::exists(dir.file("Music")));
    }
    std::string out;
    EXPECT_EQ(test::runCommand(test::exportCommand(exports, dir.file("Music")), out), 0) << out;
    EXPECT_EQ(test::filesBelow(dir.file("Music")).size(), 1u) << out;
}

} // namespace
} // namespace waxline
