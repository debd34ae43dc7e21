#include "ui/widgets/CenterTextField.h"

#include <QWidget>

namespace waxline::ui {

void CenterTextField(QWidget* field) {
    if (!field)
        return;
    const QRect old = field->geometry();
    field->adjustSize();
    const QSize fitted = field->size();
    // new origin = old origin + (old size - new size) / 2, per axis
    const QPointF origin =
        QPointF(old.topLeft()) +
        QPointF(old.width() - fitted.width(), old.height() - fitted.height()) * 0.5;
    field->setGeometry(QRect(origin.toPoint(), fitted));
}

} // namespace waxline::ui
