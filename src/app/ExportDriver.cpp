#include "app/ExportDriver.h"

#include "app/ExportReport.h"
#include "app/MessageBoxAlerts.h"
#include "app/PanelMachine.h"
#include "exporting/LibraryImporter.h"
#include "lookup/KeptNames.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace waxline::app {

using namespace waxline::exporting;

namespace {

constexpr std::chrono::milliseconds pollInterval{500};

std::string fieldText(const PanelViews& views, unsigned n, int tag) {
    return views.text(n, tag).toStdString();
}

} // namespace

ExportNames namesFromPanels(const PanelViews& views, int tracks) {
    ExportNames names;
    if (tracks == 1) {
        names.artist = fieldText(views, panel::nameOne, panel::oneArtistTag);
        names.album = fieldText(views, panel::nameOne, panel::oneAlbumTag);
        names.titles.push_back(fieldText(views, panel::nameOne, panel::oneNameTag));
        return names;
    }
    names.artist = fieldText(views, panel::nameFirstTen, panel::artistTag);
    names.album = fieldText(views, panel::nameFirstTen, panel::albumTag);
    for (int track = 1; track <= tracks; ++track)
        names.titles.push_back(
            fieldText(views, panel::namingPanelOf(track), panel::trackNameTag(track)));
    return names;
}

ExportDriver::ExportDriver(CaptureControl& capture, PanelViews& views, Alerts& alerts,
                           std::function<void(unsigned)> setPanel, TextLookup text,
                           std::string libraryFolder)
    : capture(capture)
    , views(views)
    , alerts(alerts)
    , setPanel(std::move(setPanel))
    , text(std::move(text))
    , library(std::move(libraryFolder)) {}

ExportDriver::~ExportDriver() {
    finishOrCancel();
}

void ExportDriver::processAudioFiles() {
    const int n = capture.numRecordedTracks();
    // The previous export has ended (the poll saw it); its thread only waits to be joined.
    joinFinishedThread();

    // The fields are read here, on the main thread, while panel 5 keeps them from changing.
    ExportNames names = namesFromPanels(views, n);
    // Missing names stand in with the catalogue's words; a track's carries its number, which
    // continues from the last side under the same names.
    ExportNumbering peek = numbering;
    const uint32_t offset = peek.begin(names.artist, names.album);
    ExportRequest request;
    request.exportFolder = capture.exportFolder();
    request.normalise = false;
    // The naming panel's choices: cleaned MP3s, and the recording kept as FLAC beside them.
    const unsigned namingPanel = n == 1 ? panel::nameOne : panel::nameFirstTen;
    if (views.removeClicksAndHum(namingPanel))
        request.choices.clean = {true, restoration::HumChoice::Auto};
    if (views.keepLosslessCopy(namingPanel)) {
        request.choices.format = ExportFormat::Both;
        request.choices.sheets = true;
    }
    // What an earlier run got into the library stays there; only the rest is exported.
    request.skipSaved = true;
    request.numRecordedTracks = [n] { return n; };
    request.jobs = 0;
    request.text = text;
    request.tagText = tagText;
    if (early)
        request.beforeEncoding = [encoder = early](int track) { encoder->settle(track); };
    for (int track = 1; track <= n; ++track) {
        const TrackNames filled =
            namesOrUnknown(text, names.artist, names.album, names.titles[size_t(track) - 1],
                           std::to_string(offset + uint32_t(track)));
        request.titles.push_back(filled.title);
        request.artist = filled.artist;
        request.album = filled.album;
    }
    if (n == 0) {
        request.artist = names.artist;
        request.album = names.album;
    }
    // Names a lookup filled in carry their numbers, ids and cover while the panel still shows
    // that release; changed by hand, the side is tagged as typed.
    const auto kept = lookup::keptNames(request.exportFolder);
    if (kept && kept->artist == names.artist && kept->album == names.album &&
        static_cast<int>(kept->tracks.size()) == n) {
        request.trackNumbers = lookup::trackNumbersOf(*kept);
        request.releaseTags = lookup::releaseTagsOf(*kept, lookup::keptCover(request.exportFolder));
    }
    lastRequest = request;
    // Done again, the missing tracks keep the numbers this export gives them.
    lastRequest.numberOffset = offset;
    start(std::move(request));
}

