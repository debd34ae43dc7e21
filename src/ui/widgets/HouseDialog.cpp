#include "ui/widgets/HouseDialog.h"

#include "ui/Catalogue.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace waxline::ui {

namespace {

// The panels' palette on plain widgets: walnut, cream, amber for the action, one focus colour.
constexpr const char* houseStyle = R"(
QDialog { background: #F4ECDD; }
QWidget#header { background: #3B2A20; }
QLabel { color: #2B1F17; font-size: 13px; }
QLabel#title { color: #F4ECDD; font-size: 20px; font-weight: bold; }
QPushButton { background: #FFFDF8; color: #2B1F17; border: 1px solid #B9A283; border-radius: 15px;
              padding: 4px 16px; font-size: 13px; min-height: 20px; }
QPushButton:hover { background: #FBF3E4; }
QPushButton:pressed { background: #E9DCC5; }
QPushButton:focus { border: 2px solid #2F8FA3; }
QPushButton:disabled { color: #A89886; border-color: #D8C8AE; }
QPushButton#primary { background: #D9892B; border-color: #A8641A; font-weight: bold; }
QPushButton#primary:hover { background: #E39A42; }
QPushButton#primary:focus { border: 2px solid #2F8FA3; }
QPushButton#primary:disabled { background: #E8CFA9; color: #8F7A62; border-color: #D8C8AE; }
)";

} // namespace

HouseDialog::HouseDialog(const QString& titleText, const QString& extraStyle, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(plainTextOf(titleText));
    QFont dialogFont = font();
    dialogFont.setFamilies(
        {QStringLiteral("DejaVu Sans"), QStringLiteral("Noto Sans"), QStringLiteral("Cantarell")});
    setFont(dialogFont);
    setStyleSheet(QString::fromLatin1(houseStyle) + extraStyle);

    auto outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    auto header = new QWidget(this);
    header->setObjectName(QStringLiteral("header"));
    header->setAttribute(Qt::WA_StyledBackground);
    header->setFixedHeight(64);
    headerRow = new QHBoxLayout(header);
    title = new QLabel(titleText, header);
    title->setObjectName(QStringLiteral("title"));
    headerRow->addWidget(title);
    outer->addWidget(header);

    bodyLayout = new QVBoxLayout;
    bodyLayout->setSpacing(8);
    outer->addLayout(bodyLayout, 1);
    setBodyMargins(24, 14, 18);
}

void HouseDialog::setBodyMargins(int side, int top, int bottom) {
    headerRow->setContentsMargins(side, 0, side, 0);
    bodyLayout->setContentsMargins(side, top, side, bottom);
}

} // namespace waxline::ui
