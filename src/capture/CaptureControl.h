#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// The seam between the application controller and the capture engine: the calls the wizard makes
// and what the engine reports back. Qt-free, so the wizard can be tested against a fake.
namespace waxline {

// Why a recording ended without being asked to.
enum class RecordingStopReason {
    DeviceGone,     // the capture device vanished or its stream failed
    ServerGone,     // the sound server stopped answering, so every stream ended
    WriteFailed,    // a track file could not be written
    DiskFull,       // a track file could not be written: no space left (or the quota is used up)
    FolderGone,     // the export folder (or the track file) went away while recording
    FileNotCreated, // the next track file could not be made for another reason
};

// A recording that ended by itself. The front end words it; the detail names the file and what
// the file library and the system said (both empty when the device went away).
struct RecordingStop {
    RecordingStopReason reason = RecordingStopReason::DeviceGone;
    std::string path;
    std::string errorText;
};

// A modal alert of the capture controller: the title and the button are "IDS_" keys that the
// front end looks up; the message is shown as it is.
struct CaptureAlert {
    std::string titleKey;
    std::string message;
    std::string buttonKey;
};

// Why the monitor (play-through) could not start.
enum class MonitorFailureReason {
    DeviceUnknown, // the input or output device is not (or no longer) there
    OpenFailed,    // the device's stream could not be opened (busy, or refused)
    NotConnected,  // the sound server went away
    Other,         // another status; the number says which
};

// A monitor that could not start, with the input device's name (empty when unknown).
struct MonitorFailure {
    MonitorFailureReason reason = MonitorFailureReason::Other;
    int status = 0;
    std::string inputName;
};

// An audio input the platform lists, as `waxline-cli devices` shows it.
struct InputChoice {
    uint32_t id = 0;
    std::string name;
};

// Receives what the capture controller reports; every call arrives on the main thread.
class AudioDelegate {
public:
    virtual ~AudioDelegate() = default;
    // The gap detector found the end of the album; the recording has been stopped already.
    virtual void audioDetectedAlbumEnd() {}
    // A recording ended by itself (write failure, device gone, ...); what was written is kept.
    virtual void audioRecordingStopped(const RecordingStop& /*stop*/) {}
    // The monitor could not start: the process ends when this returns (it has nothing to
    // record from). Arrives on the thread that built the monitor, the main thread as a rule.
    virtual void audioMonitorCannotStart(const MonitorFailure& /*failure*/) {}
    // A modal message; a front end that shows none leaves a diagnostic line on standard error.
    virtual void audioShowAlert(const CaptureAlert& alert) {
        std::fprintf(stderr, "%s: %s [%s]\n", alert.titleKey.c_str(), alert.message.c_str(),
                     alert.buttonKey.c_str());
    }
};

// Exactly what the application controller asks of the capture engine. Main thread only.
class CaptureControl {
public:
    virtual ~CaptureControl() = default;

    virtual void setDelegate(AudioDelegate* delegate) = 0;
    // 0 no usable device, 1 one device found and its input selected, 2 several supported
    // devices attached, 3 several inputs match the device.
    virtual int detectAudioDevice() = 0;
    // Whether the detected device might be either a turntable or a tape deck, so the user must
    // say which before a preset can be chosen.
    virtual bool mightBeTurntableOrTape() const = 0;
    // Every audio input the platform lists, for recording without a supported deck.
    virtual std::vector<InputChoice> audioInputs() = 0;
    // Records from this input instead of a detected deck; the user then says turntable or
    // cassette, as for a deck that might be either. False when the input is not there (any
    // more).
    virtual bool selectOtherInput(uint32_t id) = 0;
    virtual void setNoFilter() = 0;
    // The turntable preset the detected device calls for (RIAA, BrightSpin or none).
    virtual void setRIAAFilter() = 0;
    virtual void setChromeFilter() = 0;
    virtual void startPlayThru() = 0;
    virtual void stopPlayThru() = 0;
    virtual void resetTrackCounter() = 0;
    virtual void setAutomaticTrackSplit(bool on) = 0;
    // Closes the current track file, if any, and starts the next; false when no file was made.
    virtual bool newTrack() = 0;
    virtual void stopRecording() = 0;
    virtual int numRecordedTracks() const = 0;
    // Takes `count` closed track files already in the export folder as the recording's tracks
    // (a side cut anew, or one left by an interrupted run): numRecordedTracks() answers `count`
    // from now on. Ignored while recording.
    virtual void adoptRecordedTracks(int count) = 0;
    virtual uint64_t currentTrackLengthNanos() const = 0;
    virtual void setGainDb(float db) = 0;
    virtual std::string fileNameForTrack(int track) const = 0;
    virtual const std::string& exportFolder() const = 0;
    // Plays frames [firstFrame, firstFrame + frames) of the last recording (the track files
    // joined) through the output device, replacing any excerpt still playing; false when there
    // is nothing to play or no output device. Not while recording or monitoring.
    virtual bool playExcerpt(int64_t firstFrame, int64_t frames) = 0;
    virtual void stopExcerpt() = 0;
};

} // namespace waxline
