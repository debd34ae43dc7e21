#include "app/AppDelegate.h"
#include "app/SharedText.h"

#include "app/HelpBrowser.h"

#include "exporting/ExportFolders.h"
#include "splitting/SideRecut.h"
#include "ui/Catalogue.h"
#include "ui/input/InputChoiceDialog.h"
#include "ui/window/CustomWindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeySequence>
#include <QShortcut>
#include <QStandardPaths>

#include <cstdio>

namespace waxline::app {

namespace {

QString localizedPlainText(const std::string& key) {
    return ui::plainTextOf(ui::localizedKey(QString::fromStdString(key)));
}

// The catalogue's words for a recording that ended by itself, with what they mention.
std::pair<QString, QStringList> stopText(const RecordingStop& stop) {
    const QString folder = QFileInfo(text(stop.path)).path();
    switch (stop.reason) {
    case RecordingStopReason::DeviceGone:
        return {QStringLiteral("IDS_STOP_DEVICE_GONE"), {}};
    case RecordingStopReason::ServerGone:
        return {QStringLiteral("IDS_STOP_SERVER_GONE"), {}};
    case RecordingStopReason::DiskFull:
        return {QStringLiteral("IDS_STOP_DISK_FULL"), {folder}};
    case RecordingStopReason::FolderGone:
        return {QStringLiteral("IDS_STOP_FOLDER_GONE"), {folder}};
    case RecordingStopReason::WriteFailed:
    case RecordingStopReason::FileNotCreated:
        break;
    }
    return {QStringLiteral("IDS_STOP_WRITE_FAILED"), {text(stop.path), text(stop.errorText)}};
}

// Why the monitor cannot start, in the catalogue's words: the "%1" of IDS_MONITOR_FAILED.
QString monitorFailureReason(const MonitorFailure& failure) {
    const QString device = text(failure.inputName);
    switch (failure.reason) {
    case MonitorFailureReason::DeviceUnknown:
        return localizedPlainText("IDS_MONITOR_REASON_DEVICE").arg(device);
    case MonitorFailureReason::OpenFailed:
        return localizedPlainText("IDS_MONITOR_REASON_OPEN").arg(device);
    case MonitorFailureReason::NotConnected:
        return localizedPlainText("IDS_MONITOR_REASON_SERVER");
    case MonitorFailureReason::Other:
        break;
    }
    return localizedPlainText("IDS_MONITOR_REASON_OTHER").arg(device).arg(failure.status);
}

} // namespace

QString helpResource(const QString& language) {
    const QString page = QStringLiteral(":/waxline/help/help_%1.html").arg(language);
    return QFile::exists(page) ? page : QStringLiteral(":/waxline/help/help_en.html");
}

QString writeHelpPage(const QString& folder, const QString& language) {
    QFile page(helpResource(language));
    if (!page.open(QIODevice::ReadOnly) || !QDir().mkpath(folder))
        return {};
    const QString path = QDir(folder).filePath(QFileInfo(page.fileName()).fileName());
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) || out.write(page.readAll()) < 0)
        return {};
    return path;
}

