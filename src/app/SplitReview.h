#pragma once

#include "app/Alerts.h"
#include "capture/CaptureControl.h"
#include "filters/SideSplitter.h"
#include "splitting/RecordedSide.h"
#include "ui/review/SplitReviewDialog.h"

#include <QObject>
#include <QPointer>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

class QWidget;

namespace waxline::app {

// The review of a recorded side's splits. When a recording has ended it reads the side on a
// worker thread (the waveform overview and the whole-side splitter's features at once), hands
// the overview over in pieces and then the proposal; the review dialog opens at once and fills
// in. Apply re-cuts the track files, tells the capture engine the new count and shows the
// naming panel for it; Cancel changes nothing. Main thread only (but for its worker).
class SplitReview : public QObject {
    Q_OBJECT
public:
    // Fine enough for the closest zoom: an 18-minute side gives a column every 33 ms.
    static constexpr int kColumns = 32768;
    static constexpr double kSnapSeconds = 3.0;
    static constexpr double kPlaySeconds = 4.0;
    // Overview columns handed over at a time while reading.
    static constexpr int kColumnsAPiece = 2048;

    enum class State { Idle, Reading, Ready, Failed };

    SplitReview(CaptureControl& capture, Alerts& alerts, QWidget* dialogParent);
    ~SplitReview() override;

    // After a successful re-cut, with the count now on disk: the naming panel for it.
    std::function<void(int tracks)> showNamingPanel;
    // Whenever it may change: whether the proposal differs from the splits on disk.
    std::function<void(bool differs)> noticeChanged;
    // Around a re-cut: may it change the folder (false after the front end said why), and the
    // files are settled again. Unset: always.
    std::function<bool()> mayRecut;
    std::function<void()> recutEnded;

    // The recording has ended: opens the side in the export folder and starts reading it.
    void startAnalysis();
    // Stops reading, closes the review and forgets the side (Record empties the folder).
    void forget();

    State state() const { return current; }
    const RecordedSide& side() const { return recorded; }
    // The splitter's proposal; empty until Ready, and when it found no music.
    const std::vector<Sonra::Audio::Filters::SplitBoundary>& proposal() const { return proposed; }
    // The side's analysis once Ready (for fitting a listing to it); null before.
    std::shared_ptr<const Sonra::Audio::Filters::SideSplitter> sideSplitter() const {
        return current == State::Ready ? splitter : nullptr;
    }
    // Whether the proposal is sure enough to replace the live splits (the notice and the
    // review's markers); otherwise its new boundaries are only suggested.
    bool proposalTrusted() const { return current == State::Ready && trusted; }
    bool proposalDiffers() const;

    // Opens the review, modal to the window, and returns at once; false (after an alert) when
    // the side cannot be read.
    bool review();
    // The review while it is open (a closed one is on its way out).
    ui::SplitReviewDialog* dialog() const {
        return open && open->isVisible() ? open.data() : nullptr;
    }

    // What the dialog's controls do, open to tests.
    // The quietest moment within kSnapSeconds of a frame; the frame itself before Ready.
    int64_t snap(int64_t frame) const;
    void proposeCount(int tracks);
    void play(int64_t frame);
    // Re-cuts the side at these boundaries; false (after an alert naming the reason) when the
    // files could not be cut, which leaves them as they were.
    bool apply(const std::vector<int64_t>& boundaries);

    // Runs the event loop until the reading has ended (Ready or Failed); false on timeout.
    bool waitUntilRead(int timeoutMs);

private:
    struct Worker;

    void columnsRead(unsigned generation, int first, std::vector<float> lows,
                     std::vector<float> highs);
    void readingEnded(unsigned generation,
                      std::shared_ptr<Sonra::Audio::Filters::SideSplitter> splitter, bool failed);
    std::vector<ui::SplitMarker>
    markersOf(const std::vector<Sonra::Audio::Filters::SplitBoundary>& boundaries) const;
    void applyFromDialog();
    void tellNotice();
    void offerProposal(ui::SplitReviewDialog& dialog) const;
    void stopWorker();

    CaptureControl& capture;
    Alerts& alerts;
    QPointer<QWidget> parent;
    QPointer<ui::SplitReviewDialog> open;
    State current = State::Idle;
    RecordedSide recorded;
    std::string failedPath;
    std::vector<float> lows;
    std::vector<float> highs;
    int columnsIn = 0; // columns [0, columnsIn) read
    std::shared_ptr<Sonra::Audio::Filters::SideSplitter> splitter;
    std::vector<Sonra::Audio::Filters::SplitBoundary> proposed;
    bool trusted = false;
    std::vector<float> quietness; // the splitter's level per analysis frame, smoothed
    unsigned generation = 0;
    std::unique_ptr<Worker> worker;
};

// The split proposal is "different" when it makes another number of tracks, or a boundary lies
// outside the quiet stretch (and more than a second away) of the live split it stands for.
bool proposalDiffersFrom(const std::vector<Sonra::Audio::Filters::SplitBoundary>& proposal,
                         const std::vector<int64_t>& live, unsigned sampleRate);

} // namespace waxline::app
