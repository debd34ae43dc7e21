#include "ui/window/DialogScreenshots.h"

#include "ui/Catalogue.h"
#include "ui/help/HelpDialog.h"
#include "ui/input/InputChoiceDialog.h"

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
    return save(inputs, QDir(dir).filePath(QStringLiteral("other-input.png")));
}

} // namespace waxline::ui
