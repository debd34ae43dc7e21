#pragma once

#include <QUiLoader>

namespace waxline::ui {

// Loads the panel forms, creating the custom widgets (CustomView, MeteringView,
// SKShapedButton, WXTextView) by the class names the forms give them.
class FormLoader : public QUiLoader {
    Q_OBJECT
public:
    explicit FormLoader(QObject* parent = nullptr);
    QWidget* createWidget(const QString& className, QWidget* parent = nullptr,
                          const QString& name = QString()) override;
};

} // namespace waxline::ui
