#pragma once

#include <optional>
#include <string>

namespace waxline {

// What a program is doing in the export folder while it holds the folder's lock.
enum class FolderUse { Recording, Exporting, Recutting };

// Who holds an export folder's lock, as far as its lock file says. Empty program, pid 0 and no
// use when the holder had not yet written them (it had only just taken the lock).
struct FolderLockHolder {
    std::string program;
    long pid = 0;
    std::optional<FolderUse> use;
};

// An exclusive lock on one export folder for the length of a recording or an export, so two
// programs never write the same track files or the same library files at once. It is an flock
// on a lock file in the folder: the system drops it when the holder ends, however it ends, so a
// crash never leaves the folder locked. The lock file stays (removing it would let a third
// program lock a new file while the old one is still held); only its text is cleared.
class ExportFolderLock {
public:
    enum class Outcome {
        Taken,  // this object holds the lock now
        Held,   // another holder has it; holder() says who
        Failed, // the lock file could not be opened or locked; errorNumber() says why
    };

    ExportFolderLock() = default;
    ~ExportFolderLock();
    ExportFolderLock(const ExportFolderLock&) = delete;
    ExportFolderLock& operator=(const ExportFolderLock&) = delete;

    // Takes the lock on `folder` at once or not at all (never waits), and writes who holds it:
    // `program`, this process's id and the use. The folder must exist.
    Outcome tryLock(const std::string& folder, FolderUse use, const std::string& program);
    // While held: notes a new use (a recording going on to export its tracks).
    void setUse(FolderUse use);
    // Clears the lock file's text and lets the lock go; nothing when not held.
    void unlock();

    bool held() const { return fd >= 0; }
    // After Held: who holds the lock.
    const FolderLockHolder& holder() const { return otherHolder; }
    // After Failed: the system's error number.
    int errorNumber() const { return error; }

    // The lock file in a folder; the folder's emptying spares it.
    static std::string lockFilePath(const std::string& folder);
    static const char* lockFileName();

private:
    void writeNote(FolderUse use);

    int fd = -1;
    std::string holderProgram;
    FolderLockHolder otherHolder;
    int error = 0;
};

} // namespace waxline
