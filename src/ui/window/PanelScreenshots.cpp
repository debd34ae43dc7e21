#include "ui/window/PanelScreenshots.h"

#include "ui/panels/CustomView.h"
#include "ui/panels/ImageForView.h"
#include "ui/panels/PanelForms.h"
#include "ui/panels/SubViewController.h"
#include "ui/panels/TranslateView.h"
#include "ui/window/CustomWindow.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QTimer>

#include <cstdio>

namespace waxline::ui {

std::unique_ptr<CustomView> loadPanelForLooking(unsigned panel) {
    SubViewController loader(nibNameForPanel(panel), nullptr);
    std::unique_ptr<CustomView> view = loader.takeView();
    if (!view)
        return view;
    TranslateView(view.get());
    view->setBackgroundImage(ImageForView(panel));
    // A steady, plausible level so that the meters show what they look like in use.
    view->setPeakReaders([] { return 0.5f; }, [] { return 0.32f; });
    view->updateChannelLevel();
    return view;
}

QImage grabPanel(CustomWindow& window, CustomView& view) {
    window.setContentView(&view);
    window.show();
    QApplication::processEvents();
    // A picture of the panel at rest: no control shows keyboard focus.
    if (QWidget* focused = window.focusWidget())
        focused->clearFocus();
    return window.grab().toImage();
}

bool writePanelScreenshots(const QString& dir) {
    if (!QDir().mkpath(dir)) {
        std::fprintf(stderr, "cannot create %s\n", qPrintable(dir));
        return false;
    }
    CustomWindow window;
    for (unsigned panel = firstPanel; panel <= lastPanel; ++panel) {
        std::unique_ptr<CustomView> view = loadPanelForLooking(panel);
        if (!view) {
            std::fprintf(stderr, "panel %u: form %s did not load\n", panel,
                         qPrintable(nibNameForPanel(panel)));
            return false;
        }
        const QImage picture = grabPanel(window, *view);
        const QString file = QDir(dir).filePath(QStringLiteral("panel-%1.png").arg(panel));
        if (!picture.save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return false;
        }
        window.setContentView(nullptr);
    }
    return true;
}

} // namespace waxline::ui
