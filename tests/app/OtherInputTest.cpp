#include "support/WizardRig.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace waxline::test {
namespace {

// No supported deck: the inputs the platform lists are offered; the one chosen is recorded from
// after the turntable or cassette choice, and a cancel or an empty list leaves panel 1 as it was.
TEST(OtherInput, NoDeckOffersTheInputsAndGoesOnWithTheOneChosen) {
    const std::vector<InputChoice> twoInputs = {{7, "Built-in Audio Analog Stereo"},
                                                {12, "Scarlett 2i2 USB"}};
    struct Row {
        const char* name;
        std::vector<InputChoice> inputs;
        std::optional<int> answer;
        bool turntable;
        bool offered;
        std::vector<unsigned> panels;
        std::vector<std::string> calls; // after the detection
        const char* alert;
    };
    const std::vector<Row> rows = {
        {"no inputs", {}, 0, true, false, {}, {}, "IDS_NODEVICE"},
        {"cancelled", twoInputs, std::nullopt, true, true, {}, {}, nullptr},
        {"turntable on the second",
         twoInputs,
         1,
         true,
         true,
         {11, 2},
         {"selectOtherInput(12)", "setRIAAFilter"},
         nullptr},
        {"cassette on the first",
         twoInputs,
         0,
         false,
         true,
         {11, 12},
         {"selectOtherInput(7)", "setNoFilter"},
         nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        WizardRig w;
        w.standOn(1, 0);
        w.capture.turntableOrTape = false;
        w.capture.detectionCodes = {0};
        w.capture.inputs = row.inputs;
        w.views.turntable = row.turntable;
        QStringList offered;
        bool asked = false;
        w.machine.chooseInput = [&](const QStringList& names) {
            asked = true;
            offered = names;
            return row.answer;
        };
        w.machine.doNextButton1();
        if (w.views.shown == 11)
            w.machine.doNextButtonSelectDevice();

        EXPECT_EQ(asked, row.offered);
        if (row.offered) {
            EXPECT_EQ(offered, QStringList({QStringLiteral("Built-in Audio Analog Stereo"),
                                            QStringLiteral("Scarlett 2i2 USB")}));
        }
        EXPECT_EQ(w.views.switches, row.panels);
        std::vector<std::string> calls = besidesMonitor(w.capture);
        ASSERT_FALSE(calls.empty());
        EXPECT_EQ(calls.front(), "detectAudioDevice");
        calls.erase(calls.begin());
        EXPECT_EQ(calls, row.calls);
        if (row.alert) {
            ASSERT_EQ(w.alerts.shown.size(), 1u);
            EXPECT_EQ(w.alerts.shown[0].text, QLatin1String(row.alert));
        } else {
            EXPECT_TRUE(w.alerts.shown.empty());
        }
    }
}

} // namespace
} // namespace waxline::test
