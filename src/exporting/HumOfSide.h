#pragma once

#include "restoration/HumRemover.h"

#include <optional>
#include <string>

namespace waxline::exporting {

// The hum of a recorded side: looked for in the quiet stretches of all its track files
// (mixed to mono), so that a track of loud music gets the notches the side's gaps call for.
// Nothing when no track file can be read.
std::optional<restoration::HumProfile> humOfSide(const std::string& folder, int tracks,
                                                 restoration::HumChoice choice);

} // namespace waxline::exporting
