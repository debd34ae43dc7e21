#pragma once

#include "app/AlbumLookup.h"
#include "app/Alerts.h"
#include "app/ExportDriver.h"
#include "app/FolderClaim.h"
#include "app/InterruptedRecording.h"
#include "app/PanelMachine.h"
#include "app/PanelTabs.h"
#include "app/RecordingControl.h"
#include "app/SplitReview.h"
#include "capture/CaptureControl.h"
#include "ui/PanelController.h"
#include "ui/help/HelpDialog.h"

#include <QObject>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace waxline::ui {
class CustomWindow;
}

namespace waxline::app {

// The application controller: starts the wizard, routes every panel action to the panel
// machine, the recording control or the export driver, hears the capture engine, and closes
// the application only after asking. Main thread only.
class AppDelegate : public QObject, public ui::PanelController, public AudioDelegate {
    Q_OBJECT
public:
    // `libraryFolder` is the user's music folder the export fills.
    AppDelegate(CaptureControl& audio, ui::CustomWindow& window, Alerts& alerts,
                std::string libraryFolder);
    ~AppDelegate() override;

    // Start-up: tab items, the panels loaded at once, panel 1 shown.
    void awakeFromNib();
    void setPanel(unsigned n) { machine.setPanel(n); }
    // After panel 1 is shown: a recording that a crash cut off is offered back, to be named and
    // saved (the naming panel Stop would have shown) or thrown away. Nothing is emptied
    // without the answer, nor while another run works in the folder.
    void offerInterruptedRecording();

    // Asks for a music folder when the one given cannot be written; a folder dialog unless a
    // test puts its own.
    std::function<QString(const QString& current)> chooseMusicFolder;

    // How showHelp opens a page; the desktop's browser unless a test puts its own. When it
    // cannot (false), the page is shown in the application's own help window.
    std::function<bool(const QUrl&)> openUrl;
    // That help window once it was needed, else null.
    ui::HelpDialog* helpWindow() const { return helpDialog.data(); }
    // The language of the help page showHelp opens ("en", "de"): the catalogue's.
    QString helpLanguage = QStringLiteral("en");

    // ui::PanelController
    void doNextButton1(QObject* sender) override;
    void doBackButtonSelectDevice(QObject* sender) override;
    void doNextButtonSelectDevice(QObject* sender) override;
    void doBackButtonSelectTape(QObject* sender) override;
    void doNextButtonSelectTape(QObject* sender) override;
    void doBackButton2(QObject* sender) override;
    void doRecordButton(QObject* sender, bool normalization, bool clickRemoval) override;
    void doBackButton3(QObject* sender) override;
    void doNextButton3(QObject* sender) override;
    void doNewTrackButton(QObject* sender) override;
    void doBackButton4(QObject* sender) override;
    void doNextButton4(QObject* sender) override;
    void doBackButton5(QObject* sender) override;
    void doNextButton5(QObject* sender) override;
    void doBackButton6(QObject* sender) override;
    void doNextButton6(QObject* sender) override;
    void doBackButton7(QObject* sender) override;
    void doNextButton7(QObject* sender) override;
    void doBackButton8(QObject* sender) override;
    void doNextButton8(QObject* sender) override;
    void doBackButton9(QObject* sender) override;
    void doNextButton9(QObject* sender) override;
    void doBackButton10(QObject* sender) override;
    void doNextButton10(QObject* sender) override;
    void doReviewSplits(QObject* sender) override;
    void doFindAlbum(QObject* sender) override;
    void doReturnToRecording(QObject* sender) override;
    void doRetryExport(QObject* sender) override;
    void doKeepForLater(QObject* sender) override;
    void doCloseButton(QObject* sender) override;
    void doCloseApplication(QObject* sender) override;
    void showHelp(QObject* sender) override;
    void setRecordingGainDb(float gainDb) override;

    // AudioDelegate
    void audioDetectedAlbumEnd() override;
    void audioRecordingStopped(const RecordingStop& stop) override;
    void audioShowAlert(const CaptureAlert& alert) override;
    void audioMonitorCannotStart(const MonitorFailure& failure) override;

    PanelTabs& tabs() { return _multipleNibTabView; }
    RecordingControl& recording() { return recordingControl; }
    ExportDriver& exporter() { return exportDriver; }
    AlbumLookup& albumLookup() { return finder; }
    SplitReview& splitReview() { return review; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Ending { Stay, Quit, KeepForLater };
    // Asks before the window closes; what may be lost is said, and keeping it is the default.
    Ending confirmClose();
    // Stops the recording and ends the export; empties the export folder only for Quit, and
    // only when no other run works in it.
    void endRun(Ending ending);
    // Closes the window keeping the export folder as it is, offered back at the next start.
    void closeKeepingTracks();
    // The recording the export folder holds that is not all in the library, when this window
    // may speak for the folder (no other run holds it).
    std::optional<InterruptedRecording> unsavedSide();
    // Names and saves a side found in the folder, as after Stop; the lock is this window's.
    void takeUpSide(const InterruptedRecording& side);

    CaptureControl& audio;
    ui::CustomWindow& itsWindow;
    Alerts& alerts;
    PanelTabs _multipleNibTabView;
    PanelMachine machine;
    RecordingControl recordingControl;
    ExportDriver exportDriver;
    FolderClaim folderClaim;
    SplitReview review;
    AlbumLookup finder;
    QPointer<ui::HelpDialog> helpDialog;
    bool closing = false;
    // A recovered recording was named without a deck checked: another side starts at panel 1.
    bool deviceUnchecked = false;
};

// The resource path of the bundled help page in the catalogue's language (English when there is
// none in it).
QString helpResource(const QString& language);
// The bundled help page in the catalogue's language, written out of the resources into
// `folder` (a browser cannot open resource paths); an empty path when it cannot be written.
QString writeHelpPage(const QString& folder, const QString& language);

} // namespace waxline::app
