#include "cli/ExportSession.h"

#include "cli/Terminal.h"
#include "splitting/SideRecut.h"

#include "exporting/EarlyEncoder.h"
#include "exporting/ExportFolders.h"
#include "exporting/ExportPipeline.h"
#include "exporting/GrooveNoise.h"
#include "exporting/LibraryImporter.h"
#include "exporting/LibraryProbe.h"
#include "exporting/UnknownNames.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

// Why nothing can be made in the folder, as the system says it; empty when something can.
std::string whyNotWritable(const std::string& folder) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec)
        return ec.message();
    std::string name = folder + "/.waxline-probe-XXXXXX";
    const int fd = ::mkstemp(name.data());
    if (fd < 0)
        return std::strerror(errno);
    ::close(fd);
    ::unlink(name.c_str());
    return {};
}

std::string musicFolderProblem(const std::string& folder, const std::string& what) {
    const std::string why = whyNotWritable(folder);
    return "the music folder " + folder + " " + what + (why.empty() ? "" : " (" + why + ")") +
           ": choose another with --library DIR";
}

std::string quotedList(const std::vector<std::string>& items) {
    std::string text;
    for (size_t i = 0; i < items.size(); ++i)
        text += (i ? ", \"" : "\"") + items[i] + "\"";
    return text;
}

// What cleaning and measuring found in a track, one indented line each.
void printCleaning(const TrackOutcome& o, const ExportChoices& choices) {
    if (choices.clean.clicks)
        std::fprintf(userOut(), "  clicks repaired: %zu (%zu samples)\n", o.cleaning.clicks,
                     o.cleaning.samplesRepaired);
    if (choices.clean.hum != restoration::HumChoice::Off)
        std::fprintf(userOut(), "  %s\n", cli::describe(o.cleaning.hum).c_str());
    if (!o.loudness.empty())
        std::fprintf(userOut(), "  loudness: %.1f LUFS, ReplayGain %s\n", o.loudness[0].integrated,
                     replayGainText(o.loudness[0].integrated).c_str());
}

} // namespace

std::string describe(const restoration::HumProfile& hum) {
    if (!hum.present())
        return "hum: none found, nothing notched";
    std::string harmonics;
    for (int h : hum.harmonics)
        harmonics += (harmonics.empty() ? "" : ", ") + std::to_string(h);
    char text[96];
    std::snprintf(text, sizeof text, "hum: %.2f Hz, notched at harmonic%s ", hum.fundamental,
                  hum.harmonics.size() == 1 ? "" : "s");
    return text + harmonics;
}

std::string folderInUse(const std::string& folder, const ExportFolderLock& lock) {
    const FolderLockHolder& holder = lock.holder();
    std::string who = holder.program.empty() ? "another program" : holder.program;
    if (holder.pid > 0)
        who += " (process " + std::to_string(holder.pid) + ")";
    std::string doing = "is working in it";
    if (holder.use == FolderUse::Recording)
        doing = "is recording into it";
    else if (holder.use == FolderUse::Exporting)
        doing = "is exporting from it";
    else if (holder.use == FolderUse::Recutting)
        doing = "is re-cutting its tracks";
    return "the export folder " + folder + " is in use: " + who + " " + doing +
           "; wait until it has finished, or use another folder with --export-dir DIR";
}

std::string titleMismatch(const std::vector<std::string>& titles, int tracks, bool& tooMany) {
    tooMany = false;
    const auto count = static_cast<int>(titles.size());
    if (titles.empty() || count == tracks)
        return {};
    const std::string numbers = std::to_string(count) + " title" + (count == 1 ? "" : "s") +
                                " for " + std::to_string(tracks) + " track" +
                                (tracks == 1 ? "" : "s");
    if (count > tracks) {
        tooMany = true;
        const std::vector<std::string> unused(titles.begin() + tracks, titles.end());
        return numbers + ": not used " + quotedList(unused) +
               "; a missed split may have joined two tracks, so check the names";
    }
    return numbers + ": track" + (tracks - count == 1 ? " " : "s ") + std::to_string(count + 1) +
           (tracks - count == 1 ? "" : " to " + std::to_string(tracks)) +
           " will have no title; an extra split may have shifted the names, so check them";
}

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
    case Kind::CleaningFailed:
        return "cannot clean " + fileName(p.path) + ": " + p.detail;
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

bool lockExportFolder(ExportFolderLock& lock, const std::string& folder, FolderUse use,
                      const char* command) {
    switch (lock.tryLock(folder, use, "waxline-cli")) {
    case ExportFolderLock::Outcome::Taken:
        return true;
    case ExportFolderLock::Outcome::Held:
        std::fprintf(userErr(), "waxline-cli %s: %s\n", command, folderInUse(folder, lock).c_str());
        return false;
    case ExportFolderLock::Outcome::Failed:
        std::fprintf(userErr(), "waxline-cli %s: cannot lock the export folder %s (%s)\n", command,
                     folder.c_str(), std::strerror(lock.errorNumber()));
        return false;
    }
    return false;
}

