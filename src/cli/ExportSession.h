#pragma once

#include "cli/CommandLine.h"
#include "exportfolder/ExportFolderLock.h"
#include "exporting/ExportChoices.h"
#include "exporting/ExportProblem.h"
#include "tagging/ReleaseTags.h"

#include <string>
#include <vector>

namespace waxline::exporting {
class EarlyEncoder;
}

namespace waxline::cli {

struct ExportOptions {
    std::string artist;
    std::string album;
    std::vector<std::string> titles;
    bool normalise = false;
    int tracks = -1;          // -1: the count the recorder left, else the files present
    std::string exportDir;    // empty: the default export folder
    std::string libraryDir;   // empty: the user's music folder
    unsigned jobs = 0;        // encodings at once; 0: one per core
    bool unicodeTags = false; // names written as the text they are, not as Latin-1 bytes
    // The background encoder of the recording just made (digitize): the export lets it finish
    // or give up each track before encoding it itself. None: only what it left is taken.
    exporting::EarlyEncoder* early = nullptr;
    // From names a lookup kept: per track, the number to tag and the release's further tags.
    std::vector<std::string> trackNumbers;
    std::vector<ReleaseTags> releaseTags;
    bool namesTyped = false; // --artist and --album were given
    // Formats, cleaning, loudness and sheets: --format, --clean, --clean-flac, --loudness,
    // --sheets.
    exporting::ExportChoices choices;
};

// Exports the tracks of the last recording into the music library, printing a line per track
// and then the library files made. Returns 0 when every track got there, 1 otherwise (with
// the reasons printed) or when more titles were given than there are tracks, 2 when there was
// nothing to export.
// With `heldLock`, the caller holds the export folder's lock already (digitize, from its
// recording on); else the export takes it and refuses a folder in use.
int exportRecording(const ExportOptions& options, ExportFolderLock* heldLock = nullptr);

// Takes the export folder's lock, or says on standard error why not, as `command`.
bool lockExportFolder(ExportFolderLock& lock, const std::string& folder, FolderUse use,
                      const char* command);

// The line that says the export folder is in use and by whom, for a lock that was not taken.
std::string folderInUse(const std::string& folder, const ExportFolderLock& lock);

// What is wrong when titles and tracks do not match in number, one line; empty when they
// match or no title was given at all. Sets `tooMany` when titles are left over.
std::string titleMismatch(const std::vector<std::string>& titles, int tracks, bool& tooMany);

// The command line's words for what went wrong with a track, and for a warning about one.
std::string describe(const exporting::ExportProblem& problem);
std::string describe(const exporting::TrackWarning& warning);
std::string describe(const restoration::HumProfile& hum);

// The command line's texts for the names that stand in for missing ones.
std::string exportText(const std::string& key);

// The naming options shared by export and digitize: --artist, --album, --title..., --library,
// --normalise, --jobs, --unicode-tags, and the archive's --format, --clean, --clean-flac,
// --loudness, --sheets.
// With `namesKept` (a lookup left names to use), --artist and --album may be left out.
ExportOptions exportNamingOptions(Arguments& args, bool namesKept = false);

} // namespace waxline::cli
