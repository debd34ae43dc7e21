#pragma once

#include "app/PanelViews.h"

#include <QPointer>
#include <QString>

#include <vector>

namespace waxline::ui {
class CustomView;
class CustomWindow;
class PanelController;
} // namespace waxline::ui

namespace waxline::app {

// The window's tab view: one item per panel, identified by its number's decimal text, each
// holding its panel view once loaded; the selected item's view is the window's content.
// Views are loaded from their forms by name, localised, given their background and the
// controller; they belong to the window. Main thread only.
class PanelTabs : public PanelViews {
public:
    PanelTabs(ui::CustomWindow& window, ui::PanelController& controller);

    void addTabItem(const QString& identifier, const QString& label);
    // Empties every item's view slot (the views already loaded stay with the window).
    void clearViews();
    // Loads that panel's view from the named form now and keeps it in the panel's slot.
    void loadView(unsigned panel, const QString& nibName);

    int numberOfTabItems() const { return int(items.size()); }
    QString label(unsigned panel) const;
    // The selected item's panel number; 0 before any is selected.
    unsigned selectedPanel() const { return selected; }
    // The cached view of a panel, null until loaded.
    ui::CustomView* view(unsigned panel) const;

    bool selectPanel(unsigned panel) override;
    bool selectedDeviceIsTurntable() const override;
    bool selectedTapeIsChrome() const override;
    bool automaticallySplitTracks() const override;
    bool removeClicksAndHum(unsigned panel) const override;
    bool keepLosslessCopy(unsigned panel) const override;
    void setSplitButtonVisibility(bool visible) override;
    std::unique_ptr<QTimer> startMetering(unsigned panel) override;
    void stopMetering(unsigned panel) override;
    QString text(unsigned panel, int tag) const override;
    void setText(unsigned panel, int tag, const QString& text) override;
    void selectText(unsigned panel, int tag) override;
    void setFieldOffered(unsigned panel, int tag, bool offered) override;
    void setShown(unsigned panel, int tag, bool shown) override;
    bool isShown(unsigned panel, int tag) const override;
    void setSplitsNotice(bool shown) override;
    void setNextSaves(unsigned panel, bool saves) override;
    void setRecordingLook(bool recording, int tracks) override;
    void setBusy(bool animating) override;
    void setProgressRange(int maximum) override;
    void setProgressValue(int value) override;

private:
    struct TabItem {
        QString identifier;
        QString label;
        QPointer<ui::CustomView> view;
    };

    TabItem* item(unsigned panel);
    const TabItem* item(unsigned panel) const;
    QWidget* control(unsigned panel, int tag) const;
    ui::CustomView* viewFromNibWithName(const QString& nibName);
    void showBusy();

    ui::CustomWindow& window;
    ui::PanelController& controller;
    std::vector<TabItem> items;
    bool splitsNotice = false;
    bool busyNow = false;
    int progressTotal = 0;
    unsigned selected = 0;
};

} // namespace waxline::app
