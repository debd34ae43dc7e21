#pragma once

#include <QLabel>

namespace waxline::ui {

// A caption that never takes a click: mouse events pass to the widget beneath it.
class WXTextView : public QLabel {
    Q_OBJECT
public:
    explicit WXTextView(QWidget* parent = nullptr);
};

} // namespace waxline::ui
