#include "app/InterruptedRecording.h"

#include "exporting/ExportFolders.h"
#include "exporting/TrackFileCheck.h"
#include "util/TrackFileNames.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace waxline::app {

std::optional<InterruptedRecording> findInterruptedRecording(const std::string& folder) {
    if (!exporting::holdsUnexportedRecording(folder))
        return std::nullopt;
    InterruptedRecording found;
    const bool finished = exporting::recordingFinished(folder);
    // Stopped cleanly, the count says how many; cut off, the files with audio tell.
    const int files = finished ? exporting::countedTracks(folder).value_or(0)
                               : exporting::trackFilesPresent(folder);
    for (int track = 1; track <= files; ++track) {
        // The header may be seconds behind the audio: the size of the file tells.
        const auto layout = exporting::measureTrackFile(exporting::trackFileName(folder, track));
        if (finished)
            found.tracks = track;
        if (!layout || layout->frames == 0)
            continue;
        found.tracks = track;
        found.seconds += layout->seconds();
    }
    if (found.tracks == 0)
        return std::nullopt;
    for (const auto& saved : exporting::savedTracks(folder))
        found.saved += saved.first <= found.tracks ? 1 : 0;
    found.state = !finished         ? InterruptedRecording::State::Interrupted
                  : found.saved > 0 ? InterruptedRecording::State::HalfExported
                                    : InterruptedRecording::State::NotExported;
    return found;
}

bool repairInterruptedRecording(const std::string& folder, int tracks) {
    bool all = true;
    for (int track = 1; track <= tracks; ++track)
        all = exporting::repairTrackFile(exporting::trackFileName(folder, track)) && all;
    std::ofstream count(trackCountPath(folder), std::ios::trunc);
    count << tracks << '\n' << kTrackCountFinished << '\n';
    return all && bool(count);
}

QString lengthText(double seconds) {
    const auto total = static_cast<unsigned long>(std::lround(std::max(0.0, seconds)));
    return QString::asprintf("%lu:%02lu:%02lu", total / 3600, total / 60 % 60, total % 60);
}

} // namespace waxline::app
