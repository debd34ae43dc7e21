#include "app/SplitReview.h"
#include "app/SharedText.h"

#include "filters/ProposalTrust.h"
#include "splitting/SideRecut.h"
#include "ui/review/SplitReviewDialog.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPushButton>

#include <algorithm>
#include <cmath>
#include <limits>

namespace waxline::app {

using Sonra::Audio::Filters::SideAnalyser;
using Sonra::Audio::Filters::SideSplitter;
using Sonra::Audio::Filters::SplitBoundary;
using Sonra::Audio::Filters::SplitProposal;

namespace {

// Analysis frames either side of a frame the quietness is averaged over (about a fifth of a
// second in all), so a single quiet instant between two notes does not win.
constexpr int quietnessReach = 2;

} // namespace

struct SplitReview::Worker {
    std::shared_ptr<std::atomic<bool>> cancel = std::make_shared<std::atomic<bool>>(false);
    std::thread thread;
};

bool proposalDiffersFrom(const std::vector<SplitBoundary>& proposal,
                         const std::vector<int64_t>& live, unsigned sampleRate) {
    if (proposal.size() != live.size())
        return true;
    const auto second = int64_t(sampleRate);
    for (size_t i = 0; i < live.size(); ++i) {
        const SplitBoundary& b = proposal[i];
        const bool inQuiet = live[i] >= b.quietStart && live[i] <= b.quietEnd;
        if (!inQuiet && std::llabs(live[i] - b.sample) > second)
            return true;
    }
    return false;
}

SplitReview::SplitReview(CaptureControl& capture, Alerts& alerts, QWidget* dialogParent)
    : capture(capture)
    , alerts(alerts)
    , parent(dialogParent) {}

SplitReview::~SplitReview() {
    stopWorker();
    delete open.data();
}

void SplitReview::stopWorker() {
    if (!worker)
        return;
    worker->cancel->store(true);
    if (worker->thread.joinable())
        worker->thread.join();
    worker.reset();
}

void SplitReview::forget() {
    stopWorker();
    ++generation;
    if (open) {
        open->reject();
        delete open.data();
    }
    current = State::Idle;
    recorded = RecordedSide{};
    lows.clear();
    highs.clear();
    columnsIn = 0;
    splitter.reset();
    proposed.clear();
    trusted = false;
    quietness.clear();
    tellNotice();
}

void SplitReview::startAnalysis() {
    forget();
    const std::string folder = capture.exportFolder();
    finishInterruptedRecut(folder);
    const SideOpen side = openRecordedSide(folder, capture.numRecordedTracks());
    if (side.problem != SideProblem::None || side.side.frames() <= 0 ||
        side.side.sampleRate < 8000) {
        current = State::Failed;
        failedPath = side.path.empty() ? folder : side.path;
        return;
    }
    recorded = side.side;
    current = State::Reading;

    const int64_t frames = recorded.frames();
    const int64_t perColumn = std::max<int64_t>(1, (frames + kColumns - 1) / kColumns);
    const int columns = int((frames + perColumn - 1) / perColumn);
    lows.assign(size_t(columns), 0.0f);
    highs.assign(size_t(columns), 0.0f);

    worker = std::make_unique<Worker>();
    const unsigned job = generation;
    worker->thread = std::thread([this, job, perColumn, side = recorded, cancel = worker->cancel] {
        SideAnalyser analyser(side.sampleRate);
        const unsigned channels = std::max(side.channels, 1u);
        std::vector<float> low, high;
        int first = 0;
        int64_t inColumn = 0;
        float lo = std::numeric_limits<float>::max(), hi = std::numeric_limits<float>::lowest();
        auto endColumn = [&] {
            low.push_back(lo);
            high.push_back(hi);
            lo = std::numeric_limits<float>::max();
            hi = std::numeric_limits<float>::lowest();
            inColumn = 0;
        };
        auto handOver = [&] {
            QMetaObject::invokeMethod(
                this, [this, job, first, low, high] { columnsRead(job, first, low, high); },
                Qt::QueuedConnection);
            first += int(low.size());
            low.clear();
            high.clear();
        };
        const bool whole = readSide(
            side,
            [&](const float* samples, size_t n) {
                analyser.addInterleaved(samples, n, channels);
                for (size_t f = 0; f < n; ++f) {
                    float mix = 0;
                    for (unsigned c = 0; c < channels; ++c)
                        mix += samples[f * channels + c];
                    mix /= float(channels);
                    lo = std::min(lo, mix);
                    hi = std::max(hi, mix);
                    if (++inColumn == perColumn) {
                        endColumn();
                        if (int(low.size()) == kColumnsAPiece)
                            handOver();
                    }
                }
            },
            cancel.get());
        if (cancel->load())
            return;
        if (inColumn > 0)
            endColumn();
        if (!low.empty())
            handOver();
        std::shared_ptr<SideSplitter> result;
        if (whole)
            result = std::make_shared<SideSplitter>(analyser.takeFeatures());
        QMetaObject::invokeMethod(
            this, [this, job, result, whole] { readingEnded(job, result, !whole); },
            Qt::QueuedConnection);
    });
}

void SplitReview::columnsRead(unsigned job, int first, std::vector<float> low,
                              std::vector<float> high) {
    if (job != generation)
        return;
    for (size_t i = 0; i < low.size() && size_t(first) + i < lows.size(); ++i) {
        lows[size_t(first) + i] = low[i];
        highs[size_t(first) + i] = high[i];
    }
    columnsIn = std::max(columnsIn, first + int(low.size()));
    if (open)
        open->overview().setColumns(first, low, high);
}

void SplitReview::readingEnded(unsigned job, std::shared_ptr<SideSplitter> result, bool failed) {
    if (job != generation)
        return;
    if (worker && worker->thread.joinable())
        worker->thread.join();
    worker.reset();
    if (failed || !result) {
        current = State::Failed;
        failedPath = recorded.folder;
        if (open) {
            open->setReading(false);
            alerts.alert(warningKey, QStringLiteral("IDS_REVIEW_NO_SIDE"), {text(failedPath)});
        }
        tellNotice();
        return;
    }
    splitter = std::move(result);
    const SplitProposal proposal = splitter->propose();
    proposed = proposal.problem == SplitProposal::Problem::None ? proposal.boundaries
                                                                : std::vector<SplitBoundary>{};
    trusted =
        Sonra::Audio::Filters::ProposalTrust::judge(*splitter, proposal, recorded.liveBoundaries())
            .choice == Sonra::Audio::Filters::ProposalTrust::Choice::Proposal;
    // The quietness snapping looks at: the click-proof level, averaged over a few frames.
    const auto& level = splitter->features().level;
    quietness.assign(level.size(), 0.0f);
    for (size_t i = 0; i < level.size(); ++i) {
        const size_t from = i >= quietnessReach ? i - quietnessReach : 0;
        const size_t to = std::min(level.size(), i + quietnessReach + 1);
        double sum = 0;
        for (size_t j = from; j < to; ++j)
            sum += level[j];
        quietness[i] = float(sum / double(to - from));
    }
    current = State::Ready;
    if (open) {
        open->setReading(false);
        // Markers the user has moved meanwhile stay; otherwise a trusted proposal takes their
        // place, and one it is not sure of is only suggested.
        if (!open->changed() && proposal.problem == SplitProposal::Problem::None)
            offerProposal(*open);
    }
    tellNotice();
}

bool SplitReview::proposalDiffers() const {
    return current == State::Ready && splitter && trusted && !proposed.empty() &&
           proposalDiffersFrom(proposed, recorded.liveBoundaries(), recorded.sampleRate);
}

void SplitReview::offerProposal(ui::SplitReviewDialog& dialog) const {
    if (trusted) {
        dialog.setProposal(markersOf(proposed));
        return;
    }
    const std::vector<int64_t> live = recorded.liveBoundaries();
    const auto same =
        int64_t(Sonra::Audio::Filters::ProposalTrust::kSameSeconds * double(recorded.sampleRate));
    std::vector<int64_t> suggested;
    for (const SplitBoundary& b : proposed)
        if (std::none_of(live.begin(), live.end(), [&](int64_t l) {
                return (l >= b.quietStart && l <= b.quietEnd) || std::llabs(l - b.sample) <= same;
            }))
            suggested.push_back(b.sample);
    dialog.setSuggestions(suggested);
}

void SplitReview::tellNotice() {
    if (noticeChanged)
        noticeChanged(proposalDiffers());
}

std::vector<ui::SplitMarker>
SplitReview::markersOf(const std::vector<SplitBoundary>& boundaries) const {
    std::vector<ui::SplitMarker> markers;
    for (const SplitBoundary& b : boundaries)
        markers.push_back({b.sample, b.confidence});
    return markers;
}

int64_t SplitReview::snap(int64_t frame) const {
    if (!splitter || quietness.empty())
        return frame;
    const auto& features = splitter->features();
    const auto hop = int64_t(features.hop);
    if (hop <= 0)
        return frame;
    const auto reach = int64_t(std::llround(kSnapSeconds * recorded.sampleRate)) / hop;
    const auto last = int64_t(quietness.size()) - 1;
    const int64_t centre = std::clamp<int64_t>(frame / hop, 0, last);
    int64_t best = centre;
    for (int64_t i = std::max<int64_t>(0, centre - reach); i <= std::min(last, centre + reach);
         ++i) {
        const float q = quietness[size_t(i)], b = quietness[size_t(best)];
        // The quietest; of equals, the one nearest where the marker was dropped.
        if (q < b || (q == b && std::llabs(i - centre) < std::llabs(best - centre)))
            best = i;
    }
    return std::min(best * hop + hop / 2, recorded.frames() - 1);
}

void SplitReview::proposeCount(int tracks) {
    if (!splitter || !open)
        return;
    const SplitProposal proposal = splitter->proposeCount(tracks);
    if (proposal.problem == SplitProposal::Problem::None)
        open->setProposal(markersOf(proposal.boundaries));
}

void SplitReview::play(int64_t frame) {
    if (recorded.sampleRate == 0)
        return;
    const auto length = int64_t(kPlaySeconds * recorded.sampleRate);
    const int64_t first = std::clamp<int64_t>(frame - length / 2, 0,
                                              std::max<int64_t>(0, recorded.frames() - length));
    capture.playExcerpt(first, length);
}

bool SplitReview::review() {
    if (current == State::Idle)
        startAnalysis();
    if (current == State::Failed) {
        alerts.alert(warningKey, QStringLiteral("IDS_REVIEW_NO_SIDE"), {text(failedPath)});
        return false;
    }
    if (open) {
        open->raise();
        return true;
    }
    auto dialog = new ui::SplitReviewDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    open = dialog;
    dialog->setSide(recorded.frames(), recorded.sampleRate, recorded.liveBoundaries());
    dialog->overview().setColumnCount(int(lows.size()));
    dialog->overview().snap = [this](int64_t frame) { return snap(frame); };
    // What has been read so far; the rest comes as it is read.
    dialog->overview().setColumns(0, std::vector<float>(lows.begin(), lows.begin() + columnsIn),
                                  std::vector<float>(highs.begin(), highs.begin() + columnsIn));
    dialog->setReading(current != State::Ready);
    if (current == State::Ready && !proposed.empty())
        offerProposal(*dialog);
    connect(dialog, &ui::SplitReviewDialog::trackCountChosen, this, &SplitReview::proposeCount);
    connect(dialog, &ui::SplitReviewDialog::playRequested, this, &SplitReview::play);
    connect(dialog, &ui::SplitReviewDialog::applyRequested, this, &SplitReview::applyFromDialog);
    connect(dialog, &QDialog::finished, this, [this] { capture.stopExcerpt(); });
    dialog->open();
    return true;
}

void SplitReview::applyFromDialog() {
    if (!open)
        return;
    if (apply(open->boundaries()))
        open->accept();
}

bool SplitReview::apply(const std::vector<int64_t>& boundaries) {
    if (recorded.tracks() == 0)
        return false;
    // The excerpt reads the files about to be replaced.
    capture.stopExcerpt();
    if (mayRecut && !mayRecut())
        return false;
    const RecutResult result = recutSide(recorded, boundaries);
    if (recutEnded)
        recutEnded();
    switch (result.problem) {
    case RecutProblem::None:
        break;
    case RecutProblem::BadBoundaries:
        alerts.alert(warningKey, QStringLiteral("IDS_REVIEW_BAD_SPLITS"));
        return false;
    case RecutProblem::DiskFull:
        alerts.alert(warningKey, QStringLiteral("IDS_REVIEW_DISK_FULL"), {text(recorded.folder)});
        return false;
    case RecutProblem::ReadFailed:
        alerts.alert(warningKey, QStringLiteral("IDS_REVIEW_READ_FAILED"),
                     {text(result.path), text(result.errorText)});
        return false;
    case RecutProblem::WriteFailed:
        alerts.alert(warningKey, QStringLiteral("IDS_REVIEW_WRITE_FAILED"),
                     {text(result.path), text(result.errorText)});
        return false;
    }
    capture.adoptRecordedTracks(result.tracks);
    // The side is the same audio cut anew: the analysis holds, the live splits are new.
    const SideOpen reopened = openRecordedSide(recorded.folder, result.tracks);
    if (reopened.problem == SideProblem::None)
        recorded = reopened.side;
    tellNotice();
    if (showNamingPanel)
        showNamingPanel(result.tracks);
    return true;
}

bool SplitReview::waitUntilRead(int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    while (current == State::Reading) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

} // namespace waxline::app