void ExportDriver::retryMissing() {
    if (running())
        return;
    joinFinishedThread();
    setPanel(panel::exporting);
    start(lastRequest);
}

bool ExportDriver::allSaved() const {
    return !outcomes.empty() &&
           std::all_of(outcomes.begin(), outcomes.end(), [](const auto& o) { return o.ok; });
}

bool ExportDriver::libraryWritable() {
    for (;;) {
        const int error = LibraryImporter(library).probe();
        if (error == 0)
            return true;
        std::fprintf(stderr, "SimpleRunAppleScript err = %d\n", error);
        const QString folder = QString::fromStdString(library);
        const int choice =
            alerts.choose(QStringLiteral("IDS_LIBRARY_UNWRITABLE"), QString(),
                          {QStringLiteral("IDS_CHOOSE_FOLDER"), QStringLiteral("IDS_TRY_AGAIN"),
                           QStringLiteral("IDS_KEEP_LATER")},
                          1, 2, {folder});
        if (choice == 2) {
            if (keepForLater)
                keepForLater();
            return false;
        }
        if (choice == 0 && chooseFolder) {
            const QString chosen = chooseFolder(folder);
            if (!chosen.isEmpty())
                library = chosen.toStdString();
        }
    }
}

void ExportDriver::start(ExportRequest request) {
    problemTracks.clear();
    views.setText(panel::exporting, panel::problemNoteTag, QString());
    views.setText(panel::exporting, panel::readyNoteTag, QString());
    if (!libraryWritable())
        return;

    const int n = request.numRecordedTracks ? request.numRecordedTracks() : 0;
    views.setBusy(true);
    views.setProgressRange(n);
    views.setProgressValue(0);

    pollTimer = std::make_unique<QTimer>();
    pollTimer->setInterval(pollInterval);
    connect(pollTimer.get(), &QTimer::timeout, this, &ExportDriver::pollingTimerFired);
    pollTimer->start();
    pollingTimerFired();

    finished = false;
    cancelled = false;
    thread = std::thread([this, request = std::move(request)]() mutable {
        DoITunesImportTagAndConvertThreadRoutine2(std::move(request));
    });
}

// Export thread.
void ExportDriver::DoITunesImportTagAndConvertThreadRoutine2(ExportRequest request) {
    const LibraryImporter importer(library, request.text);
    ExportPipeline pipeline(importer);
    pipeline.onTrackConverted = [](const TrackOutcome& outcome) {
        if (!outcome.ok)
            std::fprintf(stderr, "export of track %d failed (reason %d): %s\n", outcome.index,
                         int(outcome.problem.kind), outcome.problem.path.c_str());
    };
    pipeline.onProbeFailed = [this](int error) {
        std::fprintf(stderr, "SimpleRunAppleScript check after comversion. err = %d\n", error);
        if (cancelled)
            return false;
        if (error == LibraryImporter::kLibraryUnavailable)
            return confirmLibraryOnMainThread();
        return true;
    };
    pipeline.onStarted = [this](const std::vector<int>& ready, int total) {
        QMetaObject::invokeMethod(
            this, [this, ready, total] { showReadyTracks(ready, total); }, Qt::QueuedConnection);
    };
    pipeline.onTrackDone = [this](const TrackOutcome& outcome, int) {
        setProgress(outcome.index);
        if (!outcome.ok)
            QMetaObject::invokeMethod(
                this, [this, outcome] { noteProblem(outcome); }, Qt::QueuedConnection);
    };

    std::vector<TrackOutcome> result = pipeline.run(request, numbering);

    QMetaObject::invokeMethod(
        this,
        [this, result = std::move(result)]() mutable {
            views.setBusy(false);
            outcomes = std::move(result);
            capture.resetTrackCounter();
            _timeToGoToPanel6 = true;
        },
        Qt::QueuedConnection);
    finished = true;
}

