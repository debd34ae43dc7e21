#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/RecordSession.h"

#include <cstdio>

namespace waxline::cli {

int digitizeCommand(Arguments& args) {
    ExportOptions exportOptions = exportNamingOptions(args);
    RecordOptions record;
    record.virtualDevice = args.option("--virtual-device").value_or("");
    record.input = args.option("--input").value_or("");
    record.preset = args.option("--preset").value_or("auto");
    if (record.preset != "auto" && record.preset != "none" && record.preset != "riaa" &&
        record.preset != "chrome" && record.preset != "brightspin")
        throw UsageError("--preset must be auto, none, riaa, chrome or brightspin");
    record.maxSeconds = args.numberOption("--max-seconds").value_or(0);
    if (record.maxSeconds < 0)
        throw UsageError("--max-seconds must not be negative");
    record.exportDir = args.option("--export-dir").value_or("");
    if (!args.positional().empty())
        throw UsageError("unexpected argument '" + args.positional().front() + "'");

    RecordResult result;
    const int recorded = recordSide(record, result);
    if (recorded != 0)
        return recorded;
    if (result.countedTracks == 0) {
        std::fprintf(stderr, "The recording holds no track to export (%s)\n",
                     result.endedBy.c_str());
        return 1;
    }
    std::printf("\n");
    exportOptions.tracks = result.countedTracks;
    exportOptions.exportDir = record.exportDir;
    return exportRecording(exportOptions);
}

} // namespace waxline::cli
