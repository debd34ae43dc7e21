#include "support/WizardRig.h"

#include <gtest/gtest.h>

namespace waxline::test {

WizardRig::WizardRig() {
    capture.turntableOrTape = true;
    machine.processAudioFiles = [this] {
        EXPECT_EQ(views.shown, 5u) << "the export starts on panel 5";
        ++exportsStarted;
    };
}

void WizardRig::standOn(unsigned panel, int tracks) {
    views.shown = panel;
    capture.tracks = tracks;
}

} // namespace waxline::test
