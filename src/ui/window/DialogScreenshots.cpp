#include "ui/window/DialogScreenshots.h"

#include "ui/Catalogue.h"
#include "ui/help/HelpDialog.h"
#include "ui/input/InputChoiceDialog.h"
#include "ui/widgets/HouseAlert.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QListWidget>

#include <cstdio>

namespace waxline::ui {

namespace {

bool save(QWidget& dialog, const QString& file) {
    dialog.show();
    const bool saved = dialog.grab().toImage().save(file);
    if (!saved)
        std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
    return saved;
}

QString text(const char* key) {
    const QString k = QString::fromLatin1(key);
    const QString value = localizedKey(k);
    return value.isNull() ? k : value;
}

} // namespace

bool writeDialogScreenshots(const QString& dir, const QString& language) {
    HelpDialog help;
    QString page = QStringLiteral(":/waxline/help/help_%1.html").arg(language);
    if (!QFile::exists(page))
        page = QStringLiteral(":/waxline/help/help_en.html");
    help.showPage(QUrl(QStringLiteral("qrc") + page));
    if (!save(help, QDir(dir).filePath(QStringLiteral("help-window.png"))))
        return false;

    // Inputs as a desktop with a phono preamplifier on line-in and a USB interface lists them.
    InputChoiceDialog inputs({QStringLiteral("Built-in Audio Analog Stereo"),
                              QStringLiteral("Scarlett 2i2 USB Analog Stereo"),
                              QStringLiteral("Monitor of Built-in Audio Analog Stereo")});
    inputs.inputList()->setCurrentRow(1);
    if (!save(inputs, QDir(dir).filePath(QStringLiteral("other-input.png"))))
        return false;

    // A warning with one button and the close confirmation with three, as the window shows them.
    HouseAlert warning(HouseAlert::Kind::Warning, plainTextOf(text("IDS_WARNING")),
                       text("IDS_INPUT_GONE").arg(QStringLiteral("Scarlett 2i2 USB Analog Stereo")),
                       QString(), {plainTextOf(text("IDS_OK"))}, 0, 0);
    if (!save(warning, QDir(dir).filePath(QStringLiteral("alert-warning.png"))))
        return false;
    HouseAlert question(HouseAlert::Kind::Question, plainTextOf(text("IDS_APP_NAME")),
                        text("IDS_CLOSE_UNSAVED").arg(5).arg(QStringLiteral("0:21:48")), QString(),
                        {plainTextOf(text("IDS_QUIT_KEEP")), plainTextOf(text("IDS_QUIT_DISCARD")),
                         plainTextOf(text("IDS_DONT_QUIT"))},
                        0, 2);
    return save(question, QDir(dir).filePath(QStringLiteral("alert-question.png")));
}

} // namespace waxline::ui
