#include "exporting/LibraryImporter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

namespace waxline::exporting {

namespace fs = std::filesystem;

namespace {

constexpr size_t kMaxComponentBytes = 255;

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return {};
    const size_t last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

// The longest prefix of at most `maxBytes` bytes that does not split a UTF-8 sequence.
std::string cutToBytes(const std::string& text, size_t maxBytes) {
    if (text.size() <= maxBytes)
        return text;
    size_t end = maxBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end);
}

std::string errnoText(int error) {
    return std::strerror(error);
}

// Copies `from` into the open descriptor and flushes it to the disk; false with the reason.
bool copyInto(const std::string& from, int to, ExportProblem& why) {
    const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) {
        why = {ExportProblem::Kind::ImportCannotRead, from, errnoText(errno)};
        return false;
    }
    std::vector<char> buffer(1 << 16);
    bool ok = true;
    for (;;) {
        const ssize_t n = ::read(in, buffer.data(), buffer.size());
        if (n == 0)
            break;
        if (n < 0) {
            if (errno == EINTR)
                continue;
            why = {ExportProblem::Kind::ImportCannotRead, from, errnoText(errno)};
            ok = false;
            break;
        }
        for (ssize_t done = 0; done < n;) {
            const ssize_t w = ::write(to, buffer.data() + done, static_cast<size_t>(n - done));
            if (w < 0 && errno == EINTR)
                continue;
            if (w <= 0) {
                why = {ExportProblem::Kind::ImportCannotWrite, {}, errnoText(errno)};
                ok = false;
                break;
            }
            done += w;
        }
        if (!ok)
            break;
    }
    ::close(in);
    if (ok && ::fsync(to) != 0) {
        why = {ExportProblem::Kind::ImportCannotWrite, {}, errnoText(errno)};
        ok = false;
    }
    return ok;
}

} // namespace

LibraryImporter::LibraryImporter(std::string musicFolder, TextLookup text)
    : root(std::move(musicFolder))
    , text(std::move(text)) {}

int LibraryImporter::probe() const {
    std::error_code ec;
    if (root.empty())
        return kLibraryUnavailable;
    fs::create_directories(root, ec);
    if (!fs::is_directory(root, ec))
        return kLibraryUnavailable;
    std::string name = root + "/.waxline-probe-XXXXXX";
    const int fd = ::mkstemp(name.data());
    if (fd < 0)
        return kLibraryUnavailable;
    ::close(fd);
    ::unlink(name.c_str());
    return 0;
}

std::string LibraryImporter::safeComponent(const std::string& name, const std::string& fallback,
                                           size_t maxBytes) {
    std::string safe;
    safe.reserve(name.size());
    for (char c : name) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '/')
            safe += '-';
        else if (u < 0x20 || u == 0x7F)
            safe += '_';
        else
            safe += c;
    }
    safe = trimmed(safe);
    for (char& c : safe) {
        if (c != '.')
            break;
        c = '_';
    }
    safe = trimmed(cutToBytes(safe, maxBytes));
    if (safe.empty())
        return cutToBytes(fallback, maxBytes);
    return safe;
}

std::string LibraryImporter::destinationFor(const std::string& artist, const std::string& album,
                                            const std::string& title, int number,
                                            const std::string& fileType) const {
    char prefix[16];
    std::snprintf(prefix, sizeof prefix, "%02d ", number);
    const std::string extension = "." + fileType;
    const size_t titleBytes = kMaxComponentBytes - std::strlen(prefix) - extension.size();
    const auto word = [&](const std::string& key) { return text ? text(key) : key; };
    return root + "/" + safeComponent(artist, word(kUnknownArtistKey)) + "/" +
           safeComponent(album, word(kUnknownAlbumKey)) + "/" + prefix +
           safeComponent(title, kUntitled, titleBytes) + extension;
}

LibraryImporter::Result LibraryImporter::importTrack(const std::string& mp3Path,
                                                     const std::string& artist,
                                                     const std::string& album,
                                                     const std::string& title, int number) const {
    Result result;
    const std::string fileType = fs::path(mp3Path).extension().string();
    result.path = destinationFor(artist, album, title, number,
                                 fileType.size() > 1 ? fileType.substr(1) : "mp3");
    const fs::path target(result.path);
    std::error_code ec;
    fs::create_directories(target.parent_path(), ec);
    if (!fs::is_directory(target.parent_path())) {
        result.problem = {ExportProblem::Kind::ImportCannotMakeFolder,
                          target.parent_path().string(), ec ? ec.message() : std::string()};
        return result;
    }
    std::string temporary = target.parent_path().string() + "/.waxline-import-XXXXXX";
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        result.problem = {ExportProblem::Kind::ImportCannotCreate, target.parent_path().string(),
                          errnoText(errno)};
        return result;
    }
    ::fchmod(fd, 0644);
    ExportProblem why;
    const bool copied = copyInto(mp3Path, fd, why);
    const bool closed = ::close(fd) == 0;
    if (!copied || !closed || ::rename(temporary.c_str(), result.path.c_str()) != 0) {
        if (copied && !why.failed())
            why = {ExportProblem::Kind::ImportCannotPutInPlace, result.path, errnoText(errno)};
        ::unlink(temporary.c_str());
        result.problem = why;
        return result;
    }
    result.ok = true;
    return result;
}

} // namespace waxline::exporting
