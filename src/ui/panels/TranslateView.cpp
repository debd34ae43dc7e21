#include "ui/panels/TranslateView.h"

#include "ui/Catalogue.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace waxline::ui {

void TranslateView(QWidget* view) {
    if (!view)
        return;
    const auto children = view->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    for (QWidget* child : children) {
        if (auto label = qobject_cast<QLabel*>(child)) {
            if (label->text().startsWith(QLatin1String("IDS_"))) {
                const QString value = localizedKey(label->text());
                if (!value.isNull())
                    label->setText(value);
            }
        } else if (auto button = qobject_cast<QPushButton*>(child)) {
            // A plain push button shows plain text only.
            if (button->text().startsWith(QLatin1String("IDS_"))) {
                const QString value = localizedKey(button->text());
                if (!value.isNull())
                    button->setText(plainTextOf(value));
            }
        } else if (auto field = qobject_cast<QLineEdit*>(child)) {
            if (field->text().startsWith(QLatin1String("IDS_"))) {
                const QString value = localizedKey(field->text());
                if (!value.isNull())
                    field->setText(plainTextOf(value));
            }
        } else {
            TranslateView(child);
        }
    }
}

} // namespace waxline::ui
