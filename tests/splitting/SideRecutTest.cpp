// Re-cutting a side: the new files join to the very samples the old ones held, in their format;
// a kill between any two steps, a full disk and bad boundaries each leave one whole set.
#include "splitting/SideRecut.h"
#include "splitting/SideFolder.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace waxline {
namespace {

namespace fs = std::filesystem;

struct Kill {};

std::vector<int32_t> joined(const std::vector<test::StoredFile>& files) {
    std::vector<int32_t> all;
    for (const auto& f : files)
        all.insert(all.end(), f.samples.begin(), f.samples.end());
    return all;
}

// Track lengths that boundaries cut a side of `total` frames into, worked out apart from the
// code under test.
std::vector<int64_t> lengthsFor(const std::vector<int64_t>& boundaries, int64_t total) {
    std::vector<int64_t> lengths;
    int64_t previous = 0;
    for (int64_t b : boundaries) {
        lengths.push_back(b - previous);
        previous = b;
    }
    lengths.push_back(total - previous);
    return lengths;
}

int64_t sum(const std::vector<int64_t>& v) {
    int64_t s = 0;
    for (auto x : v)
        s += x;
    return s;
}

// Other files an export or the recorder leaves beside the tracks.
void addDerivedFiles(const std::string& folder, int tracks) {
    for (int t = 1; t <= tracks; ++t)
        std::ofstream(folder + "/WXRTTmpFile." + std::to_string(t) + ".mp3") << "mp3 " << t;
    // Encoding behind the recording: a finished early MP3 with its stamp, one half made.
    std::ofstream(folder + "/WXRTTmpFile.1.early.mp3") << "early";
    std::ofstream(folder + "/WXRTTmpFile.1.early.stamp") << "stamp";
    std::ofstream(folder + "/WXRTTmpFile.2.encoding.mp3") << "half";
    std::ofstream(folder + "/WXRTTmpFile.exported") << "exported\n";
    std::ofstream(folder + "/notes.txt") << "kept";
}

std::string trackPath(const std::string& folder, int track) {
    return folder + "/WXRTTmpFile." + std::to_string(track) + ".wav";
}

RecordedSide sideOf(const std::string& folder, int tracks) {
    const SideOpen open = openRecordedSide(folder, tracks);
    EXPECT_EQ(open.problem, SideProblem::None);
    return open.side;
}

// The folder holds exactly the given cut of the stored samples, and nothing of a re-cut in
// progress; `derivedKept` says whether the MP3s and the exported marker must still be there.
void expectCut(const std::string& folder, const std::vector<int64_t>& lengths,
               const std::vector<int32_t>& stored, const test::SideShape& shape, bool derivedKept) {
    const auto files = test::readTrackFiles(folder);
    ASSERT_EQ(files.size(), lengths.size());
    for (size_t i = 0; i < files.size(); ++i) {
        SCOPED_TRACE("track " + std::to_string(i + 1));
        EXPECT_TRUE(files[i].readable);
        EXPECT_EQ(files[i].info.frames, lengths[i]);
        EXPECT_EQ(files[i].info.format, shape.format);
        EXPECT_EQ(files[i].info.channels, shape.channels);
        EXPECT_EQ(files[i].info.samplerate, shape.rate);
    }
    EXPECT_TRUE(joined(files) == stored) << "the joined samples differ";
    EXPECT_EQ(test::fileText(folder + "/WXRTTmpFile.count"),
              std::to_string(lengths.size()) + "\nfinished\n");
    EXPECT_EQ(fs::exists(folder + "/WXRTTmpFile.exported"), derivedKept);
    for (const char* made : {"1.mp3", "1.early.mp3", "1.early.stamp", "2.encoding.mp3"})
        EXPECT_EQ(fs::exists(folder + "/WXRTTmpFile." + made), derivedKept) << made;
    EXPECT_TRUE(fs::exists(folder + "/notes.txt"));
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        EXPECT_FALSE(isRecutTemporary(name)) << name;
        EXPECT_EQ(name.find(".tmp"), std::string::npos) << name;
    }
}

struct RecutCase {
    const char* name;
    std::vector<int64_t> oldFrames;
    std::vector<int64_t> boundaries;
    int format;
    int channels;
};

