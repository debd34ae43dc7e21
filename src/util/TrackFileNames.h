#pragma once

#include <string>

// How a recording's track files and the notes beside them are named: the one rule the recorder
// writes by, the export reads by and a re-cut rewrites by.
namespace waxline {

// "<folder>/WXRTTmpFile.<track>.wav"; the number is written as it is, 0 and negatives included.
inline std::string trackFilePath(const std::string& folder, int track) {
    return folder + "/WXRTTmpFile." + std::to_string(track) + ".wav";
}

// "<folder>/WXRTTmpFile.count": the count of counted tracks, left beside the files. While
// recording it holds the tracks closed so far; a second line kTrackCountFinished says the
// recording stopped cleanly and the count is final.
inline std::string trackCountPath(const std::string& folder) {
    return folder + "/WXRTTmpFile.count";
}
inline constexpr const char* kTrackCountFinished = "finished";

// "<folder>/WXRTTmpFile.exported": left by an export that got every track into the library,
// so a new recording knows the files it would remove are safe elsewhere.
inline std::string exportedMarkPath(const std::string& folder) {
    return folder + "/WXRTTmpFile.exported";
}

// "<folder>/WXRTTmpFile.saved": one line per track that reached the library, "<track> <path>",
// written as each gets there; an export cut short leaves which are still missing.
inline std::string savedTracksPath(const std::string& folder) {
    return folder + "/WXRTTmpFile.saved";
}

} // namespace waxline
