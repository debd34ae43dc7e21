// What the command-line tests share: waxline-cli as a shell command line.
#pragma once

#include "support/Signals.h"

#include <string>

namespace waxline::test {

// waxline-cli with `args` (already quoted where needed), for runCommand.
inline std::string cli(const std::string& args) {
    return shellQuote(cliPath()) + " " + args;
}

// `waxline-cli export` of `exports` into `library` as artist A, album B.
inline std::string exportCommand(const std::string& exports, const std::string& library,
                                 const std::string& extra = "") {
    return cli("export --export-dir " + shellQuote(exports) + " --library " + shellQuote(library) +
               " --artist A --album B" + extra);
}

} // namespace waxline::test
