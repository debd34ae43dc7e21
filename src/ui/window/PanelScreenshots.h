#pragma once

#include <QImage>
#include <QString>

#include <memory>

namespace waxline::ui {

class CustomView;
class CustomWindow;

// A panel as the wizard shows it, without a controller: its form loaded, localised, its
// background set, on the recording panels the meters showing a steady demo level, and on the
// naming panels the notice that other splits are proposed.
std::unique_ptr<CustomView> loadPanelForLooking(unsigned panel);

// The window showing that panel, grabbed at the screen's device-pixel ratio.
QImage grabPanel(CustomWindow& window, CustomView& view);

// The split review on a made-up side of six tracks, one split doubtful and one selected; while
// `reading`, half the overview is in and the proposal not yet; `suggested`, the live splits stay
// and one boundary the splitter was not sure of is suggested; `zoomed`, eight times closer.
QImage grabSplitReview(bool reading, bool suggested = false, bool zoomed = false);

// Writes DIR/panel-<n>.png for the twelve panels and DIR/review.png, DIR/review-reading.png,
// DIR/review-suggested.png, DIR/review-zoomed.png for the split review, DIR/find-album.png and
// DIR/find-album-chosen.png for the lookup; false (and a line on standard error) when a panel
// cannot be loaded or a picture cannot be written.
bool writePanelScreenshots(const QString& dir);

} // namespace waxline::ui
