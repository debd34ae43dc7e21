#pragma once

#include "util/TrackFileNames.h"

#include <string>

// Where a recording's track files lie. Their names are in util/TrackFileNames.h, which the
// splitting library shares without Qt.
namespace waxline {

// $WAXLINE_EXPORT_DIR when set, else the first generic data location followed by
// "/Waxline/Exports". Not created here.
std::string defaultExportFolder();

} // namespace waxline
