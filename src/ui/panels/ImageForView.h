#pragma once

#include "ui/widgets/Picture.h"

namespace waxline::ui {

// The background picture of a panel; a null picture (and a line on standard error) for a
// number outside 1 to 12.
Picture ImageForView(unsigned panel);

} // namespace waxline::ui
