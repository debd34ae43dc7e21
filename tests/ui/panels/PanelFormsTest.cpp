#include "ui/panels/PanelForms.h"

#include "support/RecordingPanelController.h"
#include "ui/panels/CustomView.h"
#include "ui/panels/SubViewController.h"
#include "ui/widgets/MeteringView.h"
#include "ui/widgets/Picture.h"
#include "ui/widgets/SKShapedButton.h"

#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QProgressBar>
#include <QSlider>

#include <gtest/gtest.h>

#include <set>
#include <vector>

using namespace waxline::ui;
using waxline::test::RecordingPanelController;

namespace {

enum class Kind { Label, Field, Level };

struct Tagged {
    int first, last;
    Kind kind;
};

// Names and actions as one space-separated string each, the actions with their colons.
struct FormCase {
    unsigned panel;
    const char* nib;
    std::vector<Tagged> tags;
    const char* named;
    const char* actions; // every action the panel's controls carry, Close and Help aside
};

const FormCase formCases[] = {
    {1, "WXL_Tab1", {}, "", "doNextButton1:"},
    {2,
     "WXL_Tab2",
     {},
     "o_gainDbSlider o_gainValueText _MeteringViewL _MeteringViewR automaticallySplitTracks",
     "doBackButton2: doRecordButton: doGainSlider: doReturnToRecording:"},
    {3,
     "WXL_Tab3",
     {{21, 22, Kind::Label}},
     "_MeteringViewL _MeteringViewR splitTracksButton",
     "doBackButton3: doNextButton3: doNewTrackButton:"},
    {4,
     "WXL_Tab4",
     {{10, 12, Kind::Field}},
     "splitsNotice reviewButton",
     "doBackButton4: doNextButton4: doReviewSplits: doFindAlbum:"},
    {5, "WXL_Tab5", {{31, 31, Kind::Level}}, "_progressIndicator", "doBackButton5: doNextButton5:"},
    {6,
     "WXL_Tab6",
     {},
     "finishButton nextButton",
     "doBackButton6: doNextButton6: doFinishButton6: doRetryExport: doKeepForLater:"},
    {7,
     "WXL_Tab7",
     {{51, 52, Kind::Field}, {61, 70, Kind::Field}},
     "splitsNotice reviewButton",
     "doBackButton7: doNextButton7: doReviewSplits: doFindAlbum:"},
    {8, "WXL_Tab8", {{71, 80, Kind::Field}}, "", "doBackButton8: doNextButton8:"},
    {9, "WXL_Tab9", {{81, 90, Kind::Field}}, "", "doBackButton9: doNextButton9:"},
    {10, "WXL_Tab10", {{91, 100, Kind::Field}}, "", "doBackButton10: doNextButton10:"},
    {11,
     "WXL_SelectDeviceTab",
     {},
     "selectDeviceOrbitDisc selectDeviceReelRunner",
     "doBackButtonSelectDevice: doNextButtonSelectDevice: doSelectDeviceOrbitDisc: "
     "doSelectDeviceReelRunner:"},
    {12,
     "WXL_SelectTape",
     {},
     "normalTapeButton chromeTapeButton",
     "doBackButtonSelectTape: doNextButtonSelectTape: doSelectTapeNormal: doSelectTapeChrome:"},
};

QStringList words(const char* text) {
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool isKind(QWidget* widget, Kind kind) {
    switch (kind) {
    case Kind::Label:
        return qobject_cast<QLabel*>(widget);
    case Kind::Field:
        return qobject_cast<QLineEdit*>(widget);
    case Kind::Level:
        return qobject_cast<QProgressBar*>(widget);
    }
    return false;
}

} // namespace

// Each form loads with its tags, names and actions, its artwork in place, and every button
// forwarding its own action to the controller.
TEST(PanelForms, EveryFormLoadsAndEveryButtonForwardsItsAction) {
    for (const FormCase& c : formCases) {
        SCOPED_TRACE(c.nib);
        EXPECT_EQ(nibNameForPanel(c.panel), QLatin1String(c.nib));
        RecordingPanelController controller;
        SubViewController loader(QLatin1String(c.nib), &controller);
        CustomView* view = loader.view();
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(view->size(), QSize(720, 480));
        for (const Tagged& range : c.tags)
            for (int tag = range.first; tag <= range.last; ++tag) {
                QWidget* control = view->viewWithTag(tag);
                ASSERT_NE(control, nullptr) << "tag " << tag;
                EXPECT_TRUE(isKind(control, range.kind)) << "tag " << tag;
            }
        for (const QString& name : words(c.named))
            EXPECT_NE(view->findChild<QWidget*>(name), nullptr) << qPrintable(name);

        std::set<QString> actions;
        int defaults = 0;
        int backs = 0;
        const auto controls = view->findChildren<QWidget*>();
        for (QWidget* control : controls) {
            const QString action = control->property("action").toString();
            if (!action.isEmpty()) {
                EXPECT_TRUE(isPanelAction(action)) << qPrintable(action);
                actions.insert(action);
            }
            const QString role = control->property("role").toString();
            // A panel's other state has its own default button, hidden until then.
            defaults += role == QLatin1String("default") && !control->isHidden();
            backs += role == QLatin1String("back");
            const QString artwork = control->property("artwork").toString();
            if (!artwork.isEmpty() && qobject_cast<QLabel*>(control)) {
                EXPECT_TRUE(artworkExists(artwork)) << qPrintable(artwork);
            }
        }
        std::set<QString> expected{QStringLiteral("doCloseButton:"), QStringLiteral("showHelp:")};
        for (const QString& action : words(c.actions))
            expected.insert(action);
        EXPECT_EQ(actions, expected);
        EXPECT_EQ(defaults, 1) << "one default action";
        EXPECT_EQ(backs, c.panel == 1 || c.panel == 3 ? 0 : 1)
            << "Esc is Back on every panel but the first and the recording one";

        view->setController(&controller);
        const auto buttons = view->findChildren<SKShapedButton*>();
        for (SKShapedButton* button : buttons) {
            const std::string name = button->objectName().toStdString();
            EXPECT_FALSE(button->image().isNull()) << name;
            EXPECT_TRUE(artworkExists(button->image().name() + QStringLiteral("Aqua")));
            EXPECT_TRUE(artworkExists(button->image().name() + QStringLiteral("Graphite")));
            if (button->parentWidget() == view) {
                EXPECT_EQ(button->size(), button->image().size()) << name << ": the frame fits";
            } else {
                // A row lays its buttons out: as tall as the picture, wide enough for the caption.
                button->parentWidget()->layout()->activate();
                EXPECT_EQ(button->height(), button->image().size().height()) << name;
                EXPECT_GE(button->width(), button->minimumSizeHint().width()) << name;
            }
            EXPECT_EQ(button->text().isEmpty(),
                      !button->property("accessibleKey").toString().isEmpty())
                << name << ": a picture-only button has an accessible key";

            const QString selector = button->property("action").toString().chopped(1);
            if (selector.startsWith(QLatin1String("doSelect")) ||
                selector.startsWith(QLatin1String("doYes")) ||
                selector.startsWith(QLatin1String("doNo")))
                continue; // radio choices stay in the view
            controller.clear();
            button->setEnabled(true);
            button->click();
            ASSERT_EQ(controller.calls.size(), 1u) << name;
            const auto& call = controller.calls[0];
            // Finish ends the application: the controller's own verb for that.
            EXPECT_EQ(call.name, selector == QLatin1String("doFinishButton6")
                                     ? QStringLiteral("doCloseApplication")
                                     : selector);
            // Record comes from the view, asking for neither normalisation nor click removal.
            EXPECT_EQ(call.sender, selector == QLatin1String("doRecordButton")
                                       ? static_cast<QObject*>(view)
                                       : button);
            EXPECT_FALSE(call.normalization);
            EXPECT_FALSE(call.clickRemoval);
        }
    }
}

TEST(PanelForms, UnknownFormLeavesTheViewEmpty) {
    SubViewController loader(QStringLiteral("WXL_NoSuchTab"), nullptr);
    EXPECT_EQ(loader.view(), nullptr);
    EXPECT_TRUE(nibNameForPanel(0).isEmpty());
    EXPECT_TRUE(nibNameForPanel(13).isEmpty());
}
