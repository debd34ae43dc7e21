#include "exporting/SideSheets.h"

#include "exporting/LibraryImporter.h"

#include <sndfile.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace waxline::exporting {

namespace fs = std::filesystem;

namespace {

// CUE strings are double-quoted with no escape: a double quote inside becomes a single one.
std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text)
        out += c == '"' ? '\'' : (c == '\r' || c == '\n' ? ' ' : c);
    return out + "\"";
}

double secondsOf(const std::string& path) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return 0;
    sf_close(file);
    return info.samplerate > 0 ? static_cast<double>(info.frames) / info.samplerate : 0;
}

std::string twoDigits(const std::string& number) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d", std::atoi(number.c_str()));
    return text;
}

bool writeText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    return static_cast<bool>(out);
}

} // namespace

std::string cueSheet(const std::vector<SheetTrack>& tracks, const std::string& artist,
                     const std::string& album) {
    std::string cue = "PERFORMER " + quoted(artist) + "\nTITLE " + quoted(album) + "\n";
    for (size_t i = 0; i < tracks.size(); ++i) {
        const SheetTrack& t = tracks[i];
        const std::string type = fs::path(t.file).extension() == ".mp3" ? "MP3" : "WAVE";
        char number[24];
        std::snprintf(number, sizeof number, "%02zu", i + 1);
        cue += "FILE " + quoted(fs::path(t.file).filename().string()) + " " + type + "\n";
        cue += std::string("  TRACK ") + number + " AUDIO\n";
        cue += "    TITLE " + quoted(t.title) + "\n";
        cue += "    PERFORMER " + quoted(artist) + "\n";
        cue += "    INDEX 01 00:00:00\n";
    }
    return cue;
}

std::string labelSheet(const std::vector<SheetTrack>& tracks) {
    std::string labels;
    double start = 0;
    for (const SheetTrack& t : tracks) {
        char line[64];
        std::snprintf(line, sizeof line, "%.6f\t%.6f\t", start, start + t.seconds);
        labels += line + t.title + "\n";
        start += t.seconds;
    }
    return labels;
}

std::string sheetBaseName(const std::string& folder, const std::string& first,
                          const std::string& last, const std::string& album) {
    const std::string name = twoDigits(first) + "-" + twoDigits(last) + " " + album;
    return folder + "/" + LibraryImporter::safeComponent(name, twoDigits(first), 200);
}

bool writeSideSheets(const std::vector<TrackOutcome>& outcomes, const std::string& artist,
                     const std::string& album) {
    std::vector<SheetTrack> tracks;
    for (const TrackOutcome& o : outcomes) {
        if (!o.ok)
            continue;
        const std::string file = o.flacLibraryPath.empty() ? o.libraryPath : o.flacLibraryPath;
        // An untitled track goes by the name its file was given ("NN <name>").
        const std::string stem = fs::path(file).stem().string();
        const std::string title =
            !o.title.empty() || stem.size() < 4 ? o.title : stem.substr(stem.find(' ') + 1);
        tracks.push_back({file, o.number, title, secondsOf(o.wavPath)});
    }
    if (tracks.empty())
        return false;
    const std::string base = sheetBaseName(fs::path(tracks.front().file).parent_path().string(),
                                           tracks.front().number, tracks.back().number, album);
    return writeText(base + ".cue", cueSheet(tracks, artist, album)) &&
           writeText(base + ".txt", labelSheet(tracks));
}

} // namespace waxline::exporting
