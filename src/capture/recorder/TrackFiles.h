#pragma once

#include <string>

// Where a recording's track files lie and how they are named: the one rule that the recorder
// writes by and the export reads by.
namespace waxline {

// $WAXLINE_EXPORT_DIR when set, else the first generic data location followed by
// "/Waxline/Exports". Not created here.
std::string defaultExportFolder();

// "<folder>/WXRTTmpFile.<track>.wav"; the number is written as it is, 0 and negatives included.
std::string trackFilePath(const std::string& folder, int track);

// "<folder>/WXRTTmpFile.count": the count of counted tracks, left beside the files. While
// recording it holds the tracks closed so far; a second line kTrackCountFinished says the
// recording stopped cleanly and the count is final.
std::string trackCountPath(const std::string& folder);
inline constexpr const char* kTrackCountFinished = "finished";

// "<folder>/WXRTTmpFile.exported": left by an export that got every track into the library,
// so a new recording knows the files it would remove are safe elsewhere.
std::string exportedMarkPath(const std::string& folder);

} // namespace waxline
