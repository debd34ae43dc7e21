// app_bench: the desktop application put together as main does, driven through its panels by
// clicking their buttons, so bench/app can time and weigh it. Prints figures, never judges them.
//     app_bench startup SETUP LAUNCH_NS   ms from LAUNCH_NS (CLOCK_REALTIME) to panel 1 painted
//     app_bench cpu SETUP MONITOR_S RECORD_S MUSIC
//                                         whole-process CPU on panel 2, then on panel 3 recording
//     app_bench memory SETUP MUSIC        records the whole side, then prints the peak memory
//     app_bench wait SETUP MUSIC          records the whole side, then times panel 5's export

#include "app/Alerts.h"
#include "app/AppDelegate.h"
#include "capture/Audio.h"
#include "ui/Catalogue.h"
#include "ui/UiResources.h"
#include "ui/panels/CustomView.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/window/CustomWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QEventLoop>
#include <QTimer>

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

namespace {

// Nothing may wait for a person here: every alert is printed and answered with its default.
class PrintingAlerts : public waxline::app::Alerts {
public:
    void alert(const QString& titleKey, const QString& textKey, const QStringList& arguments,
               const QString&) override {
        std::fprintf(stderr, "app_bench: alert %s %s %s\n", qPrintable(titleKey),
                     qPrintable(textKey), qPrintable(arguments.join(QLatin1Char(' '))));
    }
    bool ask(const QString& messageKey, const QString& informativeKey, const QString&,
             const QString&, const QStringList&) override {
        std::fprintf(stderr, "app_bench: question %s %s\n", qPrintable(messageKey),
                     qPrintable(informativeKey));
        return true;
    }
    int choose(const QString& messageKey, const QString& informativeKey, const QStringList&,
               int defaultButton, int, const QStringList&) override {
        std::fprintf(stderr, "app_bench: question %s %s\n", qPrintable(messageKey),
                     qPrintable(informativeKey));
        return defaultButton;
    }
};

// Paints of the window, counted so the start-up time ends when panel 1 is on the screen.
class FirstPaint : public QObject {
public:
    std::function<void()> onPaint;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && onPaint) {
            auto once = std::move(onPaint);
            onPaint = nullptr;
            QTimer::singleShot(0, once);
        }
        return QObject::eventFilter(watched, event);
    }
};

// utime + stime of every thread of this process, in seconds.
double processCpuSeconds() {
    std::ifstream in("/proc/self/stat");
    std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // The command name may hold spaces; the fields after its closing parenthesis do not.
    std::istringstream fields(stat.substr(stat.rfind(')') + 2));
    std::string field;
    unsigned long long utime = 0, stime = 0;
    for (int number = 3; fields >> field; ++number) {
        if (number == 14)
            utime = std::stoull(field);
        if (number == 15) {
            stime = std::stoull(field);
            break;
        }
    }
    return double(utime + stime) / double(sysconf(_SC_CLK_TCK));
}

