// main() of the window's test executables: one QApplication for all of their tests, headless,
// with the resources registered and the English catalogue installed.

#include "ui/Catalogue.h"
#include "ui/UiResources.h"

#include <QApplication>
#include <QLocale>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Test discovery runs the binary outside ctest's environment too.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    waxline::ui::initUiResources();
    waxline::ui::installCatalogue(QLocale(QLocale::English));
    return RUN_ALL_TESTS();
}
