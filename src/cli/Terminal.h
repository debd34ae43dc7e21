#pragma once

#include <cstdio>
#include <string>
#include <thread>

namespace waxline::cli {

// Where the command line's own words go: the standard output and error the program was started
// with, even while the engine's diagnostic lines are sent to a log file.
FILE* userOut();
FILE* userErr();

// "<parent>/<name>.log" beside the export folder "<parent>/<name>".
std::string diagnosticLogPath(const std::string& exportFolder);

// Sends what the engine libraries print (device, filter and monitor diagnostics, on standard
// output and error) to a log file instead of the terminal, for as long as it lives; with
// `verbose` the terminal sees them too. The command line's own lines use userOut and userErr.
class DiagnosticLog {
public:
    DiagnosticLog() = default;
    ~DiagnosticLog();
    DiagnosticLog(const DiagnosticLog&) = delete;
    DiagnosticLog& operator=(const DiagnosticLog&) = delete;

    // Appends to `path`, after a line naming the run. False (and nothing redirected) when the
    // file cannot be opened.
    bool open(const std::string& path, const std::string& run, bool verbose);
    void close();

private:
    int logFd = -1;
    int savedOut = -1;
    int savedErr = -1;
    int pipeRead = -1;
    std::thread copier; // with verbose: copies the pipe to the log and the terminal
};

} // namespace waxline::cli
