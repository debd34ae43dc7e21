#include "ui/window/PanelScreenshots.h"

#include "ui/Catalogue.h"
#include "ui/lookup/FindAlbumPicture.h"
#include "ui/panels/CustomView.h"
#include "ui/panels/ImageForView.h"
#include "ui/panels/PanelForms.h"
#include "ui/panels/SavingProgress.h"
#include "ui/panels/SubViewController.h"
#include "ui/panels/TranslateView.h"
#include "ui/review/SplitReviewDialog.h"
#include "ui/window/CustomWindow.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPixmap>
#include <QProgressBar>
#include <QTimer>

#include <cmath>
#include <cstdio>

namespace waxline::ui {

namespace {

// A side of 18 minutes with six tracks: music that swells and fades, a pianissimo inside the
// third track, groove noise in the gaps.
struct MadeUpSide {
    static constexpr unsigned rate = 44100;
    static constexpr double seconds = 18 * 60;
    static constexpr double gaps[5][2] = {
        {171, 174}, {352, 354.5}, {545, 548}, {742, 743.5}, {905, 909}};

    static double level(double t) {
        if (t < 2 || t > seconds - 20)
            return 0.008;
        for (const auto& gap : gaps)
            if (t >= gap[0] && t < gap[1])
                return 0.01;
        if (t > 430 && t < 436)
            return 0.04; // the pianissimo
        return 0.32 + 0.22 * std::sin(t / 23.0) * std::sin(t / 7.3 + 1.0) +
               0.12 * std::sin(t / 2.1);
    }
};

} // namespace

QImage grabSplitReview(bool reading, bool suggested, bool zoomed) {
    SplitReviewDialog dialog;
    const auto frames = int64_t(MadeUpSide::seconds * MadeUpSide::rate);
    const auto at = [](double s) { return int64_t(s * MadeUpSide::rate); };
    // The live detector split inside the pianissimo and missed the shortest gap.
    dialog.setSide(frames, MadeUpSide::rate, {at(172), at(353), at(433), at(546.5)});
    constexpr int columns = 16384;
    const int shown = reading ? columns * 11 / 20 : columns;
    dialog.overview().setColumnCount(columns);
    std::vector<float> lows, highs;
    for (int c = 0; c < shown; ++c) {
        const double t = (c + 0.5) * MadeUpSide::seconds / columns;
        const double wobble = 0.85 + 0.15 * std::sin(c * 1.7) * std::sin(c * 0.31);
        const auto peak = float(std::min(0.98, MadeUpSide::level(t) * wobble * 1.5));
        highs.push_back(peak);
        lows.push_back(-peak * float(0.9 + 0.1 * std::cos(c * 0.7)));
    }
    dialog.overview().setColumns(0, lows, highs);
    dialog.setReading(reading);
    if (suggested) {
        // A proposal the splitter is not sure of: the live splits stay, its gap is suggested.
        dialog.setSuggestions({at(742.8)});
    } else if (!reading) {
        dialog.setProposal({{at(172.6), 0.93f},
                            {at(353.1), 0.88f},
                            {at(546.4), 0.97f},
                            {at(742.8), 0.41f},
                            {at(907.2), 0.9f}});
        dialog.overview().selectMarker(1);
        if (zoomed)
            // Eight times closer around the selected split: about two minutes across.
            dialog.overview().zoomBy(8, at(353.1));
    }
    dialog.show();
    QApplication::processEvents();
    if (QWidget* focused = dialog.focusWidget())
        focused->clearFocus();
    return dialog.grab().toImage();
}

std::unique_ptr<CustomView> loadPanelForLooking(unsigned panel) {
    SubViewController loader(nibNameForPanel(panel), nullptr);
    std::unique_ptr<CustomView> view = loader.takeView();
    if (!view)
        return view;
    TranslateView(view.get());
    view->setBackgroundImage(ImageForView(panel));
    // A steady, plausible level so that the meters show what they look like in use.
    view->setPeakReaders([] { return 0.5f; }, [] { return 0.32f; });
    view->updateChannelLevel();
    // The naming panels as they look when the analysis proposes other splits.
    if (auto notice = view->findChild<QLabel*>(QStringLiteral("splitsNotice")))
        notice->show();
    // Panel 5 saving the second of five tracks, with the note it shows when part of the side
    // was encoded while recording.
    if (auto bar = view->findChild<QProgressBar*>(QStringLiteral("_progressLevelIndicator")))
        showSavingProgress(*bar, 1, 5, QStringLiteral("Blue in Green"));
    if (auto note = view->findChild<QLabel*>(QStringLiteral("readyNote")))
        note->setText(localizedKey(QStringLiteral("IDS_EXPORT_READY_SOME"))
                          .arg(QStringLiteral("1\u20136"))
                          .arg(7));
    return view;
}

namespace {

void setShown(CustomView& view, const char* name, bool shown) {
    if (auto widget = view.findChild<QWidget*>(QString::fromLatin1(name)))
        widget->setVisible(shown);
}

void setLabel(CustomView& view, const char* name, const QString& text) {
    if (auto label = view.findChild<QLabel*>(QString::fromLatin1(name)))
        label->setText(text);
}

// The panels in the states a side that is not all saved brings: panel 2 while the recording
// goes on, panel 3 reached back from naming, panel 5 with a track that failed, panel 6 with
// what is missing.
std::unique_ptr<CustomView> loadPanelInTrouble(unsigned panel) {
    std::unique_ptr<CustomView> view = loadPanelForLooking(panel);
    if (!view)
        return view;
    const QString noEncoder = localizedKey(QStringLiteral("IDS_REASON_NO_ENCODER"));
    if (panel == 2)
        setShown(*view, "recordingBanner", true);
    if (panel == 3) {
        view->setBackgroundImage(ImageForView(2));
        setLabel(*view, "titleText", localizedKey(QStringLiteral("IDS_PANEL3_STOPPED_TITLE")));
        setLabel(*view, "bodyText", localizedKey(QStringLiteral("IDS_PANEL3_STOPPED_TEXT")).arg(5));
        setLabel(*view, "_trackField", QStringLiteral("5"));
        for (const char* name : {"splitTracksButton", "stopButton"})
            setShown(*view, name, false);
        setShown(*view, "nextButton", true);
    }
    if (panel == 5)
        setLabel(*view, "problemNote",
                 localizedKey(QStringLiteral("IDS_TRACKS_NOT_SAVED")).arg(QStringLiteral("1–2")) +
                     QLatin1Char(' ') + noEncoder);
    if (panel == 6) {
        for (const char* name : {"bodyText", "finishButton", "doneArt", "nextButton"})
            setShown(*view, name, false);
        for (const char* name : {"missingText", "retryButton", "keepButton"})
            setShown(*view, name, true);
        setLabel(*view, "titleText", localizedKey(QStringLiteral("IDS_PANEL6_MISSING_TITLE")));
        setLabel(*view, "missingText",
                 localizedKey(QStringLiteral("IDS_MISSING_TRACKS"))
                         .arg(2)
                         .arg(5)
                         .arg(QStringLiteral("1–2")) +
                     QStringLiteral("<br><br>") + noEncoder + QStringLiteral("<br><br>") +
                     localizedKey(QStringLiteral("IDS_REASON_DISK_FULL")));
    }
    return view;
}

} // namespace

QImage grabPanel(CustomWindow& window, CustomView& view) {
    window.setContentView(&view);
    window.show();
    QApplication::processEvents();
    // A picture of the panel at rest: no control shows keyboard focus.
    if (QWidget* focused = window.focusWidget())
        focused->clearFocus();
    return window.grab().toImage();
}

bool writePanelScreenshots(const QString& dir) {
    if (!QDir().mkpath(dir)) {
        std::fprintf(stderr, "cannot create %s\n", qPrintable(dir));
        return false;
    }
    CustomWindow window;
    for (unsigned panel = firstPanel; panel <= lastPanel; ++panel) {
        std::unique_ptr<CustomView> view = loadPanelForLooking(panel);
        if (!view) {
            std::fprintf(stderr, "panel %u: form %s did not load\n", panel,
                         qPrintable(nibNameForPanel(panel)));
            return false;
        }
        const QImage picture = grabPanel(window, *view);
        const QString file = QDir(dir).filePath(QStringLiteral("panel-%1.png").arg(panel));
        if (!picture.save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return false;
        }
        window.setContentView(nullptr);
    }
    for (unsigned panel : {2u, 3u, 5u, 6u}) {
        std::unique_ptr<CustomView> view = loadPanelInTrouble(panel);
        const QString file = QDir(dir).filePath(QStringLiteral("panel-%1-unsaved.png").arg(panel));
        if (!view || !grabPanel(window, *view).save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return false;
        }
        window.setContentView(nullptr);
    }
    const std::pair<QString, bool> reviews[] = {{QStringLiteral("review.png"), false},
                                                {QStringLiteral("review-reading.png"), true},
                                                {QStringLiteral("review-suggested.png"), false},
                                                {QStringLiteral("review-zoomed.png"), false}};
    for (const auto& [name, reading] : reviews) {
        const QString file = QDir(dir).filePath(name);
        if (!grabSplitReview(reading, name == QStringLiteral("review-suggested.png"),
                             name == QStringLiteral("review-zoomed.png"))
                 .save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return false;
        }
    }
    for (const bool chosen : {false, true}) {
        const QString file = QDir(dir).filePath(chosen ? QStringLiteral("find-album-chosen.png")
                                                       : QStringLiteral("find-album.png"));
        if (!grabFindAlbum(chosen).save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return false;
        }
    }
    return true;
}

} // namespace waxline::ui
