#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/RecordSession.h"
#include "cli/SplitsSession.h"
#include "cli/Terminal.h"
#include "exportfolder/ExportFolder.h"
#include "exporting/EarlyEncoder.h"
#include "exporting/ExportFolders.h"
#include "splitting/SideRecut.h"
#include "util/Decibels.h"

#include <cstdio>
#include <filesystem>

namespace waxline::cli {

RecordOptions recordOptionsFrom(Arguments& args) {
    RecordOptions options;
    options.virtualDevice = args.option("--virtual-device").value_or("");
    options.input = args.option("--input").value_or("");
    options.preset = args.option("--preset").value_or("auto");
    if (options.preset != "auto" && options.preset != "none" && options.preset != "riaa" &&
        options.preset != "chrome" && options.preset != "brightspin")
        throw UsageError("--preset must be auto, none, riaa, chrome or brightspin");
    const std::string split = args.option("--split").value_or("auto");
    if (split != "auto" && split != "off")
        throw UsageError("--split must be auto or off");
    options.automaticSplit = split == "auto";
    const double gain = args.numberOption("--gain").value_or(0);
    if (gain < kMinGainDb || gain > kMaxGainDb)
        throw BadValue("--gain must lie between -60 and 40 dB");
    options.gainDb = static_cast<float>(gain);
    options.maxSeconds = args.numberOption("--max-seconds").value_or(0);
    if (options.maxSeconds < 0)
        throw BadValue("--max-seconds must not be negative");
    options.exportDir = args.option("--export-dir").value_or("");
    options.discard = args.flag("--discard");
    options.verbose = args.flag("--verbose");
    options.earlyEncoding = !args.flag("--no-early-encoding");
    return options;
}

std::string exportFolderOf(const RecordOptions& options) {
    return options.exportDir.empty() ? defaultExportFolder() : options.exportDir;
}

int claimExportFolder(const RecordOptions& options, ExportFolderLock& lock, const char* command) {
    const std::string folder = exportFolderOf(options);
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (!lockExportFolder(lock, folder, FolderUse::Recording, command))
        return 1;
    // What a killed re-cut left is settled first, so the recording kept below is a whole one.
    finishInterruptedRecut(folder);
    if (!options.discard && exporting::holdsUnexportedRecording(folder)) {
        const int files = exporting::trackFilesPresent(folder);
        std::fprintf(userErr(),
                     "waxline-cli %s: %s holds a recording (%d track file%s) that was never "
                     "exported; export it first (waxline-cli export --export-dir %s --artist A "
                     "--album B), or give --discard to record over it\n",
                     command, folder.c_str(), files, files == 1 ? "" : "s", folder.c_str());
        return 2;
    }
    return 0;
}

void finishEarlyEncoding(exporting::EarlyEncoder& early, int tracks) {
    if (tracks > early.finishedCount()) {
        std::fprintf(userOut(), "Encoding the last tracks to MP3...\n");
        std::fflush(userOut());
    }
    early.finish();
    std::fprintf(userOut(), "%d of %d track%s encoded to MP3 while recording\n",
                 early.finishedCount(), tracks, tracks == 1 ? "" : "s");
}

int recordCommand(Arguments& args) {
    const RecordOptions options = recordOptionsFrom(args);
    const SplitsRequest splits = splitsRequestFrom(args, false);
    if (!args.positional().empty())
        throw UsageError("unexpected argument '" + args.positional().front() + "'");
    ExportFolderLock lock;
    if (const int refused = claimExportFolder(options, lock, "record"))
        return refused;
    DiagnosticLog log;
    log.open(diagnosticLogPath(exportFolderOf(options)), "waxline-cli record", options.verbose);
    exporting::EarlyEncoder early;
    RecordOptions withEncoder = options;
    if (options.earlyEncoding)
        withEncoder.early = &early;
    RecordResult result;
    const int recorded = recordSide(withEncoder, result);
    if (recorded != 0 || !splits.given() || result.countedTracks == 0) {
        // The folder stays locked until the last MP3 is made, so an export cannot start on a
        // track that is still being encoded.
        if (options.earlyEncoding)
            finishEarlyEncoding(early, result.countedTracks);
        return recorded;
    }
    // The re-cut makes new track files: what was encoded from the old ones is of no use.
    early.cancelAndWait();
    lock.setUse(FolderUse::Recutting);
    int tracks = 0;
    return applyRequestAfterRecording(exportFolderOf(options), result.countedTracks, splits,
                                      "record", tracks);
}

} // namespace waxline::cli
