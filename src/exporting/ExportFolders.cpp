#include "exporting/ExportFolders.h"

#include "exportfolder/ExportFolder.h"
#include "exportfolder/ExportFolderLock.h"
#include "exporting/EncoderFormat.h"

#include <QStandardPaths>
#include <QString>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace waxline::exporting {

namespace fs = std::filesystem;

namespace {

std::string fromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value && *value ? std::string(value) : std::string();
}

std::string firstLocation(QStandardPaths::StandardLocation location) {
    const QStringList all = QStandardPaths::standardLocations(location);
    return all.isEmpty() ? std::string() : all.front().toStdString();
}

} // namespace

std::string exportFolder() {
    return defaultExportFolder();
}

std::string musicFolder() {
    std::string folder = fromEnvironment("WAXLINE_MUSIC_DIR");
    if (!folder.empty())
        return folder;
    folder = firstLocation(QStandardPaths::MusicLocation);
    // Without a configured music folder, fall back to the usual one in the home folder.
    if (folder.empty())
        folder =
            QStandardPaths::writableLocation(QStandardPaths::HomeLocation).toStdString() + "/Music";
    return folder;
}

std::string trackFileName(const std::string& folder, int track) {
    return trackFilePath(folder, track);
}

std::string mp3PathFor(const std::string& wavPath) {
    return encodedPathFor(wavPath, mp3Encoding());
}

std::optional<int> countedTracks(const std::string& folder) {
    std::ifstream in(trackCountPath(folder));
    long count = -1;
    if (!(in >> count) || count < 0 || count > 100000)
        return std::nullopt;
    return static_cast<int>(count);
}

bool recordingFinished(const std::string& folder) {
    std::ifstream in(trackCountPath(folder));
    long count = -1;
    std::string mark;
    return (in >> count >> mark) && mark == kTrackCountFinished;
}

int trackFilesPresent(const std::string& folder) {
    int n = 0;
    std::error_code ec;
    while (fs::exists(trackFileName(folder, n + 1), ec))
        ++n;
    return n;
}

void markExported(const std::string& folder) {
    std::ofstream(exportedMarkPath(folder), std::ios::trunc) << "exported\n";
}

std::map<int, std::string> savedTracks(const std::string& folder) {
    std::map<int, std::string> saved;
    std::ifstream in(savedTracksPath(folder));
    int track = 0;
    std::string path;
    while (in >> track && std::getline(in >> std::ws, path))
        if (track > 0)
            saved[track] = path;
    return saved;
}

void noteTrackSaved(const std::string& folder, int track, const std::string& libraryPath) {
    std::ofstream(savedTracksPath(folder), std::ios::app) << track << ' ' << libraryPath << '\n';
}

bool holdsUnexportedRecording(const std::string& folder) {
    std::error_code ec;
    if (trackFilesPresent(folder) == 0 || fs::exists(exportedMarkPath(folder), ec))
        return false;
    if (countedTracks(folder) == 0 && trackFilesPresent(folder) == 1) {
        // A side stopped before anything was counted: keep nothing but a file with audio.
        const auto size = fs::file_size(trackFileName(folder, 1), ec);
        return !ec && size > 44;
    }
    return true;
}

void clearTmpFolder(const std::string& folder) {
    std::error_code ec;
    for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator();
         it.increment(ec)) {
        // The lock file stays: the program emptying the folder may hold the lock itself.
        if (it->path().filename() == ExportFolderLock::lockFileName())
            continue;
        std::error_code ignored;
        fs::remove_all(it->path(), ignored);
    }
}

bool isCatalinaOrGreater() {
    return true;
}

} // namespace waxline::exporting
