#include "capture/Audio.h"
#include "capture/devices/KnownUsbDevices.h"
#include "capture/monitor/MonitorHost.h"
#include "cli/Commands.h"
#include "cli/LoopbackProbe.h"
#include "cli/PlatformWords.h"
#include "platform/Platform.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace waxline::cli {

namespace {

const char* meaningOf(int code) {
    switch (code) {
    case 1:
        return "one supported device found and its input selected";
    case 2:
        return "more than one supported USB device attached";
    case 3:
        return "more than one audio input matches the supported device";
    default:
        return "no supported device, or a supported device with no matching audio input";
    }
}

void listDevices(platform::AudioSystem& system, platform::Direction direction) {
    const bool in = direction == platform::Direction::Input;
    const platform::AudioObjectID def = system.defaultDevice(direction);
    std::printf("Audio %s:\n", in ? "inputs" : "outputs");
    const auto devices = system.devices(direction);
    if (devices.empty())
        std::printf("  (none)\n");
    for (const auto& d : devices)
        std::printf("  %c id %-4u %u ch  %6.0f Hz  buffer %u + safety %u frames  '%s'  (%s)\n",
                    d.id == def ? '*' : ' ', d.id, d.channels, d.actualSampleRate, d.bufferFrames,
                    d.safetyOffsetFrames, d.name.c_str(), d.serverName.c_str());
}

} // namespace

int devicesCommand(Arguments& args) {
    const std::string setup = args.option("--virtual-device").value_or("");
    const bool latency = args.flag("--latency");
    const std::string input = args.option("--input").value_or("");
    if (!input.empty() && !latency)
        throw UsageError("--input only chooses the input whose monitor latency --latency shows");
    if (!args.positional().empty())
        throw UsageError("unexpected argument '" + args.positional().front() + "'");

    std::unique_ptr<QCoreApplication> app;
    if (!QCoreApplication::instance()) {
        static int argc = 1;
        static char name[] = "waxline-cli";
        static char* argv[] = {name, nullptr};
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    platform::Platform platform;
    try {
        platform = platform::openPlatform(setup);
    } catch (const platform::PlatformError& e) {
        // A virtual device that cannot be made is a bad value, as in record.
        std::fprintf(stderr, "waxline-cli devices: %s\n", describe(e).c_str());
        return 2;
    }

    std::printf("USB devices:\n");
    const auto usb = platform.usb->devices();
    if (usb.empty())
        std::printf("  (none)\n");
    for (const auto& d : usb) {
        const KnownUsbDevice* row = FindKnownUsbDevice({d.vendorId, d.productId});
        std::printf("  %04x:%04x release %04x  %s%s%s%s\n", d.vendorId, d.productId, d.release,
                    d.product.c_str(), row ? "  [supported: '" : "", row ? row->name : "",
                    row ? "']" : "");
    }
    listDevices(*platform.audio, platform::Direction::Input);
    listDevices(*platform.audio, platform::Direction::Output);

    Audio audio(platform);
    std::fflush(stdout);
    const int code = audio.detectAudioDevice();
    std::fflush(stdout);
    std::printf("Detection: %d, %s", code, meaningOf(code));
    if (code == 1)
        std::printf(" (input %u)", audio.inputDeviceID());
    std::printf("\n");
    if (audio.device() && audio.mightBeTurntableOrTape())
        std::printf("The device may be a turntable or a cassette player.\n");

    if (!latency)
        return 0;
    if (!input.empty()) {
        platform::AudioObjectID id = platform::kNoDevice;
        for (const auto& d : platform.audio->devices(platform::Direction::Input))
            if (std::to_string(d.id) == input || d.serverName == input || d.name == input ||
                d.description == input)
                id = d.id;
        if (id == platform::kNoDevice) {
            std::fprintf(stderr, "waxline-cli devices: no input named '%s'\n", input.c_str());
            return 1;
        }
        audio.selectInput(id);
    }
    if (!audio.playThru()) {
        std::fprintf(stderr, "waxline-cli devices: no monitor to measure: no supported device "
                             "detected; name an input with --input\n");
        return 1;
    }
    // The offset is fixed when the first output buffer meets the first input; wait for that
    // (a second at most) and a little more for a varispeed monitor to settle.
    audio.startPlayThru();
    MonitorHost& monitor = *audio.playThru();
    QEventLoop loop;
    QTimer poll;
    int waited = 0;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        waited += 50;
        if ((monitor.LatencyFrames() > 0 && waited >= 300) || waited >= 1000)
            loop.quit();
    });
    poll.start(50);
    loop.exec();
    const double frames = monitor.LatencyFrames();
    const double ms = monitor.LatencyMilliseconds();
    const LoopbackMeasurement heard =
        frames > 0
            ? measureThroughLoopback(*platform.audio, audio.inputDeviceID(), audio.outputDeviceID())
            : LoopbackMeasurement{};
    audio.stopPlayThru();
    if (frames <= 0) {
        std::fprintf(stderr, "waxline-cli devices: the monitor did not play; no latency to "
                             "report\n");
        return 1;
    }
    std::printf("Monitor latency: %.1f ms (%.0f frames) from input %u to output %u\n", ms, frames,
                audio.inputDeviceID(), audio.outputDeviceID());
    if (heard.made)
        std::printf("Measured through a loopback: %.1f ms median, %.1f ms worst over %zu clicks "
                    "(%zu lost); computed %.1f ms\n",
                    heard.delays.medianMs, heard.delays.worstMs, heard.delays.clicks,
                    heard.delays.lost, ms);
    else
        std::printf("Measured through a loopback: not measured (%s); computed %.1f ms\n",
                    heard.whyNot.c_str(), ms);
    return 0;
}

} // namespace waxline::cli
