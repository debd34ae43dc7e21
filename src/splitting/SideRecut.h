#pragma once

#include "splitting/RecordedSide.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Re-cutting a recorded side: the same frames in new track files, switched in so that a kill at
// any moment leaves the old set or the new one complete.
namespace waxline {

enum class RecutProblem { None, BadBoundaries, ReadFailed, DiskFull, WriteFailed };

struct RecutResult {
    RecutProblem problem = RecutProblem::None;
    int tracks = 0;        // the count now on disk (the old one when it failed)
    std::string path;      // the file concerned when it failed
    std::string errorText; // what the system said
};

// Rewrites the side's files so that tracks start at `boundaries` (side frames, strictly rising,
// inside the side): new files under temporary names, then a small journal switches them in.
// Joined, the new files are the side frame for frame, in the files' own format. Updates
// WXRTTmpFile.count (marked finished), removes anything made from the old files (MP3s beside
// them, the exported marker) and old files beyond the new count, the uncounted run-out file after
// the side included. A full disk leaves the old set untouched. Boundaries equal to the live ones
// change nothing.
RecutResult recutSide(const RecordedSide& side, const std::vector<int64_t>& boundaries);

// Completes or rolls back a re-cut a kill interrupted; a no-op when there is none. Anything
// that reads the folder (export, splits, the window at start-up, Record) calls it first.
void finishInterruptedRecut(const std::string& folder);

// Seams for tests, which cannot kill a process between two renames or fill a disk at will.
struct RecutHooks {
    // Called before each step that changes the folder, numbered from 0 in each call of
    // recutSide or finishInterruptedRecut; throwing here stands for a kill at that point.
    std::function<void(int step)> beforeStep;
    // Free bytes on the folder's file system; std::filesystem::space when unset.
    std::function<uintmax_t(const std::string& folder)> freeSpace;
    // An errno a write into `path` fails with, 0 to let it through (ENOSPC: the disk is full).
    std::function<int(const std::string& path)> failWrite;
};
RecutResult recutSide(const RecordedSide& side, const std::vector<int64_t>& boundaries,
                      const RecutHooks& hooks);
void finishInterruptedRecut(const std::string& folder, const RecutHooks& hooks);

// What the recut leaves in the folder while it works, for those that list the folder.
std::string recutJournalPath(const std::string& folder);
bool isRecutTemporary(const std::string& fileName);

} // namespace waxline
