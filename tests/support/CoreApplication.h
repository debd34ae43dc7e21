#pragma once

#include <QCoreApplication>

namespace waxline::test {

// The application object a test needs for the timers of Qt-based engine objects, without a GUI.
// Make one at a time.
struct CoreApplication {
    int argc = 1;
    char name[8] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication app{argc, argv};
};

} // namespace waxline::test
