#pragma once

#include "app/AppDelegate.h"
#include "app/CaptureCalls.h"
#include "capture/Audio.h"
#include "exportfolder/ExportFolderLock.h"
#include "support/FakeAlerts.h"
#include "support/Signals.h"
#include "ui/panels/CustomView.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/window/CustomWindow.h"

#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>

// The whole window driven as a person would: a panel's button for an action, and typing into
// the field with a tag, key by key.
namespace waxline::test {

// Clicks the visible button of `view` bound to `action`; a test failure when there is none.
inline void pressButton(ui::CustomView* view, unsigned panel, const char* action) {
    ASSERT_TRUE(view) << "panel " << panel;
    for (auto* button : view->findChildren<ui::SKShapedButton*>())
        if (button->property("action").toString() == QLatin1String(action)) {
            ASSERT_TRUE(button->isVisible()) << action;
            button->click();
            return;
        }
    FAIL() << "panel " << panel << " has no button for " << action;
}

// Replaces the text of the field with `tag` by typing `text`.
inline void typeInto(ui::CustomView* view, int tag, const QString& text) {
    ASSERT_TRUE(view);
    auto field = qobject_cast<QLineEdit*>(view->viewWithTag(tag));
    ASSERT_TRUE(field) << tag;
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
}

// The names in a folder, the lock file left out (it stays by design).
inline std::vector<std::string> entriesBesidesLock(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().filename() != ExportFolderLock::lockFileName())
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// The window and its controller on `Capture`, started by `start` as the program starts it.
template <class Capture> struct WindowOn {
    FakeAlerts alerts;
    ui::CustomWindow window;
    std::unique_ptr<app::AppDelegate> controller;
    std::vector<QUrl> opened;

    void start(Capture& capture, const std::string& music) {
        controller = std::make_unique<app::AppDelegate>(capture, window, alerts, music);
        controller->openUrl = [this](const QUrl& url) {
            opened.push_back(url);
            return true;
        };
        controller->awakeFromNib();
        window.show();
        controller->offerInterruptedRecording();
    }
    unsigned shown() { return controller->tabs().selectedPanel(); }
    ui::CustomView* view() { return controller->tabs().view(shown()); }
    void press(const char* action) { pressButton(view(), shown(), action); }
    void type(int tag, const QString& text) { typeInto(view(), tag, text); }
};

// The window on a fake capture whose track files go into a fresh folder.
struct App : WindowOn<FakeCapture> {
    TempDir folder;
    TempDir music;
    FakeCapture capture = captureIn(folder.path());

    ~App() { controller.reset(); } // before the capture it was given
    void start() { WindowOn::start(capture, music.file("Music")); }
    std::string track(int n) const { return capture.fileNameForTrack(n); }
};

// The window on the real engine and a virtual USB deck playing `side` twenty times as fast,
// with its export folder and music folder in a fresh folder.
struct DeckApp : WindowOn<Audio> {
    TempDir dir;
    std::string exports = dir.file("Exports");
    std::string music = dir.file("Music");
    platform::Platform platform;
    std::unique_ptr<Audio> audio;

    ~DeckApp() { controller.reset(); }
    void open(const std::string& side) {
        ::setenv("WAXLINE_EXPORT_DIR", exports.c_str(), 1);
        platform = platform::openPlatform("usb=0d8c:0121,name=USB PnP Audio Device,file=" + side +
                                          ",speed=20");
        audio = std::make_unique<Audio>(platform);
        ::unsetenv("WAXLINE_EXPORT_DIR");
        start(*audio, music);
    }
};

} // namespace waxline::test
