// `waxline-cli splits` as a person runs it: the live splits beside the proposal, a re-cut that
// keeps every sample, and bad values refused in one line. `record --tracks` re-cuts its side.
#include "cli/CliRun.h"
#include "splitting/SideRecut.h"

#include <gtest/gtest.h>

#include <sndfile.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace waxline {
namespace {

namespace fs = std::filesystem;
using test::runCommand;
using test::shellQuote;

// A demo side, its samples as 16-bit values and the gaps its maker printed.
struct DemoSide {
    std::string path;
    std::vector<short> samples; // interleaved stereo
    std::vector<test::Span> gaps;
    int64_t frames() const { return static_cast<int64_t>(samples.size() / 2); }
};

DemoSide makeSide(const test::TempDir& dir, const std::string& options) {
    DemoSide side;
    side.path = dir.file("side.wav");
    std::string printed;
    EXPECT_EQ(
        runCommand(test::cliPath() + " make-demo-side " + shellQuote(side.path) + " " + options,
                   printed),
        0)
        << printed;
    side.gaps = test::gapsIn(printed);
    SF_INFO info{};
    SNDFILE* f = sf_open(side.path.c_str(), SFM_READ, &info);
    EXPECT_TRUE(f && info.channels == 2 && info.samplerate == 44100);
    if (!f)
        return side;
    side.samples.resize(static_cast<size_t>(info.frames * 2));
    sf_readf_short(f, side.samples.data(), info.frames);
    sf_close(f);
    return side;
}

std::string trackPath(const std::string& folder, int t) {
    return folder + "/WXRTTmpFile." + std::to_string(t) + ".wav";
}

// Cuts the side into track files starting at `starts` (frames) with a finished count file, as
// the recorder would have left them.
void cutInto(const std::string& folder, const DemoSide& side, const std::vector<int64_t>& starts) {
    fs::create_directories(folder);
    std::vector<int64_t> edges{0};
    edges.insert(edges.end(), starts.begin(), starts.end());
    edges.push_back(side.frames());
    for (size_t t = 0; t + 1 < edges.size(); ++t) {
        SF_INFO info{};
        info.samplerate = 44100;
        info.channels = 2;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        SNDFILE* f = sf_open(trackPath(folder, static_cast<int>(t + 1)).c_str(), SFM_WRITE, &info);
        ASSERT_TRUE(f);
        sf_writef_short(f, side.samples.data() + edges[t] * 2, edges[t + 1] - edges[t]);
        sf_close(f);
    }
    std::ofstream(folder + "/WXRTTmpFile.count") << starts.size() + 1 << "\nfinished\n";
}

// The track files in a row, each as its frame count, and their samples joined.
struct OnDisk {
    std::vector<int64_t> frames;
    std::vector<short> joined;
};
OnDisk readTracks(const std::string& folder) {
    OnDisk disk;
    for (int t = 1; fs::exists(trackPath(folder, t)); ++t) {
        SF_INFO info{};
        SNDFILE* f = sf_open(trackPath(folder, t).c_str(), SFM_READ, &info);
        if (!f)
            break;
        std::vector<short> samples(static_cast<size_t>(info.frames * info.channels));
        sf_readf_short(f, samples.data(), info.frames);
        sf_close(f);
        disk.frames.push_back(info.frames);
        disk.joined.insert(disk.joined.end(), samples.begin(), samples.end());
    }
    return disk;
}

int splits(const std::string& folder, const std::string& args, std::string& out,
           bool mergeErrors = true) {
    return runCommand(test::cli("splits --folder " + shellQuote(folder) + " " + args), out,
                      mergeErrors);
}

// A re-cut of the one-track side in `folder` at `at`, killed once its journal is in place.
void killRecutAfterJournal(const std::string& folder, const std::vector<int64_t>& at) {
    const SideOpen open = openRecordedSide(folder, 1);
    ASSERT_EQ(open.problem, SideProblem::None);
    struct Kill {};
    RecutHooks hooks;
    hooks.beforeStep = [&](int) {
        if (fs::exists(folder + "/WXRTTmpFile.recut"))
            throw Kill{};
    };
    EXPECT_THROW(recutSide(open.side, at, hooks), Kill);
}

class SplitsCommand : public testing::Test {
protected:
    static void SetUpTestSuite() {
        dir = new test::TempDir;
        side = new DemoSide(makeSide(*dir, "--tracks 4 --seed 3 --realistic"));
    }
    static void TearDownTestSuite() {
        delete side;
        delete dir;
    }
    static test::TempDir* dir;
    static DemoSide* side;
};
test::TempDir* SplitsCommand::dir = nullptr;
DemoSide* SplitsCommand::side = nullptr;

// Asking changes nothing; the table holds the live splits beside the proposal.
TEST_F(SplitsCommand, ShowsTheLiveSplitsBesideTheProposal) {
    ASSERT_EQ(side->gaps.size(), 3u);
    test::TempDir work;
    const std::string folder = work.file("exports");
    // One live split in the first gap, one in the middle of the second track.
    const auto firstGap =
        static_cast<int64_t>((side->gaps[0].start + side->gaps[0].end) / 2 * 44100);
    const auto inMusic =
        static_cast<int64_t>((side->gaps[0].end + side->gaps[1].start) / 2 * 44100);
    cutInto(folder, *side, {firstGap, inMusic});
    const OnDisk before = readTracks(folder);

    std::string out;
    ASSERT_EQ(splits(folder, "", out), 0) << out;
    EXPECT_EQ(readTracks(folder).frames, before.frames);
    EXPECT_NE(out.find("3 tracks"), std::string::npos) << out;
    // A row with both a live and a proposed time is the boundary in the first gap; the live one
    // in the music stands alone; the other two gaps are proposed only.
    const std::regex both(R"(\n  (\d+:\d\d\.\d) +(\d+:\d\d\.\d) +(1\.00|0\.\d\d))");
    const std::regex liveOnly(R"(\n  \d+:\d\d\.\d +- *\n)");
    const std::regex proposedOnly(R"(\n  - +\d+:\d\d\.\d +(1\.00|0\.\d\d))");
    auto count = [&](const std::regex& r) {
        return std::distance(std::sregex_iterator(out.begin(), out.end(), r),
                             std::sregex_iterator());
    };
    EXPECT_EQ(count(both), 1) << out;
    EXPECT_EQ(count(liveOnly), 1) << out;
    EXPECT_EQ(count(proposedOnly), 2) << out;
    EXPECT_NE(out.find("Proposed: 4 tracks"), std::string::npos) << out;
    EXPECT_NE(out.find("--apply"), std::string::npos) << out;
    EXPECT_EQ(out.find("doubtful"), std::string::npos) << out;
    EXPECT_NE(out.find("\nTrusting the proposal: "), std::string::npos) << out;
}

// A count above what the side holds: the extra boundaries are guesses, and are marked.
TEST_F(SplitsCommand, MarksTheDoubtfulBoundaries) {
    test::TempDir work;
    const std::string folder = work.file("exports");
    cutInto(folder, *side, {});
    std::string out;
    ASSERT_EQ(splits(folder, "--tracks 6", out), 0) << out;
    const std::regex doubtful(R"(\n  - +\d+:\d\d\.\d +0\.[0-4]\d  doubtful\n)");
    EXPECT_EQ(std::distance(std::sregex_iterator(out.begin(), out.end(), doubtful),
                            std::sregex_iterator()),
              2)
        << out;
    EXPECT_NE(out.find("2 boundaries doubtful"), std::string::npos) << out;
    EXPECT_NE(out.find("\nTrusting the live splits: the proposal's boundary at "),
              std::string::npos)
        << out;
}

// --apply re-cuts: the files join to the very samples of the side, the count file follows, and
// the MP3s and exported marker of the old cut go. Typed times land on the frame they name.
TEST_F(SplitsCommand, ApplyRecutsAndKeepsEverySample) {
    struct Case {
        const char* name;
        std::vector<int64_t> liveStarts;
        std::string args;
        std::vector<int64_t> expectStarts; // empty: one boundary in each true gap
    };
    const int64_t third = side->frames() / 3;
    const Case cases[] = {
        {"the proposal, one file to four", {}, "--apply", {}},
        {"the sleeve's count, from a bad live cut", {third, 2 * third}, "--tracks 4 --apply", {}},
        {"times typed by hand",
         {third},
         "--at 1:00,2:00.5,150 --apply",
         {60 * 44100, 120 * 44100 + 22050, 150 * 44100}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir work;
        const std::string folder = work.file("exports");
        cutInto(folder, *side, c.liveStarts);
        std::ofstream(folder + "/WXRTTmpFile.1.mp3") << "old";
        std::ofstream(folder + "/WXRTTmpFile.exported") << "exported\n";

        std::string out;
        ASSERT_EQ(splits(folder, c.args, out), 0) << out;
        EXPECT_NE(out.find("Re-cut the side into"), std::string::npos) << out;
        const OnDisk after = readTracks(folder);
        EXPECT_TRUE(after.joined == side->samples) << "the samples changed";
        std::vector<int64_t> starts;
        int64_t at = 0;
        for (size_t i = 0; i + 1 < after.frames.size(); ++i)
            starts.push_back(at += after.frames[i]);
        if (c.expectStarts.empty()) {
            ASSERT_EQ(starts.size(), side->gaps.size());
            for (size_t i = 0; i < starts.size(); ++i) {
                const double s = static_cast<double>(starts[i]) / 44100;
                EXPECT_GE(s, side->gaps[i].start);
                EXPECT_LE(s, side->gaps[i].end);
            }
        } else {
            EXPECT_EQ(starts, c.expectStarts);
        }
        EXPECT_EQ(test::readFile(folder + "/WXRTTmpFile.count"),
                  std::to_string(after.frames.size()) + "\nfinished\n");
        EXPECT_FALSE(fs::exists(folder + "/WXRTTmpFile.1.mp3"));
        EXPECT_FALSE(fs::exists(folder + "/WXRTTmpFile.exported"));

        // The same again finds nothing to do.
        std::string again;
        if (c.expectStarts.empty()) {
            ASSERT_EQ(splits(folder, c.args, again), 0) << again;
            EXPECT_NE(again.find("nothing to re-cut"), std::string::npos) << again;
        }
    }
}

// Each bad value: exit 2, one line on standard error naming what is wrong, the files as they
// were.
TEST_F(SplitsCommand, BadValuesAreRefusedInOneLine) {
    test::TempDir work;
    const std::string folder = work.file("exports");
    cutInto(folder, *side, {});
    const OnDisk before = readTracks(folder);
    const struct {
        const char* args;
        const char* mentioned;
    } cases[] = {
        {"--tracks 0", "--tracks"},
        {"--tracks 41", "--tracks"},
        {"--tracks four", "--tracks"},
        {"--durations 3:1x", "3:1x"},
        {"--durations 30:00,40:00 --apply", "does not fit"},
        {"--durations 0:10,0:10", "does not fit"},
        {"--durations A1-A41", "1 to 40"},
        {"--at 1:2x", "'1:2x' is not a time"},
        {"--at 2:00,1:00", "must rise"},
        {"--at 99:00 --apply", "outside the side"},
        {"--at 0:00", "outside the side"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        std::string printed;
        EXPECT_EQ(splits(folder, std::string(c.args) + " 2>&1 >/dev/null", printed, false), 2)
            << printed;
        EXPECT_EQ(test::lines(printed), 1) << printed;
        EXPECT_NE(printed.find(c.mentioned), std::string::npos) << printed;
    }
    EXPECT_EQ(readTracks(folder).frames, before.frames);
    EXPECT_EQ(readTracks(folder).joined, before.joined);
}

TEST(SplitsCommandEmpty, SaysWhenThereIsNothingToSplit) {
    test::TempDir work;
    fs::create_directories(work.file("empty"));
    for (const char* folder : {"none", "empty"}) {
        std::string out;
        EXPECT_EQ(splits(work.file(folder), "", out), 2) << folder;
        EXPECT_NE(out.find("No recorded tracks"), std::string::npos) << out;
    }
}

// What a re-cut killed before its switch-over left is cleared away before the side is read.
TEST_F(SplitsCommand, ARecutLeftByAKillIsSettledFirst) {
    test::TempDir work;
    const std::string folder = work.file("exports");
    cutInto(folder, *side, {});
    fs::copy_file(trackPath(folder, 1), folder + "/WXRTTmpFile.new.1.wav");
    std::string out;
    ASSERT_EQ(splits(folder, "", out), 0) << out;
    EXPECT_FALSE(fs::exists(folder + "/WXRTTmpFile.new.1.wav"));
    EXPECT_NE(out.find("1 track, "), std::string::npos) << out;
}

// A re-cut killed after its journal was in place: the export completes it first and exports the
// new set, not a mix of the two; record settles it before it looks for a recording it would
// throw away, so what it names is the set the re-cut put in.
TEST_F(SplitsCommand, ExportAndRecordCompleteAKilledRecutFirst) {
    test::TempDir work;
    const std::string folder = work.file("exports");
    cutInto(folder, *side, {});
    const std::vector<int64_t> at{44100 * 30, 44100 * 90};
    killRecutAfterJournal(folder, at);
    ASSERT_TRUE(fs::exists(folder + "/WXRTTmpFile.new.3.wav"));
    fs::copy(folder, work.file("again"));

    std::string out;
    ASSERT_EQ(runCommand(test::exportCommand(folder, work.file("Music")), out), 0) << out;
    EXPECT_NE(out.find("finished cleanly: 3 tracks"), std::string::npos) << out;
    EXPECT_EQ(readTracks(folder).frames,
              (std::vector<int64_t>{at[0], at[1] - at[0], side->frames() - at[1]}));

    EXPECT_EQ(runCommand(test::cli("record --export-dir " + shellQuote(work.file("again"))), out),
              2)
        << out;
    EXPECT_NE(out.find("holds a recording (3 track files)"), std::string::npos) << out;
    EXPECT_FALSE(fs::exists(work.file("again/WXRTTmpFile.recut")));
}

// A disk with room for the side but not for a second copy: the re-cut is refused before it
// writes anything, and says so. The disk is a tmpfs in a private mount namespace.
TEST(SplitsCommandDisk, AFullDiskLeavesTheTracksAsTheyWere) {
    test::TempDir dir;
    const DemoSide side = makeSide(dir, "--tracks 1 --length 90 --seed 5");
    const std::string disk = dir.file("disk");
    fs::create_directories(disk);
    std::string probe;
    if (runCommand("unshare -rm sh -c " +
                       shellQuote("mount -t tmpfs -o size=24m tmpfs " + shellQuote(disk)),
                   probe) != 0)
        GTEST_SKIP() << "no private tmpfs here: " << probe;
    const std::string staged = dir.file("staged");
    cutInto(staged, side, {});
    const std::string exports = disk + "/exports";
    std::string out;
    const std::string script = "mount -t tmpfs -o size=24m tmpfs " + shellQuote(disk) +
                               " && cp -r " + shellQuote(staged) + " " + shellQuote(exports) +
                               " && { " + shellQuote(test::cliPath()) + " splits --folder " +
                               shellQuote(exports) + " --at 0:10 --apply; echo \"status $?\"; " +
                               "cmp " + shellQuote(staged + "/WXRTTmpFile.1.wav") + " " +
                               shellQuote(exports + "/WXRTTmpFile.1.wav") + " && echo same; ls " +
                               shellQuote(exports) + "; }";
    ASSERT_EQ(runCommand("unshare -rm sh -c " + shellQuote(script), out), 0) << out;
    EXPECT_NE(out.find("status 1"), std::string::npos) << out;
    EXPECT_NE(out.find("not enough free space"), std::string::npos) << out;
    EXPECT_NE(out.find("the tracks are as they were"), std::string::npos) << out;
    EXPECT_NE(out.find("same"), std::string::npos) << out;
    EXPECT_EQ(out.find("WXRTTmpFile.2.wav"), std::string::npos) << out;
    EXPECT_EQ(out.find("WXRTTmpFile.new"), std::string::npos) << out;
}

// record --tracks N: the side recorded through the virtual deck ends up in N files holding what
// the live splits held, frame for frame.
TEST(SplitsRecord, RecordWithATrackCountRecutsTheSide) {
    test::TempDir dir;
    const DemoSide side = makeSide(dir, "--tracks 3 --seed 8");
    const std::string exports = dir.file("exports");
    std::string out;
    ASSERT_EQ(runCommand(shellQuote(test::cliPath()) + " record --virtual-device " +
                             shellQuote("file=" + side.path + ",speed=40") + " --export-dir " +
                             shellQuote(exports) +
                             " --preset none --split off --tracks 3 --max-seconds " +
                             std::to_string(side.frames() / 44100),
                         out),
              0)
        << out;
    EXPECT_NE(out.find("Re-cut the side into 3 tracks (it had 1)"), std::string::npos) << out;
    const OnDisk disk = readTracks(exports);
    ASSERT_EQ(disk.frames.size(), 3u) << out;
    EXPECT_EQ(test::readFile(exports + "/WXRTTmpFile.count"), "3\nfinished\n");
    int64_t at = 0;
    for (size_t i = 0; i + 1 < disk.frames.size(); ++i) {
        at += disk.frames[i];
        const double s = static_cast<double>(at) / 44100;
        EXPECT_GE(s, side.gaps[i].start) << out;
        EXPECT_LE(s, side.gaps[i].end) << out;
    }
}

// Durations that do not fit the side digitize recorded: said in one line, the live cut kept and
// nothing exported, since the titles were meant for another cut.
TEST(SplitsRecord, DigitizeExportsNothingWhenTheDurationsDoNotFit) {
    test::TempDir dir;
    const DemoSide side = makeSide(dir, "--tracks 2 --seed 4");
    const std::string exports = dir.file("exports");
    std::string err;
    EXPECT_EQ(runCommand(shellQuote(test::cliPath()) + " digitize --artist A --album B " +
                             "--virtual-device " + shellQuote("file=" + side.path + ",speed=40") +
                             " --export-dir " + shellQuote(exports) + " --library " +
                             shellQuote(dir.file("Music")) +
                             " --preset none --split off --durations 0:10,0:12 --max-seconds " +
                             std::to_string(side.frames() / 44100) + " 2>&1 >/dev/null",
                         err, false),
              2)
        << err;
    EXPECT_EQ(test::lines(err), 1) << err;
    EXPECT_NE(err.find("does not fit"), std::string::npos) << err;
    EXPECT_NE(err.find("nothing was exported"), std::string::npos) << err;
    EXPECT_EQ(readTracks(exports).joined.size() / 2,
              static_cast<size_t>(side.frames() / 44100 * 44100));
    EXPECT_FALSE(fs::exists(dir.file("Music")));
}

} // namespace
} // namespace waxline
