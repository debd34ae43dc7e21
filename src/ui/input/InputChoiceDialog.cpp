#include "ui/input/InputChoiceDialog.h"

#include "ui/Catalogue.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace waxline::ui {

namespace {

// The panels' palette: a walnut header, the cream body, amber for the action.
constexpr const char* inputChoiceStyle = R"(
QListWidget { background: #FFFDF8; color: #2B1F17; border: 1px solid #B9A283; border-radius: 8px;
              font-size: 13px; padding: 4px; }
QListWidget::item { padding: 5px 6px; }
QListWidget::item:selected { background: #E9C48F; color: #2B1F17; }
)";

} // namespace

InputChoiceDialog::InputChoiceDialog(const QStringList& inputNames, QWidget* parent)
    : HouseDialog(textOrKey("IDS_OTHER_INPUT_TITLE"), QString::fromLatin1(inputChoiceStyle),
                  parent) {
    setModal(true);
    // Room for the explanation's four lines and a handful of inputs without scrolling.
    setMinimumWidth(520);
    resize(560, 400);
    auto body = this->body();
    setBodyMargins(24, 14, 18);
    body->setSpacing(10);

    auto intro = new QLabel(textOrKey("IDS_OTHER_INPUT_TEXT"), this);
    intro->setWordWrap(true);
    intro->setTextFormat(Qt::RichText);
    body->addWidget(intro);

    auto listLabel = new QLabel(textOrKey("IDS_OTHER_INPUT_LIST"), this);
    body->addWidget(listLabel);
    list = new QListWidget(this);
    list->addItems(inputNames);
    list->setMinimumHeight(140);
    listLabel->setBuddy(list);
    list->setAccessibleName(
        plainTextOf(textOrKey("IDS_OTHER_INPUT_LIST")).remove(QLatin1Char('&')));
    body->addWidget(list, 1);

    auto buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addStretch(1);
    auto cancel = new QPushButton(textOrKey("IDS_OTHER_INPUT_CANCEL"), this);
    cancel->setAutoDefault(false);
    useButton = new QPushButton(textOrKey("IDS_OTHER_INPUT_USE"), this);
    useButton->setObjectName(QStringLiteral("primary"));
    useButton->setDefault(true);
    useButton->setEnabled(false);
    buttons->addWidget(cancel);
    buttons->addWidget(useButton);
    body->addLayout(buttons);

    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(useButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(list, &QListWidget::currentRowChanged, this,
            [this](int row) { useButton->setEnabled(row >= 0); });
    connect(list, &QListWidget::itemActivated, this, &QDialog::accept);
    // The first input is taken unless another is picked, so Return alone goes on.
    list->setCurrentRow(0);
    list->setFocus();
}

std::optional<int> InputChoiceDialog::chosenInput() const {
    const int row = list->currentRow();
    if (row < 0 || !list->currentItem() || !list->currentItem()->isSelected())
        return std::nullopt;
    return row;
}

std::optional<int> InputChoiceDialog::choose(const QStringList& inputNames, QWidget* parent) {
    InputChoiceDialog dialog(inputNames, parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.chosenInput();
}

} // namespace waxline::ui
