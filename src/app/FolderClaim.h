#pragma once

#include "app/Alerts.h"
#include "exportfolder/ExportFolderLock.h"

#include <QString>

#include <string>

namespace waxline::app {

// The export folder's lock as the window takes it: while it records and while it exports, the
// same lock the command line takes, so two runs never write or empty the same files at once.
// Main thread only.
class FolderClaim {
public:
    explicit FolderClaim(Alerts& alerts)
        : alerts(alerts) {}

    // Takes the lock on `folder` (made when missing) for `use`, or notes the new use when this
    // window holds it already. When another run holds it, or it cannot be taken, an alert says
    // so and the answer is false.
    bool claim(const std::string& folder, FolderUse use);
    // As claim, without an alert: for a look at the folder that must not disturb another run.
    bool claimQuietly(const std::string& folder, FolderUse use);
    void release();
    bool held() const { return lock.held(); }
    // After a claim failed because another run holds the lock: who, as the alerts say it.
    QString holderText(const std::string& folder) const;

private:
    ExportFolderLock::Outcome take(const std::string& folder, FolderUse use);

    Alerts& alerts;
    ExportFolderLock lock;
    std::string lockedFolder;
};

} // namespace waxline::app
