#include "cli/ExportSession.h"

#include "exporting/ExportFolders.h"
#include "exporting/ExportPipeline.h"
#include "exporting/LibraryImporter.h"

#include <cstdio>

namespace waxline::cli {

using namespace waxline::exporting;

int exportRecording(const ExportOptions& options) {
    const std::string folder = options.exportDir.empty() ? exportFolder() : options.exportDir;
    int tracks = options.tracks;
    if (tracks < 0) {
        const std::optional<int> counted = countedTracks(folder);
        tracks = counted ? *counted : trackFilesPresent(folder);
        if (!counted && tracks > 0)
            std::printf("No track count beside the files in %s: exporting all %d track files\n",
                        folder.c_str(), tracks);
    }
    if (tracks == 0) {
        std::fprintf(stderr, "No recorded tracks to export in %s\n", folder.c_str());
        return 2;
    }

    const LibraryImporter importer(options.libraryDir.empty() ? musicFolder() : options.libraryDir);
    if (const int error = importer.probe(); error != 0) {
        std::fprintf(stderr,
                     "The music library folder %s cannot be written (err = %d); nothing was "
                     "exported. Choose another with --library DIR.\n",
                     importer.folder().c_str(), error);
        return 1;
    }

    std::printf("Exporting %d track%s from %s to %s\n", tracks, tracks == 1 ? "" : "s",
                folder.c_str(), importer.folder().c_str());
    std::fflush(stdout);

    ExportPipeline pipeline(importer);
    pipeline.log = [](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); };
    pipeline.onTrackDone = [](const TrackOutcome& o, int total) {
        if (o.ok)
            std::printf("track %d/%d  #%s  %s\n", o.index, total, o.number.c_str(),
                        o.libraryPath.c_str());
        else
            std::printf("track %d/%d  #%s  FAILED: %s\n", o.index, total, o.number.c_str(),
                        o.message.c_str());
        for (const auto& warning : o.warnings)
            std::printf("  warning: %s\n", warning.c_str());
        std::fflush(stdout);
    };
    // Nobody is there to fix the folder and confirm, so a failing check ends the export.
    pipeline.onProbeFailed = [](int) { return false; };

    ExportRequest request;
    request.exportFolder = folder;
    request.artist = options.artist;
    request.album = options.album;
    request.titles = options.titles;
    request.normalise = options.normalise;
    request.numRecordedTracks = [tracks] { return tracks; };
    request.jobs = options.jobs;
    ExportNumbering numbering;
    const std::vector<TrackOutcome> outcomes = pipeline.run(request, numbering);

    int failed = 0;
    std::printf("\nLibrary files made:\n");
    for (const auto& o : outcomes) {
        if (o.ok)
            std::printf("  %s\n", o.libraryPath.c_str());
        else
            ++failed;
    }
    if (failed == 0)
        return 0;
    std::fprintf(stderr, "%d of %zu tracks failed:\n", failed, outcomes.size());
    for (const auto& o : outcomes) {
        if (!o.ok)
            std::fprintf(stderr, "  track %d: %s\n", o.index, o.message.c_str());
    }
    return 1;
}

} // namespace waxline::cli
