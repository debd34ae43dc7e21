#pragma once

#include "app/Alerts.h"
#include "app/PanelViews.h"
#include "capture/CaptureControl.h"
#include "exporting/EarlyEncoder.h"
#include "exporting/ExportNumbering.h"
#include "exporting/ExportPipeline.h"
#include "exporting/UnknownNames.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace waxline::app {

// What one export takes from the naming panels.
struct ExportNames {
    std::string artist;
    std::string album;
    std::vector<std::string> titles; // track i at i - 1
};

// Artist, album and titles of `tracks` recorded tracks as the naming panels hold them: one
// track from panel 4, several from panel 7 and each track's field on panels 7 to 10.
ExportNames namesFromPanels(const PanelViews& views, int tracks);

// The export started from panel 4 or 7 to 10: the library check with its alert, panel 5's
// busy and progress indicators, one export thread per export running the exporting library's
// pipeline (encoding on every core), progress queued to the main thread, and the 0.5 s poll
// that moves to panel 6 when the thread is done. The numbering lives as long as this object.
// Main thread, except where a function says otherwise.
class ExportDriver : public QObject {
    Q_OBJECT
public:
    // `setPanel` switches the wizard; `text` looks up the catalogue's texts for missing names;
    // `libraryFolder` is the user's music folder.
    ExportDriver(CaptureControl& capture, PanelViews& views, Alerts& alerts,
                 std::function<void(unsigned)> setPanel, exporting::TextLookup text,
                 std::string libraryFolder);
    ~ExportDriver() override;

    // Told when an export has ended and its thread is joined.
    std::function<void()> exportEnded;
    // The user keeps the tracks for another time rather than export them now.
    std::function<void()> keepForLater;
    // Asks for another music folder, starting at `current`; empty when none was chosen.
    std::function<QString(const QString& current)> chooseFolder;

    // The encoder that made MP3s while recording: each export lets it finish or give up a
    // track before encoding that track itself. None: only what it left is taken.
    void setEarlyEncoder(exporting::EarlyEncoder* encoder) { early = encoder; }
    // How the tags take the names: Latin-1 bytes, as the window always stored them, or text.
    void setTagText(TagText text) { tagText = text; }

    void processAudioFiles();
    // Panel 6's Try again: the tracks of the last export that are not in the library, under the
    // same names and numbers.
    void retryMissing();
    // Every track of the last export is in the library.
    bool allSaved() const;
    // Panel 6 as the export stands: still saving, "Done!", or what is missing.
    void showResult();
    void pollingTimerFired();

    // Export thread: queues the progress level indicator's move to track i.
    void setProgress(int track);

    bool running() const { return thread.joinable() && !finished.load(); }
    // Lets the running export end (a failing library check no longer retries) and waits for
    // it, keeping the main thread's queue moving meanwhile; its end then moves no panel.
    void finishOrCancel();

    // The outcome of the last export that finished.
    const std::vector<exporting::TrackOutcome>& lastOutcomes() const { return outcomes; }
    const std::string& libraryFolder() const { return library; }

private:
    void start(exporting::ExportRequest request);
    // Until the music folder can be written, or the user keeps the tracks for later (false).
    bool libraryWritable();
    void noteProblem(const exporting::TrackOutcome& outcome);
    void DoITunesImportTagAndConvertThreadRoutine2(exporting::ExportRequest request);
    bool confirmLibraryOnMainThread();
    void joinFinishedThread();
    void showReadyTracks(const std::vector<int>& ready, int total);

    CaptureControl& capture;
    PanelViews& views;
    Alerts& alerts;
    std::function<void(unsigned)> setPanel;
    exporting::TextLookup text;
    std::string library;
    exporting::EarlyEncoder* early = nullptr;
    TagText tagText = TagText::Latin1Bytes;

    exporting::ExportNumbering numbering; // _saveTrackArtist, _saveTrackAlbum, _saveTracks
    std::vector<exporting::TrackOutcome> outcomes;
    exporting::ExportRequest lastRequest;
    std::vector<int> problemTracks; // of the export under way, for panel 5
    std::unique_ptr<QTimer> pollTimer;
    std::thread thread;
    std::atomic<bool> finished{false};
    std::atomic<bool> cancelled{false};
    std::atomic<bool> _timeToGoToPanel6{false};
};

} // namespace waxline::app
