#include "support/WizardRig.h"

#include <gtest/gtest.h>

namespace waxline::test {
namespace {

// No supported deck: the inputs the platform lists are offered; the one chosen is recorded from
// after the turntable or cassette choice, and a cancel or an empty list leaves panel 1 as it was.
TEST(OtherInput, NoDeckOffersTheInputsAndGoesOnWithTheOneChosen) {
    const std::vector<InputChoice> two = {{7, "Built-in Audio"}, {12, "Scarlett 2i2 USB"}};
    struct Row {
        std::vector<InputChoice> inputs;
        std::optional<int> answer;
        bool turntable;
        std::vector<unsigned> panels;
        std::vector<std::string> calls;
    };
    const Row rows[] = {
        {{}, 0, true, {}, {"detectAudioDevice"}},
        {two, std::nullopt, true, {}, {"detectAudioDevice"}},
        {two, 1, true, {11, 2}, {"detectAudioDevice", "selectOtherInput(12)", "setRIAAFilter"}},
        {two, 0, false, {11, 12}, {"detectAudioDevice", "selectOtherInput(7)", "setNoFilter"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.calls));
        WizardRig w;
        w.standOn(1, 0);
        w.capture.turntableOrTape = false;
        w.capture.inputs = row.inputs;
        w.views.turntable = row.turntable;
        QStringList offered;
        w.machine.chooseInput = [&](const QStringList& names) {
            offered = names;
            return row.answer;
        };
        w.machine.doNextButton1();
        if (w.views.shown == 11)
            w.machine.doNextButtonSelectDevice();

        const QStringList expected =
            row.inputs.empty()
                ? QStringList()
                : QStringList{QStringLiteral("Built-in Audio"), QStringLiteral("Scarlett 2i2 USB")};
        EXPECT_EQ(offered, expected);
        EXPECT_EQ(w.views.switches, row.panels);
        EXPECT_EQ(besidesMonitor(w.capture), row.calls);
        // Only an empty list is a dead end worth an alert.
        ASSERT_EQ(w.alerts.shown.size(), row.inputs.empty() ? 1u : 0u);
        if (row.inputs.empty()) {
            EXPECT_EQ(w.alerts.shown[0].text, QStringLiteral("IDS_NODEVICE"));
        }
    }
}

} // namespace
} // namespace waxline::test