AppDelegate::AppDelegate(CaptureControl& audio, ui::CustomWindow& window, Alerts& alerts,
                         std::string libraryFolder)
    : audio(audio)
    , itsWindow(window)
    , alerts(alerts)
    , _multipleNibTabView(window, *this)
    , machine(audio, _multipleNibTabView, alerts)
    , recordingControl(audio, _multipleNibTabView, alerts, machine)
    , exportDriver(
          audio, _multipleNibTabView, alerts, [this](unsigned n) { machine.setPanel(n); },
          [](const std::string& key) { return localizedPlainText(key).toStdString(); },
          std::move(libraryFolder))
    , folderClaim(alerts)
    , review(audio, alerts, &window)
    , finder(audio, _multipleNibTabView, review, &window,
             lookup::ServiceConfig::fromEnvironment()) {
    openUrl = [](const QUrl& url) { return browserExpected() && QDesktopServices::openUrl(url); };
    machine.chooseInput = [this](const QStringList& names) {
        return ui::InputChoiceDialog::choose(names, &itsWindow);
    };
    machine.processAudioFiles = [this] {
        // A re-cut a kill interrupted is put right before the export reads the tracks.
        finishInterruptedRecut(this->audio.exportFolder());
        exportDriver.processAudioFiles();
    };
    // The export folder is locked, with the command line's lock, from Record until the side is
    // in the library or thrown away: naming panels, re-cut and export included.
    recordingControl.mayRecord = [this] {
        return folderClaim.claim(this->audio.exportFolder(), FolderUse::Recording);
    };
    // An album end before any track leaves nothing to keep the folder for.
    recordingControl.recordingEnded = [this] {
        if (this->audio.numRecordedTracks() == 0)
            folderClaim.release();
    };
    // The side is read again at once, so the naming panel can say if its splits look wrong.
    recordingControl.tracksToName = [this] { review.startAnalysis(); };
    review.noticeChanged = [this](bool differs) { _multipleNibTabView.setSplitsNotice(differs); };
    review.showNamingPanel = [this](int tracks) { machine.showNamingPanelAfterRecut(tracks); };
    review.mayRecut = [this] {
        return folderClaim.claim(this->audio.exportFolder(), FolderUse::Recutting);
    };
    review.recutEnded = [this] {
        folderClaim.claimQuietly(this->audio.exportFolder(), FolderUse::Recording);
    };
    machine.mayExport = [this] {
        return folderClaim.claim(this->audio.exportFolder(), FolderUse::Exporting);
    };
    exportDriver.exportEnded = [this] {
        if (exportDriver.allSaved())
            folderClaim.release();
    };
    exportDriver.keepForLater = [this] { closeKeepingTracks(); };
    chooseMusicFolder = [this](const QString& current) {
        return QFileDialog::getExistingDirectory(
            &itsWindow, localizedPlainText("IDS_CHOOSE_FOLDER_TITLE"), current);
    };
    exportDriver.chooseFolder = [this](const QString& current) {
        return chooseMusicFolder ? chooseMusicFolder(current) : QString();
    };
    exportDriver.setEarlyEncoder(&recordingControl.earlyEncoder());
}

AppDelegate::~AppDelegate() {
    itsWindow.removeEventFilter(this);
    review.forget();
    exportDriver.finishOrCancel();
    exportDriver.exportEnded = nullptr; // the folder claim goes before the driver
    audio.setDelegate(nullptr);
}

void AppDelegate::awakeFromNib() {
    audio.setDelegate(this);
    // Tracks left half cut anew by a kill are made whole before anything reads the folder.
    finishInterruptedRecut(audio.exportFolder());

    _multipleNibTabView.clearViews();
    // The window's own two items, then the rest, each identified by its number.
    _multipleNibTabView.addTabItem(QStringLiteral("1"), QStringLiteral("Tab1"));
    _multipleNibTabView.addTabItem(QStringLiteral("2"), QStringLiteral("Tab2"));
    for (unsigned n = 3; n <= 10; ++n)
        _multipleNibTabView.addTabItem(QString::number(n), QStringLiteral("Tab%1").arg(n));
    _multipleNibTabView.addTabItem(QStringLiteral("11"), QStringLiteral("SelectDevice"));
    _multipleNibTabView.addTabItem(QStringLiteral("12"), QStringLiteral("SelectTape"));

    // Panel 6 and the two choice panels are loaded at once; every other on first entry.
    _multipleNibTabView.loadView(panel::another, QStringLiteral("WXL_Tab6"));
    _multipleNibTabView.loadView(panel::selectDevice, QStringLiteral("WXL_SelectDeviceTab"));
    _multipleNibTabView.loadView(panel::selectTape, QStringLiteral("WXL_SelectTape"));

    itsWindow.setWindowTitle(ui::plainTextOf(ui::localizedKey(QStringLiteral("IDS_APP_NAME"))));
    // The window manager's close button and Ctrl+Q ask first, as the Close button does.
    itsWindow.installEventFilter(this);
    auto quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), &itsWindow);
    quit->setContext(Qt::ApplicationShortcut);
    connect(quit, &QShortcut::activated, this, [this] { doCloseButton(nullptr); });
    // Logging out ends the process without a question: the recording is stopped so its files
    // are complete, and the export is finished; nothing is thrown away.
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [this] {
        audio.stopRecording();
        exportDriver.finishOrCancel();
    });

    _multipleNibTabView.selectPanel(panel::connect);
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &itsWindow && event->type() == QEvent::Close && !closing) {
        const Ending ending = confirmClose();
        if (ending == Ending::Stay) {
            event->ignore();
            return true;
        }
        // This close event closes the window; the rest of the ending follows it.
        closing = true;
        endRun(ending);
    }
    return QObject::eventFilter(watched, event);
}

