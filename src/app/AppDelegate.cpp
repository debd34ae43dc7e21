#include "app/AppDelegate.h"

#include "app/InterruptedRecording.h"
#include "exporting/ExportFolders.h"
#include "splitting/SideRecut.h"
#include "ui/Catalogue.h"
#include "ui/window/CustomWindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
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

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

// The catalogue's words for a recording that ended by itself, with what they mention.
std::pair<QString, QStringList> stopText(const RecordingStop& stop) {
    const QString folder = QFileInfo(text(stop.path)).path();
    switch (stop.reason) {
    case RecordingStopReason::DeviceGone:
        return {QStringLiteral("IDS_STOP_DEVICE_GONE"), {}};
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

QString writeHelpPage(const QString& folder, const QString& language) {
    QFile page(QStringLiteral(":/waxline/help/help_%1.html").arg(language));
    if (!page.exists())
        page.setFileName(QStringLiteral(":/waxline/help/help_en.html"));
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
    , review(audio, alerts, &window) {
    openUrl = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
    machine.processAudioFiles = [this] {
        // A re-cut a kill interrupted is put right before the export reads the tracks.
        finishInterruptedRecut(this->audio.exportFolder());
        exportDriver.processAudioFiles();
    };
    // The export folder is locked while recording and while exporting, as the command line
    // locks it, and let go in between.
    recordingControl.mayRecord = [this] {
        return folderClaim.claim(this->audio.exportFolder(), FolderUse::Recording);
    };
    recordingControl.recordingEnded = [this] { folderClaim.release(); };
    // The side is read again at once, so the naming panel can say if its splits look wrong.
    recordingControl.tracksToName = [this] { review.startAnalysis(); };
    review.noticeChanged = [this](bool differs) { _multipleNibTabView.setSplitsNotice(differs); };
    review.showNamingPanel = [this](int tracks) { machine.showNamingPanelAfterRecut(tracks); };
    review.mayRecut = [this] {
        return folderClaim.claim(this->audio.exportFolder(), FolderUse::Recutting);
    };
    review.recutEnded = [this] { folderClaim.release(); };
    machine.mayExport = [this] {
        return folderClaim.claim(this->audio.exportFolder(), FolderUse::Exporting);
    };
    exportDriver.exportEnded = [this] { folderClaim.release(); };
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
        if (!confirmClose()) {
            event->ignore();
            return true;
        }
        // Yes: this close event closes the window; the rest of the ending follows it.
        closing = true;
        endRun();
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
    // Record empties the export folder: an export still reading it (panel 6 reached by its
    // Next button) ends first.
    exportDriver.finishOrCancel();
    // So does the review's reading of the last side.
    review.forget();
    finishInterruptedRecut(audio.exportFolder());
    recordingControl.doRecordButton(normalization, clickRemoval);
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
void AppDelegate::setRecordingGainDb(float gainDb) {
    recordingControl.setRecordingGainDb(gainDb);
}

bool AppDelegate::confirmClose() {
    return alerts.ask(QStringLiteral("IDS_CANCEL_RECORDING"), QString(), QStringLiteral("IDS_YES"),
                      QStringLiteral("IDS_NO"));
}

void AppDelegate::doCloseButton(QObject*) {
    if (confirmClose())
        doCloseApplication(nullptr);
}

void AppDelegate::doCloseApplication(QObject*) {
    closing = true;
    itsWindow.close();
    endRun();
}

void AppDelegate::endRun() {
    // The track files are closed complete before anything is removed, and an export under
    // way ends before its files go.
    recordingControl.stopForClose();
    folderClaim.release();
    exportDriver.finishOrCancel();
    review.forget();
    recordingControl.cancelBackgroundEncoding();
    // Another run recording or exporting in the same folder keeps its files.
    if (folderClaim.claimQuietly(audio.exportFolder(), FolderUse::Recording))
        exporting::clearTmpFolder(audio.exportFolder());
    folderClaim.release();
}

void AppDelegate::offerInterruptedRecording() {
    const std::string& folder = audio.exportFolder();
    const std::optional<InterruptedRecording> found = findInterruptedRecording(folder);
    // A run still recording there has no "finished" line yet either: its lock tells.
    if (!found || !folderClaim.claimQuietly(folder, FolderUse::Recording))
        return;
    const bool keep =
        alerts.ask(QStringLiteral("IDS_RECOVER_TITLE"), QStringLiteral("IDS_RECOVER_TEXT"),
                   QStringLiteral("IDS_RECOVER_EXPORT"), QStringLiteral("IDS_RECOVER_DISCARD"),
                   {QString::number(found->tracks), lengthText(found->seconds)});
    if (!keep) {
        exporting::clearTmpFolder(folder);
        folderClaim.release();
        return;
    }
    // The export reads the files as a finished recording's: headers saying all they hold.
    if (!repairInterruptedRecording(folder, found->tracks))
        std::fprintf(stderr, "offerInterruptedRecording: cannot repair the track files in %s\n",
                     folder.c_str());
    folderClaim.release();
    audio.adoptRecordedTracks(found->tracks);
    deviceUnchecked = true;
    machine.showNamingPanel(found->tracks);
    review.startAnalysis();
}

void AppDelegate::showHelp(QObject*) {
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/help");
    const QString page = writeHelpPage(folder, helpLanguage);
    if (page.isEmpty()) {
        std::fprintf(stderr, "showHelp: cannot write the help page into %s\n", qPrintable(folder));
        return;
    }
    if (openUrl)
        openUrl(QUrl::fromLocalFile(page));
}

void AppDelegate::audioDetectedAlbumEnd() {
    recordingControl.audioDetectedAlbumEnd();
}

void AppDelegate::audioRecordingStopped(const RecordingStop& stop) {
    folderClaim.release();
    const auto [key, arguments] = stopText(stop);
    alerts.alert(QStringLiteral("IDS_WARNING"), key, arguments);
    // What was recorded up to then is named and saved as after Stop.
    if (recordingControl.elapsedTimerRunning())
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
