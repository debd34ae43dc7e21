#pragma once

#include <QString>

class QProgressBar;

namespace waxline::ui {

// Panel 5's one progress bar, labelled with what it is doing: "Saving track 2 of 5 — Title"
// while track saved + 1 is made, "5 of 5 tracks saved" once all are. An empty title is left
// out. Main thread only.
QString savingProgressText(int saved, int total, const QString& title);
void showSavingProgress(QProgressBar& bar, int saved, int total, const QString& title);

} // namespace waxline::ui
