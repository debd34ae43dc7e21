#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/LookupSession.h"
#include "exportfolder/ExportFolder.h"

namespace waxline::cli {

ExportOptions exportNamingOptions(Arguments& args, bool namesKept) {
    ExportOptions options;
    auto artist = args.option("--artist");
    auto album = args.option("--album");
    if ((!artist || !album) && !(namesKept && !artist && !album))
        throw UsageError(namesKept ? "give both --artist and --album, or neither to take the "
                                     "names the lookup kept"
                                   : "--artist and --album are needed (they may be empty: \"\")");
    options.namesTyped = artist.has_value();
    options.artist = artist.value_or("");
    options.album = album.value_or("");
    options.titles = args.options("--title");
    options.libraryDir = args.option("--library").value_or("");
    options.normalise = args.flag("--normalise");
    options.jobs = static_cast<unsigned>(args.integerOption("--jobs", 1, 64).value_or(0));
    options.unicodeTags = args.flag("--unicode-tags");
    if (const auto format = args.option("--format")) {
        const auto chosen = exporting::exportFormatNamed(*format);
        if (!chosen)
            throw BadValue("--format takes mp3, flac or both, not '" + *format + "'");
        options.choices.format = *chosen;
    }
    if (const auto clean = args.option("--clean")) {
        const auto chosen = restoration::cleaningNamed(*clean);
        if (!chosen)
            throw BadValue("--clean takes clicks, hum or clicks,hum, not '" + *clean + "'");
        options.choices.clean = *chosen;
    }
    options.choices.cleanFlac = args.flag("--clean-flac");
    if (options.choices.cleanFlac && !options.choices.clean.any())
        throw UsageError("--clean-flac needs --clean");
    options.choices.loudness = args.flag("--loudness");
    // The archive always gets its sheets; MP3s alone when asked.
    options.choices.sheets =
        args.flag("--sheets") || options.choices.format != exporting::ExportFormat::Mp3;
    return options;
}

int exportCommand(Arguments& args) {
    const std::string exportDir = args.option("--export-dir").value_or("");
    const std::string folder = exportDir.empty() ? defaultExportFolder() : exportDir;
    const auto kept = lookup::keptNames(folder);
    ExportOptions options = exportNamingOptions(args, kept.has_value());
    // Names typed for the export are the user's word over what a lookup found.
    if (kept && !options.namesTyped)
        useKeptNames(options, *kept, lookup::keptCover(folder));
    options.tracks = static_cast<int>(args.integerOption("--tracks", 1, 1000).value_or(-1));
    options.exportDir = exportDir;
    if (!args.positional().empty())
        throw UsageError("unexpected argument '" + args.positional().front() + "'");
    return exportRecording(options);
}

} // namespace waxline::cli
