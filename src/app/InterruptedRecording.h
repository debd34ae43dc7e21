#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

namespace waxline::app {

// A recording left in the export folder that is not all in the music library: cut off by a
// crash or a power cut, stopped cleanly but never exported (the window closed or killed on a
// naming panel), or exported in part.
struct InterruptedRecording {
    enum class State { Interrupted, NotExported, HalfExported };
    State state = State::Interrupted;
    int tracks = 0;     // the counted tracks; cut off: up to the last file with audio
    double seconds = 0; // all of them together, by the size of each file
    int saved = 0;      // of them, the ones an export got into the library
};

// What such a recording left in `folder`; nothing when the folder holds none (an exported
// recording, no track with audio). A re-cut a kill interrupted is to be finished first.
std::optional<InterruptedRecording> findInterruptedRecording(const std::string& folder);

// Makes the header of each of the first `tracks` files say what the file holds, and leaves
// the count of a recording that stopped cleanly with `tracks` tracks.
bool repairInterruptedRecording(const std::string& folder, int tracks);

// A length as the recovery question shows it: "h:mm:ss".
QString lengthText(double seconds);

} // namespace waxline::app
