#pragma once

class QObject;

namespace waxline::ui {

// What the panel views ask of the application controller. Every call is made on the main
// thread, from a button, the gain slider or a panel view; the sender is the control or view
// that asked (it may be null).
class PanelController {
public:
    virtual ~PanelController() = default;

    // Panel 1: check for the device.
    virtual void doNextButton1(QObject* sender) = 0;
    // Panel 11: choose turntable or cassette player.
    virtual void doBackButtonSelectDevice(QObject* sender) = 0;
    virtual void doNextButtonSelectDevice(QObject* sender) = 0;
    // Panel 12: choose the tape type.
    virtual void doBackButtonSelectTape(QObject* sender) = 0;
    virtual void doNextButtonSelectTape(QObject* sender) = 0;
    // Panel 2: ready to record.
    virtual void doBackButton2(QObject* sender) = 0;
    virtual void doRecordButton(QObject* sender, bool normalization, bool clickRemoval) = 0;
    // Panel 3: recording.
    virtual void doBackButton3(QObject* sender) = 0;
    virtual void doNextButton3(QObject* sender) = 0;
    virtual void doNewTrackButton(QObject* sender) = 0;
    // Panels 4 to 10: naming, export, another side.
    virtual void doBackButton4(QObject* sender) = 0;
    virtual void doNextButton4(QObject* sender) = 0;
    virtual void doBackButton5(QObject* sender) = 0;
    virtual void doNextButton5(QObject* sender) = 0;
    virtual void doBackButton6(QObject* sender) = 0;
    virtual void doNextButton6(QObject* sender) = 0;
    virtual void doBackButton7(QObject* sender) = 0;
    virtual void doNextButton7(QObject* sender) = 0;
    virtual void doBackButton8(QObject* sender) = 0;
    virtual void doNextButton8(QObject* sender) = 0;
    virtual void doBackButton9(QObject* sender) = 0;
    virtual void doNextButton9(QObject* sender) = 0;
    virtual void doBackButton10(QObject* sender) = 0;
    virtual void doNextButton10(QObject* sender) = 0;
    // Panels 4 and 7: review the splits of the side just recorded.
    virtual void doReviewSplits(QObject* sender) = 0;
    // Panels 4 and 7: look the record up and fill the names from its listing.
    virtual void doFindAlbum(QObject* sender) = 0;
    // Panel 2 while a recording goes on: back to panel 3.
    virtual void doReturnToRecording(QObject* sender) = 0;
    // Panel 6 when tracks are missing: export them again, or keep the side for another time.
    virtual void doRetryExport(QObject* sender) = 0;
    virtual void doKeepForLater(QObject* sender) = 0;
    // Any panel: Close asks first; doCloseApplication ends the application without asking
    // (panel 6 sends it when the answer is No).
    virtual void doCloseButton(QObject* sender) = 0;
    virtual void doCloseApplication(QObject* sender) = 0;
    virtual void showHelp(QObject* sender) = 0;
    // The gain slider, in decibels rounded to a tenth.
    virtual void setRecordingGainDb(float gainDb) = 0;
};

} // namespace waxline::ui
