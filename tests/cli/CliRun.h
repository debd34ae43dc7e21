// What the command-line tests share: waxline-cli as a shell command line, what it left in files,
// and the gaps make-demo-side prints.
#pragma once

#include "support/Signals.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace waxline::test {

// waxline-cli with `args` (already quoted where needed), for runCommand.
inline std::string cli(const std::string& args) {
    return shellQuote(cliPath()) + " " + args;
}

// The options that make a command record `side` from the virtual deck into `exports`.
inline std::string deckArgs(const std::string& side, const std::string& speed,
                            const std::string& exports) {
    return " --virtual-device " + shellQuote("file=" + side + ",speed=" + speed) +
           " --export-dir " + shellQuote(exports);
}

// `waxline-cli export` of `exports` into `library` as artist A, album B.
inline std::string exportCommand(const std::string& exports, const std::string& library,
                                 const std::string& extra = "") {
    return cli("export --export-dir " + shellQuote(exports) + " --library " + shellQuote(library) +
               " --artist A --album B" + extra);
}

inline long lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

// The whole file as text; empty when it cannot be read.
inline std::string readFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
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
