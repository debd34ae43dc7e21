#pragma once

#include "app/Alerts.h"
#include "app/PanelMachine.h"
#include "app/PanelViews.h"
#include "capture/CaptureControl.h"
#include "capture/RecordingSequence.h"
#include "exporting/EarlyEncoder.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>

namespace waxline::app {

// The elapsed time of a track as panel 3 shows it, "%02u:%02u:%02u", rounded as the
// recorder's clock always was: to whole seconds in single precision.
QString elapsedText(uint64_t nanos);

// Recording from panels 2 and 3: Record, New Track up to 40 tracks, Stop, Back, the album
// end, the elapsed-time tick and the gain. Main thread only.
class RecordingControl : public QObject {
    Q_OBJECT
public:
    static constexpr int trackLimit = 40;

    RecordingControl(CaptureControl& capture, PanelViews& views, Alerts& alerts,
                     PanelMachine& machine);

    // Asked first by Record: false leaves everything as it is (the folder is not emptied).
    std::function<bool()> mayRecord;
    // Told when a recording has stopped: Stop, the track limit, the album end.
    std::function<void()> recordingEnded;

    void doRecordButton(bool normalization, bool clickRemoval);
    void doNewTrackButton();
    void doNextButton3();
    void doBackButton3();
    // Panel 2's banner while the recording goes on: back to panel 3 and its meters.
    void returnToRecording();
    // The recording ended with its folder gone: nothing to name, back to panel 2.
    void abandon();
    // The application closes: a recording under way is stopped as Stop stops it (its files
    // closed, its count left final) but no panel follows.
    void stopForClose();
    void audioDetectedAlbumEnd();
    void elaspedTimerFired();
    void setRecordingGainDb(float gainDb);

    // The recording has ended and its naming panel is shown.
    std::function<void()> tracksToName;
    // Encodes each closed track to its MP3 while the next one records; the export takes
    // what it made.
    exporting::EarlyEncoder& earlyEncoder() { return early; }
    // Stops encoding and removes what was half made: before the export folder is emptied.
    void cancelBackgroundEncoding() { early.cancelAndWait(); }

    bool applyNormalization() const { return m_applyNormalization; }
    bool elapsedTimerRunning() const { return _pTimer != nullptr; }

private:
    void noticeClosedTracks();
    void hideBanner();

    CaptureControl& capture;
    PanelViews& views;
    Alerts& alerts;
    PanelMachine& machine;
    RecordingSequence sequence;
    exporting::EarlyEncoder early;
    std::unique_ptr<QTimer> _pTimer;
    bool m_applyNormalization = false;
    bool m_applyClickRemoval = false;
};

} // namespace waxline::app
