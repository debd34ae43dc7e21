#include "app/PanelTabs.h"

#include "app/PanelMachine.h"

#include "capture/chain/InputChain.h"
#include "ui/Catalogue.h"
#include "ui/panels/CustomView.h"
#include "ui/panels/ImageForView.h"
#include "ui/panels/PanelForms.h"
#include "ui/panels/SavingProgress.h"
#include "ui/panels/SubViewController.h"
#include "ui/panels/TranslateView.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/window/CustomWindow.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>

namespace waxline::app {

namespace {

constexpr unsigned recordingPanel = 3, exportPanel = 5, readyPanel = 2, devicePanel = 11,
                   tapePanel = 12;
constexpr int progressTag = 31;

// Panels 11 and 12 are always loaded at start-up; these lazy names are never used and are
// kept as they always were.
QString lazyNibName(unsigned panel) {
    if (panel == devicePanel)
        return QStringLiteral("_WXL_SelectDeviceTab");
    if (panel == tapePanel)
        return QStringLiteral("_WXL_SelectTapeTab");
    return ui::nibNameForPanel(panel);
}

} // namespace

PanelTabs::PanelTabs(ui::CustomWindow& window, ui::PanelController& controller)
    : window(window)
    , controller(controller) {}

void PanelTabs::addTabItem(const QString& identifier, const QString& label) {
    items.push_back({identifier, label, nullptr});
}

void PanelTabs::clearViews() {
    for (TabItem& tab : items)
        tab.view = nullptr;
}

PanelTabs::TabItem* PanelTabs::item(unsigned panel) {
    const QString identifier = QString::asprintf("%u", panel);
    for (TabItem& tab : items)
        if (tab.identifier == identifier)
            return &tab;
    return nullptr;
}

const PanelTabs::TabItem* PanelTabs::item(unsigned panel) const {
    return const_cast<PanelTabs*>(this)->item(panel);
}

QString PanelTabs::label(unsigned panel) const {
    const TabItem* tab = item(panel);
    return tab ? tab->label : QString();
}

ui::CustomView* PanelTabs::view(unsigned panel) const {
    const TabItem* tab = item(panel);
    return tab ? tab->view.data() : nullptr;
}

ui::CustomView* PanelTabs::viewFromNibWithName(const QString& nibName) {
    ui::SubViewController loader(nibName, &controller);
    std::unique_ptr<ui::CustomView> loaded = loader.takeView();
    if (!loaded)
        return nullptr;
    ui::TranslateView(loaded.get());
    loaded->setPeakReaders(GetVUMaxL, GetVUMaxR);
    loaded->hide();
    loaded->setParent(&window);
    return loaded.release();
}

void PanelTabs::loadView(unsigned panel, const QString& nibName) {
    TabItem* tab = item(panel);
    if (!tab)
        return;
    tab->view = viewFromNibWithName(nibName);
    if (tab->view) {
        tab->view->setBackgroundImage(ui::ImageForView(panel));
        tab->view->setController(&controller);
        // A naming panel loaded after the proposal came shows its notice too.
        if (auto notice = tab->view->findChild<QLabel*>(QStringLiteral("splitsNotice")))
            notice->setVisible(splitsNotice);
    }
}

bool PanelTabs::selectPanel(unsigned panel) {
    TabItem* tab = item(panel);
    if (!tab || selected == panel)
        return false;
    // A form that failed to load before is tried again on every entry.
    if (!tab->view)
        loadView(panel, lazyNibName(panel));
    selected = panel;
    window.setContentView(tab->view);
    if (tab->view)
        tab->view->setFocus();
    return true;
}

bool PanelTabs::selectedDeviceIsTurntable() const {
    const ui::CustomView* v = view(devicePanel);
    return v && v->getSelectedDeviceIsTurtable();
}

bool PanelTabs::selectedTapeIsChrome() const {
    const ui::CustomView* v = view(tapePanel);
    return v && v->getSelectedTapeTypeIsChrome();
}

bool PanelTabs::automaticallySplitTracks() const {
    const ui::CustomView* v = view(readyPanel);
    return v && v->getAutomaticallySplitTracks();
}

bool PanelTabs::removeClicksAndHum(unsigned panel) const {
    const ui::CustomView* v = view(panel);
    return v && v->getRemoveClicksAndHum();
}

bool PanelTabs::keepLosslessCopy(unsigned panel) const {
    const ui::CustomView* v = view(panel);
    return v && v->getKeepLosslessCopy();
}

void PanelTabs::setSplitButtonVisibility(bool visible) {
    if (ui::CustomView* v = view(recordingPanel))
        v->setSplitButtonVisibility(visible);
}

std::unique_ptr<QTimer> PanelTabs::startMetering(unsigned panel) {
    ui::CustomView* v = view(panel);
    return v ? v->startMetering() : nullptr;
}

void PanelTabs::stopMetering(unsigned panel) {
    if (ui::CustomView* v = view(panel))
        v->stopMetering();
}

QWidget* PanelTabs::control(unsigned panel, int tag) const {
    const ui::CustomView* v = view(panel);
    return v ? v->viewWithTag(tag) : nullptr;
}

QString PanelTabs::text(unsigned panel, int tag) const {
    QWidget* c = control(panel, tag);
    if (auto field = qobject_cast<QLineEdit*>(c))
        return field->text();
    if (auto label = qobject_cast<QLabel*>(c))
        return label->text();
    return {};
}

void PanelTabs::setText(unsigned panel, int tag, const QString& text) {
    QWidget* c = control(panel, tag);
    if (auto field = qobject_cast<QLineEdit*>(c))
        field->setText(text);
    else if (auto label = qobject_cast<QLabel*>(c))
        label->setText(text);
}

void PanelTabs::selectText(unsigned panel, int tag) {
    if (auto field = qobject_cast<QLineEdit*>(control(panel, tag))) {
        field->setFocus();
        field->selectAll();
    }
}

void PanelTabs::setFieldOffered(unsigned panel, int tag, bool offered) {
    QWidget* c = control(panel, tag);
    if (!c)
        return;
    c->setEnabled(offered);
    c->setVisible(offered);
    // The field's number label goes with it.
    const auto labels = view(panel)->findChildren<QLabel*>();
    for (QLabel* label : labels)
        if (label->buddy() == c)
            label->setVisible(offered);
}

void PanelTabs::setShown(unsigned panel, int tag, bool shown) {
    if (QWidget* c = control(panel, tag))
        c->setVisible(shown);
}

bool PanelTabs::isShown(unsigned panel, int tag) const {
    const QWidget* c = control(panel, tag);
    return c && c->isVisibleTo(view(panel));
}

void PanelTabs::setRecordingLook(bool recording, int tracks) {
    ui::CustomView* v = view(recordingPanel);
    if (!v)
        return;
    // Stopped, the panel wears the ready panel's picture: no red lamp.
    v->setBackgroundImage(ui::ImageForView(recording ? recordingPanel : readyPanel));
    auto setLabel = [v](const char* name, const QString& key, const QString& argument) {
        if (auto label = v->findChild<QLabel*>(QString::fromLatin1(name)))
            label->setText(ui::localizedKey(key).replace(QLatin1String("%1"), argument));
    };
    const QString count = QString::number(tracks);
    setLabel("titleText",
             recording ? QStringLiteral("IDS_PANEL3_TITLE")
                       : QStringLiteral("IDS_PANEL3_STOPPED_TITLE"),
             count);
    setLabel("bodyText",
             recording ? QStringLiteral("IDS_PANEL3_TEXT")
                       : QStringLiteral("IDS_PANEL3_STOPPED_TEXT"),
             count);
    if (!recording)
        v->setSplitButtonVisibility(false);
    for (const char* name : {"stopButton", "nextButton"})
        if (auto button = v->findChild<QWidget*>(QString::fromLatin1(name)))
            button->setVisible((QLatin1String(name) == QLatin1String("stopButton")) == recording);
}

void PanelTabs::setNextSaves(unsigned panel, bool saves) {
    ui::CustomView* v = view(panel);
    auto next = v ? v->findChild<ui::SKShapedButton*>(QStringLiteral("nextButton")) : nullptr;
    if (!next)
        return;
    next->setCaptionKey(saves ? QStringLiteral("IDS_BUTTON_EXPORT")
                              : QStringLiteral("IDS_BUTTON_NEXT"));
    v->updateAccessibleNames();
}

void PanelTabs::setSplitsNotice(bool shown) {
    splitsNotice = shown;
    for (unsigned panel : {4u, 7u})
        if (ui::CustomView* v = view(panel))
            if (auto notice = v->findChild<QLabel*>(QStringLiteral("splitsNotice")))
                notice->setVisible(shown);
}

void PanelTabs::setBusy(bool animating) {
    busyNow = animating;
    showBusy();
}

// The labelled bar counts the tracks; the busy indicator only runs when there is none to count.
void PanelTabs::showBusy() {
    ui::CustomView* v = view(exportPanel);
    auto busy = v ? v->findChild<QProgressBar*>(QStringLiteral("_progressIndicator")) : nullptr;
    if (!busy)
        return;
    // A bar with no range is Qt's busy indicator; stopped, it is not shown.
    busy->setRange(0, 0);
    busy->setVisible(busyNow && progressTotal == 0);
}

void PanelTabs::setProgressRange(int maximum) {
    progressTotal = maximum;
    showBusy();
    setProgressValue(0);
}

void PanelTabs::setProgressValue(int value) {
    auto bar = qobject_cast<QProgressBar*>(control(exportPanel, progressTag));
    if (!bar)
        return;
    // The track being saved is the one after those done; one track is named on panel 4.
    const int track = value + 1;
    const QString title = track > progressTotal ? QString()
                          : progressTotal == 1
                              ? text(panel::nameOne, panel::oneNameTag)
                              : text(panel::namingPanelOf(track), panel::trackNameTag(track));
    ui::showSavingProgress(*bar, value, progressTotal, title);
}

} // namespace waxline::app
