#include "app/PanelMachine.h"
#include "app/SharedText.h"

#include "capture/RecordingSequence.h"

#include <cstdio>
#include <cstdlib>

namespace waxline::app {

namespace {

// Panels 11 and 12 are reached only after the device check said a preset must be chosen.
void requirePresetChoice(const CaptureControl& capture, const char* action) {
    if (!capture.mightBeTurntableOrTape()) {
        std::fprintf(stderr, "%s: reached without a device that needs a preset\n", action);
        std::abort();
    }
}

} // namespace

PanelMachine::PanelMachine(CaptureControl& capture, PanelViews& views, Alerts& alerts)
    : capture(capture)
    , views(views)
    , alerts(alerts) {}

void PanelMachine::setPanel(unsigned n) {
    if (n > panel::count) {
        alerts.alert(QStringLiteral("IDS_INTERNAL_ERROR"), QStringLiteral("IDS_INVALID_PANEL"));
        return;
    }
    if (views.selectPanel(n)) {
        current = n;
        panelEntered(n);
    }
    if (PanelNumberShouldPlayThru(n))
        capture.startPlayThru();
    else
        capture.stopPlayThru();
}

void PanelMachine::panelEntered(unsigned n) {
    switch (n) {
    case panel::recording:
        views.setText(panel::recording, panel::trackCountTag, QString::asprintf("%d", 1));
        views.setRecordingLook(recording, capture.numRecordedTracks());
        if (!recording)
            views.setText(panel::recording, panel::trackCountTag,
                          QString::number(capture.numRecordedTracks()));
        break;
    case panel::nameOne:
        views.selectText(panel::nameOne, panel::oneArtistTag);
        views.setText(panel::nameOne, panel::oneNameTag, QString());
        break;
    case 7:
        views.selectText(7, panel::artistTag);
        offerTrackFields(7, true);
        break;
    case 8:
    case 9:
    case 10:
        // Names typed on 8 to 10 in an earlier export stay, unlike panel 7's.
        views.selectText(n, panel::trackNameTag(int(n - 7) * 10 + 1));
        offerTrackFields(n, false);
        break;
    default:
        break;
    }
}

void PanelMachine::offerTrackFields(unsigned namingPanel, bool empty) {
    const int recorded = capture.numRecordedTracks();
    const int first = int(namingPanel - 7) * 10 + 1;
    for (int track = first; track < first + 10; ++track) {
        const int tag = panel::trackNameTag(track);
        if (empty)
            views.setText(namingPanel, tag, QString());
        views.setFieldOffered(namingPanel, tag, track <= recorded);
    }
    views.setNextSaves(namingPanel, namingPanel == panel::nameLast || recorded < first + 10);
}

void PanelMachine::startMetering(unsigned n) {
    _meterUpdateTimer = views.startMetering(n);
}

void PanelMachine::doNextButton1() {
    const int result = capture.detectAudioDevice();
    if (result == 2 || result == 3) {
        alerts.alert(warningKey, QStringLiteral("IDS_TOOMANYDEVICES"));
        return;
    }
    if (result == 0) {
        recordFromOtherInput();
        return;
    }
    if (choosePresetByDevice(capture) == PresetChoice::AskUser) {
        std::fputs("doNextButton1: EQ required (must select)\n", stderr);
        setPanel(panel::selectDevice);
    } else {
        std::fputs("doNextButton1: NO EQ required\n", stderr);
        setPanel(panel::ready);
        startMetering(panel::ready);
    }
}

void PanelMachine::recordFromOtherInput() {
    const std::vector<InputChoice> inputs = capture.audioInputs();
    if (inputs.empty() || !chooseInput) {
        alerts.alert(warningKey, QStringLiteral("IDS_NODEVICE"));
        return;
    }
    QStringList names;
    for (const InputChoice& input : inputs)
        names << QString::fromStdString(input.name);
    const std::optional<int> chosen = chooseInput(names);
    if (!chosen || *chosen < 0 || *chosen >= int(inputs.size()))
        return;
    if (!capture.selectOtherInput(inputs[size_t(*chosen)].id)) {
        alerts.alert(warningKey, QStringLiteral("IDS_INPUT_GONE"), {names[*chosen]});
        return;
    }
    // Turntable or cassette, then the tape type, as for a deck that might be either.
    setPanel(panel::selectDevice);
}

void PanelMachine::doBackButtonSelectDevice() {
    setPanel(panel::connect);
}

void PanelMachine::doNextButtonSelectDevice() {
    requirePresetChoice(capture, "doNextButtonSelectDevice:");
    if (views.selectedDeviceIsTurntable()) {
        choosePresetFor(capture, PlaybackDevice::Turntable);
        setPanel(panel::ready);
        startMetering(panel::ready);
    } else {
        capture.setNoFilter();
        setPanel(panel::selectTape);
    }
}

void PanelMachine::doBackButtonSelectTape() {
    setPanel(panel::selectDevice);
}

void PanelMachine::doNextButtonSelectTape() {
    requirePresetChoice(capture, "doNextButtonSelectTape:");
    choosePresetFor(capture, views.selectedTapeIsChrome() ? PlaybackDevice::ChromeTape
                                                          : PlaybackDevice::NormalTape);
    setPanel(panel::ready);
    startMetering(panel::ready);
}

void PanelMachine::doBackButton2() {
    releaseMeter();
    setPanel(panel::connect);
}

void PanelMachine::showNamingPanel(int tracks) {
    if (tracks == 0) {
        // Through panel 1 on the way to 7: kept as the wizard always did it.
        setPanel(panel::connect);
        setPanel(panel::nameFirstTen);
    } else if (tracks == 1) {
        setPanel(panel::nameOne);
    } else {
        setPanel(panel::nameFirstTen);
    }
}

void PanelMachine::showNamingPanelAfterRecut(int tracks) {
    if (tracks <= 1) {
        setPanel(panel::nameOne);
        return;
    }
    setPanel(panel::nameFirstTen);
    // Names typed before stay; only which fields are offered follows the new count.
    offerTrackFields(panel::nameFirstTen, false);
}

void PanelMachine::startExport() {
    if (mayExport && !mayExport())
        return;
    setPanel(panel::exporting);
    if (processAudioFiles)
        processAudioFiles();
}

void PanelMachine::doBackButton4() {
    setPanel(panel::recording);
}

void PanelMachine::doNextButton4() {
    startExport();
}

void PanelMachine::doBackButton5() {
    setPanel(panel::nameOne);
}

void PanelMachine::doNextButton5() {
    setPanel(panel::another);
}

void PanelMachine::doBackButton6() {
    setPanel(panel::exporting);
}

void PanelMachine::doNextButton6() {
    releaseMeter();
    setPanel(panel::ready);
    startMetering(panel::ready);
}

void PanelMachine::nextOnNamingPanel(unsigned n, int lastTrackHere) {
    if (n < panel::nameLast && capture.numRecordedTracks() > lastTrackHere)
        setPanel(n + 1);
    else
        startExport();
}

void PanelMachine::doBackButton7() {
    setPanel(panel::recording);
}
void PanelMachine::doNextButton7() {
    nextOnNamingPanel(7, 10);
}
void PanelMachine::doBackButton8() {
    setPanel(7);
}
void PanelMachine::doNextButton8() {
    nextOnNamingPanel(8, 20);
}
void PanelMachine::doBackButton9() {
    setPanel(8);
}
void PanelMachine::doNextButton9() {
    nextOnNamingPanel(9, 30);
}
void PanelMachine::doBackButton10() {
    setPanel(9);
}
void PanelMachine::doNextButton10() {
    nextOnNamingPanel(10, 40);
}

} // namespace waxline::app
