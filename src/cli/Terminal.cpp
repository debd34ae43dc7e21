#include "cli/Terminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>

namespace waxline::cli {

namespace {

FILE* duplicate(int fd, bool unbuffered) {
    const int copy = ::fcntl(fd, F_DUPFD_CLOEXEC, 3);
    FILE* file = copy >= 0 ? ::fdopen(copy, "w") : nullptr;
    if (!file)
        return fd == STDOUT_FILENO ? stdout : stderr;
    if (unbuffered)
        std::setvbuf(file, nullptr, _IONBF, 0);
    else if (::isatty(copy))
        std::setvbuf(file, nullptr, _IOLBF, BUFSIZ);
    return file;
}

void writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n <= 0)
            return;
        data += n;
        size -= static_cast<size_t>(n);
    }
}

// The terminal's streams while a log holds 1 and 2; null otherwise.
FILE* terminalOut = nullptr;
FILE* terminalErr = nullptr;

} // namespace

FILE* userOut() {
    return terminalOut ? terminalOut : stdout;
}

FILE* userErr() {
    return terminalErr ? terminalErr : stderr;
}

std::string diagnosticLogPath(const std::string& exportFolder) {
    std::filesystem::path folder = std::filesystem::path(exportFolder).lexically_normal();
    if (!folder.has_filename())
        folder = folder.parent_path();
    return folder.string() + ".log";
}

DiagnosticLog::~DiagnosticLog() {
    close();
}

bool DiagnosticLog::open(const std::string& path, const std::string& run, bool verbose) {
    close();
    logFd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (logFd < 0)
        return false;
    // Made now, so they keep the terminal whatever happens to 1 and 2 below.
    std::fflush(stdout);
    std::fflush(stderr);
    terminalOut = duplicate(STDOUT_FILENO, false);
    terminalErr = duplicate(STDERR_FILENO, true);
    FILE* const terminal = terminalErr;
    char stamp[64];
    const std::time_t now = std::time(nullptr);
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
    const std::string header = "== " + std::string(stamp) + "  " + run + "  (process " +
                               std::to_string(::getpid()) + ")\n";
    writeAll(logFd, header.data(), header.size());

    std::fflush(stdout);
    std::fflush(stderr);
    savedOut = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    savedErr = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    int target = logFd;
    int fds[2];
    if (verbose && ::pipe2(fds, O_CLOEXEC) == 0) {
        pipeRead = fds[0];
        target = fds[1];
        const int log = logFd;
        const int screen = ::fileno(terminal);
        copier = std::thread([log, screen, from = pipeRead] {
            char buffer[4096];
            for (;;) {
                const ssize_t n = ::read(from, buffer, sizeof buffer);
                if (n <= 0)
                    return;
                writeAll(log, buffer, static_cast<size_t>(n));
                writeAll(screen, buffer, static_cast<size_t>(n));
            }
        });
    }
    ::dup2(target, STDOUT_FILENO);
    ::dup2(target, STDERR_FILENO);
    if (target != logFd)
        ::close(target); // 1 and 2 hold the pipe's write end now
    // Diagnostics come a line at a time, so the log reads in order with the terminal.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    return true;
}

void DiagnosticLog::close() {
    if (logFd < 0)
        return;
    std::fflush(stdout);
    std::fflush(stderr);
    // Putting 1 and 2 back closes the pipe's last write ends, which ends the copier.
    ::dup2(savedOut, STDOUT_FILENO);
    ::dup2(savedErr, STDERR_FILENO);
    ::close(savedOut);
    ::close(savedErr);
    if (copier.joinable())
        copier.join();
    if (pipeRead >= 0)
        ::close(pipeRead);
    ::close(logFd);
    for (FILE** terminal : {&terminalOut, &terminalErr}) {
        if (*terminal != stdout && *terminal != stderr)
            std::fclose(*terminal);
        *terminal = nullptr;
    }
    logFd = savedOut = savedErr = pipeRead = -1;
}

} // namespace waxline::cli
