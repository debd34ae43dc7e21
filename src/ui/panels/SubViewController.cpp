#include "ui/panels/SubViewController.h"

#include "ui/panels/CustomView.h"
#include "ui/panels/FormLoader.h"
#include "ui/widgets/SKShapedButton.h"

#include <QFile>

namespace waxline::ui {

SubViewController::SubViewController(const QString& nibName, PanelController* owner)
    : _owner(owner) {
    QFile form(QStringLiteral(":/waxline/forms/%1.ui").arg(nibName));
    if (!form.open(QIODevice::ReadOnly)) {
        qWarning("no form named %s", qPrintable(nibName));
        return;
    }
    FormLoader loader;
    QWidget* loaded = loader.load(&form);
    auto view = qobject_cast<CustomView*>(loaded);
    if (!view) {
        qWarning("form %s did not load as a CustomView: %s", qPrintable(nibName),
                 qPrintable(loader.errorString()));
        delete loaded;
        return;
    }
    view_.reset(view);
    view->connectOutlets();
    const auto buttons = view->findChildren<SKShapedButton*>();
    for (SKShapedButton* button : buttons)
        button->awakeFromNib();
    view->awakeFromNib();
}

SubViewController::~SubViewController() = default;

} // namespace waxline::ui
