#include "app/RecordingControl.h"
#include "app/SharedText.h"

#include "exporting/ExportFolders.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>

namespace waxline::app {

namespace {

constexpr std::chrono::seconds elapsedInterval{1};

} // namespace

QString elapsedText(uint64_t nanos) {
    const double t = double(nanos) * 1e-9;
    const unsigned h = unsigned(std::lround(float(t))) / 3600;
    // Just below a whole hour the hours round up and the rest comes out negative: show 0.
    const unsigned r = unsigned(std::max(0L, std::lround(float(t - double(h) * 3600))));
    const unsigned m = r / 60;
    const unsigned s = r - m * 60;
    return QString::asprintf("%02u:%02u:%02u", h, m, s);
}

RecordingControl::RecordingControl(CaptureControl& capture, PanelViews& views, Alerts& alerts,
                                   PanelMachine& machine)
    : capture(capture)
    , views(views)
    , alerts(alerts)
    , machine(machine)
    , sequence(capture, exporting::clearTmpFolder) {}

void RecordingControl::doRecordButton(bool normalization, bool clickRemoval) {
    if (mayRecord && !mayRecord())
        return;
    const bool split = views.automaticallySplitTracks();
    // Nothing may still be encoding into the folder that Record empties.
    early.begin(capture.exportFolder());
    sequence.prepare(split);
    m_applyNormalization = normalization;
    m_applyClickRemoval = clickRemoval;
    hideBanner();
    machine.setRecording(true);
    machine.setPanel(panel::recording);
    views.setSplitButtonVisibility(!split);
    if (machine.meterRunning()) {
        machine.releaseMeter();
        machine.startMetering(panel::recording);
    }
    try {
        doNewTrackButton();
    } catch (const std::exception&) {
        std::fputs("ERROR: _recorder103->Start()\n", stderr);
    }
}

void RecordingControl::doNewTrackButton() {
    const int n = capture.numRecordedTracks();
    if (n == trackLimit) {
        alerts.alert(warningKey, QStringLiteral("IDS_LIMIT"));
        doNextButton3();
        return;
    }
    capture.newTrack();
    // The split is made first; the warning about the last track follows without holding it.
    if (n == trackLimit - 1)
        alerts.inform(warningKey, QStringLiteral("IDS_LASTTRACK"));

    _pTimer = std::make_unique<QTimer>();
    _pTimer->setInterval(elapsedInterval);
    connect(_pTimer.get(), &QTimer::timeout, this, &RecordingControl::elaspedTimerFired);
    connect(_pTimer.get(), &QTimer::timeout, this, &RecordingControl::noticeClosedTracks);
    _pTimer->start();
    elaspedTimerFired();
}

void RecordingControl::doNextButton3() {
    if (!elapsedTimerRunning() && machine.shownPanel() == panel::recording) {
        // Panel 3 reached back from a naming panel: nothing records; Next names the tracks.
        machine.showNamingPanel(capture.numRecordedTracks());
        return;
    }
    hideBanner();
    machine.setRecording(false);
    sequence.stop();
    // Stopped, every counted track's file is closed, the last one too.
    early.tracksClosed(capture.numRecordedTracks());
    if (recordingEnded)
        recordingEnded();
    _pTimer.reset();
    views.stopMetering(panel::recording);
    machine.releaseMeter();
    machine.showNamingPanel(capture.numRecordedTracks());
    if (tracksToName)
        tracksToName();
}

void RecordingControl::stopForClose() {
    machine.setRecording(false);
    if (!elapsedTimerRunning()) {
        capture.stopRecording();
        return;
    }
    sequence.stop();
    _pTimer.reset();
    if (recordingEnded)
        recordingEnded();
}

void RecordingControl::doBackButton3() {
    // The recording goes on, and so does its clock: only the meters move back to panel 2,
    // whose banner says so and leads back.
    machine.releaseMeter();
    machine.setPanel(panel::ready);
    machine.startMetering(panel::ready);
    views.setShown(panel::ready, panel::recordingBannerTag, elapsedTimerRunning());
}

void RecordingControl::returnToRecording() {
    hideBanner();
    machine.releaseMeter();
    machine.setPanel(panel::recording);
    machine.startMetering(panel::recording);
}

void RecordingControl::abandon() {
    machine.setRecording(false);
    sequence.stop();
    _pTimer.reset();
    early.cancelAndWait();
    views.stopMetering(panel::recording);
    hideBanner();
    machine.releaseMeter();
    machine.setPanel(panel::ready);
    machine.startMetering(panel::ready);
}

void RecordingControl::hideBanner() {
    views.setShown(panel::ready, panel::recordingBannerTag, false);
}

void RecordingControl::audioDetectedAlbumEnd() {
    // The capture engine has stopped the recording already.
    machine.setRecording(false);
    if (recordingEnded)
        recordingEnded();
    if (sequence.albumEnded() == RecordingSequence::AfterAlbumEnd::NameTracks) {
        doNextButton3();
    } else {
        // Nothing records any more: panel 2 is the plain one, without the banner.
        _pTimer.reset();
        doBackButton3();
    }
}

void RecordingControl::elaspedTimerFired() {
    // A kill now leaves a count that knows every closed track, as the command line's does.
    if (machine.recordingNow())
        sequence.keepCountCurrent();
    views.setText(panel::recording, panel::elapsedTag,
                  elapsedText(capture.currentTrackLengthNanos()));
    views.setText(panel::recording, panel::trackCountTag,
                  QString::asprintf("%u", unsigned(capture.numRecordedTracks())));
}

// At each tick while recording: every track before the one being recorded is closed. The
// encoder waits for a file to stay unchanged before it starts on it, so a split just now is
// safe to pass on.
void RecordingControl::noticeClosedTracks() {
    early.tracksClosed(capture.numRecordedTracks() - 1);
}

void RecordingControl::setRecordingGainDb(float gainDb) {
    capture.setGainDb(gainDb);
}

} // namespace waxline::app
