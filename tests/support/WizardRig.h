#pragma once

#include "app/CaptureCalls.h"
#include "app/FakePanelViews.h"
#include "app/PanelMachine.h"
#include "app/RecordingControl.h"
#include "support/FakeAlerts.h"
#include "support/FakeCapture.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

namespace waxline::test {

// The wizard's logic on fakes: a capture controller whose track files go into a fresh folder,
// panels without widgets, alerts that answer, and the panel machine with its recording control.
// The device may be a turntable or a tape deck; the export only counts that it was started.
struct WizardRig {
    TempDir folder;
    FakeCapture capture = captureIn(folder.path());
    FakePanelViews views;
    FakeAlerts alerts;
    app::PanelMachine machine{capture, views, alerts};
    app::RecordingControl recording{capture, views, alerts, machine};
    int exportsStarted = 0;

    WizardRig() {
        capture.turntableOrTape = true;
        machine.processAudioFiles = [this] {
            EXPECT_EQ(views.shown, 5u) << "the export starts on panel 5";
            ++exportsStarted;
        };
    }
    // As if the wizard had got to `panel` with `tracks` recorded.
    void standOn(unsigned panel, int tracks) {
        views.shown = panel;
        capture.tracks = tracks;
    }
};

} // namespace waxline::test
