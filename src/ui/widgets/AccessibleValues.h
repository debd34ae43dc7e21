#pragma once

class QObject;
class QAccessibleInterface;
class QString;

namespace waxline::ui {

// Lets assistive tools read the gain slider and the meters in decibels: a slider with an
// "accessibleScale" property reports value × scale ("+1,5 dB", not 150), a meter its level.
// Installed once, before the first panel is shown. Main thread only.
void installAccessibleValues();

// The factory itself, for the accessibility framework: null for anything it does not serve.
QAccessibleInterface* accessibleValueFactory(const QString& className, QObject* object);

} // namespace waxline::ui
