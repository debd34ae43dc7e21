#include "capture/recorder/TrackFiles.h"

#include <QStandardPaths>
#include <QStringList>

#include <cstdlib>

namespace waxline {

namespace {
constexpr const char* kBaseName = "/WXRTTmpFile";
}

std::string defaultExportFolder() {
    if (const char* env = std::getenv("WAXLINE_EXPORT_DIR"); env && *env)
        return env;
    const QStringList paths =
        QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    const std::string base = paths.isEmpty() ? std::string(".") : paths.first().toStdString();
    return base + "/Waxline/Exports";
}

std::string trackFilePath(const std::string& folder, int track) {
    return folder + kBaseName + "." + std::to_string(track) + ".wav";
}

std::string trackCountPath(const std::string& folder) {
    return folder + kBaseName + ".count";
}

std::string exportedMarkPath(const std::string& folder) {
    return folder + kBaseName + ".exported";
}

} // namespace waxline
