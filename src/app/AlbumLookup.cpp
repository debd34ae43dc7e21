#include "app/AlbumLookup.h"

#include "app/PanelMachine.h"
#include "lookup/KeptNames.h"
#include "lookup/MusicBrainzJson.h"

#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace waxline::app {

using namespace lookup;
using ui::catalogueText;

namespace {

QString q(const std::string& s) {
    return QString::fromStdString(s);
}

} // namespace

QString lookupFailureText(LookupProblem problem, int httpStatus) {
    switch (problem) {
    case LookupProblem::NoNetwork:
        return catalogueText("IDS_FIND_FAIL_NONETWORK");
    case LookupProblem::TimedOut:
        return catalogueText("IDS_FIND_FAIL_TIMEOUT");
    case LookupProblem::Busy:
        return catalogueText("IDS_FIND_FAIL_BUSY");
    case LookupProblem::NoMatch:
        return catalogueText("IDS_FIND_FAIL_NOMATCH");
    case LookupProblem::None:
    case LookupProblem::NoCover:
        return {};
    case LookupProblem::ServiceError:
    case LookupProblem::BadAnswer:
        break;
    }
    return catalogueText("IDS_FIND_FAIL_SERVICE").arg(httpStatus);
}

AlbumLookup::AlbumLookup(CaptureControl& capture, PanelViews& views, SplitReview& review,
                         QWidget* dialogParent, ServiceConfig config)
    : capture(capture)
    , views(views)
    , review(review)
    , parent(dialogParent)
    , client(std::make_unique<LookupClient>(std::move(config))) {}

AlbumLookup::~AlbumLookup() {
    if (open)
        delete open.data();
}

void AlbumLookup::find() {
    if (!open) {
        open = new ui::FindAlbumDialog(parent);
        open->setAttribute(Qt::WA_DeleteOnClose);
        connect(open.data(), &ui::FindAlbumDialog::searchRequested, this, [this] { search(); });
        connect(open.data(), &ui::FindAlbumDialog::useRequested, this,
                [this](int row) { use(row); });
    }
    const bool one = capture.numRecordedTracks() == 1;
    const unsigned panel = one ? panel::nameOne : panel::nameFirstTen;
    open->setQuery(views.text(panel, one ? panel::oneArtistTag : panel::artistTag),
                   views.text(panel, one ? panel::oneAlbumTag : panel::albumTag), QString());
    open->setCandidates({});
    open->setStatus(QString());
    open->show();
    search();
}

std::optional<SideShape> AlbumLookup::shape() const {
    const auto splitter = review.sideSplitter();
    if (!splitter || review.side().sampleRate == 0)
        return std::nullopt;
    const auto proposal = splitter->propose();
    if (proposal.problem != Sonra::Audio::Filters::SplitProposal::Problem::None)
        return std::nullopt;
    const double rate = review.side().sampleRate;
    SideShape s;
    s.musicStart = static_cast<double>(proposal.musicStart) / rate;
    s.musicEnd = static_cast<double>(proposal.musicEnd) / rate;
    for (const auto& b : proposal.boundaries)
        s.boundaries.push_back(static_cast<double>(b.sample) / rate);
    return s;
}

void AlbumLookup::search() {
    if (!open)
        return;
    QString query;
    if (!open->barcode().isEmpty())
        query = barcodeQuery(open->barcode());
    else if (!open->artist().isEmpty() || !open->album().isEmpty())
        query = artistAlbumQuery(open->artist(), open->album());
    if (query.isEmpty()) {
        open->setStatus(catalogueText("IDS_FIND_NOTHING_TYPED"));
        return;
    }
    const unsigned asked = ++generation;
    rows.clear();
    open->setCandidates({});
    open->setBusy(true);
    open->setStatus(catalogueText("IDS_FIND_SEARCHING"));
    ++waiting;
    client->search(query, 10, [this, asked](Answer<std::vector<ReleaseSummary>> answer) {
        --waiting;
        if (asked != generation || !open)
            return;
        open->setBusy(false);
        if (!answer.ok())
            return failed(answer.problem, answer.httpStatus);
        for (ReleaseSummary& s : answer.value)
            rows.push_back({std::move(s), std::nullopt, std::nullopt, QPixmap()});
        // Records and tapes are what is digitised: they come first.
        std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
            return a.summary.hasAnalogueMedium() && !b.summary.hasAnalogueMedium();
        });
        std::vector<ui::AlbumCandidate> shown;
        for (const Row& r : rows)
            shown.push_back(candidateOf(r));
        open->setCandidates(shown);
        open->setStatus(catalogueText("IDS_FIND_FOUND").arg(rows.size()));
        readNext(asked, 0);
    });
}

// One release after the other, as the service's rule has it; each row fills in as it comes.
void AlbumLookup::readNext(unsigned asked, size_t index) {
    if (index >= rows.size() || index >= static_cast<size_t>(kReadAtMost))
        return;
    ++waiting;
    client->readRelease(q(rows[index].summary.id), [this, asked, index](Answer<Release> answer) {
        --waiting;
        if (asked != generation || !open || index >= rows.size())
            return;
        Row& row = rows[index];
        if (answer.ok()) {
            row.release = answer.value;
            if (const auto side = shape()) {
                const auto fits = fitRelease(*row.release, *side);
                if (!fits.empty())
                    row.fit = fits.front();
            }
            open->updateCandidate(static_cast<int>(index), candidateOf(row));
            if (row.release->hasFrontCover) {
                ++waiting;
                client->fetchFrontCover(q(row.summary.id), 250,
                                        [this, asked, index](Answer<QByteArray> cover) {
                                            --waiting;
                                            if (asked != generation || !open || !cover.ok())
                                                return;
                                            QPixmap picture;
                                            if (picture.loadFromData(cover.value)) {
                                                rows[index].thumbnail = picture;
                                                open->updateCandidate(static_cast<int>(index),
                                                                      candidateOf(rows[index]));
                                            }
                                        });
            }
        }
        readNext(asked, index + 1);
    });
}

