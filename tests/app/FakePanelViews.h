#pragma once

#include "app/PanelViews.h"

#include <map>
#include <utility>
#include <vector>

namespace waxline::test {

// Panels without widgets: the panel shown, the fields by (panel, tag), the choices, and a
// record of switches, meters and panel 5's indicators.
class FakePanelViews : public app::PanelViews {
public:
    using Field = std::pair<unsigned, int>;

    unsigned shown = 0;
    std::vector<unsigned> switches; // every panel brought on screen, in order
    bool turntable = true;
    bool chrome = false;
    bool split = false;
    bool splitButtonVisible = true;
    bool cleanChoice = false;    // "Remove clicks and hum" on the naming panel
    bool losslessChoice = false; // "Also keep a lossless copy (FLAC)"
    std::vector<unsigned> metersStarted;
    std::vector<unsigned> metersStopped;
    std::map<Field, QString> texts;
    std::map<Field, bool> offered;
    std::map<Field, bool> visible;
    std::vector<Field> selected;
    bool splitsNotice = false;
    bool recordingLook = true;
    bool busy = false;
    int progressMaximum = -1;
    std::vector<int> progress;
    std::map<unsigned, bool> nextSaves; // naming panel: whether its Next says Save

    bool selectPanel(unsigned panel) override {
        if (panel < 1 || panel > 12 || panel == shown)
            return false;
        shown = panel;
        switches.push_back(panel);
        return true;
    }
    bool selectedDeviceIsTurntable() const override { return turntable; }
    bool selectedTapeIsChrome() const override { return chrome; }
    bool removeClicksAndHum(unsigned) const override { return cleanChoice; }
    bool keepLosslessCopy(unsigned) const override { return losslessChoice; }
    bool automaticallySplitTracks() const override { return split; }
    void setSplitButtonVisibility(bool visible) override { splitButtonVisible = visible; }
    std::unique_ptr<QTimer> startMetering(unsigned panel) override {
        metersStarted.push_back(panel);
        return std::make_unique<QTimer>();
    }
    void stopMetering(unsigned panel) override { metersStopped.push_back(panel); }
    QString text(unsigned panel, int tag) const override {
        auto it = texts.find({panel, tag});
        return it == texts.end() ? QString() : it->second;
    }
    void setText(unsigned panel, int tag, const QString& text) override {
        texts[{panel, tag}] = text;
    }
    void selectText(unsigned panel, int tag) override { selected.push_back({panel, tag}); }
    void setFieldOffered(unsigned panel, int tag, bool on) override { offered[{panel, tag}] = on; }
    void setShown(unsigned panel, int tag, bool on) override { visible[{panel, tag}] = on; }
    bool isShown(unsigned panel, int tag) const override {
        auto it = visible.find({panel, tag});
        return it != visible.end() && it->second;
    }
    void setSplitsNotice(bool on) override { splitsNotice = on; }
    void setNextSaves(unsigned panel, bool saves) override { nextSaves[panel] = saves; }
    void setRecordingLook(bool on, int) override { recordingLook = on; }
    void setBusy(bool animating) override { busy = animating; }
    void setProgressRange(int maximum) override { progressMaximum = maximum; }
    void setProgressValue(int value) override { progress.push_back(value); }
};

} // namespace waxline::test
