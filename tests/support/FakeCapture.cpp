#include "support/FakeCapture.h"

#include "exportfolder/ExportFolder.h"

#include <sstream>

namespace waxline::test {

void FakeCapture::record(const std::string& call) {
    calls.push_back(call);
    if (onCall)
        onCall(call);
}

void FakeCapture::endAlbum() {
    stopRecording();
    --tracks;
    if (delegate)
        delegate->audioDetectedAlbumEnd();
}

void FakeCapture::endRecording(const RecordingStop& stop) {
    stopRecording();
    if (delegate)
        delegate->audioRecordingStopped(stop);
}

void FakeCapture::setDelegate(AudioDelegate* d) {
    delegate = d;
    record("setDelegate");
}

bool FakeCapture::selectOtherInput(uint32_t id) {
    record("selectOtherInput(" + std::to_string(id) + ")");
    for (const InputChoice& input : inputs)
        if (input.id == id) {
            turntableOrTape = true;
            return true;
        }
    return false;
}

int FakeCapture::detectAudioDevice() {
    record("detectAudioDevice");
    if (detectionCodes.empty())
        return 0;
    const int code = detectionCodes.front();
    detectionCodes.pop_front();
    return code;
}

void FakeCapture::startPlayThru() {
    playThru = true;
    record("startPlayThru");
}

void FakeCapture::stopPlayThru() {
    playThru = false;
    record("stopPlayThru");
}

void FakeCapture::resetTrackCounter() {
    tracks = 0;
    record("resetTrackCounter");
}

void FakeCapture::adoptRecordedTracks(int count) {
    tracks = count;
    record("adoptRecordedTracks(" + std::to_string(count) + ")");
}

void FakeCapture::setAutomaticTrackSplit(bool on) {
    automaticSplit = on;
    record(std::string("setAutomaticTrackSplit(") + (on ? "true" : "false") + ")");
}

// As the real controller: the number goes up either way; a file that cannot be made shows the
// alert for the first track and ends a running recording for a later one.
bool FakeCapture::newTrack() {
    record("newTrack");
    ++tracks;
    bool made = true;
    if (!newTrackResults.empty()) {
        made = newTrackResults.front();
        newTrackResults.pop_front();
    }
    if (made) {
        recording = true;
    } else if (recording) {
        --tracks;
        endRecording({RecordingStopReason::FileNotCreated, fileNameForTrack(tracks + 1),
                      "scripted failure"});
    } else if (delegate) {
        delegate->audioShowAlert({"IDS_WARNING",
                                  "There was a problem creating the audio file. Your recording "
                                  "may not be successful.",
                                  "IDS_CONTINUE"});
    }
    return made;
}

void FakeCapture::stopRecording() {
    recording = false;
    record("stopRecording");
}

void FakeCapture::setGainDb(float db) {
    gainDb = db;
    std::ostringstream call;
    call << "setGainDb(" << db << ")";
    record(call.str());
}

// Refused while recording or monitoring, as the real controller refuses it.
bool FakeCapture::playExcerpt(int64_t firstFrame, int64_t frames) {
    record("playExcerpt(" + std::to_string(firstFrame) + ", " + std::to_string(frames) + ")");
    return excerptPlays && !recording && !playThru;
}

std::string FakeCapture::fileNameForTrack(int track) const {
    return trackFilePath(folder, track);
}

} // namespace waxline::test
