#pragma once

#include <map>
#include <optional>
#include <string>

// Where the export reads its track files and where the music library lies.
namespace waxline::exporting {

// The folder the recorder writes track files into: $WAXLINE_EXPORT_DIR when set, else the
// first generic data location followed by "/Waxline/Exports". Not created here.
std::string exportFolder();

// The user's music folder: $WAXLINE_MUSIC_DIR when set, else the first music location.
std::string musicFolder();

// "<folder>/WXRTTmpFile.<track>.wav", track counted from 1.
std::string trackFileName(const std::string& folder, int track);

// The MP3 made from a track: its path with the extension replaced by "mp3".
std::string mp3PathFor(const std::string& wavPath);

// The count of counted tracks the recorder leaves in "WXRTTmpFile.count" beside the files;
// nothing when the file is missing or does not hold a count.
std::optional<int> countedTracks(const std::string& folder);

// Whether the count file says the recording stopped cleanly (its count is final); false for a
// recording that was cut off, by a crash say, or has no count file.
bool recordingFinished(const std::string& folder);

// How many track files exist in a row from WXRTTmpFile.1.wav on.
int trackFilesPresent(const std::string& folder);

// Notes beside the track files that every track reached the library.
void markExported(const std::string& folder);

// The tracks of the recording that reached the library, each with its file there, as noted
// track by track while exporting.
std::map<int, std::string> savedTracks(const std::string& folder);
void noteTrackSaved(const std::string& folder, int track, const std::string& libraryPath);

// Whether the folder holds track files that no export has put into the library in full: what
// a new recording would throw away. A recording that counted no track and has no file beyond
// an empty first one holds nothing worth keeping.
bool holdsUnexportedRecording(const std::string& folder);

// Removes every entry of the folder, files and folders alike, but its lock file; errors are
// ignored.
void clearTmpFolder(const std::string& folder);

// The newer export path (encode, tag, import) is the only one on Linux.
bool isCatalinaOrGreater();

} // namespace waxline::exporting
