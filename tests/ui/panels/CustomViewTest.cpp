#include "ui/panels/CustomView.h"

#include "ui/Catalogue.h"

#include "support/RecordingPanelController.h"
#include "ui/panels/PanelForms.h"
#include "ui/panels/SavingProgress.h"
#include "ui/panels/SubViewController.h"
#include "ui/panels/TranslateView.h"
#include "ui/widgets/MeteringView.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/window/CustomWindow.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSlider>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <map>
#include <memory>

using namespace waxline::ui;
using waxline::test::RecordingPanelController;

namespace {

// A panel loaded from its form, localised, wired to a recording controller.
struct Panel {
    RecordingPanelController controller;
    std::unique_ptr<CustomView> view;

    explicit Panel(const char* nib) {
        SubViewController loader(QString::fromLatin1(nib), &controller);
        view = loader.takeView();
        if (!view)
            return;
        TranslateView(view.get());
        view->setController(&controller);
    }
    template <typename T> T* child(const char* name) const {
        return view->findChild<T*>(QString::fromLatin1(name));
    }
    SKShapedButton* button(const char* name) const { return child<SKShapedButton>(name); }
};

// Shows the panel in an active window and returns the control with the keyboard focus: the
// form's own choice, or the first one Tab reaches.
QWidget* showFocused(CustomWindow& window, Panel& panel) {
    window.setContentView(panel.view.get());
    window.show();
    QApplication::setActiveWindow(&window);
    if (QApplication::focusWidget())
        return QApplication::focusWidget();
    for (QWidget* w = panel.view->nextInFocusChain(); w != panel.view.get();
         w = w->nextInFocusChain())
        if ((w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(panel.view.get()) &&
            w->isEnabled()) {
            w->setFocus(Qt::TabFocusReason);
            break;
        }
    return QApplication::focusWidget();
}

} // namespace

TEST(CustomView, GainSliderRoundsToATenthAndForwardsTheShownValue) {
    Panel panel("WXL_Tab2");
    ASSERT_TRUE(panel.view);
    auto slider = panel.child<QSlider>("o_gainDbSlider");
    auto readout = panel.child<QLabel>("o_gainValueText");
    ASSERT_TRUE(slider && readout);
    EXPECT_EQ(readout->text(), QStringLiteral("+0.0")) << "shown at load";
    struct Case {
        int hundredths;
        const char* shown;
        float forwarded;
    };
    const Case cases[] = {
        {226, "+2.3", 2.3f}, {0, "+0.0", 0.0f},   {-2000, "-20.0", -20.0f}, {2000, "+20.0", 20.0f},
        {-4, "+0.0", 0.0f},  {-6, "-0.1", -0.1f}, {1234, "+12.3", 12.3f},   {125, "+1.3", 1.3f},
    };
    for (const Case& c : cases) {
        panel.controller.clear();
        slider->setValue(c.hundredths == slider->value() ? c.hundredths + 1 : c.hundredths);
        slider->setValue(c.hundredths);
        EXPECT_EQ(readout->text(), QLatin1String(c.shown)) << c.hundredths;
        ASSERT_FALSE(panel.controller.calls.empty());
        const auto& last = panel.controller.calls.back();
        EXPECT_EQ(last.name, QStringLiteral("setRecordingGainDb"));
        EXPECT_FLOAT_EQ(last.gainDb, c.forwarded) << c.hundredths;
    }
}

TEST(CustomView, RadioPairsAndTheirQueries) {
    Panel device("WXL_SelectDeviceTab");
    ASSERT_TRUE(device.view);
    auto turntable = device.button("selectDeviceOrbitDisc");
    auto cassette = device.button("selectDeviceReelRunner");
    EXPECT_TRUE(device.view->getSelectedDeviceIsTurtable()) << "turntable chosen at load";
    cassette->click();
    EXPECT_FALSE(device.view->getSelectedDeviceIsTurtable());
    EXPECT_TRUE(cassette->isChecked());
    EXPECT_FALSE(turntable->isChecked());
    cassette->click();
    EXPECT_TRUE(cassette->isChecked()) << "clicking the chosen one keeps it chosen";
    turntable->click();
    EXPECT_TRUE(device.view->getSelectedDeviceIsTurtable());
    EXPECT_FALSE(cassette->isChecked());

    Panel tape("WXL_SelectTape");
    ASSERT_TRUE(tape.view);
    EXPECT_FALSE(tape.view->getSelectedTapeTypeIsChrome()) << "normal tape at load";
    tape.button("chromeTapeButton")->click();
    EXPECT_TRUE(tape.view->getSelectedTapeTypeIsChrome());
    EXPECT_FALSE(tape.button("normalTapeButton")->isChecked());
    tape.button("normalTapeButton")->click();
    EXPECT_FALSE(tape.view->getSelectedTapeTypeIsChrome());
    // Chrome is "normal is not on", whatever the chrome button says.
    tape.button("normalTapeButton")->setChecked(false);
    EXPECT_TRUE(tape.view->getSelectedTapeTypeIsChrome());
    EXPECT_TRUE(device.controller.calls.empty()) << "choosing sends nothing to the controller";
}

TEST(CustomView, QuestionPanelRecordsAnotherSideOrFinishes) {
    Panel question("WXL_Tab6");
    ASSERT_TRUE(question.view);
    auto another = question.button("nextButton");
    auto finish = question.button("finishButton");
    EXPECT_FALSE(another->isCheckable()) << "two plain buttons, no toggles";
    EXPECT_FALSE(finish->isCheckable());
    another->click();
    finish->click();
    QTest::keyClick(question.view.get(), Qt::Key_Return);
    EXPECT_EQ(question.controller.names(),
              (QStringList{"doNextButton6", "doCloseApplication", "doNextButton6"}));
    EXPECT_EQ(question.controller.calls[1].sender, finish);
}

TEST(CustomView, SplitButtonVisibilityAndAutomaticSplit) {
    Panel recording("WXL_Tab3");
    ASSERT_TRUE(recording.view);
    auto split = recording.button("splitTracksButton");
    recording.view->setSplitButtonVisibility(false);
    EXPECT_TRUE(split->isHidden());
    EXPECT_FALSE(split->isEnabled());
    recording.view->setSplitButtonVisibility(true);
    EXPECT_FALSE(split->isHidden());
    EXPECT_TRUE(split->isEnabled());

    Panel ready("WXL_Tab2");
    EXPECT_FALSE(ready.view->getAutomaticallySplitTracks());
    ready.child<QCheckBox>("automaticallySplitTracks")->setChecked(true);
    EXPECT_TRUE(ready.view->getAutomaticallySplitTracks());
    ready.view->show();
    const QRect text = ready.child<QLabel>("autoSplitText")->geometry();
    QTest::mouseClick(ready.view.get(), Qt::LeftButton, {}, text.topLeft() + QPoint(5, 5));
    EXPECT_FALSE(ready.view->getAutomaticallySplitTracks()) << "a click on its text unticks it";
}

TEST(CustomView, MeteringReadsEachChannelsPeakIntoItsMeter) {
    Panel ready("WXL_Tab2");
    ASSERT_TRUE(ready.view);
    int leftReads = 0;
    int rightReads = 0;
    ready.view->setPeakReaders([&] { return ++leftReads, 1.0f; },
                               [&] { return ++rightReads, 0.5f; });
    std::unique_ptr<QTimer> timer = ready.view->startMetering();
    ASSERT_TRUE(timer);
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(timer->interval(), 67) << "1/15 s in whole milliseconds";
    EXPECT_EQ(leftReads, 1) << "fired once at once";
    EXPECT_EQ(rightReads, 1);
    auto left = ready.child<MeteringView>("_MeteringViewL");
    auto right = ready.child<MeteringView>("_MeteringViewR");
    EXPECT_EQ(left->numChannels(), 1);
    EXPECT_TRUE(left->hasClipIndicator());
    EXPECT_EQ(left->clipState(0), 1) << "full scale lights the left lamp";
    EXPECT_EQ(right->clipState(0), 0);
    EXPECT_NEAR(right->meterValue(0), 0.5 / 0.9999 * 212, 0.01)
        << "the panel's meters are 212 px tall";
    std::unique_ptr<QTimer> second = ready.view->startMetering();
    EXPECT_TRUE(timer->isActive()) << "the caller stops the first timer, not startMetering";
}

TEST(CustomView, DragKeepsOnlyTheTopEdgeOnTheScreen) {
    const QRect screen(0, 0, 1920, 1080);
    const QRect lowerScreen(0, 200, 1280, 800);
    struct Case {
        const char* what;
        QPointF mouse;
        QPointF offset;
        QRect screen;
        QPoint origin;
    };
    const Case cases[] = {
        {"inside", {500, 400}, {100, 50}, screen, {400, 350}},
        {"above the top stops at the top", {500, 20}, {100, 50}, screen, {400, 0}},
        {"far left is allowed", {-300, 400}, {100, 50}, screen, {-400, 350}},
        {"far right is allowed", {2500, 400}, {100, 50}, screen, {2400, 350}},
        {"far down is allowed", {500, 1500}, {100, 50}, screen, {400, 1450}},
        {"a screen that starts lower", {300, 210}, {10, 40}, lowerScreen, {290, 200}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(windowOriginForDrag(c.mouse, c.offset, c.screen), c.origin) << c.what;
}

TEST(CustomView, KeyboardReturnEscapeAndTabOrder) {
    struct Case {
        const char* nib;
        const char* onReturn;
        const char* onEscape;
    };
    const Case cases[] = {
        {"WXL_Tab1", "doNextButton1", nullptr},
        {"WXL_SelectDeviceTab", "doNextButtonSelectDevice", "doBackButtonSelectDevice"},
        {"WXL_Tab2", "doRecordButton", "doBackButton2"},
        // Esc never leaves a recording: Back is a click away, not a key.
        {"WXL_Tab3", "doNextButton3", nullptr},
        {"WXL_Tab7", "doNextButton7", "doBackButton7"},
        {"WXL_Tab10", "doNextButton10", "doBackButton10"},
    };
    for (const Case& c : cases) {
        CustomWindow window; // before the panel: the window is left with no child to delete
        Panel panel(c.nib);
        ASSERT_TRUE(panel.view) << c.nib;
        QWidget* focused = showFocused(window, panel);
        ASSERT_NE(focused, nullptr) << c.nib;
        QTest::keyClick(focused, Qt::Key_Return);
        QTest::keyClick(focused, Qt::Key_Escape);
        QStringList expected{QLatin1String(c.onReturn)};
        if (c.onEscape)
            expected << QLatin1String(c.onEscape);
        EXPECT_EQ(panel.controller.names(), expected) << c.nib;
        window.setContentView(nullptr);
    }

    CustomWindow window;
    Panel naming("WXL_Tab7");
    ASSERT_NE(showFocused(window, naming), nullptr);
    QStringList order;
    for (int i = 0; i < 20; ++i) {
        order << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QStringList expected{"artistField", "albumField"};
    for (int track = 1; track <= 10; ++track)
        expected << QStringLiteral("trackField%1").arg(track);
    expected << QString::fromLatin1(
                    "removeClicksAndHum keepLosslessCopy nextButton "
                    "backButton reviewButton findAlbumButton helpButton closeButton")
                    .split(QLatin1Char(' '));
    EXPECT_EQ(order, expected);
    QTest::keyClick(naming.child<QLineEdit>("trackField3"), Qt::Key_Return);
    EXPECT_EQ(naming.controller.names(), QStringList{"doNextButton7"})
        << "Return in a field presses Next";
    window.setContentView(nullptr);
}

// What a screen reader hears for each kind of control, in both languages: names without the
// mnemonic mark, the slider and the meters in decibels with the language's decimal comma.
TEST(CustomView, AssistiveToolsHearNamesAndValues) {
    struct Row {
        const char* language;
        const char* nib;
        const char* control;
        const char* name;
        const char* value; // empty: the control has no value
    };
    const Row rows[] = {
        {"en", "WXL_Tab7", "closeButton", "Close", ""},
        {"en", "WXL_Tab7", "nextButton", "Next", ""},
        {"de", "WXL_Tab7", "nextButton", "Weiter", ""},
        {"de", "WXL_Tab7", "reviewButton", "Trennstellen prüfen…", ""},
        {"en", "WXL_Tab7", "artistField", "Artist", ""},
        {"de", "WXL_Tab7", "trackField3", "Titelname 3.", ""},
        {"en", "WXL_Tab7", "trackField10", "Title 10.", ""},
        {"en", "WXL_Tab2", "automaticallySplitTracks", "New track at each gap", ""},
        {"en", "WXL_Tab2", "o_gainDbSlider", "Level", "+1.5 dB"},
        {"de", "WXL_Tab2", "o_gainDbSlider", "Pegel", "+1,5 dB"},
        {"en", "WXL_Tab2", "_MeteringViewL", "Left channel level", "-12.0 dB"},
        {"de", "WXL_Tab2", "_MeteringViewR", "Pegel rechter Kanal", "-12,0 dB"},
        {"en", "WXL_SelectDeviceTab", "selectDeviceReelRunner", "Cassette", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.language) + " " + row.nib + " " + row.control);
        installCatalogue(QLocale(QString::fromLatin1(row.language)));
        Panel panel(row.nib);
        ASSERT_TRUE(panel.view);
        panel.view->updateAccessibleNames();
        auto control = panel.child<QWidget>(row.control);
        ASSERT_NE(control, nullptr);
        // 150 hundredths of a decibel; a meter fed -12 dB on both bars.
        if (auto slider = qobject_cast<QSlider*>(control))
            slider->setValue(150);
        if (auto meter = qobject_cast<MeteringView*>(control)) {
            const float levels[2] = {-12.0f, -12.0f};
            meter->updateMeters(levels);
        }
        QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(control);
        ASSERT_NE(heard, nullptr);
        EXPECT_EQ(heard->text(QAccessible::Name), QString::fromUtf8(row.name));
        if (*row.value) {
            EXPECT_EQ(heard->text(QAccessible::Value), QString::fromUtf8(row.value));
            ASSERT_NE(heard->valueInterface(), nullptr);
            EXPECT_NEAR(heard->valueInterface()->currentValue().toDouble(),
                        QString::fromLatin1(row.value)
                            .split(QLatin1Char(' '))[0]
                            .replace(QLatin1Char(','), QLatin1Char('.'))
                            .toDouble(),
                        1e-9);
        }
    }
    installCatalogue(QLocale(QLocale::English));
}

// Every captioned button and every label naming a control carries a mnemonic, and no two on a
// panel share a letter, in either language.
TEST(CustomView, EveryPanelHasUniqueMnemonics) {
    for (const char* language : {"en", "de"}) {
        installCatalogue(QLocale(QString::fromLatin1(language)));
        for (unsigned number = 1; number <= 12; ++number) {
            const QString nib = nibNameForPanel(number);
            SCOPED_TRACE(std::string(language) + " " + nib.toStdString());
            Panel panel(nib.toLatin1().constData());
            ASSERT_TRUE(panel.view);
            std::map<QString, QString> owners;
            const auto labels = panel.view->findChildren<QLabel*>();
            for (const QLabel* label : labels) {
                if (!label->buddy() || !label->isVisibleTo(panel.view.get()))
                    continue;
                const QKeySequence key = QKeySequence::mnemonic(label->text());
                EXPECT_FALSE(key.isEmpty()) << qPrintable(label->text()) << " has no mnemonic";
                if (key.isEmpty())
                    continue;
                const QString letter = key.toString().toLower();
                EXPECT_EQ(owners.count(letter), 0u)
                    << qPrintable(label->text()) << " shares " << qPrintable(letter) << " with "
                    << qPrintable(owners[letter]);
                owners[letter] = label->text();
            }
        }
    }
    installCatalogue(QLocale(QLocale::English));
}

// Panel 5's one bar says which track is being saved, in the window's language.
TEST(CustomView, SavingProgressSaysWhichTrack) {
    struct Row {
        const char* language;
        int saved;
        int total;
        const char* title;
        const char* shown;
    };
    const Row rows[] = {
        {"en", 1, 5, "Blue in Green", "Saving track 2 of 5 \u2014 Blue in Green"},
        {"de", 0, 3, "So What", "Titel 1 von 3 wird gespeichert \u2014 So What"},
        {"en", 2, 4, "  ", "Saving track 3 of 4"},
        {"en", 0, 2, "100% Pure", "Saving track 1 of 2 \u2014 100% Pure"},
        {"en", 0, 2, "50%minus", "Saving track 1 of 2 \u2014 50%\u2060minus"},
        {"de", 4, 4, "", "4 von 4 Titeln gespeichert"},
    };
    for (const Row& row : rows) {
        installCatalogue(QLocale(QString::fromLatin1(row.language)));
        QProgressBar bar;
        showSavingProgress(bar, row.saved, row.total, QString::fromUtf8(row.title));
        EXPECT_EQ(bar.text(), QString::fromUtf8(row.shown)) << row.shown;
        EXPECT_EQ(bar.value(), row.saved);
        EXPECT_EQ(bar.maximum(), row.total);
    }
    installCatalogue(QLocale(QLocale::English));
}
