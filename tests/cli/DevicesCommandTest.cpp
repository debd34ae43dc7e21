// `waxline-cli devices --latency` on the virtual devices: the reported monitor latency must be
// at least one input buffer (nothing can be heard before its buffer arrived) and at most both
// devices' buffers and safety offsets plus one more buffer, as the listing shows them; the
// milliseconds must be the frames at the input's rate.
#include "support/MediaFiles.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>

namespace waxline {
namespace {

struct Listed {
    double rate = 0;
    double buffer = 0;
    double safety = 0;
};

// The listing line of device `id`: "  * id 50   2 ch   44100 Hz  buffer 512 + safety 0 frames".
Listed listed(const std::string& text, unsigned id) {
    const std::regex line("id " + std::to_string(id) +
                          R"( +\d+ ch +(\d+) Hz  buffer (\d+) \+ safety (\d+) frames)");
    std::smatch m;
    if (!std::regex_search(text, m, line))
        return {};
    return {std::stod(m[1]), std::stod(m[2]), std::stod(m[3])};
}

TEST(DevicesCommand, LatencyLiesBetweenOneBufferAndBothDevicesBuffers) {
    const struct {
        const char* setup;
        const char* extraArgs;
    } cases[] = {
        {"usb=08bb:2900,buffer=128", ""},
        {"usb=08bb:2900", ""},
        {"usb=08bb:2900,buffer=2048", ""},
        {"usb=none,extra=Line In,buffer=256", " --input 'Line In'"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.setup);
        std::string text;
        const int status =
            test::runCommand(test::cliPath() + " devices --latency --virtual-device " +
                                 test::shellQuote(c.setup) + c.extraArgs,
                             text);
        ASSERT_EQ(status, 0) << text;
        const std::regex report(
            R"(Monitor latency: ([\d.]+) ms \((\d+) frames\) from input (\d+) to output (\d+))");
        std::smatch m;
        ASSERT_TRUE(std::regex_search(text, m, report)) << text;
        const double ms = std::stod(m[1]);
        const double frames = std::stod(m[2]);
        const Listed in = listed(text, std::stoul(m[3]));
        const Listed out = listed(text, std::stoul(m[4]));
        ASSERT_GT(in.rate, 0) << text;
        ASSERT_GT(out.rate, 0) << text;
        EXPECT_GE(frames, in.buffer) << text;
        EXPECT_LE(frames, in.buffer + in.safety + out.buffer + out.safety + in.buffer) << text;
        EXPECT_NEAR(ms, frames / in.rate * 1000.0, 0.06) << text;
    }
}

TEST(DevicesCommand, LatencyWithoutAMonitorIsRefused) {
    const struct {
        const char* args;
        const char* message;
    } cases[] = {
        {" devices --latency --virtual-device usb=none", "no monitor to measure"},
        {" devices --latency --input nowhere --virtual-device usb=none", "no input named"},
        {" devices --input 1 --virtual-device usb=none", "--input only chooses"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        std::string text;
        EXPECT_NE(test::runCommand(test::cliPath() + c.args, text), 0);
        EXPECT_NE(text.find(c.message), std::string::npos) << text;
    }
}

} // namespace
} // namespace waxline
