#pragma once

#include "ui/widgets/HouseDialog.h"

#include <QDialog>
#include <QUrl>

class QLabel;
class QPushButton;
class QTextBrowser;

namespace waxline::ui {

// The help page inside the application, for a desktop where no browser opens it: the panels'
// walnut header and cream body around a text browser. Not modal, so the wizard stays usable
// beside it.
class HelpDialog : public HouseDialog {
    Q_OBJECT
public:
    explicit HelpDialog(QWidget* parent = nullptr);

    // Shows the page `page` (a local HTML file) from its top.
    void showPage(const QUrl& page);

    QTextBrowser* browser() const { return pageView; }

private:
    QLabel* notice = nullptr;
    QTextBrowser* pageView = nullptr;
    QPushButton* closeButton = nullptr;
};

} // namespace waxline::ui