// Export thread: the question is the main thread's; this thread waits for the answer. Giving
// up leaves the rest of the tracks missing, for panel 6 to offer again.
bool ExportDriver::confirmLibraryOnMainThread() {
    bool again = false;
    QMetaObject::invokeMethod(
        this,
        [this, &again] {
            again =
                alerts.choose(QStringLiteral("IDS_LIBRARY_GONE"), QString(),
                              {QStringLiteral("IDS_TRY_AGAIN"), QStringLiteral("IDS_KEEP_LATER")},
                              0, 1, {QString::fromStdString(library)}) == 0;
        },
        Qt::BlockingQueuedConnection);
    return again && !cancelled;
}

// Panel 5: the tracks that did not get into the library so far, and why the last one did not.
void ExportDriver::noteProblem(const TrackOutcome& outcome) {
    problemTracks.push_back(outcome.index);
    views.setText(
        panel::exporting, panel::problemNoteTag,
        alertText(QStringLiteral("IDS_TRACKS_NOT_SAVED"), {trackRunsText(problemTracks)}) +
            QLatin1Char(' ') + trackProblemText(outcome.problem));
}

// Panel 6: "Done!" only when every track is in the library; else what is missing, why, and the
// two ways on.
void ExportDriver::showResult() {
    const bool saving = running();
    const bool done = !saving && allSaved();
    views.setText(panel::another, panel::resultTitleTag,
                  alertText(saving ? QStringLiteral("IDS_PANEL6_SAVING_TITLE")
                            : done ? QStringLiteral("IDS_PANEL6_TITLE")
                                   : QStringLiteral("IDS_PANEL6_MISSING_TITLE")));
    // While saving, another side may be chosen already: Record waits for this export.
    views.setShown(panel::another, panel::doneTextTag, done);
    for (int tag : {panel::yesTag, panel::noTag, panel::doneArtTag, panel::anotherNextTag})
        views.setShown(panel::another, tag, done || saving);
    views.setShown(panel::another, panel::missingTextTag, !done);
    for (int tag : {panel::retryTag, panel::keepTag})
        views.setShown(panel::another, tag, !done && !saving);
    views.setText(panel::another, panel::missingTextTag,
                  saving ? alertText(QStringLiteral("IDS_PANEL6_SAVING_TEXT"))
                  : done ? QString()
                         : missingTracksText(outcomes));
}

// Export thread.
void ExportDriver::setProgress(int track) {
    QMetaObject::invokeMethod(
        this,
        [this, track] {
            views.setProgressValue(track);
            if (track == capture.numRecordedTracks())
                views.setBusy(false);
        },
        Qt::QueuedConnection);
}

// Panel 5's note: which tracks only needed their tags, as their MP3s were made while recording.
void ExportDriver::showReadyTracks(const std::vector<int>& ready, int total) {
    auto words = [this](const char* key) {
        return QString::fromStdString(text ? text(key) : std::string(key));
    };
    QString note;
    if (total > 0 && ready.size() == size_t(total)) {
        note = words("IDS_EXPORT_READY_ALL");
    } else if (ready.empty()) {
        note = words("IDS_EXPORT_READY_NONE");
    } else {
        QStringList runs;
        for (const auto& [first, last] : trackRuns(ready))
            runs << (first == last ? QString::number(first)
                                   : QStringLiteral("%1\u2013%2").arg(first).arg(last));
        note = words("IDS_EXPORT_READY_SOME").arg(runs.join(QStringLiteral(", "))).arg(total);
    }
    views.setText(panel::exporting, panel::readyNoteTag, note);
}

void ExportDriver::pollingTimerFired() {
    if (!_timeToGoToPanel6.exchange(false))
        return;
    pollTimer.reset();
    joinFinishedThread();
    if (exportEnded)
        exportEnded();
    showResult();
    if (setPanel)
        setPanel(panel::another);
}

void ExportDriver::joinFinishedThread() {
    if (thread.joinable())
        thread.join();
}

void ExportDriver::finishOrCancel() {
    if (!thread.joinable())
        return;
    // Whoever waits here has left panel 5 behind: the end of this export moves no panel.
    pollTimer.reset();
    cancelled = true;
    while (!finished) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(5);
    }
    thread.join();
    if (exportEnded)
        exportEnded();
    // What the thread queued last (its outcome, the counter reset) is handled now.
    QCoreApplication::sendPostedEvents(this);
    _timeToGoToPanel6 = false;
}

} // namespace waxline::app
