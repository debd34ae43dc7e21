#include "cli/ExportSession.h"

#include "exporting/ExportFolders.h"
#include "exporting/ExportPipeline.h"
#include "exporting/LibraryImporter.h"
#include "exporting/LibraryProbe.h"
#include "exporting/UnknownNames.h"

#include <cstdio>
#include <filesystem>

namespace waxline::cli {

using namespace waxline::exporting;

namespace {

std::string fileName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

std::string encoderFailed(const ExportProblem& p, const std::string& why) {
    return "encoder failed with exit status " + std::to_string(p.status) + ": " + p.command +
           (why.empty() ? "" : "\n  " + why);
}

} // namespace

std::string describe(const ExportProblem& p) {
    using Kind = ExportProblem::Kind;
    const std::string importFailed = "import into the music library failed: ";
    switch (p.kind) {
    case Kind::None:
        return {};
    case Kind::TrackFileMissing:
        return "track file " + fileName(p.path) + " is missing";
    case Kind::TrackFileEmpty:
        return "track file " + fileName(p.path) + " is empty";
    case Kind::TrackFileUnreadable:
        return "track file " + fileName(p.path) + " is not a readable WAV file (" + p.detail + ")";
    case Kind::TrackFileHoldsNoAudio:
        return "track file " + fileName(p.path) + " holds no audio";
    case Kind::EncoderFailed:
        return encoderFailed(p, p.detail);
    case Kind::EncoderNotFound:
        return encoderFailed(p, "ffmpeg was found neither beside the program nor on PATH");
    case Kind::EncoderNotStarted:
        return encoderFailed(p, "cannot start " + p.path + ": " + p.detail);
    case Kind::EncoderNoPipe:
        return encoderFailed(p, "cannot make a pipe: " + p.detail);
    case Kind::EncoderNothingToRun:
        return encoderFailed(p, "no program to run");
    case Kind::EncoderMadeNoMp3:
        return "encoder made no MP3: " + p.command;
    case Kind::NormaliseCannotRead:
        return "cannot read " + p.path + " to normalise it: " + p.detail;
    case Kind::NormaliseCannotCreate:
        return "cannot create " + p.path + ": " + p.detail;
    case Kind::NormaliseCannotWrite:
        return "cannot write " + p.path + ": " + p.detail;
    case Kind::NormaliseCannotFinish:
        return "cannot finish " + p.path;
    case Kind::CannotTag:
        return "cannot open " + p.path + " to tag it";
    case Kind::ImportCannotMakeFolder:
        return importFailed + "cannot make the library folder " + p.path +
               (p.detail.empty() ? "" : ": " + p.detail);
    case Kind::ImportCannotCreate:
        return importFailed + "cannot write into " + p.path + ": " + p.detail;
    case Kind::ImportCannotRead:
        return importFailed + "cannot read " + p.path + ": " + p.detail;
    case Kind::ImportCannotWrite:
        return importFailed + "cannot write into the library: " + p.detail;
    case Kind::ImportCannotPutInPlace:
        return importFailed + "cannot put " + p.path + " in place: " + p.detail;
    case Kind::LibraryUnavailable:
        return "the music library " + p.path + " is unavailable";
    case Kind::NotExported:
        return "not exported: the music library is unavailable";
    }
    return {};
}

std::string describe(const TrackWarning& w) {
    char text[160];
    std::snprintf(text, sizeof text,
                  "track file %s is truncated: %llu of %llu bytes of audio are there; "
                  "exporting the %.1f s that remain",
                  fileName(w.path).c_str(), static_cast<unsigned long long>(w.bytesPresent),
                  static_cast<unsigned long long>(w.bytesAnnounced), w.seconds);
    return text;
}

std::string exportText(const std::string& key) {
    if (key == kUnknownTrackKey)
        return "Track %1";
    if (key == kUnknownArtistKey)
        return "Unknown Artist";
    if (key == kUnknownAlbumKey)
        return "Unknown Album";
    return key;
}

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
    // Nobody is there to fix the folder and confirm, so an unavailable library ends the export.
    const int probed =
        probeUntilAvailable([&] { return importer.probe(); }, {}, [] { return false; });
    if (const int error = probed; error != 0) {
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
    pipeline.onTrackConverted = [](const TrackOutcome& o) {
        if (!o.ok)
            std::fprintf(stderr, "export of track %d failed: %s\n", o.index,
                         describe(o.problem).c_str());
    };
    pipeline.onTrackDone = [](const TrackOutcome& o, int total) {
        if (o.ok)
            std::printf("track %d/%d  #%s  %s\n", o.index, total, o.number.c_str(),
                        o.libraryPath.c_str());
        else
            std::printf("track %d/%d  #%s  FAILED: %s\n", o.index, total, o.number.c_str(),
                        describe(o.problem).c_str());
        for (const auto& warning : o.warnings)
            std::printf("  warning: %s\n", describe(warning).c_str());
        std::fflush(stdout);
    };
    // Nobody is there to fix the folder and confirm, so a failing check ends the export.
    pipeline.onProbeFailed = [](int error) {
        std::fprintf(stderr, "music library check after conversion failed: err = %d\n", error);
        return false;
    };

    ExportRequest request;
    request.exportFolder = folder;
    request.artist = options.artist;
    request.album = options.album;
    request.titles = options.titles;
    request.normalise = options.normalise;
    request.numRecordedTracks = [tracks] { return tracks; };
    request.jobs = options.jobs;
    request.text = exportText;
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
            std::fprintf(stderr, "  track %d: %s\n", o.index, describe(o.problem).c_str());
    }
    return 1;
}

} // namespace waxline::cli
