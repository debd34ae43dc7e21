#include "ui/lookup/FindAlbumDialog.h"

#include "ui/Catalogue.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace waxline::ui {

namespace {

// The review dialog's palette: a walnut header, the cream body, amber for the action.
const char* const findAlbumStyle = R"(
QLabel#status { color: #5A4636; font-size: 12px; }
QLabel#cover { background: #E9DCC5; border: 1px solid #D8C8AE; }
QLineEdit { background: #FFFDF8; border: 1px solid #B9A283; border-radius: 4px; padding: 2px 6px;
            font-size: 13px; min-height: 22px; }
QListWidget { background: #FFFDF8; border: 1px solid #B9A283; font-size: 12px; }
QListWidget::item { padding: 4px; color: #2B1F17; }
QListWidget::item:selected { background: #F0D7AE; color: #2B1F17; }
)";

constexpr int kThumbnail = 56;

QString rowText(const AlbumCandidate& c) {
    QString text = c.title + '\n' + c.details;
    if (!c.fit.isEmpty())
        text += '\n' + c.fit;
    return text;
}

QPixmap placeholder() {
    QPixmap blank(kThumbnail, kThumbnail);
    blank.fill(QColor(0xE9, 0xDC, 0xC5));
    return blank;
}

} // namespace

QString catalogueText(const char* key) {
    const QString k = QString::fromLatin1(key);
    const QString value = localizedKey(k);
    return value.isNull() ? k : plainTextOf(value);
}

FindAlbumDialog::FindAlbumDialog(QWidget* parent)
    : HouseDialog(catalogueText("IDS_FIND_TITLE"), QString::fromLatin1(findAlbumStyle), parent) {
    setModal(true);
    setWindowModality(Qt::WindowModal);
    // The window's own size, so the dialog sits over the naming panel it came from.
    setFixedSize(720, 480);
    auto body = this->body();
    setBodyMargins(40, 16, 16);
    body->setSpacing(10);

    auto queryRow = new QHBoxLayout;
    auto form = new QFormLayout;
    form->setHorizontalSpacing(10);
    form->setVerticalSpacing(6);
    artistField = new QLineEdit(this);
    albumField = new QLineEdit(this);
    barcodeField = new QLineEdit(this);
    form->addRow(catalogueText("IDS_FIND_ARTIST"), artistField);
    form->addRow(catalogueText("IDS_FIND_ALBUM"), albumField);
    form->addRow(catalogueText("IDS_FIND_BARCODE"), barcodeField);
    queryRow->addLayout(form, 1);
    cover = new QLabel(this);
    cover->setObjectName(QStringLiteral("cover"));
    cover->setFixedSize(96, 96);
    cover->setAlignment(Qt::AlignCenter);
    cover->setScaledContents(false);
    queryRow->addSpacing(16);
    queryRow->addWidget(cover, 0, Qt::AlignTop);
    body->addLayout(queryRow);

    candidates = new QListWidget(this);
    candidates->setIconSize(QSize(kThumbnail, kThumbnail));
    candidates->setWordWrap(true);
    body->addWidget(candidates, 1);

    statusLine = new QLabel(this);
    statusLine->setObjectName(QStringLiteral("status"));
    statusLine->setWordWrap(true);
    body->addWidget(statusLine);

    auto buttons = new QHBoxLayout;
    search = new QPushButton(catalogueText("IDS_FIND_SEARCH"), this);
    use = new QPushButton(catalogueText("IDS_FIND_USE"), this);
    use->setObjectName(QStringLiteral("primary"));
    close = new QPushButton(catalogueText("IDS_FIND_CLOSE"), this);
    for (QPushButton* b : {search, use, close}) {
        b->setAutoDefault(false);
        b->setMinimumWidth(144);
    }
    search->setDefault(true);
    use->setEnabled(false);
    buttons->addWidget(search);
    buttons->addStretch(1);
    buttons->addWidget(close);
    buttons->addWidget(use);
    body->addLayout(buttons);

    connect(search, &QPushButton::clicked, this, &FindAlbumDialog::searchRequested);
    connect(use, &QPushButton::clicked, this, [this] {
        if (chosenRow() >= 0)
            emit useRequested(chosenRow());
    });
    connect(candidates, &QListWidget::itemDoubleClicked, this, [this] {
        if (use->isEnabled())
            emit useRequested(chosenRow());
    });
    connect(candidates, &QListWidget::currentRowChanged, this,
            [this](int row) { use->setEnabled(row >= 0 && search->isEnabled()); });
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
}

void FindAlbumDialog::setQuery(const QString& artist, const QString& album,
                               const QString& barcode) {
    artistField->setText(artist);
    albumField->setText(album);
    barcodeField->setText(barcode);
}

QString FindAlbumDialog::artist() const {
    return artistField->text().trimmed();
}
QString FindAlbumDialog::album() const {
    return albumField->text().trimmed();
}
QString FindAlbumDialog::barcode() const {
    return barcodeField->text().trimmed();
}

void FindAlbumDialog::setCandidates(const std::vector<AlbumCandidate>& list) {
    candidates->clear();
    for (const AlbumCandidate& c : list) {
        auto item = new QListWidgetItem(c.thumbnail.isNull() ? placeholder() : c.thumbnail,
                                        rowText(c), candidates);
        item->setSizeHint(QSize(0, kThumbnail + 12));
    }
    if (!list.empty())
        candidates->setCurrentRow(0);
}

void FindAlbumDialog::updateCandidate(int row, const AlbumCandidate& c) {
    QListWidgetItem* item = candidates->item(row);
    if (!item)
        return;
    item->setText(rowText(c));
    if (!c.thumbnail.isNull())
        item->setIcon(c.thumbnail);
}

int FindAlbumDialog::chosenRow() const {
    return candidates->currentRow();
}

void FindAlbumDialog::setStatus(const QString& text) {
    statusLine->setText(text);
}
QString FindAlbumDialog::status() const {
    return statusLine->text();
}

void FindAlbumDialog::showCover(const QPixmap& picture) {
    QPixmap shown = picture.scaled(cover->size() * devicePixelRatioF(), Qt::KeepAspectRatio,
                                   Qt::SmoothTransformation);
    shown.setDevicePixelRatio(devicePixelRatioF());
    cover->setPixmap(shown);
}

void FindAlbumDialog::setBusy(bool busy) {
    search->setEnabled(!busy);
    use->setEnabled(!busy && chosenRow() >= 0);
}

} // namespace waxline::ui
