// What the command-line tests share: waxline-cli as a shell command line, what it left in files,
// and the gaps make-demo-side prints.
#pragma once

#include "support/Signals.h"

#include <algorithm>
#include <cstdlib>
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

// Runs `command` in the background with its output into `log`, waits until the shell test
// `until` holds (checked every `poll` seconds, for at most a minute), sends the program `signal`,
// and returns the exit status the shell saw: the program's own, or 128 + the signal's number
// when the signal ended it; -1 when `until` never held.
inline int signalWhen(const std::string& command, const std::string& log, const std::string& until,
                      const std::string& signal, const std::string& poll = "0.1") {
    std::string result;
    runCommand(command + " >" + shellQuote(log) + " 2>&1 & pid=$!; held=no; " +
                   "end=$(($(date +%s) + 60)); while [ $(date +%s) -lt $end ]; do if " + until +
                   "; then held=yes; break; fi; sleep " + poll + "; done; kill -" + signal +
                   " $pid; wait $pid; status=$?; echo $held $status",
               result, false);
    return result.rfind("yes ", 0) == 0 ? std::atoi(result.c_str() + 4) : -1;
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
