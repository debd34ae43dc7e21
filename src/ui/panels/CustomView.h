#pragma once

#include "ui/widgets/MeterScale.h"
#include "ui/widgets/Picture.h"

#include <QPointF>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

class QCheckBox;
class QLabel;
class QSlider;
class QTimer;

namespace waxline::ui {

class MeteringView;
class PanelController;
class SKShapedButton;

// One wizard panel: paints its background picture (which shapes the window), drags the
// window, forwards every button to the controller under the action's own name, keeps the
// radio pairs consistent and runs the level meters and the gain slider. Main thread only.
class CustomView : public QWidget {
    Q_OBJECT
public:
    // Reads and clears one channel's peak cell (full scale 1.0).
    using PeakReader = std::function<float()>;

    explicit CustomView(QWidget* parent = nullptr);
    ~CustomView() override;

    // After loading: finds the named controls of the form, then readies them.
    void connectOutlets();
    void awakeFromNib();

    void setBackgroundImage(const Picture& picture);
    Picture backgroundImage() const { return _viewImage; }
    void setController(PanelController* controller) { _controller = controller; }
    PanelController* controller() const { return _controller; }
    // The control carrying the dynamic property tag, or null.
    QWidget* viewWithTag(int tag) const;

    bool getSelectedDeviceIsTurtable() const;
    bool getSelectedTapeTypeIsChrome() const;
    bool getAutomaticallySplitTracks() const;
    // The naming panels' export choices for the run.
    bool getRemoveClicksAndHum() const;
    bool getKeepLosslessCopy() const;
    void setSplitButtonVisibility(bool flag);

    // Metering: the caller owns the returned repeating timer and deletes it to stop.
    void setPeakReaders(PeakReader left, PeakReader right);
    std::unique_ptr<QTimer> startMetering();
    void stopMetering();
    void updateChannelLevel();

    // Accessible names from the localised captions and labels; run after localising.
    void updateAccessibleNames();
    // The control a key press of that role ("default", "back") presses, if shown and enabled.
    SKShapedButton* buttonWithRole(const QString& role) const;
    QPointF dragInitialLocation() const { return _dragInitialLocation; }

public Q_SLOTS:
    void doCloseButton(QObject* sender);
    void showHelp(QObject* sender);
    void doNextButton1(QObject* sender);
    void doNextButtonSelectDevice(QObject* sender);
    void doBackButtonSelectDevice(QObject* sender);
    void doNextButtonSelectTape(QObject* sender);
    void doBackButtonSelectTape(QObject* sender);
    void doBackButton2(QObject* sender);
    void doRecordButton(QObject* sender);
    void doGainSlider(QObject* sender);
    void doBackButton3(QObject* sender);
    void doNextButton3(QObject* sender);
    void doNewTrackButton(QObject* sender);
    void doBackButton4(QObject* sender);
    void doNextButton4(QObject* sender);
    void doBackButton5(QObject* sender);
    void doNextButton5(QObject* sender);
    void doBackButton6(QObject* sender);
    void doNextButton6(QObject* sender);
    // Panel 6's Finish: the side is saved, the application ends.
    void doFinishButton6(QObject* sender);
    void doYesButton6(QObject* sender);
    void doNoButton6(QObject* sender);
    void doBackButton7(QObject* sender);
    void doNextButton7(QObject* sender);
    void doBackButton8(QObject* sender);
    void doNextButton8(QObject* sender);
    void doBackButton9(QObject* sender);
    void doNextButton9(QObject* sender);
    void doBackButton10(QObject* sender);
    void doNextButton10(QObject* sender);
    void doReviewSplits(QObject* sender);
    void doFindAlbum(QObject* sender);
    void doReturnToRecording(QObject* sender);
    void doRetryExport(QObject* sender);
    void doKeepForLater(QObject* sender);
    void doSelectDeviceOrbitDisc(QObject* sender);
    void doSelectDeviceReelRunner(QObject* sender);
    void doSelectTapeNormal(QObject* sender);
    void doSelectTapeChrome(QObject* sender);
    void updateLevelMeterTimer();

Q_SIGNALS:
    void backgroundImageChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void forward(void (PanelController::*action)(QObject*), QObject* sender);
    void wireAction(QObject* control);
    void invokeAction(const QString& action, QObject* sender);
    void renderIllustrations();

    Picture _viewImage;
    PanelController* _controller = nullptr;
    QPointF _dragInitialLocation;
    [[maybe_unused]] QObject* owner = nullptr;
    QPointer<SKShapedButton> _yesButton6;
    QPointer<SKShapedButton> _noButton6;
    QPointer<QSlider> o_gainDbSlider;
    QPointer<QLabel> o_gainValueText;
    QPointer<MeteringView> _MeteringViewL;
    QPointer<MeteringView> _MeteringViewR;
    QPointer<SKShapedButton> splitTracksButton;
    QPointer<SKShapedButton> selectDeviceOrbitDisc;
    QPointer<SKShapedButton> selectDeviceReelRunner;
    QPointer<QCheckBox> automaticallySplitTracks;
    QPointer<QCheckBox> removeClicksAndHum;
    QPointer<QCheckBox> keepLosslessCopy;
    QPointer<SKShapedButton> normalTapeButton;
    QPointer<SKShapedButton> chromeTapeButton;

    PeakReader peakLeft;
    PeakReader peakRight;
    // The figures under the meters hold a peak for about 1.5 s of 15 updates a second.
    QPointer<QLabel> peakTextL;
    QPointer<QLabel> peakTextR;
    PeakHold peakHoldL{22};
    PeakHold peakHoldR{22};
};

// Is this name an action a panel's control may carry ("doNextButton1:")?
bool isPanelAction(const QString& action);

} // namespace waxline::ui