ui::AlbumCandidate AlbumLookup::candidateOf(const Row& row) const {
    ui::AlbumCandidate c;
    c.title = q(row.summary.artist) + QStringLiteral(" \u2013 ") + q(row.summary.title);
    const QString unknown = QStringLiteral("?");
    c.details = catalogueText("IDS_FIND_DETAILS")
                    .arg(q(row.summary.formatText()),
                         row.summary.country.empty() ? unknown : q(row.summary.country),
                         row.summary.year().empty() ? unknown : q(row.summary.year()),
                         row.release ? QString::number(row.release->sideCount()) : unknown);
    if (row.fit) {
        const int percent = static_cast<int>(std::lround(row.fit->score * 100));
        c.fit = row.fit->score < kNoFit ? catalogueText("IDS_FIND_FIT_NONE")
                : row.fit->side.empty()
                    ? catalogueText("IDS_FIND_FIT_WHOLE").arg(percent)
                    : catalogueText("IDS_FIND_FIT").arg(q(row.fit->side)).arg(percent);
    }
    c.thumbnail = row.thumbnail;
    return c;
}

void AlbumLookup::use(int index) {
    if (!open || index < 0 || static_cast<size_t>(index) >= rows.size())
        return;
    const unsigned asked = ++generation;
    open->setBusy(true);
    auto chosen = [this, asked](const Release& release) {
        if (asked != generation || !open)
            return;
        std::optional<ListingFit> fit;
        if (const auto side = shape()) {
            const auto fits = fitRelease(release, *side);
            if (!fits.empty())
                fit = fits.front();
        }
        if (!fit) {
            // Without a side read there is nothing to fit: the first side of the first
            // medium, as many tracks as were recorded.
            ListingFit first;
            first.medium = 0;
            first.trackCount =
                std::min<size_t>(release.media.empty() ? 0 : release.media[0].tracks.size(),
                                 static_cast<size_t>(capture.numRecordedTracks()));
            fit = first;
        }
        const bool recut = fit->confident;
        if (!release.hasFrontCover)
            return finishUse(release, *fit, recut, {});
        ++waiting;
        client->fetchFrontCover(q(release.summary.id), 1200,
                                [this, asked, release, fit = *fit, recut](Answer<QByteArray> c) {
                                    --waiting;
                                    if (asked == generation && open)
                                        finishUse(release, fit, recut,
                                                  c.ok() ? coverForTags(c.value) : QByteArray());
                                });
    };
    if (rows[static_cast<size_t>(index)].release)
        return chosen(*rows[static_cast<size_t>(index)].release);
    ++waiting;
    client->readRelease(q(rows[static_cast<size_t>(index)].summary.id),
                        [this, chosen](Answer<Release> answer) {
                            --waiting;
                            if (!open)
                                return;
                            if (!answer.ok()) {
                                open->setBusy(false);
                                return failed(answer.problem, answer.httpStatus);
                            }
                            chosen(answer.value);
                        });
}

void AlbumLookup::finishUse(const Release& release, const ListingFit& fit, bool recut,
                            const QByteArray& cover) {
    open->setBusy(false);
    bool cut = false;
    if (recut && review.sideSplitter()) {
        std::vector<double> seconds;
        for (double d : fit.durations)
            seconds.push_back(d / fit.speed);
        const auto proposal = review.sideSplitter()->proposeDurations(seconds);
        if (proposal.problem == Sonra::Audio::Filters::SplitProposal::Problem::None) {
            std::vector<int64_t> boundaries;
            for (const auto& b : proposal.boundaries)
                boundaries.push_back(b.sample);
            cut = boundaries == review.side().liveBoundaries() || review.apply(boundaries);
        }
    }
    const KeptNames names = namesOf(release, fit);
    keepNames(capture.exportFolder(), names, cover);
    fill(release, fit);
    const int tracks = capture.numRecordedTracks();
    open->setStatus(cut             ? catalogueText("IDS_FIND_FILLED_RECUT").arg(tracks)
                    : fit.confident ? catalogueText("IDS_FIND_FILLED").arg(tracks)
                                    : catalogueText("IDS_FIND_FILLED_UNSURE"));
    QPixmap picture;
    if (picture.loadFromData(cover))
        open->showCover(picture);
}

void AlbumLookup::fill(const Release& release, const ListingFit& fit) {
    const KeptNames names = namesOf(release, fit);
    const int tracks = capture.numRecordedTracks();
    auto title = [&](int track) {
        return track <= static_cast<int>(names.tracks.size())
                   ? q(names.tracks[static_cast<size_t>(track) - 1].title)
                   : QString();
    };
    if (tracks == 1) {
        views.setText(panel::nameOne, panel::oneArtistTag, q(names.artist));
        views.setText(panel::nameOne, panel::oneAlbumTag, q(names.album));
        views.setText(panel::nameOne, panel::oneNameTag, title(1));
        return;
    }
    views.setText(panel::nameFirstTen, panel::artistTag, q(names.artist));
    views.setText(panel::nameFirstTen, panel::albumTag, q(names.album));
    for (int track = 1; track <= tracks; ++track)
        views.setText(panel::namingPanelOf(track), panel::trackNameTag(track), title(track));
}

void AlbumLookup::failed(LookupProblem problem, int status) {
    if (open)
        open->setStatus(lookupFailureText(problem, status));
}

} // namespace waxline::app
