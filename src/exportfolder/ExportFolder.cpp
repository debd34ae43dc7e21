#include "exportfolder/ExportFolder.h"

#include <QStandardPaths>
#include <QStringList>

#include <cstdlib>

namespace waxline {

std::string defaultExportFolder() {
    if (const char* env = std::getenv("WAXLINE_EXPORT_DIR"); env && *env)
        return env;
    const QStringList paths =
        QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    const std::string base = paths.isEmpty() ? std::string(".") : paths.first().toStdString();
    return base + "/Waxline/Exports";
}

} // namespace waxline
