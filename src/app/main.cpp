// waxline: the desktop application. main only wires the parts together.
//     waxline [--virtual-device SETUP] [--unicode-tags]
//     waxline --screenshot-panels DIR [--locale de] [--scale 2]

#include "app/AppDelegate.h"
#include "app/MessageBoxAlerts.h"
#include "capture/Audio.h"
#include "exporting/ExportFolders.h"
#include "platform/Platform.h"
#include "platform/PlatformError.h"
#include "ui/Catalogue.h"
#include "ui/UiResources.h"
#include "ui/panels/CustomView.h"
#include "ui/window/CustomWindow.h"
#include "ui/window/DialogScreenshots.h"
#include "ui/window/PanelScreenshots.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstring>
#include <stdexcept>

int main(int argc, char** argv) {
    std::string screenshots, locale, scale, setup;
    bool unicodeTags = false;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--unicode-tags")) {
            unicodeTags = true;
            continue;
        }
        const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
        std::string* option = !std::strcmp(argv[i], "--screenshot-panels") ? &screenshots
                              : !std::strcmp(argv[i], "--locale")          ? &locale
                              : !std::strcmp(argv[i], "--scale")           ? &scale
                              : !std::strcmp(argv[i], "--virtual-device")  ? &setup
                                                                           : nullptr;
        if (!option || !value) {
            std::fputs("usage: waxline [--virtual-device SETUP] [--unicode-tags]\n"
                       "       waxline --screenshot-panels DIR [--locale de] [--scale 2]\n",
                       stderr);
            return 2;
        }
        *option = argv[++i];
    }
    // The pictures need no display; the scale is the screen's device-pixel ratio.
    if (!screenshots.empty() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!scale.empty())
        qputenv("QT_SCALE_FACTOR", QByteArray::fromStdString(scale));

    QApplication app(argc, argv);
    // The window's class and the launcher's StartupWMClass and file name must agree, whatever
    // the executable is called, so the dock groups the window under its launcher.
    QApplication::setApplicationName(QStringLiteral("waxline"));
    QApplication::setDesktopFileName(QStringLiteral("org.waxline.Waxline"));
    QApplication::setStyle(QStringLiteral("Fusion"));
    waxline::ui::initUiResources();
    const QString language = waxline::ui::installCatalogue(
        locale.empty() ? QLocale::system() : QLocale(QString::fromStdString(locale)));
    if (!screenshots.empty()) {
        const QString dir = QString::fromStdString(screenshots);
        return waxline::ui::writePanelScreenshots(dir) &&
                       waxline::ui::writeDialogScreenshots(dir, language)
                   ? 0
                   : 1;
    }

    waxline::ui::CustomWindow window;
    waxline::app::MessageBoxAlerts alerts(&window);
    waxline::platform::Platform platform;
    try {
        platform = waxline::platform::openPlatform(setup);
    } catch (const waxline::platform::PlatformError& e) {
        // The window still opens, so the user learns why nothing works.
        auto panel = waxline::ui::loadPanelForLooking(1);
        window.setContentView(panel.get());
        window.show();
        const bool usb =
            e.reason() == waxline::platform::PlatformError::Reason::UsbRegistryUnavailable;
        alerts.alert(QStringLiteral("IDS_WARNING"),
                     usb ? QStringLiteral("IDS_NO_USB_REGISTRY")
                         : QStringLiteral("IDS_NO_AUDIO_SERVER"),
                     {QString::fromLocal8Bit(e.what())});
        return 1;
    }
    waxline::Audio audio(platform);
    waxline::app::AppDelegate controller(audio, window, alerts, waxline::exporting::musicFolder());
    controller.helpLanguage = language;
    if (unicodeTags)
        controller.exporter().setTagText(waxline::TagText::Unicode);
    controller.awakeFromNib();
    window.show();
    // Once panel 1 is on screen: a recording a crash cut off is offered back.
    QTimer::singleShot(0, &controller, [&controller] { controller.offerInterruptedRecording(); });
    return app.exec();
}
