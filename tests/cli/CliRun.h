// What the command-line tests share: waxline-cli as a shell command line, and the gaps
// make-demo-side prints.
#pragma once

#include "support/Signals.h"

#include <regex>
#include <string>
#include <vector>

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

struct Span {
    double start, end;
};

// The gap lines of the layout make-demo-side prints, in seconds.
inline std::vector<Span> gapsIn(const std::string& layout) {
    std::vector<Span> gaps;
    const std::regex line(R"(gap\s+([0-9.]+) s \.\.\s+([0-9.]+) s)");
    for (std::sregex_iterator it(layout.begin(), layout.end(), line), end; it != end; ++it)
        gaps.push_back({std::stod((*it)[1]), std::stod((*it)[2])});
    return gaps;
}

} // namespace waxline::test
