#include "ui/help/HelpDialog.h"

#include "ui/Catalogue.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace waxline::ui {

namespace {

// The panels' palette: a walnut header, the cream body, the page itself on paper.
constexpr const char* helpStyle = R"(
QTextBrowser { background: #FBF7EF; color: #1E1B19; border: 1px solid #E3D6BF; border-radius: 8px;
               padding: 4px; }
)";

} // namespace

HelpDialog::HelpDialog(QWidget* parent)
    : HouseDialog(textOrKey("IDS_HELP_TITLE"), QString::fromLatin1(helpStyle), parent) {
    resize(760, 620);
    auto body = this->body();
    setBodyMargins(24, 12, 16);
    body->setSpacing(10);

    notice = new QLabel(textOrKey("IDS_HELP_NO_BROWSER"), this);
    notice->setWordWrap(true);
    body->addWidget(notice);

    pageView = new QTextBrowser(this);
    // Links within the page move through it; links to the web go to whatever can open them.
    pageView->setOpenExternalLinks(true);
    pageView->setAccessibleName(plainTextOf(textOrKey("IDS_HELP_TITLE")));
    // The page's own style rules use what a text browser cannot read: the house colours for
    // its headings and links come from here.
    pageView->document()->setDefaultStyleSheet(QStringLiteral(
        "a { color: #2F8FA3; } h1, h2, h3, th { color: #3B2A20; } code { background: #EFE3CE; }"));
    body->addWidget(pageView, 1);

    auto buttons = new QHBoxLayout;
    buttons->addStretch(1);
    closeButton = new QPushButton(textOrKey("IDS_HELP_CLOSE"), this);
    closeButton->setObjectName(QStringLiteral("primary"));
    closeButton->setDefault(true);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::close);
    buttons->addWidget(closeButton);
    body->addLayout(buttons);
}

void HelpDialog::showPage(const QUrl& page) {
    pageView->setSource(page, QTextDocument::HtmlResource);
    pageView->scrollToAnchor(QString());
    pageView->setFocus();
}

} // namespace waxline::ui
