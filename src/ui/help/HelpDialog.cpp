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
QDialog { background: #F4ECDD; }
QWidget#header { background: #3B2A20; }
QLabel { color: #2B1F17; font-size: 13px; }
QLabel#title { color: #F4ECDD; font-size: 20px; font-weight: bold; }
QTextBrowser { background: #FBF7EF; color: #1E1B19; border: 1px solid #E3D6BF; border-radius: 8px;
               padding: 4px; }
QPushButton { background: #D9892B; color: #2B1F17; border: 1px solid #A8641A; border-radius: 15px;
              padding: 5px 22px; min-height: 20px; font-weight: bold; }
QPushButton:hover { background: #E39A42; }
QPushButton:focus { border: 2px solid #2F8FA3; }
)";

} // namespace

HelpDialog::HelpDialog(QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(plainTextOf(textOrKey("IDS_HELP_TITLE")));
    QFont dialogFont = font();
    dialogFont.setFamilies(
        {QStringLiteral("DejaVu Sans"), QStringLiteral("Noto Sans"), QStringLiteral("Cantarell")});
    setFont(dialogFont);
    setStyleSheet(QString::fromLatin1(helpStyle));
    resize(760, 620);

    auto outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    auto header = new QWidget(this);
    header->setObjectName(QStringLiteral("header"));
    header->setAttribute(Qt::WA_StyledBackground);
    header->setFixedHeight(64);
    auto headerRow = new QHBoxLayout(header);
    headerRow->setContentsMargins(32, 0, 32, 0);
    title = new QLabel(textOrKey("IDS_HELP_TITLE"), header);
    title->setObjectName(QStringLiteral("title"));
    headerRow->addWidget(title);
    outer->addWidget(header);

    auto body = new QVBoxLayout;
    body->setContentsMargins(24, 12, 24, 16);
    body->setSpacing(10);
    outer->addLayout(body);

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
