#pragma once

#include "capture/CaptureControl.h"
#include "capture/chain/GapDetectorListener.h"
#include "capture/devices/AudioDeviceList.h"
#include "capture/devices/KnownUsbDevices.h"
#include "capture/excerpt/ExcerptPlayer.h"
#include "capture/monitor/MonitorHost.h"
#include "capture/monitor/PlayThroughRoute.h"
#include "capture/recorder/RecorderEngine.h"
#include "platform/Platform.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace waxline {

struct MonitorStartFailure;

// The buffered recorder is only a fallback reached through newRecorder; the live path never
// needs its definition.
class CAAudioFileRecorder;

// The capture controller: device lists and detection, the play-through monitor host, the track
// files and their recorder engine, the gain, automatic splitting. Main thread, except
// trackGapDetected and albumEndDetected, which the audio input thread calls.
class Audio : public QObject, public CaptureControl {
public:
    explicit Audio(platform::Platform& platform, MonitorFactory monitorFactory = {},
                   QObject* parent = nullptr);
    ~Audio() override;

    AudioDelegate* delegate() const { return mDelegate; }
    void setDelegate(AudioDelegate* d) override { mDelegate = d; }

    unsigned countDevicesWithMatchingName();
    int detectAudioDevice() override;
    bool mightBeTurntableOrTape() const override;
    std::vector<InputChoice> audioInputs() override;
    bool selectOtherInput(uint32_t id) override;
    void setNoFilter() override;
    void setRIAAFilter() override;
    void setChromeFilter() override;
    void setBrightSpinFilter();
    void setAutomaticTrackSplit(bool on) override;
    uint32_t selectInputFromDeviceList();
    void rebuildInputDevicesList();
    void startPlayThru() override;
    void stopPlayThru() override;
    std::string fileNameForTrack(int track) const override;
    void resetTrackCounter() override;
    // The typed reason a delegate hears when the monitor cannot start.
    MonitorFailure monitorFailureOf(const MonitorStartFailure& failure) const;
    void trackGapDetected();
    void albumEndDetectedOnMainThread();
    void albumEndDetected();
    bool recording() const;
    bool newTrack() override;
    void stopRecording() override;
    uint64_t currentTrackLengthNanos() const override;
    int numRecordedTracks() const override { return _tracks; }
    void adoptRecordedTracks(int count) override;
    void setGainDb(float db) override;
    // The stretch is cut to the side; it plays at the files' rate, converted only when the
    // output device runs at another.
    bool playExcerpt(int64_t firstFrame, int64_t frames) override;
    void stopExcerpt() override;
    bool excerptPlaying() const { return mExcerpt.playing(); }
    platform::Status setInputDevice(platform::AudioObjectID id);
    // Makes the recorder engine for the input device with its first file at `path`; null when
    // the file cannot be made.
    std::unique_ptr<RecorderEngine> newRecorderEngine(const std::string& path);
    // The buffered recorder for the input device, writing float stereo WAV to `path` (an
    // existing file is replaced), unstarted; null after a failure, which is reported on standard
    // error. The application records through the engine above and never calls this.
    std::unique_ptr<CAAudioFileRecorder> newRecorder(const std::string& path);

    // --- Beyond the application's selectors: for the command line and tests ---
    const KnownUsbDevice* device() const { return mDevice; }
    const AudioDeviceList& inputDevices() const { return *mInputDeviceList; }
    const AudioDeviceList& outputDevices() const { return *mOutputDeviceList; }
    platform::AudioObjectID inputDeviceID() const { return mInputDeviceID; }
    platform::AudioObjectID outputDeviceID() const { return mOutputDeviceID; }
    // Records from this input without USB detection; builds the monitor for it.
    uint32_t selectInput(platform::AudioObjectID id);
    MonitorHost* playThru() const { return _playThru.get(); }
    // Where the monitor plays: elsewhere, or nowhere, when the input monitors the output device.
    PlayThroughTarget playThroughTarget() const { return mPlayThroughTarget; }
    // The folder that holds the track files; WAXLINE_EXPORT_DIR overrides the default.
    static std::string defaultExportFolder();
    void setExportFolder(const std::string& folder);
    const std::string& exportFolder() const override { return _outputFolderPathBase; }
    // The running recording's engine, or null; valid until the recording stops.
    RecorderEngine* recorderEngine() const { return _recorderEngine.get(); }
    // The running recording's counters, or the last one's after it stopped.
    RecorderEngine::Counters recorderCounters() const;
    // Frames recorded into the current track file (audio time, unlike currentTrackLengthNanos).
    double currentTrackSeconds() const;
    // Recordings started from now on take at most this many seconds of audio in all (0: no
    // limit), counted at the files' rate, however fast the input delivers.
    void setRecordingTimeLimit(double seconds) { mTimeLimitSeconds = seconds; }
    // The rate the track files are written at (the two-step rule of newRecorderEngine).
    double fileSampleRate() const { return mFileSampleRate; }
    // Handles what the audio and writer threads flagged; the poll timer calls it, tests may too.
    void processPendingEvents();

private:
    void makeExportFolder();
    double setDetectorToInputRate();
    void endRecordingWith(const RecordingStop& stop);
    void showAlert(const CaptureAlert& alert);
    void log(const char* format, const char* what);

    platform::Platform& mPlatform;
    MonitorFactory mMonitorFactory;
    const KnownUsbDevice* mDevice = nullptr;
    // An input the user chose because no supported deck was found: turntable or cassette is
    // theirs to say, and a turntable gets the RIAA curve.
    bool mOtherInput = false;
    std::unique_ptr<MonitorHost> _playThru;
    PlayThroughTarget mPlayThroughTarget;
    float m_gainDb = 0;
    std::unique_ptr<AudioDeviceList> mInputDeviceList;
    std::unique_ptr<AudioDeviceList> mOutputDeviceList;
    platform::AudioObjectID mPreviousInputDeviceID = platform::kNoDevice;
    platform::AudioObjectID mInputDeviceID = platform::kNoDevice;
    platform::AudioObjectID mOutputDeviceID = platform::kNoDevice;
    std::unique_ptr<RecorderEngine> _recorderEngine;
    uint64_t _startHostTime = 0;
    int _tracks = 0;
    std::string _outputFilePath;
    // Declared before the detector, so it outlives it: the detector holds a reference to it.
    std::unique_ptr<GapDetectorListener> gapDetectorListener;
    std::unique_ptr<Sonra::Audio::Filters::GapDetector> mGapDetector;
    platform::AudioSystem::ListenerToken mDeviceListListener = -1;
    std::atomic<bool> automaticTrackSplit{false};
    AudioDelegate* mDelegate = nullptr;
    std::string _outputFolderPathBase;
    double mFileSampleRate = 0;
    double mTimeLimitSeconds = 0;
    RecorderEngine::Counters mLastCounters; // of the last recording, once stopped
    ExcerptPlayer mExcerpt;

    // Cross-thread flags, raised by the audio, writer and platform threads, handled by the poll.
    std::atomic<bool> mRecording{false};
    std::atomic<int> mPendingNewTracks{0};
    std::atomic<bool> mPendingAlbumEnd{false};
    std::atomic<bool> mPendingWriteFailure{false};
    std::atomic<bool> mPendingDeviceGone{false};
    std::atomic<bool> mPendingDeviceListChange{false};
    RecordingStop mWriteFailure; // written before mPendingWriteFailure is raised
    QTimer mPoll;
};

} // namespace waxline
