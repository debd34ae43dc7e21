#include "cli/Commands.h"
#include "cli/ExportSession.h"
#include "cli/SplitsSession.h"
#include "cli/Terminal.h"
#include "exportfolder/ExportFolder.h"
#include "exportfolder/ExportFolderLock.h"
#include "exporting/ExportFolders.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace waxline::cli {

namespace {

// Below this the splitter is unsure: a guess to reach a count, or a gap that might be a quiet
// passage.
constexpr float kDoubtful = 0.5f;
// A live split and a proposed one this close are the same boundary, shown on one line.
constexpr double kSameBoundarySeconds = 3.0;

std::string sideProblem(const SideOpen& open) {
    const std::string name = std::filesystem::path(open.path).filename().string();
    switch (open.problem) {
    case SideProblem::None:
        return {};
    case SideProblem::NoTracks:
        return "no recorded tracks";
    case SideProblem::MissingFile:
        return "track file " + name + " is missing";
    case SideProblem::UnreadableFile:
        return "track file " + name + " is not a readable WAV file";
    case SideProblem::FormatsDiffer:
        return "track file " + name + " differs from the first in rate, channels or encoding";
    }
    return {};
}

// A column of the side-by-side table: ten characters and a space.
std::string padded(std::string text) {
    text.resize(std::max<size_t>(text.size(), 10), ' ');
    return text + " ";
}

void printSideBySide(const RecordedSide& side, const SplitsPlan& plan) {
    const double rate = side.sampleRate;
    const std::vector<int64_t> live = side.liveBoundaries();
    std::fprintf(userOut(), "  %-10s %-10s %s\n", "live", "proposed", "confidence");
    int doubtful = 0;
    size_t i = 0;
    size_t j = 0;
    while (i < live.size() || j < plan.boundaries.size()) {
        const double l = i < live.size() ? static_cast<double>(live[i]) / rate : INFINITY;
        const double p =
            j < plan.boundaries.size() ? static_cast<double>(plan.boundaries[j]) / rate : INFINITY;
        const bool takeLive = l <= p || std::abs(l - p) <= kSameBoundarySeconds;
        const bool takeProposed = p <= l || std::abs(l - p) <= kSameBoundarySeconds;
        std::string confidence;
        if (takeProposed) {
            const float c = plan.confidence[j];
            if (c < 0) {
                confidence = "typed";
            } else {
                char text[32];
                std::snprintf(text, sizeof text, "%.2f%s", c, c < kDoubtful ? "  doubtful" : "");
                confidence = text;
                doubtful += c < kDoubtful;
            }
        }
        std::string row = "  " + padded(takeLive ? sideClock(l) : "-") +
                          padded(takeProposed ? sideClock(p) : "-") + confidence;
        row.erase(row.find_last_not_of(' ') + 1);
        std::fprintf(userOut(), "%s\n", row.c_str());
        i += takeLive;
        j += takeProposed;
    }
    const int proposed = static_cast<int>(plan.boundaries.size()) + 1;
    std::fprintf(userOut(), "Live: %d track%s. Proposed: %d track%s", side.tracks(),
                 side.tracks() == 1 ? "" : "s", proposed, proposed == 1 ? "" : "s");
    if (doubtful > 0)
        std::fprintf(userOut(),
                     ", %d boundar%s doubtful (confidence below %.1f): listen there "
                     "before applying",
                     doubtful, doubtful == 1 ? "y" : "ies", kDoubtful);
    std::fprintf(userOut(), ".\n");
}

} // namespace

int splitsCommand(Arguments& args) {
    std::optional<std::string> given = args.option("--export-dir");
    if (const auto folderOption = args.option("--folder")) {
        if (given)
            throw UsageError("give --folder or --export-dir, not both");
        given = folderOption;
    }
    const SplitsRequest request = splitsRequestFrom(args, true);
    const bool apply = args.flag("--apply");
    if (!args.positional().empty())
        throw UsageError("unexpected argument '" + args.positional().front() + "'");

    const std::string folder = given ? *given : defaultExportFolder();
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) {
        std::fprintf(userErr(), "No recorded tracks in %s\n", folder.c_str());
        return 2;
    }
    // Nobody may record into the folder or export from it while its files are read or re-cut.
    ExportFolderLock lock;
    if (!lockExportFolder(lock, folder, FolderUse::Recutting, "splits"))
        return 1;
    finishInterruptedRecut(folder);

    int tracks = 0;
    if (exporting::recordingFinished(folder)) {
        tracks = exporting::countedTracks(folder).value_or(0);
    } else {
        tracks = exporting::trackFilesPresent(folder);
        if (tracks > 0)
            std::fprintf(userOut(),
                         "The recording in %s was interrupted (it did not stop cleanly): taking "
                         "its %d track file%s as the side\n",
                         folder.c_str(), tracks, tracks == 1 ? "" : "s");
    }
    if (tracks == 0) {
        std::fprintf(userErr(), "No recorded tracks in %s\n", folder.c_str());
        return 2;
    }
    const SideOpen open = openRecordedSide(folder, tracks);
    if (open.problem != SideProblem::None) {
        std::fprintf(userErr(), "waxline-cli splits: %s in %s\n", sideProblem(open).c_str(),
                     folder.c_str());
        return 1;
    }
    const RecordedSide& side = open.side;
    std::fprintf(userOut(), "The recording in %s: %d track%s, %s\n", folder.c_str(), side.tracks(),
                 side.tracks() == 1 ? "" : "s",
                 sideClock(static_cast<double>(side.frames()) / side.sampleRate).c_str());
    std::fflush(userOut());

    const SplitsPlan plan = planSplits(side, request);
    std::fprintf(userOut(), "Live splits and the proposal (%s):\n", plan.method.c_str());
    printSideBySide(side, plan);
    if (!plan.trustLine.empty())
        std::fprintf(userOut(), "%s\n", plan.trustLine.c_str());
    if (!apply) {
        if (plan.boundaries != side.liveBoundaries())
            std::fprintf(userOut(), plan.trusted
                                        ? "Give --apply to re-cut the tracks as proposed.\n"
                                        : "Give --apply to re-cut the tracks as proposed all the "
                                          "same, after listening there.\n");
        return 0;
    }
    return applySplits(side, plan, "splits") < 0 ? 1 : 0;
}

} // namespace waxline::cli