const RecutCase kRecutCases[] = {
    {"two tracks into four", {30000, 50000}, {10000, 30000, 61234}, SF_FORMAT_PCM_16, 2},
    {"four tracks into one", {1000, 2000, 3000, 4000}, {}, SF_FORMAT_PCM_16, 2},
    {"a split moved into the next file",
     {20000, 20000, 20000},
     {25000, 40000},
     SF_FORMAT_PCM_16,
     2},
    {"a split moved back by one frame", {20000, 20000}, {19999}, SF_FORMAT_PCM_16, 2},
    {"one track cut at every file end and between",
     {5, 70000},
     {1, 5, 6, 69999},
     SF_FORMAT_PCM_16,
     2},
    {"five into three, float files",
     {9000, 9000, 9000, 9000, 9000},
     {12000, 30000},
     SF_FORMAT_FLOAT,
     2},
    {"24-bit mono", {40000}, {17, 20000}, SF_FORMAT_PCM_24, 1},
};

// After an album end the recorder also leaves an uncounted file of run-out groove after the
// side; it is no part of the side and must not be taken for a track of the new set.
TEST(SideRecut, NewFilesJoinToTheSameSamplesInTheSameFormat) {
    for (const auto& c : kRecutCases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        const test::SideShape shape{c.oldFrames, SF_FORMAT_WAV | c.format, c.channels};
        const auto stored = test::writeSideFolder(dir.path(), shape);
        addDerivedFiles(dir.path(), shape.trackFrames.size());
        test::writeSideFolder(dir.file("run-out"), {{500}, shape.format, shape.channels}, 9);
        fs::rename(dir.file("run-out/WXRTTmpFile.1.wav"),
                   trackPath(dir.path(), static_cast<int>(c.oldFrames.size()) + 1));
        fs::remove_all(dir.file("run-out"));
        const RecordedSide side = sideOf(dir.path(), static_cast<int>(c.oldFrames.size()));

        const RecutResult r = recutSide(side, c.boundaries);
        ASSERT_EQ(r.problem, RecutProblem::None) << r.path << ": " << r.errorText;
        EXPECT_EQ(r.tracks, static_cast<int>(c.boundaries.size()) + 1);
        expectCut(dir.path(), lengthsFor(c.boundaries, sum(c.oldFrames)), stored, shape, false);
    }
}

// A re-cut that has nothing to do, is given bad boundaries or finds the files changed since the
// side was read leaves every file as it was.
TEST(SideRecut, WhatItNeedNotDoOrRefusesLeavesTheFolderAsItWas) {
    const struct {
        std::vector<int64_t> boundaries;
        bool changedSinceRead;
        RecutProblem problem;
    } cases[] = {
        {{3000}, false, RecutProblem::None}, // the live splits again
        {{0}, false, RecutProblem::BadBoundaries},
        {{-5}, false, RecutProblem::BadBoundaries},
        {{7000}, false, RecutProblem::BadBoundaries},
        {{7001}, false, RecutProblem::BadBoundaries},
        {{100, 100}, false, RecutProblem::BadBoundaries},
        {{200, 100}, false, RecutProblem::BadBoundaries},
        {{100, 6999, 7000}, false, RecutProblem::BadBoundaries},
        {{3000, 2999}, false, RecutProblem::BadBoundaries},
        {{1000}, true, RecutProblem::ReadFailed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.boundaries) +
                     (c.changedSinceRead ? " on changed files" : ""));
        test::TempDir dir;
        test::writeSideFolder(dir.path(), {{3000, 4000}});
        addDerivedFiles(dir.path(), 2);
        const RecordedSide side = sideOf(dir.path(), 2);
        if (c.changedSinceRead)
            test::writeSideFolder(dir.path(), {{3000, 4500}}, 2);
        const auto before = test::folderSnapshot(dir.path());
        const RecutResult r = recutSide(side, c.boundaries);
        EXPECT_EQ(r.problem, c.problem);
        EXPECT_EQ(r.tracks, 2);
        EXPECT_EQ(test::folderSnapshot(dir.path()), before);
    }
}

