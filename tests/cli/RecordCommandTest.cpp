// `waxline-cli record` as a process: a file-size limit that makes the writes fail, and a kill
// without warning. The track file must stay a WAV that libsndfile and ffprobe open.
#include "capture/recorder/ExportFolderLock.h"
#include "cli/CliRun.h"
#include "support/MediaFiles.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace waxline {
namespace {

// Starts `waxline-cli record ARGS` with its standard output and error into `outFd`; in the
// child, a file-size limit (0: none) with SIGXFSZ ignored, so writes past it fail with EFBIG.
pid_t startRecord(const std::vector<std::string>& args, int outFd, rlim_t fileSizeLimit = 0) {
    const std::string program = test::cliPath();
    std::vector<std::string> all{program, "record"};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& a : all)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (fileSizeLimit) {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{fileSizeLimit, fileSizeLimit};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
        dup2(outFd, STDOUT_FILENO);
        dup2(outFd, STDERR_FILENO);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    return child;
}

uintmax_t fileSize(const std::string& path) {
    std::error_code ec;
    const uintmax_t size = std::filesystem::file_size(path, ec);
    return ec ? 0 : size;
}

// `waxline-cli record ARGS` started with its output into the file `output.txt` of `dir`.
pid_t startLogged(const test::TempDir& dir, const std::vector<std::string>& args,
                  rlim_t fileSizeLimit = 0) {
    const int out = open(dir.file("output.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (out < 0)
        return -1;
    const pid_t child = startRecord(args, out, fileSizeLimit);
    close(out);
    return child;
}

// Waits for the child started by startLogged; its wait status, and what it printed.
std::string waitLogged(const test::TempDir& dir, pid_t child, int& status) {
    status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return test::readFile(dir.file("output.txt"));
}

// The arguments that record `side` from the virtual deck at `speed` into `exports`.
std::vector<std::string> deck(const std::string& side, const std::string& speed,
                              const std::string& exports) {
    return {"--virtual-device", "file=" + side + ",speed=" + speed, "--export-dir", exports};
}

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

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

// Writes fail once the track file reaches the limit: the recording stops with a message that
// says so, and the file holds what fitted with a header that tells its true length.
TEST(RecordCommand, FileSizeLimitStopsTheRecordingAndKeepsWhatFitted) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    constexpr rlim_t kLimit = 1'000'000; // about 5.7 s of 16-bit stereo at 44.1 kHz
    const pid_t child = startLogged(
        dir,
        deck(test::makeDemoSideFile(dir, 1, 4), "40", exports) +
            std::vector<std::string>{"--split", "off", "--preset", "none", "--max-seconds", "60"},
        kLimit);
    ASSERT_GT(child, 0);
    int status = 0;
    const std::string text = waitLogged(dir, child, status);
    ASSERT_TRUE(WIFEXITED(status)) << text;
    EXPECT_EQ(WEXITSTATUS(status), 1) << text;
    EXPECT_NE(text.find("could not be written"), std::string::npos) << text;
    EXPECT_NE(text.find("What was recorded before is kept"), std::string::npos) << text;

    const std::string track = exports + "/WXRTTmpFile.1.wav";
    const test::SoundInfo info = test::soundInfo(track);
    ASSERT_GT(info.frames, 0) << text;
    EXPECT_EQ(info.sampleRate, 44100);
    EXPECT_LE(44 + 4 * info.frames, static_cast<long long>(kLimit));
    // At most the last 4096-frame block may be cut short by the limit.
    EXPECT_GE(44 + 4 * info.frames, static_cast<long long>(kLimit) - 4 * 4096);
    EXPECT_EQ(headerDataBytes(track), 4 * info.frames);
    EXPECT_NEAR(test::probeDuration(track), info.seconds(), 0.01);
}

// Killed mid-track, the process leaves a file whose header covers all it had been fed but the
// last second. What it had been fed is at least what its live line last showed (rounded to the
// second, so minus half a second), which is read before the kill.
TEST(RecordCommand, KilledMidTrackLeavesAReadableFile) {
    test::TempDir dir;
    const std::string exports = dir.file("exports");
    int pipeFds[2];
    ASSERT_EQ(pipe(pipeFds), 0);
    const pid_t child =
        startRecord(deck(test::makeDemoSideFile(dir, 1, 6), "4", exports) +
                        std::vector<std::string>{"--split", "off", "--preset", "none"},
                    pipeFds[1]);
    close(pipeFds[1]);
    ASSERT_GT(child, 0);

    // Off a terminal the live line comes every five seconds: "track 1  00:00:20  L ...".
    const std::regex live(R"(track 1  (\d\d):(\d\d):(\d\d)  L )");
    std::string text, line;
    double shownSeconds = -1;
    char c;
    while (shownSeconds < 3 && read(pipeFds[0], &c, 1) == 1) {
        if (c != '\n') {
            line += c;
            continue;
        }
        text += line + "\n";
        std::smatch m;
        if (std::regex_search(line, m, live))
            shownSeconds = std::stoi(m[1]) * 3600 + std::stoi(m[2]) * 60 + std::stoi(m[3]);
        line.clear();
    }
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    close(pipeFds[0]);
    ASSERT_GE(shownSeconds, 3) << "no live line before the output ended:\n" << text;
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << text;

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
    const pid_t child = startLogged(dir, deck(test::makeDemoSideFile(dir, 2, 5), "10", exports) +
                                             std::vector<std::string>{"--preset", "none"});
    ASSERT_GT(child, 0);
    const std::string second = exports + "/WXRTTmpFile.2.wav";
    for (int i = 0; i < 400 && !std::filesystem::exists(second); ++i)
        usleep(50'000);
    // The count is brought up to date at the next status tick, which a loaded machine delays.
    const std::string countFile = exports + "/WXRTTmpFile.count";
    for (int i = 0; i < 400 && test::readFile(countFile) != "1\n"; ++i)
        usleep(50'000);
    // Killed once track 2 holds some of its music (a few seconds at 16-bit stereo).
    for (int i = 0; i < 400 && fileSize(second) < 10 * 44100 * 4; ++i)
        usleep(50'000);
    kill(child, SIGKILL);
    int status = 0;
    const std::string text = waitLogged(dir, child, status);
    ASSERT_TRUE(std::filesystem::exists(second)) << text;
    EXPECT_EQ(test::readFile(countFile), "1\n") << text;

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
    const pid_t child = startLogged(dir, deck(test::makeDemoSideFile(dir, 2, 5), "10", exports) +
                                             std::vector<std::string>{"--preset", "none"});
    ASSERT_GT(child, 0);
    const std::string track = exports + "/WXRTTmpFile.1.wav";
    bool encoding = false;
    for (int i = 0; i < 30000 && !encoding; ++i)
        if (!(encoding = std::filesystem::exists(exports + "/WXRTTmpFile.1.encoding.mp3")))
            usleep(2'000);
    kill(child, SIGKILL);
    int status = 0;
    const std::string text = waitLogged(dir, child, status);
    ASSERT_TRUE(encoding) << "track 1 was never seen being encoded:\n" << text;

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
        const pid_t child =
            startLogged(dir, deck(side, "4", exports) +
                                 std::vector<std::string>{"--split", "off", "--preset", "none"});
        ASSERT_GT(child, 0);
        const std::string track = exports + "/WXRTTmpFile.1.wav";
        for (int i = 0; i < 100 && !std::filesystem::exists(track); ++i)
            usleep(50'000);
        usleep(500'000);
        kill(child, sig);
        int status = 0;
        const std::string text = waitLogged(dir, child, status);
        ASSERT_TRUE(WIFEXITED(status)) << "killed by signal " << WTERMSIG(status) << "\n" << text;
        EXPECT_EQ(WEXITSTATUS(status), 0) << text;
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
