#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/LookupRun.h"
#include "cli/SplitsSession.h"
#include "cli/Terminal.h"
#include "exportfolder/ExportFolder.h"
#include "exportfolder/ExportFolderLock.h"
#include "exporting/ExportFolders.h"
#include "lookup/MusicBrainzJson.h"

#include <cstdio>
#include <filesystem>

namespace waxline::cli {

using namespace lookup;

namespace {

// Search hits read and fitted to the side: one a second under the service's rule.
constexpr int kReadForList = 5;

int recordedTracks(const std::string& folder) {
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec))
        return 0;
    finishInterruptedRecut(folder);
    return exporting::recordingFinished(folder) ? exporting::countedTracks(folder).value_or(0)
                                                : exporting::trackFilesPresent(folder);
}

std::string clock(double seconds) {
    if (!(seconds > 0))
        return "?";
    const long s = std::lround(seconds);
    char text[48];
    std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
    return text;
}

void printCandidates(const std::vector<LookupRun::Candidate>& list, bool fitted) {
    std::fprintf(userOut(), "  %-36s  %-18s %-7s %-4s %-5s %s\n", "release", "format", "country",
                 "year", "sides", fitted ? "fit to the recorded side" : "");
    for (const auto& c : list) {
        std::string fit = "-";
        std::string sides = "-";
        if (c.release)
            sides = std::to_string(c.release->sideCount());
        if (c.fit && c.fit->score < kNoFit) {
            fit = "no fit";
        } else if (c.fit) {
            char text[256];
            std::snprintf(text, sizeof text, "%3.0f %% %s%s", c.fit->score * 100,
                          fitText(*c.release, *c.fit).c_str(),
                          c.fit->confident ? "" : " (not sure)");
            fit = text;
        }
        std::fprintf(userOut(), "  %-36s  %-18s %-7s %-4s %-5s %s\n    %s - %s\n",
                     c.summary.id.c_str(), c.summary.formatText().c_str(),
                     c.summary.country.empty() ? "-" : c.summary.country.c_str(),
                     c.summary.year().empty() ? "-" : c.summary.year().c_str(), sides.c_str(),
                     fitted ? fit.c_str() : "", c.summary.artist.c_str(), c.summary.title.c_str());
    }
}

void printListing(const Release& release, const ListingFit* fit) {
    for (size_t m = 0; m < release.media.size(); ++m) {
        const Medium& medium = release.media[m];
        for (size_t t = 0; t < medium.tracks.size(); ++t) {
            const bool chosen = fit && fit->medium == static_cast<int>(m) && t >= fit->firstTrack &&
                                t < fit->firstTrack + fit->trackCount;
            const ListedTrack& track = medium.tracks[t];
            std::fprintf(userOut(), "  %s %-4s %6s  %s\n", chosen ? "*" : " ", track.number.c_str(),
                         clock(track.seconds).c_str(), track.title.c_str());
        }
    }
}

} // namespace

int lookupCommand(Arguments& args) {
    const auto artist = args.option("--artist");
    const auto album = args.option("--album");
    const auto barcode = args.option("--barcode");
    const auto catno = args.option("--catno");
    const auto releaseId = args.option("--release");
    const std::string onlySide = args.option("--side").value_or("");
    const bool apply = args.flag("--apply");
    const std::string folder = args.option("--export-dir").value_or(defaultExportFolder());
    if (!args.positional().empty())
        throw UsageError("unexpected argument '" + args.positional().front() + "'");
    const int ways =
        (artist || album) + barcode.has_value() + catno.has_value() + releaseId.has_value();
    if (ways != 1)
        throw UsageError("give one of --artist/--album, --barcode, --catno and --release");
    if ((apply || !onlySide.empty()) && !releaseId)
        throw UsageError("--side and --apply go with --release");

    // Nobody may record into the folder or export from it while its side is read or re-cut.
    ExportFolderLock lock;
    std::error_code ec;
    if (std::filesystem::is_directory(folder, ec) &&
        !lockExportFolder(lock, folder, FolderUse::Recutting, "lookup"))
        return 1;
    const int tracks = recordedTracks(folder);
    if (apply && tracks == 0) {
        std::fprintf(userErr(), "waxline-cli lookup: no recorded side in %s to apply it to\n",
                     folder.c_str());
        return 2;
    }
    LookupRun run;
    std::optional<LookupRun::Side> side;
    if (tracks > 0) {
        std::fprintf(userOut(), "Reading the recorded side in %s\n", folder.c_str());
        std::fflush(userOut());
        std::string why;
        side = run.analyse(folder, tracks, why);
        if (!side)
            std::fprintf(userOut(), "No fit to the side: %s\n", why.c_str());
    }

    std::string why;
    if (!releaseId) {
        const QString query = barcode ? barcodeQuery(QString::fromStdString(*barcode))
                              : catno
                                  ? catalogueNumberQuery(QString::fromStdString(*catno))
                                  : artistAlbumQuery(QString::fromStdString(artist.value_or("")),
                                                     QString::fromStdString(album.value_or("")));
        const auto found = run.search(query, why);
        if (!found) {
            std::fprintf(userErr(), "waxline-cli lookup: %s\n", why.c_str());
            return 1;
        }
        printCandidates(run.candidates(*found, side ? &*side : nullptr, kReadForList),
                        side.has_value());
        std::fprintf(userOut(), "Apply one with: waxline-cli lookup --release ID --apply\n");
        return 0;
    }

    const auto release = run.read(*releaseId, why);
    if (!release) {
        std::fprintf(userErr(), "waxline-cli lookup: %s\n", why.c_str());
        return 1;
    }
    std::vector<ListingFit> fits;
    if (side)
        fits = fitRelease(*release, side->shape, onlySide);
    if (side && fits.empty()) {
        std::fprintf(userErr(), "waxline-cli lookup: the release has no side %s\n",
                     onlySide.c_str());
        return 2;
    }
    std::fprintf(userOut(), "%s - %s (%s, %s, %s)\n", release->summary.artist.c_str(),
                 release->summary.title.c_str(), release->summary.formatText().c_str(),
                 release->summary.country.c_str(), release->summary.year().c_str());
    if (!fits.empty())
        run.printFit(*release, fits.front());
    printListing(*release, fits.empty() ? nullptr : &fits.front());
    if (!apply)
        return 0;
    if (!side)
        return 1;
    int now = tracks;
    return run.apply(*side, *release, fits.front(), "lookup", now) ? 0 : 1;
}

} // namespace waxline::cli
