#include "support/WizardRig.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace waxline::test {
namespace {

using app::PanelNumberShouldPlayThru;

struct Press {
    const char* button;
    unsigned from;
    int tracks;
    std::function<void(WizardRig&)> press;
    std::vector<unsigned> panels; // switched to, in order
    bool exports;
};

TEST(PanelMachine, EveryButtonOfEveryPanelGoesWhereTheTableSays) {
    using W = WizardRig;
    const std::vector<Press> table = {
        {"Back on 11", 11, 0, [](W& w) { w.machine.doBackButtonSelectDevice(); }, {1}, false},
        {"Back on 12", 12, 0, [](W& w) { w.machine.doBackButtonSelectTape(); }, {11}, false},
        {"Back on 2", 2, 0, [](W& w) { w.machine.doBackButton2(); }, {1}, false},
        {"Back on 3", 3, 1, [](W& w) { w.recording.doBackButton3(); }, {2}, false},
        {"Stop, 0 tracks", 3, 0, [](W& w) { w.recording.doNextButton3(); }, {1, 7}, false},
        {"Stop, 1 track", 3, 1, [](W& w) { w.recording.doNextButton3(); }, {4}, false},
        {"Stop, 2 tracks", 3, 2, [](W& w) { w.recording.doNextButton3(); }, {7}, false},
        {"Stop, 40 tracks", 3, 40, [](W& w) { w.recording.doNextButton3(); }, {7}, false},
        {"Back on 4", 4, 1, [](W& w) { w.machine.doBackButton4(); }, {3}, false},
        {"Next on 4", 4, 1, [](W& w) { w.machine.doNextButton4(); }, {5}, true},
        {"Back on 5", 5, 1, [](W& w) { w.machine.doBackButton5(); }, {4}, false},
        {"Next on 5", 5, 1, [](W& w) { w.machine.doNextButton5(); }, {6}, false},
        {"Back on 6", 6, 0, [](W& w) { w.machine.doBackButton6(); }, {5}, false},
        {"Yes on 6", 6, 0, [](W& w) { w.machine.doNextButton6(); }, {2}, false},
        {"Back on 7", 7, 5, [](W& w) { w.machine.doBackButton7(); }, {3}, false},
        {"Next on 7, 10 tracks", 7, 10, [](W& w) { w.machine.doNextButton7(); }, {5}, true},
        {"Next on 7, 11 tracks", 7, 11, [](W& w) { w.machine.doNextButton7(); }, {8}, false},
        {"Back on 8", 8, 15, [](W& w) { w.machine.doBackButton8(); }, {7}, false},
        {"Next on 8, 20 tracks", 8, 20, [](W& w) { w.machine.doNextButton8(); }, {5}, true},
        {"Next on 8, 21 tracks", 8, 21, [](W& w) { w.machine.doNextButton8(); }, {9}, false},
        {"Back on 9", 9, 25, [](W& w) { w.machine.doBackButton9(); }, {8}, false},
        {"Next on 9, 30 tracks", 9, 30, [](W& w) { w.machine.doNextButton9(); }, {5}, true},
        {"Next on 9, 31 tracks", 9, 31, [](W& w) { w.machine.doNextButton9(); }, {10}, false},
        {"Back on 10", 10, 35, [](W& w) { w.machine.doBackButton10(); }, {9}, false},
        {"Next on 10, 40 tracks", 10, 40, [](W& w) { w.machine.doNextButton10(); }, {5}, true},
    };
    for (const Press& row : table) {
        SCOPED_TRACE(row.button);
        WizardRig w;
        w.standOn(row.from, row.tracks);
        row.press(w);
        EXPECT_EQ(w.views.switches, row.panels);
        EXPECT_EQ(w.exportsStarted, row.exports ? 1 : 0);
        EXPECT_TRUE(w.alerts.shown.empty());
    }
}

// Panels past 12 are refused with an alert, the panel and the monitor left as they were.
TEST(PanelMachine, PlayThroughRunsOnPanelsTwoAndThreeOnlyAndAnInvalidPanelIsRefused) {
    for (unsigned n : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 200u}) {
        SCOPED_TRACE(n);
        WizardRig w;
        w.standOn(4, 1);
        w.machine.setPanel(n);
        const bool monitored = n == 2 || n == 3;
        EXPECT_EQ(PanelNumberShouldPlayThru(n), monitored);
        if (n > 12) {
            ASSERT_EQ(w.alerts.shown.size(), 1u);
            EXPECT_EQ(w.alerts.shown[0].title, "IDS_INTERNAL_ERROR");
            EXPECT_EQ(w.alerts.shown[0].text, "IDS_INVALID_PANEL");
            EXPECT_TRUE(w.capture.calls.empty()) << "the monitor is left as it was";
            EXPECT_EQ(w.views.shown, 4u);
            continue;
        }
        EXPECT_TRUE(w.alerts.shown.empty());
        EXPECT_EQ(w.capture.calls,
                  std::vector<std::string>{monitored ? "startPlayThru" : "stopPlayThru"});
        EXPECT_EQ(w.views.switches,
                  n == 0 || n == 4 ? std::vector<unsigned>{} : std::vector<unsigned>{n});
    }
}

