#include "capture/RecordingSequence.h"

#include "capture/chain/InputChain.h"
#include "exportfolder/ExportFolder.h"

#include <algorithm>
#include <fstream>
#include <utility>

namespace waxline {

PresetChoice choosePresetByDevice(CaptureControl& capture) {
    if (capture.mightBeTurntableOrTape())
        return PresetChoice::AskUser;
    capture.setNoFilter();
    return PresetChoice::Chosen;
}

void choosePresetFor(CaptureControl& capture, PlaybackDevice device) {
    switch (device) {
    case PlaybackDevice::Turntable:
        capture.setRIAAFilter();
        break;
    case PlaybackDevice::ChromeTape:
        capture.setChromeFilter();
        break;
    case PlaybackDevice::NormalTape:
        capture.setNoFilter();
        break;
    }
}

RecordingSequence::RecordingSequence(CaptureControl& control, EmptyFolder empty)
    : capture(control)
    , emptyFolder(std::move(empty)) {}

void RecordingSequence::prepare(bool automaticSplit) {
    closedTracksWritten = 0;
    // Only this recording's tracks may be in the folder when the export reads it back.
    if (emptyFolder)
        emptyFolder(capture.exportFolder());
    capture.resetTrackCounter();
    // The export normalises against the peak of the whole recording.
    ResetVUMax();
    capture.setAutomaticTrackSplit(automaticSplit);
}

bool RecordingSequence::openFirstTrack() {
    return capture.newTrack();
}

void RecordingSequence::stop() {
    capture.stopRecording();
    leaveTrackCount();
}

RecordingSequence::AfterAlbumEnd RecordingSequence::albumEnded() {
    leaveTrackCount();
    return capture.numRecordedTracks() > 0 ? AfterAlbumEnd::NameTracks : AfterAlbumEnd::BackToReady;
}

void RecordingSequence::leaveTrackCount() {
    std::ofstream count(trackCountPath(capture.exportFolder()), std::ios::trunc);
    count << capture.numRecordedTracks() << '\n' << kTrackCountFinished << '\n';
}

void RecordingSequence::keepCountCurrent() {
    // The track being recorded is counted already; the ones before it are closed.
    const int closed = std::max(0, capture.numRecordedTracks() - 1);
    if (closed == closedTracksWritten)
        return;
    closedTracksWritten = closed;
    std::ofstream count(trackCountPath(capture.exportFolder()), std::ios::trunc);
    count << closed << '\n';
}

} // namespace waxline
