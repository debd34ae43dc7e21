#include "ui/lookup/FindAlbumPicture.h"

#include "ui/lookup/FindAlbumDialog.h"

#include <QApplication>
#include <QPainter>
#include <QPushButton>

namespace waxline::ui {

namespace {

// A sleeve of one colour with a record peeping out, at the screen's pixel ratio.
QPixmap sleeve(QColor colour, int size, qreal ratio) {
    QPixmap picture(QSize(size, size) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(colour);
    QPainter p(&picture);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(0x22, 0x1A, 0x15));
    p.setPen(Qt::NoPen);
    p.drawEllipse(QRectF(size * 0.45, size * 0.15, size * 0.7, size * 0.7));
    p.setBrush(colour.lighter(140));
    p.drawEllipse(QRectF(size * 0.72, size * 0.42, size * 0.16, size * 0.16));
    return picture;
}

} // namespace

QImage grabFindAlbum(bool chosen) {
    FindAlbumDialog dialog;
    const qreal ratio = dialog.devicePixelRatioF();
    dialog.setQuery(QStringLiteral("Harbour Lights"), QStringLiteral("Night Ferry"), QString());
    const QString details = catalogueText("IDS_FIND_DETAILS");
    std::vector<AlbumCandidate> rows = {
        {QStringLiteral("Harbour Lights \u2013 Night Ferry"),
         details.arg(QStringLiteral("12\" Vinyl"), QStringLiteral("GB"), QStringLiteral("1979"),
                     QStringLiteral("2")),
         catalogueText("IDS_FIND_FIT").arg(QStringLiteral("B")).arg(96),
         sleeve(QColor(0x2F, 0x6F, 0x8F), 56, ratio)},
        {QStringLiteral("Harbour Lights \u2013 Night Ferry"),
         details.arg(QStringLiteral("Cassette"), QStringLiteral("DE"), QStringLiteral("1980"),
                     QStringLiteral("2")),
         catalogueText("IDS_FIND_FIT_WHOLE").arg(41), sleeve(QColor(0x8F, 0x4A, 0x2F), 56, ratio)},
        {QStringLiteral("Harbour Lights \u2013 Night Ferry (Remastered)"),
         details.arg(QStringLiteral("CD"), QStringLiteral("XE"), QStringLiteral("2009"),
                     QStringLiteral("1")),
         catalogueText("IDS_FIND_FIT_NONE"), QPixmap()},
    };
    dialog.setCandidates(rows);
    if (chosen) {
        dialog.showCover(sleeve(QColor(0x2F, 0x6F, 0x8F), 96, ratio));
        dialog.setStatus(catalogueText("IDS_FIND_FILLED_RECUT").arg(5));
    } else {
        dialog.setStatus(catalogueText("IDS_FIND_FOUND").arg(3));
    }
    dialog.show();
    QApplication::processEvents();
    dialog.useButton().setFocus();
    dialog.useButton().clearFocus();
    return dialog.grab().toImage();
}

} // namespace waxline::ui
