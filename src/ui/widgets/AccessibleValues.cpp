#include "ui/widgets/AccessibleValues.h"

#include "ui/Catalogue.h"
#include "ui/widgets/MeteringView.h"

#include <QAccessibleWidget>
#include <QSlider>

#include <algorithm>
#include <cmath>

namespace waxline::ui {

namespace {

QString withUnit(double db) {
    const QString unit = localizedKey(QStringLiteral("IDS_GAIN_UNIT"));
    return formatDecibels(db) + QLatin1Char(' ') + (unit.isNull() ? QStringLiteral("dB") : unit);
}

// A widget whose value is a level or gain in dB, read with its unit.
class DecibelAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    DecibelAccessible(QWidget* widget, QAccessible::Role role)
        : QAccessibleWidget(widget, role) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text t) const override {
        if (t == QAccessible::Value)
            return withUnit(currentValue().toDouble());
        return QAccessibleWidget::text(t);
    }
};

// A slider that counts in steps of a unit (hundredths of a decibel) reported in the unit.
class ScaledSliderAccessible : public DecibelAccessible {
public:
    explicit ScaledSliderAccessible(QSlider* slider)
        : DecibelAccessible(slider, QAccessible::Slider) {}

    QVariant currentValue() const override { return scaled(slider()->value()); }
    void setCurrentValue(const QVariant& value) override {
        slider()->setValue(int(std::lround(value.toDouble() / scale())));
    }
    QVariant maximumValue() const override { return scaled(slider()->maximum()); }
    QVariant minimumValue() const override { return scaled(slider()->minimum()); }
    QVariant minimumStepSize() const override { return scaled(slider()->singleStep()); }

private:
    QSlider* slider() const { return static_cast<QSlider*>(widget()); }
    double scale() const { return slider()->property("accessibleScale").toDouble(); }
    double scaled(int steps) const { return steps * scale(); }
};

// A meter reads as a level bar whose value is the last level in dB.
class MeterAccessible : public DecibelAccessible {
public:
    explicit MeterAccessible(MeteringView* meter)
        : DecibelAccessible(meter, QAccessible::ProgressBar) {}

    QVariant currentValue() const override { return level(); }
    // A meter shows; nobody sets it.
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return meter()->maxDB(); }
    QVariant minimumValue() const override { return floorDb(); }
    QVariant minimumStepSize() const override { return 0.1; }

private:
    MeteringView* meter() const { return static_cast<MeteringView*>(widget()); }
    // Silence reads as the bottom of the scale, not as minus infinity.
    double floorDb() const {
        const double db = meter()->minDB();
        return std::isfinite(db) ? db : -96.0;
    }
    double level() const { return std::max(meter()->levelDb(), floorDb()); }
};

} // namespace

QAccessibleInterface* accessibleValueFactory(const QString& className, QObject* object) {
    if (className == QLatin1String("QSlider") && object->property("accessibleScale").isValid())
        return new ScaledSliderAccessible(static_cast<QSlider*>(object));
    if (className == QLatin1String("waxline::ui::MeteringView"))
        return new MeterAccessible(static_cast<MeteringView*>(object));
    return nullptr;
}

void installAccessibleValues() {
    static bool installed = false;
    if (installed)
        return;
    QAccessible::installFactory(accessibleValueFactory);
    installed = true;
}

} // namespace waxline::ui