void AppDelegate::doNextButton1(QObject*) {
    deviceUnchecked = false;
    machine.doNextButton1();
}
void AppDelegate::doBackButtonSelectDevice(QObject*) {
    machine.doBackButtonSelectDevice();
}
void AppDelegate::doNextButtonSelectDevice(QObject*) {
    machine.doNextButtonSelectDevice();
}
void AppDelegate::doBackButtonSelectTape(QObject*) {
    machine.doBackButtonSelectTape();
}
void AppDelegate::doNextButtonSelectTape(QObject*) {
    machine.doNextButtonSelectTape();
}
void AppDelegate::doBackButton2(QObject*) {
    machine.doBackButton2();
}
void AppDelegate::doRecordButton(QObject*, bool normalization, bool clickRemoval) {
    const std::string& folder = audio.exportFolder();
    bool discardAsked = false;
    if (recordingControl.elapsedTimerRunning()) {
        // Panel 2 reached by Back while recording: Record would start again from nothing.
        const int choice = alerts.choose(
            QStringLiteral("IDS_RECORD_RESTART"), QString(),
            {QStringLiteral("IDS_BACK_TO_RECORDING"), QStringLiteral("IDS_RECORD_DISCARD")}, 0, 0,
            {QString::number(audio.numRecordedTracks())});
        if (choice == 0) {
            doReturnToRecording(nullptr);
            return;
        }
        recordingControl.stopForClose();
        discardAsked = true;
    }
    // Record empties the export folder: an export still reading it (panel 6 reached by its
    // Next button) ends first.
    exportDriver.finishOrCancel();
    // So does the review's reading of the last side.
    review.forget();
    if (!folderClaim.claim(folder, FolderUse::Recording))
        return;
    finishInterruptedRecut(folder);
    if (!discardAsked) {
        if (const auto side = findInterruptedRecording(folder)) {
            // Tracks that are in no library yet go only when the user says so.
            const int choice = alerts.choose(
                QStringLiteral("IDS_RECORD_OVER"), QString(),
                {QStringLiteral("IDS_SAVE_FIRST"), QStringLiteral("IDS_RECORD_DISCARD")}, 0, 0,
                {QString::number(side->tracks - side->saved), lengthText(side->seconds)});
            if (choice == 0) {
                takeUpSide(*side);
                return;
            }
        }
    }
    recordingControl.doRecordButton(normalization, clickRemoval);
}
void AppDelegate::doReturnToRecording(QObject*) {
    if (recordingControl.elapsedTimerRunning())
        recordingControl.returnToRecording();
}
void AppDelegate::doRetryExport(QObject*) {
    if (!folderClaim.claim(audio.exportFolder(), FolderUse::Exporting))
        return;
    exportDriver.retryMissing();
}
void AppDelegate::doKeepForLater(QObject*) {
    closeKeepingTracks();
}
void AppDelegate::doBackButton3(QObject*) {
    recordingControl.doBackButton3();
}
void AppDelegate::doNextButton3(QObject*) {
    recordingControl.doNextButton3();
}
void AppDelegate::doNewTrackButton(QObject*) {
    recordingControl.doNewTrackButton();
}
void AppDelegate::doBackButton4(QObject*) {
    machine.doBackButton4();
}
void AppDelegate::doNextButton4(QObject*) {
    machine.doNextButton4();
}
void AppDelegate::doBackButton5(QObject*) {
    machine.doBackButton5();
}
void AppDelegate::doNextButton5(QObject*) {
    // Left before the export ended, panel 6 says it is still saving, not "Done!".
    exportDriver.showResult();
    machine.doNextButton5();
}
void AppDelegate::doBackButton6(QObject*) {
    machine.doBackButton6();
}
void AppDelegate::doNextButton6(QObject*) {
    if (deviceUnchecked) {
        // The recovered side is saved; the next one needs the deck found first.
        machine.setPanel(panel::connect);
        return;
    }
    machine.doNextButton6();
}
void AppDelegate::doBackButton7(QObject*) {
    machine.doBackButton7();
}
void AppDelegate::doNextButton7(QObject*) {
    machine.doNextButton7();
}
void AppDelegate::doBackButton8(QObject*) {
    machine.doBackButton8();
}
void AppDelegate::doNextButton8(QObject*) {
    machine.doNextButton8();
}
void AppDelegate::doBackButton9(QObject*) {
    machine.doBackButton9();
}
void AppDelegate::doNextButton9(QObject*) {
    machine.doNextButton9();
}
void AppDelegate::doBackButton10(QObject*) {
    machine.doBackButton10();
}
void AppDelegate::doNextButton10(QObject*) {
    machine.doNextButton10();
}
void AppDelegate::doReviewSplits(QObject*) {
    review.review();
}
void AppDelegate::doFindAlbum(QObject*) {
    finder.find();
}
void AppDelegate::setRecordingGainDb(float gainDb) {
    recordingControl.setRecordingGainDb(gainDb);
}

