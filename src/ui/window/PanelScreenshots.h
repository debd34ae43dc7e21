#pragma once

#include <QImage>
#include <QString>

#include <memory>

namespace waxline::ui {

class CustomView;
class CustomWindow;

// A panel as the wizard shows it, without a controller: its form loaded, localised, its
// background set and, on the recording panels, the meters showing a steady demo level.
std::unique_ptr<CustomView> loadPanelForLooking(unsigned panel);

// The window showing that panel, grabbed at the screen's device-pixel ratio.
QImage grabPanel(CustomWindow& window, CustomView& view);

// Writes DIR/panel-<n>.png for the twelve panels; false (and a line on standard error)
// when a panel cannot be loaded or a picture cannot be written.
bool writePanelScreenshots(const QString& dir);

} // namespace waxline::ui
