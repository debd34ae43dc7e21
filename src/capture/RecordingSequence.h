#pragma once

#include "capture/CaptureControl.h"

#include <functional>
#include <string>

// What the window and the command line both do to record a side, written once over
// CaptureControl: the preset chosen by device, the Record steps in their order, the count of
// counted tracks left beside the files, and what follows an album end. Main thread.
namespace waxline {

// What the user says a device is when it might be a turntable or a tape deck.
enum class PlaybackDevice { Turntable, NormalTape, ChromeTape };

enum class PresetChoice { Chosen, AskUser };

// After detection: a device that can only be one thing needs no equalisation, which is set here
// (Chosen); for one that might be a turntable or a tape deck nothing is set (AskUser) and the
// front end finds out which and calls choosePresetFor.
PresetChoice choosePresetByDevice(CaptureControl& capture);

// The preset for what the user said: the turntable preset the device calls for, chrome-tape
// correction for chrome tape, none for normal tape.
void choosePresetFor(CaptureControl& capture, PlaybackDevice device);

class RecordingSequence {
public:
    // Empties the export folder at Record. The window empties it whole; the command line, whose
    // folder the user may name, removes only the recorder's files.
    using EmptyFolder = std::function<void(const std::string& folder)>;

    enum class AfterAlbumEnd { NameTracks, BackToReady };

    RecordingSequence(CaptureControl& capture, EmptyFolder emptyFolder);

    // Record, up to the panel switch: empties the export folder, resets the track counter and
    // the recording's overall peak, and sets automatic splitting, in that order.
    void prepare(bool automaticSplit);
    // The last Record step: opens track 1. False when its file could not be made; the capture
    // controller has shown its alert.
    bool openFirstTrack();
    // Stop (the button, a time limit, an interrupt): stops the recording and leaves the count.
    void stop();
    // After the capture controller ended the album itself: leaves the count and says where the
    // wizard goes, to naming the tracks when any was counted, else back to the ready panel.
    AfterAlbumEnd albumEnded();
    // Writes the number of counted tracks beside the files, marked finished: the files are
    // closed and the count is final, so a later export knows how many to take. Called by the
    // above, and by a front end when a failure ended the recording.
    void leaveTrackCount();
    // While recording, at every status tick: when a track has closed since the last call,
    // writes how many have (not marked finished), so a crash leaves a count that is current.
    void keepCountCurrent();

private:
    CaptureControl& capture;
    EmptyFolder emptyFolder;
    int closedTracksWritten = 0;
};

} // namespace waxline
