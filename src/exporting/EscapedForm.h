#pragma once

#include <string>

namespace waxline::exporting {

// The text made safe inside a double-quoted script literal: every backslash doubled, then every
// double quote preceded by a backslash. Backslashes go first so that those added for quotes
// are not doubled.
std::string escapedFormOf(const std::string& text);

} // namespace waxline::exporting
