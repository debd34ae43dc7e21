// What the controller's files share when they hand library text and alert keys to the window.
#pragma once

#include <QString>

#include <string>

namespace waxline::app {

inline QString text(const std::string& value) {
    return QString::fromStdString(value);
}

// The title key of every warning alert.
inline const QString warningKey = QStringLiteral("IDS_WARNING");

} // namespace waxline::app
