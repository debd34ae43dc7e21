#pragma once

#include "cli/CommandLine.h"
#include "exporting/ExportProblem.h"

#include <string>
#include <vector>

namespace waxline::cli {

struct ExportOptions {
    std::string artist;
    std::string album;
    std::vector<std::string> titles;
    bool normalise = false;
    int tracks = -1;        // -1: the count the recorder left, else the files present
    std::string exportDir;  // empty: the default export folder
    std::string libraryDir; // empty: the user's music folder
    unsigned jobs = 0;      // encodings at once; 0: one per core
};

// Exports the tracks of the last recording into the music library, printing a line per track
// and then the library files made. Returns 0 when every track got there, 1 otherwise (with
// the reasons printed), 2 when there was nothing to export.
int exportRecording(const ExportOptions& options);

// The command line's words for what went wrong with a track, and for a warning about one.
std::string describe(const exporting::ExportProblem& problem);
std::string describe(const exporting::TrackWarning& warning);

// The command line's texts for the names that stand in for missing ones.
std::string exportText(const std::string& key);

// The naming options shared by export and digitize: --artist, --album, --title..., --library,
// --normalise, --jobs.
ExportOptions exportNamingOptions(Arguments& args);

} // namespace waxline::cli
