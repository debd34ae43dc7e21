#include "app/FolderClaim.h"

#include <QString>

#include <cstring>
#include <filesystem>

namespace waxline::app {

ExportFolderLock::Outcome FolderClaim::take(const std::string& folder, FolderUse use) {
    if (lock.held() && lockedFolder == folder) {
        lock.setUse(use);
        return ExportFolderLock::Outcome::Taken;
    }
    release();
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    const ExportFolderLock::Outcome outcome = lock.tryLock(folder, use, "waxline");
    if (outcome == ExportFolderLock::Outcome::Taken)
        lockedFolder = folder;
    return outcome;
}

bool FolderClaim::claim(const std::string& folder, FolderUse use) {
    switch (take(folder, use)) {
    case ExportFolderLock::Outcome::Taken:
        return true;
    case ExportFolderLock::Outcome::Held:
        alerts.alert(QStringLiteral("IDS_WARNING"), QStringLiteral("IDS_FOLDER_BUSY"),
                     {holderText(folder)});
        return false;
    case ExportFolderLock::Outcome::Failed:
        break;
    }
    alerts.alert(QStringLiteral("IDS_WARNING"), QStringLiteral("IDS_FOLDER_LOCK_FAILED"),
                 {QString::fromStdString(folder),
                  QString::fromLocal8Bit(std::strerror(lock.errorNumber()))});
    return false;
}

QString FolderClaim::holderText(const std::string& folder) const {
    // Who it is, as far as the lock file says: the program and its process number.
    const FolderLockHolder& holder = lock.holder();
    QString who = QString::fromStdString(holder.program);
    if (holder.pid > 0)
        who += (who.isEmpty() ? QString() : QStringLiteral(", ")) + QString::number(holder.pid);
    return who.isEmpty() ? QString::fromStdString(folder) : who;
}

bool FolderClaim::claimQuietly(const std::string& folder, FolderUse use) {
    return take(folder, use) == ExportFolderLock::Outcome::Taken;
}

void FolderClaim::release() {
    lock.unlock();
    lockedFolder.clear();
}

} // namespace waxline::app
