// waxline: the desktop application. Today it has one mode, which renders every panel:
//     waxline --screenshot-panels DIR [--locale de] [--scale 2]

#include "ui/Catalogue.h"
#include "ui/UiResources.h"
#include "ui/window/PanelScreenshots.h"

#include <QApplication>
#include <QLocale>
#include <QStringList>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

struct Options {
    std::string screenshotDir;
    std::string locale;
    std::string scale;
    bool valid = true;
};

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (!std::strcmp(argv[i], "--screenshot-panels") && hasValue)
            options.screenshotDir = argv[++i];
        else if (!std::strcmp(argv[i], "--locale") && hasValue)
            options.locale = argv[++i];
        else if (!std::strcmp(argv[i], "--scale") && hasValue)
            options.scale = argv[++i];
        else
            options.valid = false;
    }
    return options;
}

} // namespace

int main(int argc, char** argv) {
    const Options options = parse(argc, argv);
    if (!options.valid || options.screenshotDir.empty()) {
        std::fputs("usage: waxline --screenshot-panels DIR [--locale de] [--scale 2]\n", stderr);
        return 2;
    }
    // The pictures need no display; the scale is the screen's device-pixel ratio.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!options.scale.empty())
        qputenv("QT_SCALE_FACTOR", QByteArray::fromStdString(options.scale));

    QApplication app(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    waxline::ui::initUiResources();
    const QLocale locale = options.locale.empty() ? QLocale::system()
                                                  : QLocale(QString::fromStdString(options.locale));
    waxline::ui::installCatalogue(locale);
    return waxline::ui::writePanelScreenshots(QString::fromStdString(options.screenshotDir)) ? 0
                                                                                             : 1;
}
