#include "ui/panels/SavingProgress.h"

#include "ui/Catalogue.h"

#include <QProgressBar>

namespace waxline::ui {

QString savingProgressText(int saved, int total, const QString& title) {
    if (saved >= total)
        return localizedKey(QStringLiteral("IDS_SAVED_TRACKS")).arg(saved).arg(total);
    const int now = saved + 1;
    if (title.trimmed().isEmpty())
        return localizedKey(QStringLiteral("IDS_SAVING_TRACK")).arg(now).arg(total);
    return localizedKey(QStringLiteral("IDS_SAVING_TRACK_TITLE"))
        .arg(now)
        .arg(total)
        .arg(title.trimmed());
}

void showSavingProgress(QProgressBar& bar, int saved, int total, const QString& title) {
    bar.setRange(0, total);
    bar.setValue(saved);
    // The bar's format replaces %p, %v and %m and has no escape: a word joiner keeps such
    // letters in a title as typed.
    QString text = savingProgressText(saved, total, title);
    for (const char* code : {"%p", "%v", "%m"})
        text.replace(QLatin1String(code),
                     QStringLiteral("%") + QChar(0x2060) + QLatin1Char(code[1]));
    bar.setFormat(text);
    bar.setTextVisible(true);
    bar.setAccessibleName(savingProgressText(saved, total, title));
}

} // namespace waxline::ui