long peakResidentKb() {
    std::ifstream in("/proc/self/status");
    for (std::string line; std::getline(in, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    return -1;
}

void runFor(double seconds) {
    QEventLoop loop;
    QTimer::singleShot(std::chrono::milliseconds(long(seconds * 1000)), &loop, &QEventLoop::quit);
    loop.exec();
}

bool waitFor(const std::function<bool()>& done, double seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        runFor(0.05);
    }
    return true;
}

// Per cent of one core the process used while the event loop ran for `seconds`.
double cpuPercentOver(double seconds) {
    const double cpu = processCpuSeconds();
    const auto start = std::chrono::steady_clock::now();
    runFor(seconds);
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return 100.0 * (processCpuSeconds() - cpu) / wall.count();
}

struct App {
    waxline::ui::CustomWindow window;
    PrintingAlerts alerts;
    waxline::platform::Platform platform;
    std::unique_ptr<waxline::Audio> audio;
    std::unique_ptr<waxline::app::AppDelegate> controller;

    App(const std::string& setup, const std::string& music) {
        platform = waxline::platform::openPlatform(setup);
        audio = std::make_unique<waxline::Audio>(platform);
        controller = std::make_unique<waxline::app::AppDelegate>(*audio, window, alerts, music);
        controller->awakeFromNib();
    }
    unsigned shown() { return controller->tabs().selectedPanel(); }
    bool press(const char* action) {
        for (auto* button :
             controller->tabs().view(shown())->findChildren<waxline::ui::SKShapedButton*>())
            if (button->property("action").toString() == QLatin1String(action)) {
                button->click();
                return true;
            }
        std::fprintf(stderr, "app_bench: panel %u has no button for %s\n", shown(), action);
        return false;
    }
    // Panel 1, the device choice when the deck asks for one, then panel 2 where the deck plays
    // through the monitor.
    bool toPanel2() {
        if (!press("doNextButton1:"))
            return false;
        if (shown() == 11 && !press("doNextButtonSelectDevice:"))
            return false;
        return shown() == 2;
    }
    // Record with automatic split, so the run-out groove ends the album as a user would see it.
    bool record() {
        auto split = controller->tabs().view(shown())->findChild<QCheckBox*>(
            QStringLiteral("automaticallySplitTracks"));
        if (split && !split->isChecked())
            split->click();
        return press("doRecordButton:") && shown() == 3;
    }
};

int startup(const std::string& setup, long long launchNs) {
    App app(setup, {});
    FirstPaint paint;
    paint.onPaint = [&] {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        const long long ns = now.tv_sec * 1000000000LL + now.tv_nsec;
        std::printf("startup_ms %.1f panel %u\n", double(ns - launchNs) / 1e6, app.shown());
        QApplication::quit();
    };
    app.window.installEventFilter(&paint);
    app.window.show();
    return QApplication::exec();
}

int cpu(const std::string& setup, double monitorSeconds, double recordSeconds,
        const std::string& music) {
    App app(setup, music);
    app.window.show();
    if (!app.toPanel2())
        return 1;
    std::printf("monitor_cpu_percent %.2f\n", cpuPercentOver(monitorSeconds));
    std::fflush(stdout);
    if (!app.record())
        return 1;
    std::printf("record_cpu_percent %.2f\n", cpuPercentOver(recordSeconds));
    const bool stillRecording = app.shown() == 3;
    std::printf("record_still_on_panel_3 %s\n", stillRecording ? "yes" : "no");
    return stillRecording ? 0 : 1;
}

int memory(const std::string& setup, const std::string& music) {
    App app(setup, music);
    app.window.show();
    if (!app.toPanel2() || !app.record())
        return 1;
    const auto start = std::chrono::steady_clock::now();
    // The album end moves the wizard on to naming the tracks.
    if (!waitFor([&] { return app.shown() != 3; }, 4 * 3600)) {
        std::fprintf(stderr, "app_bench: no album end\n");
        return 1;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::printf("recorded_tracks %d in %.1f s, now on panel %u\n", app.audio->numRecordedTracks(),
                wall.count(), app.shown());
    std::printf("peak_memory_mb %.1f\n", double(peakResidentKb()) / 1024.0);
    return 0;
}

// Records a side to its album end, then presses panel 7's Next and times the export on panel 5
// until panel 6: the wait a person has after the last naming panel.
int wait(const std::string& setup, const std::string& music) {
    App app(setup, music);
    app.window.show();
    if (!app.toPanel2() || !app.record())
        return 1;
    if (!waitFor([&] { return app.shown() != 3; }, 4 * 3600) || app.shown() != 7) {
        std::fprintf(stderr, "app_bench: no album end with several tracks (panel %u)\n",
                     app.shown());
        return 1;
    }
    const int tracks = app.audio->numRecordedTracks();
    const auto start = std::chrono::steady_clock::now();
    if (!app.press("doNextButton7:"))
        return 1;
    if (!waitFor([&] { return app.shown() == 6; }, 600)) {
        std::fprintf(stderr, "app_bench: the export did not reach panel 6\n");
        return 1;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::printf("export_wait_s %.2f tracks %d\n", wall.count(), tracks);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    const bool usable = (mode == "startup" && argc == 4) || (mode == "cpu" && argc == 6) ||
                        (mode == "memory" && argc == 4) || (mode == "wait" && argc == 4);
    if (!usable) {
        std::fputs("usage: app_bench startup SETUP LAUNCH_NS\n"
                   "       app_bench cpu SETUP MONITOR_SECONDS RECORD_SECONDS MUSIC_DIR\n"
                   "       app_bench memory SETUP MUSIC_DIR\n"
                   "       app_bench wait SETUP MUSIC_DIR\n",
                   stderr);
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication qapp(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    waxline::ui::initUiResources();
    waxline::ui::installCatalogue(QLocale::system());
    try {
        if (mode == "startup")
            return startup(argv[2], std::atoll(argv[3]));
        if (mode == "cpu")
            return cpu(argv[2], std::atof(argv[3]), std::atof(argv[4]), argv[5]);
        if (mode == "wait")
            return wait(argv[2], argv[3]);
        return memory(argv[2], argv[3]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "app_bench: %s\n", e.what());
        return 1;
    }
}
