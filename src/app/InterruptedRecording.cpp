#include "app/InterruptedRecording.h"

#include "exporting/ExportFolders.h"
#include "exporting/TrackFileCheck.h"

#include <algorithm>
#include <cmath>

namespace waxline::app {

std::optional<InterruptedRecording> findInterruptedRecording(const std::string& folder) {
    if (exporting::recordingFinished(folder) || !exporting::holdsUnexportedRecording(folder))
        return std::nullopt;
    InterruptedRecording found;
    const int files = exporting::trackFilesPresent(folder);
    for (int track = 1; track <= files; ++track) {
        // The header may be seconds behind the audio: the size of the file tells.
        const auto layout = exporting::measureTrackFile(exporting::trackFileName(folder, track));
        if (!layout || layout->frames == 0)
            continue;
        found.tracks = track;
        found.seconds += layout->seconds();
    }
    if (found.tracks == 0)
        return std::nullopt;
    return found;
}

bool repairInterruptedRecording(const std::string& folder, int tracks) {
    bool all = true;
    for (int track = 1; track <= tracks; ++track)
        all = exporting::repairTrackFile(exporting::trackFileName(folder, track)) && all;
    return all;
}

QString lengthText(double seconds) {
    const auto total = static_cast<unsigned long>(std::lround(std::max(0.0, seconds)));
    return QString::asprintf("%lu:%02lu:%02lu", total / 3600, total / 60 % 60, total % 60);
}

} // namespace waxline::app
