#pragma once

#include <QString>
#include <QTimer>

#include <memory>

namespace waxline::app {

// What the wizard's logic asks of the panels: switching, the choices the user made, the
// fields by their tags, the meters and panel 5's progress. AppDelegate answers with the
// loaded panel views; tests with a fake. Main thread only.
class PanelViews {
public:
    virtual ~PanelViews() = default;

    // Selects the tab item of that panel, loading its view on first use. True when that
    // brought a different panel on screen; false for a number no item has, or the panel
    // already shown.
    virtual bool selectPanel(unsigned panel) = 0;

    // Panel 11's turntable card, panel 12's tape type, panel 2's automatic split box.
    virtual bool selectedDeviceIsTurntable() const = 0;
    virtual bool selectedTapeIsChrome() const = 0;
    virtual bool automaticallySplitTracks() const = 0;
    // Panel 3's New Track button.
    virtual void setSplitButtonVisibility(bool visible) = 0;

    // Starts that panel's level meters; they run until the returned timer is deleted.
    virtual std::unique_ptr<QTimer> startMetering(unsigned panel) = 0;
    virtual void stopMetering(unsigned panel) = 0;

    // The fields of a panel by their tags: text, selecting it for typing, and whether a
    // track's field is offered at all (enabled and shown).
    virtual QString text(unsigned panel, int tag) const = 0;
    virtual void setText(unsigned panel, int tag, const QString& text) = 0;
    virtual void selectText(unsigned panel, int tag) = 0;
    virtual void setFieldOffered(unsigned panel, int tag, bool offered) = 0;
    // Shows or hides the control with that tag, leaving whether it is enabled as it is.
    virtual void setShown(unsigned panel, int tag, bool shown) = 0;
    virtual bool isShown(unsigned panel, int tag) const = 0;

    // Panel 3 as it records (its lamp, New Track and Stop) or, reached back from a naming
    // panel, as the recording it stopped: `tracks` of them, and Next to name them.
    virtual void setRecordingLook(bool recording, int tracks) = 0;

    // Naming panels 7 to 10: whether Next saves the side (no later naming panel is needed);
    // its caption then says Save.
    virtual void setNextSaves(unsigned panel, bool saves) = 0;

    // Panels 4 and 7: the notice that the analysis proposes other splits.
    virtual void setSplitsNotice(bool shown) = 0;
    // Panels 4 and 7: the export choices for this run, "Remove clicks and hum" and "Also keep
    // a lossless copy (FLAC)".
    virtual bool removeClicksAndHum(unsigned panel) const = 0;
    virtual bool keepLosslessCopy(unsigned panel) const = 0;

    // Panel 5: the busy indicator and the progress level indicator (tag 31).
    virtual void setBusy(bool animating) = 0;
    virtual void setProgressRange(int maximum) = 0;
    virtual void setProgressValue(int value) = 0;
};

} // namespace waxline::app