TEST(PanelMachine, TheDeviceCheckAlertsOrChoosesTheNextPanel) {
    struct Row {
        int detected;
        bool turntableOrTape;
        const char* alert; // empty: none
        std::vector<unsigned> panels;
        const char* line;               // on standard error
        std::vector<std::string> calls; // besides detection and the monitor
        std::vector<unsigned> meters;
    };
    const std::vector<Row> table = {
        {0, true, "IDS_NODEVICE", {}, "", {}, {}},
        {2, true, "IDS_TOOMANYDEVICES", {}, "", {}, {}},
        {3, false, "IDS_TOOMANYDEVICES", {}, "", {}, {}},
        {1, true, "", {11}, "doNextButton1: EQ required (must select)\n", {}, {}},
        {1, false, "", {2}, "doNextButton1: NO EQ required\n", {"setNoFilter"}, {2}},
        // Any other result counts as one usable device.
        {4, false, "", {2}, "doNextButton1: NO EQ required\n", {"setNoFilter"}, {2}},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.detected);
        WizardRig w;
        w.standOn(1, 0);
        w.capture.detectionCodes = {row.detected};
        w.capture.turntableOrTape = row.turntableOrTape;
        testing::internal::CaptureStderr();
        w.machine.doNextButton1();
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.line);
        if (*row.alert) {
            ASSERT_EQ(w.alerts.shown.size(), 1u);
            EXPECT_EQ(w.alerts.shown[0].title, "IDS_WARNING");
            EXPECT_EQ(w.alerts.shown[0].text, row.alert);
        } else {
            EXPECT_TRUE(w.alerts.shown.empty());
        }
        EXPECT_EQ(w.views.switches, row.panels);
        std::vector<std::string> expected{"detectAudioDevice"};
        expected.insert(expected.end(), row.calls.begin(), row.calls.end());
        EXPECT_EQ(besidesMonitor(w.capture), expected);
        EXPECT_EQ(w.views.metersStarted, row.meters);
        EXPECT_EQ(w.machine.meterRunning(), !row.meters.empty());
    }
}

TEST(PanelMachine, DeviceAndTapeChoicesSetTheirPreset) {
    struct Row {
        const char* choice;
        unsigned from;
        bool turntable, chrome;
        const char* preset;
        unsigned panel;
        bool meter;
    };
    const std::vector<Row> table = {
        {"turntable", 11, true, false, "setRIAAFilter", 2, true},
        {"cassette", 11, false, false, "setNoFilter", 12, false},
        {"chrome tape", 12, false, true, "setChromeFilter", 2, true},
        {"normal tape", 12, false, false, "setNoFilter", 2, true},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.choice);
        WizardRig w;
        w.standOn(row.from, 0);
        w.views.turntable = row.turntable;
        w.views.chrome = row.chrome;
        if (row.from == 11)
            w.machine.doNextButtonSelectDevice();
        else
            w.machine.doNextButtonSelectTape();
        EXPECT_EQ(besidesMonitor(w.capture), std::vector<std::string>{row.preset});
        EXPECT_EQ(w.views.switches, std::vector<unsigned>{row.panel});
        EXPECT_EQ(w.machine.meterRunning(), row.meter);
    }
}

