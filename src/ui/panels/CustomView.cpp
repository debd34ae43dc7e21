#include "ui/panels/CustomView.h"

#include "ui/Catalogue.h"
#include "ui/PanelController.h"
#include "ui/widgets/AccessibleValues.h"
#include "ui/widgets/MeteringView.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/widgets/WXTextView.h"
#include "ui/window/CustomWindow.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMetaMethod>
#include <QPainter>
#include <QScreen>
#include <QSlider>
#include <QTimer>
#include <QWindow>

#include <chrono>
#include <cmath>
#include <cstdio>

namespace waxline::ui {

namespace {

// Off unless asked for (QT_LOGGING_RULES="waxline.ui.panels.debug=true").
Q_LOGGING_CATEGORY(panelLog, "waxline.ui.panels", QtWarningMsg)

// One look for every panel: walnut header, cream body, amber accents.
const char* const panelStyle = R"(
QLabel { color: #2B1F17; font-size: 13px; }
QLabel[textStyle="title"] { color: #F4ECDD; font-size: 20px; font-weight: bold; }
QLabel[textStyle="label"] { font-size: 13px; font-weight: bold; }
QLabel[textStyle="number"] { font-size: 13px; color: #6B5646; }
QLabel[textStyle="value"] { font-size: 26px; font-weight: bold; color: #3B2A20; }
QLabel[textStyle="hint"] { font-size: 11px; color: #5E4A3B; }
QLabel[textStyle="notice"] { font-size: 12px; color: #8A3A22; }
QLabel[textStyle="card"] { font-size: 13px; font-weight: bold; color: #2B1F17; }
QLabel[textStyle="meter"] { font-size: 12px; font-weight: bold; color: #3B2A20; }
QLabel[textStyle="peak"] { font-size: 11px; font-weight: bold; color: #3B2A20; }
QLabel#caption { font-size: 14px; font-weight: bold; color: #2B1F17; }
*#findAlbumButton > QLabel#caption { font-size: 12px; }
*[image="btn_WideDefault"] > QLabel#caption { color: #2B1F17; }
*[image="btn_Record"] > QLabel#caption, *[image="btn_Stop"] > QLabel#caption { color: #FFF7EC; }
QLineEdit { background: #FFFDF8; color: #1E1B19; border: 1px solid #B9A283; border-radius: 6px;
            padding: 1px 6px; font-size: 13px; selection-background-color: #2F8FA3; }
QLineEdit:focus { border: 2px solid #2F8FA3; }
QProgressBar { background: #FFFDF8; border: 1px solid #B9A283; border-radius: 6px;
               color: #2B1F17; font-size: 11px; text-align: center; }
QProgressBar::chunk { background: #D9892B; border-radius: 5px; }
QSlider::groove:horizontal { height: 6px; background: #D8C8AE; border-radius: 3px; }
QSlider::sub-page:horizontal { background: #D9892B; border-radius: 3px; }
QSlider::handle:horizontal { width: 18px; height: 18px; margin: -7px 0; border-radius: 9px;
                             background: #3B2A20; border: 2px solid #F4ECDD; }
QSlider::handle:horizontal:focus { border: 2px solid #2F8FA3; }
QCheckBox::indicator { width: 18px; height: 18px; border: 1px solid #8C7358; border-radius: 4px;
                       background: #FFFDF8; }
QCheckBox::indicator:checked { background: #D9892B; border: 1px solid #3B2A20;
                               image: url(:/waxline/artwork/box_Tick.svg); }
QCheckBox::indicator:focus { border: 2px solid #2F8FA3; }
)";

// The meters tick 15 times a second; QTimer counts whole milliseconds.
constexpr std::chrono::milliseconds meterInterval{67};

const char* const knownActions[] = {
    "doCloseButton:",
    "showHelp:",
    "doNextButton1:",
    "doNextButtonSelectDevice:",
    "doBackButtonSelectDevice:",
    "doNextButtonSelectTape:",
    "doBackButtonSelectTape:",
    "doBackButton2:",
    "doRecordButton:",
    "doGainSlider:",
    "doBackButton3:",
    "doNextButton3:",
    "doNewTrackButton:",
    "doBackButton4:",
    "doNextButton4:",
    "doBackButton5:",
    "doNextButton5:",
    "doBackButton6:",
    "doNextButton6:",
    "doYesButton6:",
    "doNoButton6:",
    "doFinishButton6:",
    "doBackButton7:",
    "doNextButton7:",
    "doBackButton8:",
    "doNextButton8:",
    "doBackButton9:",
    "doNextButton9:",
    "doBackButton10:",
    "doNextButton10:",
    "doReviewSplits:",
    "doFindAlbum:",
    "doReturnToRecording:",
    "doRetryExport:",
    "doKeepForLater:",
    "doSelectDeviceOrbitDisc:",
    "doSelectDeviceReelRunner:",
    "doSelectTapeNormal:",
    "doSelectTapeChrome:",
};

void setOn(SKShapedButton* button, bool on) {
    if (button)
        button->setChecked(on);
}

void enableIf(QWidget* widget, bool enabled) {
    if (widget)
        widget->setEnabled(enabled);
}

// The text of the label that names a control (its buddy), as a screen reader should say it.
QString buddyText(const QWidget* view, const QWidget* control) {
    const auto labels = view->findChildren<QLabel*>();
    for (const QLabel* label : labels)
        if (label->buddy() == control)
            return withoutMnemonic(plainTextOf(label->text()));
    return {};
}

} // namespace

bool isPanelAction(const QString& action) {
    for (const char* known : knownActions)
        if (action == QLatin1String(known))
            return true;
    return false;
}

CustomView::CustomView(QWidget* parent)
    : QWidget(parent) {
    QFont panelFont = font();
    panelFont.setFamilies(
        {QStringLiteral("DejaVu Sans"), QStringLiteral("Noto Sans"), QStringLiteral("Cantarell")});
    setFont(panelFont);
    setStyleSheet(QString::fromLatin1(panelStyle));
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::ClickFocus);
    installAccessibleValues();
}

CustomView::~CustomView() = default;

void CustomView::connectOutlets() {
    _yesButton6 = findChild<SKShapedButton*>(QStringLiteral("_yesButton6"));
    _noButton6 = findChild<SKShapedButton*>(QStringLiteral("_noButton6"));
    o_gainDbSlider = findChild<QSlider*>(QStringLiteral("o_gainDbSlider"));
    o_gainValueText = findChild<QLabel*>(QStringLiteral("o_gainValueText"));
    _MeteringViewL = findChild<MeteringView*>(QStringLiteral("_MeteringViewL"));
    _MeteringViewR = findChild<MeteringView*>(QStringLiteral("_MeteringViewR"));
    peakTextL = findChild<QLabel*>(QStringLiteral("meterPeakLeft"));
    peakTextR = findChild<QLabel*>(QStringLiteral("meterPeakRight"));
    if (auto scale = findChild<MeterScale*>(QStringLiteral("meterScale")))
        scale->setMeter(_MeteringViewL);
    splitTracksButton = findChild<SKShapedButton*>(QStringLiteral("splitTracksButton"));
    selectDeviceOrbitDisc = findChild<SKShapedButton*>(QStringLiteral("selectDeviceOrbitDisc"));
    selectDeviceReelRunner = findChild<SKShapedButton*>(QStringLiteral("selectDeviceReelRunner"));
    automaticallySplitTracks = findChild<QCheckBox*>(QStringLiteral("automaticallySplitTracks"));
    removeClicksAndHum = findChild<QCheckBox*>(QStringLiteral("removeClicksAndHum"));
    keepLosslessCopy = findChild<QCheckBox*>(QStringLiteral("keepLosslessCopy"));
    normalTapeButton = findChild<SKShapedButton*>(QStringLiteral("normalTapeButton"));
    chromeTapeButton = findChild<SKShapedButton*>(QStringLiteral("chromeTapeButton"));
}

void CustomView::awakeFromNib() {
    if (o_gainDbSlider && o_gainValueText)
        o_gainValueText->setText(formatDecibels(o_gainDbSlider->value() / 100.0));
    update();
    for (MeteringView* meter : {_MeteringViewL.data(), _MeteringViewR.data()}) {
        if (meter) {
            meter->setNumChannels(1);
            meter->setHasClipIndicator(true);
        }
    }
    setOn(_yesButton6, true);
    enableIf(_yesButton6, false);
    setOn(_noButton6, false);
    enableIf(_noButton6, true);
    setOn(selectDeviceOrbitDisc, true);
    setOn(selectDeviceReelRunner, false);
    setOn(normalTapeButton, true);
    setOn(chromeTapeButton, false);

    // Static texts never take clicks: a press on a text drags the window, one on a card's
    // caption reaches the card beneath it.
    const auto labels = findChildren<QLabel*>();
    for (QLabel* label : labels)
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
    const auto controls = findChildren<QWidget*>();
    for (QWidget* control : controls)
        wireAction(control);
}

void CustomView::wireAction(QObject* control) {
    const QString action = control->property("action").toString();
    if (action.isEmpty())
        return;
    if (!isPanelAction(action)) {
        qWarning("%s: unknown action %s", qPrintable(control->objectName()), qPrintable(action));
        return;
    }
    if (auto button = qobject_cast<QAbstractButton*>(control))
        connect(button, &QAbstractButton::clicked, this,
                [this, action, button] { invokeAction(action, button); });
    else if (auto slider = qobject_cast<QSlider*>(control))
        connect(slider, &QSlider::valueChanged, this,
                [this, action, slider] { invokeAction(action, slider); });
}

void CustomView::invokeAction(const QString& action, QObject* sender) {
    const QByteArray method = action.chopped(1).toLatin1();
    QMetaObject::invokeMethod(this, method.constData(), Qt::DirectConnection,
                              Q_ARG(QObject*, sender));
}

void CustomView::setBackgroundImage(const Picture& picture) {
    qCDebug(panelLog, "%s(%s)", "setBackgroundImage:", qPrintable(picture.name()));
    _viewImage = picture;
    update();
    emit backgroundImageChanged();
}

QWidget* CustomView::viewWithTag(int tag) const {
    const auto controls = findChildren<QWidget*>();
    for (QWidget* control : controls) {
        const QVariant value = control->property("tag");
        if (value.isValid() && value.toInt() == tag)
            return control;
    }
    return nullptr;
}

void CustomView::paintEvent(QPaintEvent*) {
    if (_viewImage.isNull()) {
        std::fputs("drawRect (_viewImage == NULL)\n", stderr);
        return;
    }
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(QPointF(0, 0), _viewImage.image(devicePixelRatioF()));
}

void CustomView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    renderIllustrations();
    updateAccessibleNames();
    if (auto shaped = qobject_cast<CustomWindow*>(window()))
        shaped->updateShape();
}

void CustomView::renderIllustrations() {
    const qreal dpr = devicePixelRatioF();
    const auto labels = findChildren<QLabel*>();
    for (QLabel* label : labels) {
        const QString name = label->property("artwork").toString();
        if (name.isEmpty())
            continue;
        const Picture picture = Picture::named(name);
        if (picture.isNull()) {
            qWarning("no artwork named %s", qPrintable(name));
            continue;
        }
        label->setPixmap(QPixmap::fromImage(picture.image(dpr)));
    }
}

void CustomView::updateAccessibleNames() {
    const auto buttons = findChildren<SKShapedButton*>();
    for (SKShapedButton* button : buttons) {
        const QString key = button->property("accessibleKey").toString();
        QString name = key.isEmpty() ? QString() : withoutMnemonic(plainTextOf(localizedKey(key)));
        if (name.isEmpty() && button->caption())
            name = withoutMnemonic(plainTextOf(button->caption()->text()));
        button->setAccessibleName(name);
    }
    const auto controls = findChildren<QWidget*>();
    for (QWidget* control : controls) {
        if (!qobject_cast<QLineEdit*>(control) && !qobject_cast<QCheckBox*>(control) &&
            !qobject_cast<QSlider*>(control) && !qobject_cast<MeteringView*>(control))
            continue;
        const QString key = control->property("accessibleKey").toString();
        QString name = key.isEmpty() ? QString() : withoutMnemonic(plainTextOf(localizedKey(key)));
        const QString buddy = buddyText(this, control);
        if (!buddy.isEmpty())
            name = name.isEmpty() ? buddy : name + QLatin1Char(' ') + buddy;
        control->setAccessibleName(name);
    }
}

SKShapedButton* CustomView::buttonWithRole(const QString& role) const {
    const auto buttons = findChildren<SKShapedButton*>();
    for (SKShapedButton* button : buttons)
        if (button->property("role").toString() == role && button->isVisibleTo(this) &&
            button->isEnabled())
            return button;
    return nullptr;
}

void CustomView::keyPressEvent(QKeyEvent* event) {
    QString role;
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        role = QStringLiteral("default");
    else if (event->key() == Qt::Key_Escape)
        role = QStringLiteral("back");
    if (SKShapedButton* button = role.isEmpty() ? nullptr : buttonWithRole(role)) {
        button->click();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void CustomView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    // A check box's text is its label beside it: a click there ticks the box.
    const auto labels = findChildren<QLabel*>();
    for (QLabel* label : labels) {
        auto box = qobject_cast<QCheckBox*>(label->buddy());
        if (box && box->isEnabled() && label->isVisible() &&
            label->geometry().contains(
                label->parentWidget()->mapFrom(this, event->position().toPoint()))) {
            box->click();
            event->accept();
            return;
        }
    }
    QWidget* shell = window();
    _dragInitialLocation = event->globalPosition() - QPointF(shell->pos());
    // A Wayland client cannot place its own window: the compositor moves it.
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")) &&
        shell->windowHandle())
        shell->windowHandle()->startSystemMove();
    event->accept();
}

void CustomView::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton))
        return;
    QWidget* shell = window();
    if (shell == this || QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return;
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect screenFrame = screen ? screen->geometry() : QRect();
    shell->move(windowOriginForDrag(event->globalPosition(), _dragInitialLocation, screenFrame));
    event->accept();
}

bool CustomView::getSelectedDeviceIsTurtable() const {
    return selectDeviceOrbitDisc && selectDeviceOrbitDisc->isChecked();
}

bool CustomView::getSelectedTapeTypeIsChrome() const {
    // Asks the normal button on purpose: chrome is "not normal".
    return normalTapeButton && !normalTapeButton->isChecked();
}

bool CustomView::getAutomaticallySplitTracks() const {
    return automaticallySplitTracks && automaticallySplitTracks->isChecked();
}

bool CustomView::getRemoveClicksAndHum() const {
    return removeClicksAndHum && removeClicksAndHum->isChecked();
}

bool CustomView::getKeepLosslessCopy() const {
    return keepLosslessCopy && keepLosslessCopy->isChecked();
}

void CustomView::setSplitButtonVisibility(bool flag) {
    if (!splitTracksButton)
        return;
    splitTracksButton->setHidden(!flag);
    splitTracksButton->setEnabled(flag);
}

void CustomView::setPeakReaders(PeakReader left, PeakReader right) {
    peakLeft = std::move(left);
    peakRight = std::move(right);
}

std::unique_ptr<QTimer> CustomView::startMetering() {
    stopMetering();
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(meterInterval);
    connect(timer.get(), &QTimer::timeout, this, &CustomView::updateLevelMeterTimer);
    timer->start();
    updateLevelMeterTimer();
    return timer;
}

void CustomView::stopMetering() {
    if (_MeteringViewL)
        _MeteringViewL->update();
    if (_MeteringViewR)
        _MeteringViewR->update();
}

void CustomView::updateLevelMeterTimer() {
    updateChannelLevel();
}

void CustomView::updateChannelLevel() {
    auto feed = [](MeteringView* meter, const PeakReader& read, PeakHold& hold, QLabel* figure) {
        if (!read)
            return;
        const float db = float(20.0 * std::log10(double(read())));
        const float values[2] = {db, db};
        if (meter)
            meter->updateMeters(values);
        const double held = hold.update(double(db));
        if (figure)
            figure->setText(formatPeak(held));
    };
    feed(_MeteringViewL, peakLeft, peakHoldL, peakTextL);
    feed(_MeteringViewR, peakRight, peakHoldR, peakTextR);
}

void CustomView::forward(void (PanelController::*action)(QObject*), QObject* sender) {
    if (_controller)
        (_controller->*action)(sender);
}

void CustomView::doCloseButton(QObject* sender) {
    forward(&PanelController::doCloseButton, sender);
}
void CustomView::showHelp(QObject* sender) {
    forward(&PanelController::showHelp, sender);
}
void CustomView::doNextButton1(QObject* sender) {
    forward(&PanelController::doNextButton1, sender);
}
void CustomView::doNextButtonSelectDevice(QObject* sender) {
    forward(&PanelController::doNextButtonSelectDevice, sender);
}
void CustomView::doBackButtonSelectDevice(QObject* sender) {
    forward(&PanelController::doBackButtonSelectDevice, sender);
}
void CustomView::doNextButtonSelectTape(QObject* sender) {
    forward(&PanelController::doNextButtonSelectTape, sender);
}
void CustomView::doBackButtonSelectTape(QObject* sender) {
    forward(&PanelController::doBackButtonSelectTape, sender);
}
void CustomView::doBackButton2(QObject* sender) {
    forward(&PanelController::doBackButton2, sender);
}
void CustomView::doBackButton3(QObject* sender) {
    forward(&PanelController::doBackButton3, sender);
}
void CustomView::doNextButton3(QObject* sender) {
    forward(&PanelController::doNextButton3, sender);
}
void CustomView::doNewTrackButton(QObject* sender) {
    forward(&PanelController::doNewTrackButton, sender);
}
void CustomView::doBackButton4(QObject* sender) {
    forward(&PanelController::doBackButton4, sender);
}
void CustomView::doNextButton4(QObject* sender) {
    forward(&PanelController::doNextButton4, sender);
}
void CustomView::doBackButton5(QObject* sender) {
    forward(&PanelController::doBackButton5, sender);
}
void CustomView::doNextButton5(QObject* sender) {
    forward(&PanelController::doNextButton5, sender);
}
void CustomView::doBackButton6(QObject* sender) {
    forward(&PanelController::doBackButton6, sender);
}
void CustomView::doBackButton7(QObject* sender) {
    forward(&PanelController::doBackButton7, sender);
}
void CustomView::doNextButton7(QObject* sender) {
    forward(&PanelController::doNextButton7, sender);
}
void CustomView::doBackButton8(QObject* sender) {
    forward(&PanelController::doBackButton8, sender);
}
void CustomView::doNextButton8(QObject* sender) {
    forward(&PanelController::doNextButton8, sender);
}
void CustomView::doBackButton9(QObject* sender) {
    forward(&PanelController::doBackButton9, sender);
}
void CustomView::doNextButton9(QObject* sender) {
    forward(&PanelController::doNextButton9, sender);
}
void CustomView::doBackButton10(QObject* sender) {
    forward(&PanelController::doBackButton10, sender);
}
void CustomView::doNextButton10(QObject* sender) {
    forward(&PanelController::doNextButton10, sender);
}

void CustomView::doReviewSplits(QObject* sender) {
    forward(&PanelController::doReviewSplits, sender);
}
void CustomView::doFindAlbum(QObject* sender) {
    forward(&PanelController::doFindAlbum, sender);
}
void CustomView::doReturnToRecording(QObject* sender) {
    forward(&PanelController::doReturnToRecording, sender);
}
void CustomView::doRetryExport(QObject* sender) {
    forward(&PanelController::doRetryExport, sender);
}
void CustomView::doKeepForLater(QObject* sender) {
    forward(&PanelController::doKeepForLater, sender);
}

void CustomView::doNextButton6(QObject* sender) {
    if (_noButton6 && _noButton6->isChecked())
        forward(&PanelController::doCloseApplication, sender);
    else
        forward(&PanelController::doNextButton6, sender);
}

void CustomView::doFinishButton6(QObject* sender) {
    forward(&PanelController::doCloseApplication, sender);
}

void CustomView::doRecordButton(QObject*) {
    if (_controller)
        _controller->doRecordButton(this, false, false);
}

void CustomView::doGainSlider(QObject* sender) {
    auto slider = qobject_cast<QSlider*>(sender);
    if (!slider)
        slider = o_gainDbSlider;
    if (!slider)
        return;
    // The slider counts hundredths of a decibel; the gain is rounded to a tenth.
    const double value = std::floor(slider->value() / 100.0 * 10.0 + 0.5) / 10.0;
    if (o_gainValueText)
        o_gainValueText->setText(formatDecibels(value));
    if (_controller)
        _controller->setRecordingGainDb(float(value));
}

void CustomView::doYesButton6(QObject*) {
    setOn(_yesButton6, true);
    enableIf(_yesButton6, false);
    setOn(_noButton6, false);
    enableIf(_noButton6, true);
}

void CustomView::doNoButton6(QObject*) {
    setOn(_noButton6, true);
    enableIf(_noButton6, false);
    setOn(_yesButton6, false);
    enableIf(_yesButton6, true);
}

void CustomView::doSelectDeviceOrbitDisc(QObject*) {
    setOn(selectDeviceOrbitDisc, true);
    setOn(selectDeviceReelRunner, false);
}

void CustomView::doSelectDeviceReelRunner(QObject*) {
    setOn(selectDeviceReelRunner, true);
    setOn(selectDeviceOrbitDisc, false);
}

void CustomView::doSelectTapeNormal(QObject*) {
    setOn(normalTapeButton, true);
    setOn(chromeTapeButton, false);
}

void CustomView::doSelectTapeChrome(QObject*) {
    setOn(chromeTapeButton, true);
    setOn(normalTapeButton, false);
}

} // namespace waxline::ui
