#include "exportfolder/ExportFolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>

namespace waxline {

namespace {

const char* useWord(FolderUse use) {
    switch (use) {
    case FolderUse::Recording:
        return "recording";
    case FolderUse::Exporting:
        return "exporting";
    case FolderUse::Recutting:
        return "recutting";
    }
    return "exporting";
}

// The lock file's text: "pid=N", "program=NAME" and "use=WORD", a line each.
FolderLockHolder parseHolder(const std::string& text) {
    FolderLockHolder holder;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        const auto equals = line.find('=');
        if (equals == std::string::npos)
            continue;
        const std::string key = line.substr(0, equals);
        const std::string value = line.substr(equals + 1);
        if (key == "pid")
            holder.pid = std::strtol(value.c_str(), nullptr, 10);
        else if (key == "program")
            holder.program = value;
        else if (key == "use" && value == "recording")
            holder.use = FolderUse::Recording;
        else if (key == "use" && value == "exporting")
            holder.use = FolderUse::Exporting;
        else if (key == "use" && value == "recutting")
            holder.use = FolderUse::Recutting;
    }
    return holder;
}

std::string readAll(int fd) {
    std::string text;
    char buffer[512];
    off_t at = 0;
    for (;;) {
        const ssize_t n = pread(fd, buffer, sizeof buffer, at);
        if (n <= 0 || text.size() > 4096)
            break;
        text.append(buffer, static_cast<size_t>(n));
        at += n;
    }
    return text;
}

bool sameFile(int fd, const std::string& path) {
    struct stat opened {};
    struct stat named {};
    return fstat(fd, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

const char* ExportFolderLock::lockFileName() {
    return ".waxline.lock";
}

std::string ExportFolderLock::lockFilePath(const std::string& folder) {
    return folder + "/" + lockFileName();
}

ExportFolderLock::~ExportFolderLock() {
    unlock();
}

ExportFolderLock::Outcome ExportFolderLock::tryLock(const std::string& folder, FolderUse use,
                                                    const std::string& program) {
    unlock();
    otherHolder = {};
    error = 0;
    const std::string path = lockFilePath(folder);
    // A lock file removed and made anew between our open and our flock would leave us holding
    // a lock nobody else sees; a few tries settle such a race.
    for (int attempt = 0; attempt < 5; ++attempt) {
        const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (file < 0) {
            error = errno;
            return Outcome::Failed;
        }
        if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
            error = errno;
            if (error == EWOULDBLOCK) {
                otherHolder = parseHolder(readAll(file));
                ::close(file);
                return Outcome::Held;
            }
            ::close(file);
            return Outcome::Failed;
        }
        if (!sameFile(file, path)) {
            ::close(file);
            continue;
        }
        fd = file;
        holderProgram = program;
        writeNote(use);
        return Outcome::Taken;
    }
    error = EAGAIN;
    return Outcome::Failed;
}

void ExportFolderLock::setUse(FolderUse use) {
    if (fd >= 0)
        writeNote(use);
}

void ExportFolderLock::writeNote(FolderUse use) {
    const std::string text = "pid=" + std::to_string(::getpid()) + "\nprogram=" + holderProgram +
                             "\nuse=" + useWord(use) + "\n";
    if (::ftruncate(fd, 0) != 0 ||
        ::pwrite(fd, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        // The lock itself holds; only the note of who holds it is missing.
    }
}

void ExportFolderLock::unlock() {
    if (fd < 0)
        return;
    if (::ftruncate(fd, 0) != 0) {
        // A stale note is harmless: nobody reads it without failing to take the lock first.
    }
    ::close(fd);
    fd = -1;
}

} // namespace waxline
