#include "app/AppDelegate.h"
#include "capture/Audio.h"
#include "support/FakeAlerts.h"
#include "support/FakeAudioSystem.h"
#include "support/FakeUsbBus.h"
#include "support/MediaFiles.h"
#include "ui/window/CustomWindow.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace waxline;

// The deck is found, but its stream cannot be opened: the monitor's start fails, which ends
// the process. Each alert is written to standard error as it is shown, so the death test can
// see that the user was told (and why) before the end.
void failingMonitorStart(bool withDelegate) {
    test::TempDir dir;
    platform::Platform platform;
    auto system = std::make_unique<test::FakeAudioSystem>();
    system->add(platform::Direction::Input, 10, "USB Audio CODEC ");
    system->add(platform::Direction::Output, 50, "Speakers");
    system->defaultInput = 10;
    system->defaultOutput = 50;
    system->failOpen = true;
    auto bus = std::make_unique<test::FakeUsbBus>();
    bus->attached = {{0x08BB, 0x2900, 1, ""}};
    platform.audio = std::move(system);
    platform.usb = std::move(bus);
    Audio audio(platform);
    audio.setExportFolder(dir.file("Exports"));
    test::FakeAlerts alerts;
    alerts.onAlert = [&] {
        const auto& shown = alerts.shown.back();
        std::fprintf(stderr, "alert %s %s [%s]\n", qPrintable(shown.title), qPrintable(shown.text),
                     qPrintable(shown.arguments.join(QLatin1Char('|'))));
    };
    ui::CustomWindow window;
    app::AppDelegate controller(audio, window, alerts, dir.file("Music"));
    if (withDelegate)
        controller.awakeFromNib();
    window.show();
    controller.doNextButton1(nullptr);
    std::fputs("still running\n", stderr);
}

TEST(MonitorFailureDeathTest, TheUserReadsWhyBeforeTheProcessEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(failingMonitorStart(true), ::testing::ExitedWithCode(1),
                "alert IDS_WARNING IDS_MONITOR_FAILED \\[the device .*USB Audio CODEC .* could not "
                "be opened; another program may be using it\\]\n");
    // Without a front end nothing is shown, and the end is as deliberate as before.
    EXPECT_EXIT(failingMonitorStart(false), ::testing::ExitedWithCode(1),
                "Cannot Init CAPlayThrough\n$");
}

} // namespace
