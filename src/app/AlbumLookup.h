#pragma once

#include "app/PanelViews.h"
#include "app/SplitReview.h"
#include "capture/CaptureControl.h"
#include "lookup/ListingFit.h"
#include "lookup/LookupClient.h"
#include "ui/lookup/FindAlbumDialog.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>
#include <vector>

class QWidget;

namespace waxline::app {

// "Find the album…" on the naming panels: opens the dialog with what was typed, searches the
// music database, reads the first records and tapes found and fits each to the side the review
// has read, fetches their thumbnails; Use re-cuts the side to the chosen listing when the fit is
// confident, fills every name field, keeps the names and the cover for the export and shows the
// cover. Everything goes through the client's callbacks: the window never waits. Main thread.
class AlbumLookup : public QObject {
public:
    static constexpr int kReadAtMost = 5;

    AlbumLookup(CaptureControl& capture, PanelViews& views, SplitReview& review,
                QWidget* dialogParent, lookup::ServiceConfig config);
    ~AlbumLookup() override;

    // Opens the dialog over the naming panel, prefilled; searches at once when it may.
    void find();
    void search();
    void use(int row);

    ui::FindAlbumDialog* dialog() const { return open.data(); }
    // Lookups still waiting for an answer.
    int pending() const { return waiting; }

private:
    struct Row {
        lookup::ReleaseSummary summary;
        std::optional<lookup::Release> release;
        std::optional<lookup::ListingFit> fit;
        QPixmap thumbnail;
    };

    std::optional<lookup::SideShape> shape() const;
    void readNext(unsigned generation, size_t index);
    void fill(const lookup::Release& release, const lookup::ListingFit& fit);
    ui::AlbumCandidate candidateOf(const Row& row) const;
    void finishUse(const lookup::Release& release, const lookup::ListingFit& fit, bool recut,
                   const QByteArray& cover);
    void failed(lookup::LookupProblem problem, int status);

    CaptureControl& capture;
    PanelViews& views;
    SplitReview& review;
    QPointer<QWidget> parent;
    QPointer<ui::FindAlbumDialog> open;
    std::unique_ptr<lookup::LookupClient> client;
    std::vector<Row> rows;
    unsigned generation = 0;
    int waiting = 0;
};

// The status line for a lookup that failed, as the catalogue words it.
QString lookupFailureText(lookup::LookupProblem problem, int httpStatus);

} // namespace waxline::app
