#pragma once

#include "util/TrackFileNames.h"

#include <string>

// Where a recording's track files lie; their names are in util/TrackFileNames.h, shared with the
// splitting library, which must not depend on the capture engine.
namespace waxline {

// $WAXLINE_EXPORT_DIR when set, else the first generic data location followed by
// "/Waxline/Exports". Not created here.
std::string defaultExportFolder();

} // namespace waxline
