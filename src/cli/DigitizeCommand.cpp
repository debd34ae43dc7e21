#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/RecordSession.h"

#include <cstdio>

namespace waxline::cli {

int digitizeCommand(Arguments& args) {
    ExportOptions exportOptions = exportNamingOptions(args);
    const RecordOptions record = recordOptionsFrom(args);
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
