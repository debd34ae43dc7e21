#include "ui/widgets/WXTextView.h"

namespace waxline::ui {

WXTextView::WXTextView(QWidget* parent)
    : QLabel(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setFocusPolicy(Qt::NoFocus);
}

} // namespace waxline::ui
