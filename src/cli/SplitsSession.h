#pragma once

#include "cli/CommandLine.h"
#include "splitting/RecordedSide.h"
#include "splitting/SideRecut.h"

#include <cstdint>
#include <string>
#include <vector>

// Where a recorded side's tracks should start, as the command line asks for it: the whole-side
// splitter's proposal (with the sleeve's track count or durations), or boundaries typed by hand.
namespace waxline::cli {

struct SplitsRequest {
    int tracks = 0;                // the sleeve's track count; 0 when not given
    std::string durations;         // the sleeve's durations as typed; empty when not given
    std::vector<double> atSeconds; // boundaries typed by hand, side seconds, rising
    bool byHand = false;
    bool given() const { return tracks > 0 || !durations.empty() || byHand; }
};

// --tracks N, --durations and (with `allowAt`) --at, checked as far as they can be without the
// side; throws BadValue or UsageError.
SplitsRequest splitsRequestFrom(Arguments& args, bool allowAt);

struct SplitsPlan {
    std::vector<int64_t> boundaries; // side frames, rising
    std::vector<float> confidence;   // per boundary; negative for one typed by hand
    std::string method;              // how they were found, for the heading
    // For the splitter's proposal: whether it is sure enough to replace the live splits, and
    // the one line that says which of the two is trusted and why. Empty for splits by hand.
    bool trusted = true;
    std::string trustLine;
};

// The boundaries the request asks for on this side, analysing it when the splitter is needed.
// Throws BadValue when the request does not fit the side (durations, a time outside it), and
// std::runtime_error when the side cannot be read or holds no music.
SplitsPlan planSplits(const RecordedSide& side, const SplitsRequest& request);

// "m:ss.s", minutes running on past the hour.
std::string sideClock(double seconds);

// The command line's words for a re-cut that failed.
std::string describe(const RecutResult& result);

// Re-cuts the side as planned and says so on standard output; a failure is said on standard
// error as `command`. Returns the track count now on disk, or -1 when the re-cut failed.
int applySplits(const RecordedSide& side, const SplitsPlan& plan, const char* command);

// For record and digitize: plans the request on the side just recorded (`tracks` counted) and
// re-cuts it. Returns 0 and sets `tracksNow`, or the exit status with the reason printed.
int applyRequestAfterRecording(const std::string& folder, int tracks, const SplitsRequest& request,
                               const char* command, int& tracksNow);

} // namespace waxline::cli