TEST(PanelMachine, PanelSixYesStartsTheNextSideWithAFreshMeter) {
    WizardRig w;
    w.machine.startMetering(2);
    w.standOn(6, 0);
    w.machine.doNextButton6();
    EXPECT_EQ(w.views.switches, std::vector<unsigned>{2});
    EXPECT_EQ(w.views.metersStarted, (std::vector<unsigned>{2, 2}));
    EXPECT_TRUE(w.machine.meterRunning());
    EXPECT_EQ(w.capture.calls, std::vector<std::string>{"startPlayThru"});
}

// Panel 3 starts its count at 1, panel 4 empties its name; panels 7 to 10 offer only the
// recorded tracks' fields, panel 7 empty and the later ones as the last side left them.
TEST(PanelMachine, EnteringAPanelPreparesItsFields) {
    WizardRig w;
    w.views.texts[{4, 12}] = "last time's name";
    w.machine.setPanel(4);
    EXPECT_EQ(w.views.texts.at({4, 12}), "");
    EXPECT_EQ(w.views.selected, (std::vector<FakePanelViews::Field>{{4, 10}}));
    w.machine.setRecording(true);
    w.machine.setPanel(3);
    EXPECT_EQ(w.views.texts.at({3, 22}), "1");
    EXPECT_TRUE(w.views.recordingLook);
    // Back to it from a naming panel with nothing recording: no lamp, the tracks there are.
    w.capture.tracks = 5;
    w.machine.setRecording(false);
    w.machine.setPanel(4);
    w.machine.setPanel(3);
    EXPECT_FALSE(w.views.recordingLook);
    EXPECT_EQ(w.views.texts.at({3, 22}), "5");

    w.standOn(3, 13);
    w.views.texts[{7, 61}] = "old name";
    w.views.texts[{8, 71}] = "kept from the last side";
    w.machine.setPanel(7);
    for (int tag = 61; tag <= 70; ++tag) {
        SCOPED_TRACE(tag);
        EXPECT_TRUE(w.views.offered.at({7, tag}));
        EXPECT_EQ(w.views.texts.at({7, tag}), "") << "panel 7 starts empty";
    }
    EXPECT_EQ(w.views.selected.back(), (FakePanelViews::Field{7, 51}));
    w.machine.setPanel(8);
    for (int tag = 71; tag <= 80; ++tag)
        EXPECT_EQ(w.views.offered.at({8, tag}), tag - 60 <= 13) << tag;
    EXPECT_EQ(w.views.texts.at({8, 71}), "kept from the last side");
    EXPECT_EQ(w.views.selected.back(), (FakePanelViews::Field{8, 71}));

    WizardRig three;
    three.standOn(3, 3);
    three.machine.setPanel(7);
    for (int tag = 61; tag <= 70; ++tag)
        EXPECT_EQ(three.views.offered.at({7, tag}), tag <= 63) << tag;
}

// Next on a naming panel says Save when no later panel is needed for the tracks recorded.
TEST(PanelMachine, NamingPanelsNextSaysSaveOnTheLastPanelNeeded) {
    struct Case {
        int tracks;
        unsigned panel;
        bool saves;
    };
    const Case cases[] = {{3, 7, true},   {10, 7, true}, {11, 7, false}, {13, 8, true},
                          {21, 8, false}, {30, 9, true}, {31, 9, false}, {40, 10, true}};
    for (const Case& c : cases) {
        WizardRig w;
        w.standOn(3, c.tracks);
        w.machine.setPanel(c.panel);
        EXPECT_EQ(w.views.nextSaves.at(c.panel), c.saves) << c.tracks << " on " << c.panel;
    }
}

} // namespace
} // namespace waxline::test