std::optional<InterruptedRecording> AppDelegate::unsavedSide() {
    const std::string& folder = audio.exportFolder();
    const bool held = folderClaim.held();
    // Another run's files are not this window's to speak of, nor to empty.
    if (!held && !folderClaim.claimQuietly(folder, FolderUse::Recording))
        return std::nullopt;
    finishInterruptedRecut(folder);
    std::optional<InterruptedRecording> side = findInterruptedRecording(folder);
    if (!held)
        folderClaim.release();
    return side;
}

AppDelegate::Ending AppDelegate::confirmClose() {
    const bool recording = recordingControl.elapsedTimerRunning();
    const std::optional<InterruptedRecording> side = unsavedSide();
    if (!recording && !side) {
        // Nothing would be lost: quitting is the answer Return gives.
        return alerts.ask(QStringLiteral("IDS_QUIT_QUESTION"), QString(),
                          QStringLiteral("IDS_QUIT"), QStringLiteral("IDS_CANCEL"))
                   ? Ending::Quit
                   : Ending::Stay;
    }
    const int tracks = side ? side->tracks - side->saved : audio.numRecordedTracks();
    const QString stay =
        recording ? QStringLiteral("IDS_KEEP_RECORDING") : QStringLiteral("IDS_DONT_QUIT");
    const int choice = alerts.choose(
        recording ? QStringLiteral("IDS_CLOSE_RECORDING") : QStringLiteral("IDS_CLOSE_UNSAVED"),
        QString(), {stay, QStringLiteral("IDS_QUIT_KEEP"), QStringLiteral("IDS_QUIT_DISCARD")}, 0,
        0, {QString::number(tracks), lengthText(side ? side->seconds : 0)});
    return choice == 2 ? Ending::Quit : choice == 1 ? Ending::KeepForLater : Ending::Stay;
}

void AppDelegate::doCloseButton(QObject*) {
    const Ending ending = confirmClose();
    if (ending == Ending::Stay)
        return;
    closing = true;
    itsWindow.close();
    endRun(ending);
}

void AppDelegate::doCloseApplication(QObject*) {
    // Panel 6's No after a side all in the library: nothing is left to lose.
    closing = true;
    itsWindow.close();
    endRun(exportDriver.allSaved() ? Ending::Quit : Ending::KeepForLater);
}

void AppDelegate::closeKeepingTracks() {
    closing = true;
    itsWindow.close();
    endRun(Ending::KeepForLater);
}

void AppDelegate::endRun(Ending ending) {
    // The track files are closed complete before anything is removed, and an export under
    // way ends before its files go.
    recordingControl.stopForClose();
    exportDriver.finishOrCancel();
    review.forget();
    if (ending != Ending::Quit) {
        // What the encoder made behind the recording is kept with the tracks.
        recordingControl.cancelBackgroundEncoding();
        folderClaim.release();
        return;
    }
    recordingControl.cancelBackgroundEncoding();
    // Another run recording or exporting in the same folder keeps its files.
    if (folderClaim.claimQuietly(audio.exportFolder(), FolderUse::Recording))
        exporting::clearTmpFolder(audio.exportFolder());
    folderClaim.release();
}

