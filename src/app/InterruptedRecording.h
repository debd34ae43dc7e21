#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

namespace waxline::app {

// A recording left in the export folder by a run that did not stop it cleanly (a crash, a
// power cut): its count file has no "finished" line and no export took its tracks.
struct InterruptedRecording {
    int tracks = 0;     // WXRTTmpFile.1.wav up to the last file with audio
    double seconds = 0; // all of them together, by the size of each file
};

// What an interrupted recording left in `folder`; nothing when the folder holds none (a clean
// stop, an exported recording, no track with audio).
std::optional<InterruptedRecording> findInterruptedRecording(const std::string& folder);

// Makes the header of each of the first `tracks` files say what the file holds.
bool repairInterruptedRecording(const std::string& folder, int tracks);

// A length as the recovery question shows it: "h:mm:ss".
QString lengthText(double seconds);

} // namespace waxline::app