// The disk fills up: found by the free-space check before anything is written, or by a write
// failing part-way. Either way the old set stays as it was and no temporary is left.
TEST(SideRecut, AFullDiskLeavesTheOldSetUntouched) {
    struct Case {
        const char* name;
        int failingWrite; // the write call (counted from 1) that fails; 0: none
        int error;
        bool tooLittleSpace;
        RecutProblem problem;
    };
    const Case cases[] = {
        {"free-space check", 0, 0, true, RecutProblem::DiskFull},
        {"the first write", 1, ENOSPC, false, RecutProblem::DiskFull},
        {"a write in the second file", 40, ENOSPC, false, RecutProblem::DiskFull},
        {"over quota in the last file", 100, EDQUOT, false, RecutProblem::DiskFull},
        {"an I/O error", 25, EIO, false, RecutProblem::WriteFailed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir dir;
        const test::SideShape shape{{100000, 100000}};
        test::writeSideFolder(dir.path(), shape);
        addDerivedFiles(dir.path(), 2);
        const auto before = test::folderSnapshot(dir.path());
        uintmax_t oldBytes = 0;
        for (int t = 1; t <= 2; ++t)
            oldBytes += fs::file_size(trackPath(dir.path(), t));

        int writes = 0;
        std::string failedIn;
        RecutHooks hooks;
        // Room for a second copy of the audio but not its headers: too little.
        hooks.freeSpace = [&](const std::string&) {
            return c.tooLittleSpace ? oldBytes : oldBytes * 10;
        };
        hooks.failWrite = [&](const std::string& path) {
            if (++writes != c.failingWrite)
                return 0;
            failedIn = path;
            return c.error;
        };
        const RecutResult r = recutSide(sideOf(dir.path(), 2), {50000, 150000}, hooks);
        EXPECT_EQ(r.problem, c.problem);
        EXPECT_EQ(r.tracks, 2);
        EXPECT_EQ(r.errorText, std::strerror(c.tooLittleSpace ? ENOSPC : c.error));
        EXPECT_EQ(r.path, c.failingWrite ? failedIn : dir.path());
        EXPECT_GE(writes, c.failingWrite) << "the side was written in fewer calls";
        EXPECT_EQ(test::folderSnapshot(dir.path()), before);
    }
}

// A kill before any step of the re-cut, and then (when it got far enough to leave something)
// before any step of the recovery: the next recovery leaves the old set or the new one, whole.
// Which one is decided by whether the journal was in place when the kill came. A kill before
// step 0 leaves a folder no re-cut has touched: its recovery must change nothing.
TEST(SideRecut, AKillBetweenAnyTwoStepsLeavesOneWholeSet) {
    test::TempDir nothing;
    finishInterruptedRecut(nothing.file("no such folder"));
    for (const auto& c : kRecutCases) {
        SCOPED_TRACE(c.name);
        const test::SideShape shape{c.oldFrames, SF_FORMAT_WAV | c.format, c.channels};
        const int oldTracks = static_cast<int>(c.oldFrames.size());
        const auto oldLengths = c.oldFrames;
        const auto newLengths = lengthsFor(c.boundaries, sum(c.oldFrames));

        int steps = 0;
        {
            test::TempDir dir;
            test::writeSideFolder(dir.path(), shape);
            RecutHooks counting;
            counting.beforeStep = [&](int) { ++steps; };
            ASSERT_EQ(recutSide(sideOf(dir.path(), oldTracks), c.boundaries, counting).problem,
                      RecutProblem::None);
        }
        ASSERT_GT(steps, static_cast<int>(newLengths.size()) + 2);

        for (int k = 0; k < steps; ++k) {
            SCOPED_TRACE("killed before step " + std::to_string(k));
            test::TempDir dir;
            const auto stored = test::writeSideFolder(dir.path(), shape);
            addDerivedFiles(dir.path(), oldTracks);
            const auto untouched = test::folderSnapshot(dir.path());
            bool committed = false;
            RecutHooks killer;
            killer.beforeStep = [&](int step) {
                if (step == k) {
                    committed = fs::exists(dir.file("WXRTTmpFile.recut"));
                    throw Kill{};
                }
            };
            EXPECT_THROW(recutSide(sideOf(dir.path(), oldTracks), c.boundaries, killer), Kill);

            // The recovery itself killed at each of its steps in turn, then run to the end.
            int recoverySteps = 0;
            {
                RecutHooks counting;
                counting.beforeStep = [&](int) { ++recoverySteps; };
                test::TempDir copy;
                fs::copy(dir.path(), copy.path(), fs::copy_options::overwrite_existing);
                finishInterruptedRecut(copy.path(), counting);
            }
            for (int j = 0; j < recoverySteps; ++j) {
                test::TempDir copy;
                fs::copy(dir.path(), copy.path(), fs::copy_options::overwrite_existing);
                RecutHooks again;
                again.beforeStep = [&](int step) {
                    if (step == j)
                        throw Kill{};
                };
                EXPECT_THROW(finishInterruptedRecut(copy.path(), again), Kill);
                finishInterruptedRecut(copy.path());
                SCOPED_TRACE("recovery killed before its step " + std::to_string(j));
                expectCut(copy.path(), committed ? newLengths : oldLengths, stored, shape,
                          !committed);
            }

            finishInterruptedRecut(dir.path());
            expectCut(dir.path(), committed ? newLengths : oldLengths, stored, shape, !committed);
            if (k == 0) {
                EXPECT_EQ(test::folderSnapshot(dir.path()), untouched);
            }
            // A second recovery finds nothing to do.
            const auto settled = test::folderSnapshot(dir.path());
            finishInterruptedRecut(dir.path());
            EXPECT_EQ(test::folderSnapshot(dir.path()), settled);
        }
    }
}

} // namespace
} // namespace waxline