int exportRecording(const ExportOptions& options, ExportFolderLock* heldLock) {
    const std::string folder = options.exportDir.empty() ? exportFolder() : options.exportDir;
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) {
        std::fprintf(userErr(), "No recorded tracks to export in %s\n", folder.c_str());
        return 2;
    }

    // One export at a time, and none while a recording writes the files it would read.
    ExportFolderLock ownLock;
    if (heldLock)
        heldLock->setUse(FolderUse::Exporting);
    else if (!lockExportFolder(ownLock, folder, FolderUse::Exporting, "export"))
        return 1;
    // A re-cut a kill interrupted is completed (or undone) before the files are counted.
    finishInterruptedRecut(folder);

    int tracks = options.tracks;
    if (tracks < 0 && recordingFinished(folder)) {
        tracks = countedTracks(folder).value_or(0);
        std::fprintf(userOut(), "The recording in %s finished cleanly: %d track%s\n",
                     folder.c_str(), tracks, tracks == 1 ? "" : "s");
    } else if (tracks < 0) {
        // Cut off (a crash, a kill): the closed tracks and the one being recorded, unless that
        // one caught nothing but the run-out groove. An empty folder is only said to be empty.
        tracks = trackFilesPresent(folder);
        if (tracks > 0)
            std::fprintf(userOut(),
                         "The recording in %s was interrupted (it did not stop cleanly): %d "
                         "track file%s, the last one cut off\n",
                         folder.c_str(), tracks, tracks == 1 ? "" : "s");
        if (tracks > 0 && holdsOnlyGrooveNoise(trackFileName(folder, tracks))) {
            std::fprintf(userOut(),
                         "Track file %d holds nothing but groove noise: it is left out\n", tracks);
            --tracks;
        }
    }
    if (tracks == 0) {
        std::fprintf(userErr(), "No recorded tracks to export in %s\n", folder.c_str());
        return 2;
    }

    bool tooManyTitles = false;
    const std::string mismatch = titleMismatch(options.titles, tracks, tooManyTitles);
    if (!mismatch.empty())
        std::fprintf(userErr(), "waxline-cli export: %s%s\n", tooManyTitles ? "warning: " : "",
                     mismatch.c_str());

    const LibraryImporter importer(options.libraryDir.empty() ? musicFolder() : options.libraryDir,
                                   exportText);
    // Nobody is there to fix the folder and confirm, so an unavailable library ends the export.
    const int probed =
        probeUntilAvailable([&] { return importer.probe(); }, {}, [] { return false; });
    if (probed != 0) {
        std::fprintf(userErr(), "waxline-cli export: %s; nothing was exported\n",
                     musicFolderProblem(importer.folder(), "cannot be written").c_str());
        return 1;
    }

    std::fprintf(userOut(), "Exporting %d track%s from %s to %s\n", tracks, tracks == 1 ? "" : "s",
                 folder.c_str(), importer.folder().c_str());
    std::fflush(userOut());

    ExportPipeline pipeline(importer);
    pipeline.onTrackConverted = [](const TrackOutcome& o) {
        if (!o.ok)
            std::fprintf(userErr(), "export of track %d failed: %s\n", o.index,
                         describe(o.problem).c_str());
    };
    pipeline.onStarted = [](const std::vector<int>& ready, int total) {
        if (ready.empty()) {
            std::fprintf(userOut(), "No track was ready before the export: each is encoded now\n");
        } else {
            std::string runs;
            for (const auto& [first, last] : trackRuns(ready)) {
                runs += runs.empty() ? "" : ", ";
                runs += std::to_string(first);
                if (last != first)
                    runs += "-" + std::to_string(last);
            }
            std::fprintf(userOut(),
                         "Encoded while recording, ready before the export: track%s %s of %d\n",
                         ready.size() == 1 ? "" : "s", runs.c_str(), total);
        }
        std::fflush(userOut());
    };
    const ExportChoices& choices = options.choices;
    pipeline.onTrackDone = [&choices](const TrackOutcome& o, int total) {
        if (o.ok)
            std::fprintf(userOut(), "track %d/%d  #%s  %s%s\n", o.index, total, o.number.c_str(),
                         o.libraryPath.c_str(),
                         o.readyBeforeExport ? "  (encoded while recording)" : "");
        else
            std::fprintf(userOut(), "track %d/%d  #%s  FAILED: %s\n", o.index, total,
                         o.number.c_str(), describe(o.problem).c_str());
        if (o.ok && !o.flacLibraryPath.empty() && o.flacLibraryPath != o.libraryPath)
            std::fprintf(userOut(), "           %s\n", o.flacLibraryPath.c_str());
        if (o.ok && !o.savedBefore)
            printCleaning(o, choices);
        for (const auto& warning : o.warnings)
            std::fprintf(userOut(), "  warning: %s\n", describe(warning).c_str());
        std::fflush(userOut());
    };
    // Nobody is there to fix the folder and confirm, so a failing check ends the export.
    pipeline.onProbeFailed = [&importer](int) {
        std::fprintf(userErr(), "waxline-cli export: %s; the remaining tracks were not exported\n",
                     musicFolderProblem(importer.folder(), "can no longer be written").c_str());
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
    request.tagText = options.unicodeTags ? TagText::Unicode : TagText::Latin1Bytes;
    request.trackNumbers = options.trackNumbers;
    request.releaseTags = options.releaseTags;
    request.choices = options.choices;
    if (options.early)
        request.beforeEncoding = [early = options.early](int track) { early->settle(track); };
    ExportNumbering numbering;
    const std::vector<TrackOutcome> outcomes = pipeline.run(request, numbering);

    int failed = 0;
    std::fprintf(userOut(), "\nLibrary files made:\n");
    for (const auto& o : outcomes) {
        if (o.ok)
            std::fprintf(userOut(), "  %s\n", o.libraryPath.c_str());
        if (o.ok && !o.flacLibraryPath.empty() && o.flacLibraryPath != o.libraryPath)
            std::fprintf(userOut(), "  %s\n", o.flacLibraryPath.c_str());
        if (!o.ok)
            ++failed;
    }
    if (failed == 0)
        return tooManyTitles ? 1 : 0;
    std::fprintf(userErr(), "%d of %zu tracks failed:\n", failed, outcomes.size());
    for (const auto& o : outcomes) {
        if (!o.ok)
            std::fprintf(userErr(), "  track %d: %s\n", o.index, describe(o.problem).c_str());
    }
    return 1;
}

} // namespace waxline::cli
