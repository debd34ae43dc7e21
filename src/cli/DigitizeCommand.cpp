#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/LookupSession.h"
#include "cli/RecordSession.h"
#include "cli/SplitsSession.h"
#include "cli/Terminal.h"
#include "exportfolder/ExportFolder.h"
#include "exporting/EarlyEncoder.h"

#include <cstdio>
#include <tuple>

namespace waxline::cli {

int digitizeCommand(Arguments& args) {
    const std::optional<std::string> lookupText = args.option("--lookup");
    ExportOptions exportOptions = exportNamingOptions(args, lookupText.has_value());
    const RecordOptions record = recordOptionsFrom(args);
    const SplitsRequest splits = splitsRequestFrom(args, false);
    if (lookupText && splits.given())
        throw UsageError("--lookup cuts the side to the listing found: give it without --tracks "
                         "or --durations");
    if (!args.positional().empty())
        throw UsageError("unexpected argument '" + args.positional().front() + "'");

    // Held from the recording through its export, so no other run slips in between.
    ExportFolderLock lock;
    if (const int refused = claimExportFolder(record, lock, "digitize"))
        return refused;
    DiagnosticLog log;
    log.open(diagnosticLogPath(exportFolderOf(record)), "waxline-cli digitize", record.verbose);
    exporting::EarlyEncoder early;
    RecordOptions withEncoder = record;
    if (record.earlyEncoding)
        withEncoder.early = &early;
    RecordResult result;
    const int recorded = recordSide(withEncoder, result);
    if (recorded != 0)
        return recorded;
    if (result.endedBy == "interrupted") {
        // The last track was cut off: exported, it would carry its full title. Keep, not export.
        const std::string folder = exportFolderOf(record);
        std::fprintf(userErr(),
                     "The recording was interrupted: %d track%s (the last one cut off) %s kept "
                     "in %s and nothing was exported. Export them with: waxline-cli export "
                     "--export-dir %s --artist A --album B [--title T]...\n",
                     result.countedTracks, result.countedTracks == 1 ? "" : "s",
                     result.countedTracks == 1 ? "is" : "are", folder.c_str(), folder.c_str());
        if (record.earlyEncoding)
            finishEarlyEncoding(early, result.countedTracks);
        return 130;
    }
    if (result.countedTracks == 0) {
        std::fprintf(userErr(), "The recording holds no track to export (%s)\n",
                     result.endedBy.c_str());
        return 1;
    }
    int tracks = result.countedTracks;
    if (splits.given()) {
        // The re-cut makes new track files: what was encoded from the old ones is of no use.
        early.cancelAndWait();
        lock.setUse(FolderUse::Recutting);
        if (const int failed = applyRequestAfterRecording(exportFolderOf(record), tracks, splits,
                                                          "digitize", tracks))
            return failed;
    }
    if (lookupText) {
        early.cancelAndWait();
        lock.setUse(FolderUse::Recutting);
        const std::string folder = exportFolderOf(record);
        if (lookupAfterRecording(folder, tracks, *lookupText, tracks)) {
            if (!exportOptions.namesTyped)
                useKeptNames(exportOptions, *lookup::keptNames(folder), lookup::keptCover(folder));
        } else if (!exportOptions.namesTyped) {
            std::tie(exportOptions.artist, exportOptions.album) = artistAndAlbum(*lookupText);
        }
    }
    std::fprintf(userOut(), "\n");
    exportOptions.tracks = tracks;
    exportOptions.exportDir = record.exportDir;
    if (record.earlyEncoding)
        exportOptions.early = &early;
    return exportRecording(exportOptions, &lock);
}

} // namespace waxline::cli