void AppDelegate::offerInterruptedRecording() {
    const std::string& folder = audio.exportFolder();
    // A run still recording or naming there holds the lock: this window says who, and leaves
    // the folder alone.
    if (!folderClaim.claimQuietly(folder, FolderUse::Recording)) {
        if (findInterruptedRecording(folder) || exporting::trackFilesPresent(folder) > 0)
            alerts.alert(QStringLiteral("IDS_WARNING"), QStringLiteral("IDS_FOLDER_BUSY_START"),
                         {folderClaim.holderText(folder)});
        return;
    }
    finishInterruptedRecut(folder);
    const std::optional<InterruptedRecording> found = findInterruptedRecording(folder);
    if (!found) {
        folderClaim.release();
        return;
    }
    using State = InterruptedRecording::State;
    const QString textKey = found->state == State::Interrupted ? QStringLiteral("IDS_RECOVER_TEXT")
                            : found->state == State::NotExported
                                ? QStringLiteral("IDS_RECOVER_UNSAVED_TEXT")
                                : QStringLiteral("IDS_RECOVER_HALF_TEXT");
    const int choice =
        alerts.choose(QStringLiteral("IDS_RECOVER_TITLE"), textKey,
                      {QStringLiteral("IDS_RECOVER_EXPORT"), QStringLiteral("IDS_RECOVER_LATER"),
                       QStringLiteral("IDS_RECOVER_DISCARD")},
                      0, 1,
                      {QString::number(found->tracks), lengthText(found->seconds),
                       QString::number(found->tracks - found->saved)});
    if (choice == 1) {
        // Later: left as it is, and asked again before anything would empty the folder.
        folderClaim.release();
        return;
    }
    if (choice == 2) {
        exporting::clearTmpFolder(folder);
        folderClaim.release();
        return;
    }
    deviceUnchecked = true;
    takeUpSide(*found);
}

void AppDelegate::takeUpSide(const InterruptedRecording& side) {
    const std::string& folder = audio.exportFolder();
    // The export reads the files as a finished recording's: headers saying all they hold.
    if (!repairInterruptedRecording(folder, side.tracks))
        std::fprintf(stderr, "takeUpSide: cannot repair the track files in %s\n", folder.c_str());
    audio.adoptRecordedTracks(side.tracks);
    machine.releaseMeter();
    machine.showNamingPanel(side.tracks);
    review.startAnalysis();
}

void AppDelegate::showHelp(QObject*) {
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/help");
    const QString page = writeHelpPage(folder, helpLanguage);
    QUrl url = QUrl::fromLocalFile(page);
    if (page.isEmpty()) {
        // No browser can read the resources, but the help window can.
        std::fprintf(stderr, "showHelp: cannot write the help page into %s\n", qPrintable(folder));
        url = QUrl(QStringLiteral("qrc") + helpResource(helpLanguage));
    } else if (openUrl && openUrl(url)) {
        return;
    }
    if (!helpDialog)
        helpDialog = new ui::HelpDialog(&itsWindow);
    helpDialog->showPage(url);
    helpDialog->show();
    helpDialog->raise();
    helpDialog->activateWindow();
}

void AppDelegate::audioDetectedAlbumEnd() {
    recordingControl.audioDetectedAlbumEnd();
}

void AppDelegate::audioRecordingStopped(const RecordingStop& stop) {
    const auto [key, arguments] = stopText(stop);
    alerts.alert(QStringLiteral("IDS_WARNING"), key, arguments);
    if (!recordingControl.elapsedTimerRunning())
        return;
    if (exporting::trackFilesPresent(audio.exportFolder()) == 0) {
        // The folder went with its tracks: there is nothing to name, only a new start.
        recordingControl.abandon();
        folderClaim.release();
        return;
    }
    // What was recorded up to then is named and saved as after Stop.
    recordingControl.doNextButton3();
}

void AppDelegate::audioMonitorCannotStart(const MonitorFailure& failure) {
    // The process ends after this: the user reads why before the window goes.
    alerts.alert(QStringLiteral("IDS_WARNING"), QStringLiteral("IDS_MONITOR_FAILED"),
                 {monitorFailureReason(failure)});
}

void AppDelegate::audioShowAlert(const CaptureAlert& alert) {
    // The message comes as the capture engine worded it; the alert shows it as plain text.
    alerts.alert(text(alert.titleKey), text(alert.message), {}, text(alert.buttonKey));
}

} // namespace waxline::app
