#include "ui/panels/FormLoader.h"

#include "ui/panels/CustomView.h"
#include "ui/widgets/MeterScale.h"
#include "ui/widgets/MeteringView.h"
#include "ui/widgets/SKShapedButton.h"
#include "ui/widgets/WXTextView.h"

namespace waxline::ui {

FormLoader::FormLoader(QObject* parent)
    : QUiLoader(parent) {
    // Only our own widgets and Qt's: no designer plugins from the system.
    clearPluginPaths();
}

QWidget* FormLoader::createWidget(const QString& className, QWidget* parent, const QString& name) {
    QWidget* widget = nullptr;
    if (className == QLatin1String("CustomView"))
        widget = new CustomView(parent);
    else if (className == QLatin1String("MeteringView"))
        widget = new MeteringView(parent);
    else if (className == QLatin1String("MeterScale"))
        widget = new MeterScale(parent);
    else if (className == QLatin1String("SKShapedButton"))
        widget = new SKShapedButton(parent);
    else if (className == QLatin1String("WXTextView"))
        widget = new WXTextView(parent);
    else
        return QUiLoader::createWidget(className, parent, name);
    widget->setObjectName(name);
    return widget;
}

} // namespace waxline::ui
