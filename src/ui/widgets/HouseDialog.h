#pragma once

#include <QDialog>

class QHBoxLayout;
class QLabel;
class QVBoxLayout;
class QWidget;

namespace waxline::ui {

// The shell every window of ours beside the panels shares: a walnut header carrying the title,
// the cream body below it, the panels' fonts and pill buttons. Subclasses fill `body()` and add
// their own style rules; a button named "primary" is the amber one.
class HouseDialog : public QDialog {
    Q_OBJECT
public:
    // `title` is the catalogue's text (rich or plain) shown in the header and as window title.
    HouseDialog(const QString& title, const QString& extraStyle, QWidget* parent = nullptr);

protected:
    QVBoxLayout* body() const { return bodyLayout; }
    QLabel* titleLabel() const { return title; }
    // The body's margins; the title keeps in line with the body's left edge.
    void setBodyMargins(int side, int top, int bottom);

private:
    QLabel* title = nullptr;
    QVBoxLayout* bodyLayout = nullptr;
    QHBoxLayout* headerRow = nullptr;
};

} // namespace waxline::ui
