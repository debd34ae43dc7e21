#pragma once

#include "capture/CaptureControl.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace waxline::test {

// A capture controller that records the commands given to it and answers as the test scripts:
// detection codes, whether the device might be a turntable or a tape deck, whether a track file
// can be made, how long the current track is. It counts tracks, stops and ends albums as the
// real controller does, so a wizard or a recording sequence can be driven without devices.
class FakeCapture : public CaptureControl {
public:
    // Every command in the order given, with its argument: "detectAudioDevice",
    // "setAutomaticTrackSplit(true)", "setGainDb(-3.5)", "newTrack"... Queries are answered,
    // not recorded.
    std::vector<std::string> calls;
    // Called after each command is recorded, e.g. to look at other state at that moment.
    std::function<void(const std::string& call)> onCall;

    // Scripted answers.
    std::deque<int> detectionCodes; // taken one per detectAudioDevice; 0 once used up
    bool turntableOrTape = false;
    std::vector<InputChoice> inputs;  // audioInputs' answer; selectOtherInput takes these ids
    std::deque<bool> newTrackResults; // taken one per newTrack; true once used up
    uint64_t trackLengthNanos = 0;
    bool excerptPlays = true; // playExcerpt's answer when neither recording nor monitoring
    std::string folder = "/nonexistent/Waxline/Exports";

    // State as the real controller keeps it.
    AudioDelegate* delegate = nullptr;
    int tracks = 0;
    bool recording = false;
    bool playThru = false;
    bool automaticSplit = false;
    float gainDb = 0;

    // The gap detector's album end: stops, leaves the run-out file uncounted and tells the
    // delegate, as the real controller does on the main thread.
    void endAlbum();
    // A recording that ends by itself, for the given reason.
    void endRecording(const RecordingStop& stop);

    void setDelegate(AudioDelegate* d) override;
    int detectAudioDevice() override;
    bool mightBeTurntableOrTape() const override { return turntableOrTape; }
    std::vector<InputChoice> audioInputs() override { return inputs; }
    // Recorded as "selectOtherInput(<id>)"; an input chosen so must be told turntable or tape.
    bool selectOtherInput(uint32_t id) override;
    void setNoFilter() override { record("setNoFilter"); }
    void setRIAAFilter() override { record("setRIAAFilter"); }
    void setChromeFilter() override { record("setChromeFilter"); }
    void startPlayThru() override;
    void stopPlayThru() override;
    void resetTrackCounter() override;
    void setAutomaticTrackSplit(bool on) override;
    bool newTrack() override;
    void stopRecording() override;
    int numRecordedTracks() const override { return tracks; }
    void adoptRecordedTracks(int count) override;
    uint64_t currentTrackLengthNanos() const override { return trackLengthNanos; }
    void setGainDb(float db) override;
    std::string fileNameForTrack(int track) const override;
    const std::string& exportFolder() const override { return folder; }
    // Recorded as "playExcerpt(<first>, <frames>)" and "stopExcerpt".
    bool playExcerpt(int64_t firstFrame, int64_t frames) override;
    void stopExcerpt() override { record("stopExcerpt"); }

private:
    void record(const std::string& call);
};

} // namespace waxline::test
