#pragma once

#include "cli/CommandLine.h"

namespace waxline::cli {

// Each command takes the arguments after its name and returns the process exit status:
// 0 success, 1 the work failed, 2 bad usage or unusable input.
int analyseCommand(Arguments& args);
int makeDemoSideCommand(Arguments& args);
int devicesCommand(Arguments& args);
int recordCommand(Arguments& args);
int exportCommand(Arguments& args);
int digitizeCommand(Arguments& args);
int splitsCommand(Arguments& args);
int lookupCommand(Arguments& args);
int cleanCommand(Arguments& args);

} // namespace waxline::cli
