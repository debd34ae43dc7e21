#pragma once

#include "platform/PlatformError.h"

#include <string>

namespace waxline::cli {

// The command line's words for why the audio service or the USB registry could not be had.
std::string describe(const platform::PlatformError& error);

} // namespace waxline::cli
