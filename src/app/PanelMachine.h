#pragma once

#include "app/Alerts.h"
#include "app/PanelViews.h"
#include "capture/CaptureControl.h"

#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace waxline::app {

// Panel numbers and the tags of the fields the wizard reads and writes.
namespace panel {
constexpr unsigned connect = 1, ready = 2, recording = 3, nameOne = 4, exporting = 5, another = 6,
                   nameFirstTen = 7, nameLast = 10, selectDevice = 11, selectTape = 12, count = 12;
constexpr int elapsedTag = 21, trackCountTag = 22;
constexpr int oneArtistTag = 10, oneAlbumTag = 11, oneNameTag = 12;
constexpr int artistTag = 51, albumTag = 52;
constexpr int progressTag = 31;
// Panel 5's note on the tracks encoded while recording, and on those that could not be saved.
constexpr int readyNoteTag = 32, problemNoteTag = 33;
// Panel 2's banner back to a recording that goes on; panel 3's Back button.
constexpr int recordingBannerTag = 23, recordingBackTag = 24;
// Panel 6: "Done!" with its question, or what is missing with Try again and Keep for later.
constexpr int resultTitleTag = 40, doneTextTag = 41, yesTag = 42, noTag = 43, doneArtTag = 45,
              missingTextTag = 46, anotherNextTag = 47, retryTag = 48, keepTag = 49;
// The name field of track i is tagged i + 60 on whichever naming panel holds it.
constexpr int trackNameTag(int track) {
    return track + 60;
}
// The naming panel (7 to 10) holding track i's field.
constexpr unsigned namingPanelOf(int track) {
    return track <= 10 ? 7u : track <= 20 ? 8u : track <= 30 ? 9u : 10u;
}
} // namespace panel

// True for the panels whose input is monitored on the speakers: 2 and 3.
constexpr bool PanelNumberShouldPlayThru(unsigned n) {
    return (n & ~1u) == 2;
}

// The wizard's panel machine: switching panels with the monitor on 2 and 3 only, what
// entering a panel does, the device check and the device and tape choices, and every Back
// and Next that is not recording or exporting. Holds the level-meter timer. Main thread only.
class PanelMachine {
public:
    PanelMachine(CaptureControl& capture, PanelViews& views, Alerts& alerts);

    // Called for Next on a naming panel when the export is to start (after the switch to 5).
    std::function<void()> processAudioFiles;
    // Asked before the switch to 5: false keeps the naming panel (and its names) on screen.
    std::function<bool()> mayExport;
    // When no supported deck is found: the user picks one of these inputs (its index) or
    // cancels (nothing). Without it the check only says that no deck was found.
    std::function<std::optional<int>(const QStringList& inputNames)> chooseInput;

    void setPanel(unsigned n);
    // Whether a recording is under way: panel 3 looks like recording only then.
    void setRecording(bool on) { recording = on; }
    bool recordingNow() const { return recording; }
    // The panel on screen, as this machine last switched it.
    unsigned shownPanel() const { return current; }

    void doNextButton1();
    void doBackButtonSelectDevice();
    void doNextButtonSelectDevice();
    void doBackButtonSelectTape();
    void doNextButtonSelectTape();
    void doBackButton2();
    void doBackButton4();
    void doNextButton4();
    void doBackButton5();
    void doNextButton5();
    void doBackButton6();
    void doNextButton6();
    void doBackButton7();
    void doNextButton7();
    void doBackButton8();
    void doNextButton8();
    void doBackButton9();
    void doNextButton9();
    void doBackButton10();
    void doNextButton10();

    // Stop's choice of naming panel for n recorded tracks: 0 passes through panel 1 to 7.
    void showNamingPanel(int tracks);
    // After the side was cut anew into n tracks: the panel Stop would have chosen, with the
    // track fields offered up to n even when that panel is already shown.
    void showNamingPanelAfterRecut(int tracks);

    // The level-meter timer of the shown panel (_meterUpdateTimer).
    void startMetering(unsigned panel);
    bool meterRunning() const { return _meterUpdateTimer != nullptr; }
    void releaseMeter() { _meterUpdateTimer.reset(); }

private:
    void panelEntered(unsigned n);
    // No supported deck: the inputs offered, and the one chosen recorded from.
    void recordFromOtherInput();
    void offerTrackFields(unsigned namingPanel, bool empty);
    void nextOnNamingPanel(unsigned panel, int lastTrackHere);
    void startExport();

    CaptureControl& capture;
    PanelViews& views;
    Alerts& alerts;
    std::unique_ptr<QTimer> _meterUpdateTimer;
    bool recording = false;
    unsigned current = 0;
};

} // namespace waxline::app
