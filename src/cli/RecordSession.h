#pragma once

#include "cli/CommandLine.h"
#include "exportfolder/ExportFolderLock.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace waxline {
class Audio;
namespace exporting {
class EarlyEncoder;
}
namespace platform {
struct Platform;
}
} // namespace waxline

namespace waxline::cli {

struct RecordOptions {
    std::string virtualDevice;   // empty: $WAXLINE_VIRTUAL_DEVICE or the real devices
    std::string input;           // empty: detect the USB device; else an id, server or shown name
    std::string preset = "auto"; // auto, none, riaa, chrome, brightspin
    bool automaticSplit = true;
    float gainDb = 0;
    double maxSeconds = 0; // of recorded audio; 0: no limit
    std::string exportDir; // empty: the default export folder
    bool discard = false;  // a recording never exported may be thrown away
    bool verbose = false;  // the engine's diagnostic lines on the terminal too, not only the log
    bool showStatus = true;
    // Encodes each closed track to its MP3 behind the recording (--no-early-encoding: off).
    bool earlyEncoding = true;
    // The encoder that does it, owned by the command so that it can outlive the recording;
    // none: nothing is encoded early.
    exporting::EarlyEncoder* early = nullptr;
    // Called on the main thread at every status tick while recording (every 100 ms), with the
    // controller and the platform it records from: lets tests unplug the deck or stall the writer.
    std::function<void(Audio&, platform::Platform&)> onTick;
};

struct RecordResult {
    struct TrackFile {
        std::string path;
        double seconds = 0;
        bool counted = true; // false for the run-out file left after an album end
    };

    std::vector<TrackFile> files;
    int countedTracks = 0;
    uint64_t capturedFrames = 0; // every frame the recorder's stream delivered
    uint64_t droppedBuffers = 0;
    uint64_t droppedFrames = 0;
    std::string endedBy; // "album end", "time limit", "interrupted", or the failure reason
};

// The recording options of `record` and `digitize`, taken from the command line; throws
// UsageError for a bad value.
RecordOptions recordOptionsFrom(Arguments& args);

// Makes the export folder, takes its lock for recording and checks that starting would throw
// away no recording that was never exported (unless options.discard). Returns 0 when the
// recording may start, else the exit status, with the reason printed as `command`.
int claimExportFolder(const RecordOptions& options, ExportFolderLock& lock, const char* command);

// The export folder the options name, or the default one.
std::string exportFolderOf(const RecordOptions& options);

// At the end of `record`: waits for the background encoder to finish the side's `tracks`
// and says how many it made.
void finishEarlyEncoding(exporting::EarlyEncoder& early, int tracks);

// Records one side exactly as the application does: detects the device (or takes the named
// input), starts the monitor, and records through the capture controller until the album end,
// the time limit, Ctrl-C or a failure. Prints progress on standard output. Returns the exit
// status: 0 recorded, 1 the recording failed, 2 bad options or no usable device.
int recordSide(const RecordOptions& options, RecordResult& result);

} // namespace waxline::cli
