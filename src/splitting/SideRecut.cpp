#include "splitting/SideRecut.h"

#include "splitting/SoundFile.h"
#include "util/TrackFileNames.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

namespace waxline {

namespace fs = std::filesystem;

namespace {

constexpr sf_count_t kCopyBlockFrames = 16384;
// Headers, the journal and the count file, on top of the audio itself.
constexpr uintmax_t kSpareBytes = 1 << 20;

constexpr const char* kNewPrefix = "WXRTTmpFile.new.";
constexpr const char* kMp3Prefix = "WXRTTmpFile.";

std::string newTrackPath(const std::string& folder, int track) {
    return folder + "/" + kNewPrefix + std::to_string(track) + ".wav";
}

std::string journalTempPath(const std::string& folder) {
    return recutJournalPath(folder) + ".tmp";
}

std::string countTempPath(const std::string& folder) {
    return trackCountPath(folder) + ".tmp";
}

bool startsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

bool allDigits(const std::string& text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "WXRTTmpFile.<n>.mp3" or ".flac" and what encoding behind the recording leaves ("<n>.early.mp3",
// its
// ".early.stamp", a half-made "<n>.encoding.mp3"): all made from an old track file.
bool isMadeFromTrack(const std::string& name) {
    if (!startsWith(name, kMp3Prefix))
        return false;
    for (const std::string suffix :
         {".mp3", ".flac", ".early.mp3", ".early.stamp", ".encoding.mp3"}) {
        const size_t prefix = std::strlen(kMp3Prefix);
        if (name.size() > prefix + suffix.size() &&
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0 &&
            allDigits(name.substr(prefix, name.size() - prefix - suffix.size())))
            return true;
    }
    return false;
}

const RecutHooks& noHooks() {
    static const RecutHooks none;
    return none;
}

struct Steps {
    const RecutHooks& hooks;
    int next = 0;
    void operator()() {
        const int step = next++;
        if (hooks.beforeStep)
            hooks.beforeStep(step);
    }
};

bool syncPath(const std::string& path, bool directory) {
    const int fd =
        ::open(path.c_str(), (directory ? O_RDONLY | O_DIRECTORY : O_RDONLY) | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

// Writes `text` to `temp`, syncs it and renames it over `path`: the file is whole or absent.
int replaceFile(const std::string& temp, const std::string& path, const std::string& text,
                Steps& step) {
    step();
    {
        std::ofstream out(temp, std::ios::trunc);
        out << text;
        out.flush();
        if (!out)
            return errno ? errno : EIO;
    }
    if (!syncPath(temp, false))
        return errno;
    step();
    if (::rename(temp.c_str(), path.c_str()) != 0)
        return errno;
    return 0;
}

struct Journal {
    int oldTracks = 0;
    int newTracks = 0;
    int oldFiles = 0; // track files in a row from 1, a run-out file after the side included
};

std::string journalText(const Journal& j) {
    return "recut " + std::to_string(j.oldTracks) + " " + std::to_string(j.newTracks) + " " +
           std::to_string(j.oldFiles) + "\n";
}

bool readJournal(const std::string& folder, Journal& j) {
    std::ifstream in(recutJournalPath(folder));
    std::string word;
    return (in >> word >> j.oldTracks >> j.newTracks >> j.oldFiles) && word == "recut" &&
           j.oldTracks >= 0 && j.newTracks >= 1 && j.oldFiles >= j.oldTracks;
}

int trackFilesInARow(const std::string& folder) {
    int n = 0;
    std::error_code ec;
    while (fs::exists(trackFilePath(folder, n + 1), ec))
        ++n;
    return n;
}

void removeFile(const std::string& path, Steps& step) {
    std::error_code ec;
    if (!fs::exists(path, ec))
        return;
    step();
    fs::remove(path, ec);
}

// The journal is in place, so every new file is complete: puts them in, whatever part of this
// was done before a kill. Each step can be done again.
void rollForward(const std::string& folder, const Journal& j, Steps& step) {
    // Anything made from the old files goes first, so no MP3 outlives the cut it was made from.
    removeFile(exportedMarkPath(folder), step);
    removeFile(savedTracksPath(folder), step);
    std::error_code ec;
    std::vector<fs::path> mp3s;
    for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator();
         it.increment(ec))
        if (isMadeFromTrack(it->path().filename().string()))
            mp3s.push_back(it->path());
    std::sort(mp3s.begin(), mp3s.end());
    for (const auto& mp3 : mp3s)
        removeFile(mp3.string(), step);

    for (int t = 1; t <= j.newTracks; ++t) {
        const std::string from = newTrackPath(folder, t);
        if (!fs::exists(from, ec))
            continue; // put in before the kill
        step();
        ::rename(from.c_str(), trackFilePath(folder, t).c_str());
    }
    // The old tracks beyond the new count, and the run-out file an album end leaves after the
    // side: neither belongs to the new set, and an export must not count them.
    for (int t = j.newTracks + 1; t <= j.oldFiles; ++t)
        removeFile(trackFilePath(folder, t), step);
    syncPath(folder, true);
    replaceFile(countTempPath(folder), trackCountPath(folder),
                std::to_string(j.newTracks) + "\n" + kTrackCountFinished + "\n", step);
    syncPath(folder, true);
    removeFile(recutJournalPath(folder), step);
    syncPath(folder, true);
}

// No journal: the switch-over never started, and the old set is as it was. Only the
// temporaries of the unfinished re-cut go.
void rollBack(const std::string& folder, Steps& step) {
    std::error_code ec;
    std::vector<fs::path> temporaries;
    for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator();
         it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (isRecutTemporary(name) && it->path() != fs::path(recutJournalPath(folder)))
            temporaries.push_back(it->path());
    }
    std::sort(temporaries.begin(), temporaries.end());
    for (const auto& path : temporaries)
        removeFile(path.string(), step);
}

// A file of the new set being written, through libsndfile's virtual I/O so that the errno of a
// failed write (a full disk above all) is known, and a test can make one fail.
class NewTrackFile {
public:
    NewTrackFile(const std::string& filePath, const SF_INFO& format, const RecutHooks& seams)
        : path(filePath)
        , hooks(seams) {
        fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (fd < 0) {
            error = errno;
            return;
        }
        SF_INFO info = format;
        info.frames = 0;
        static SF_VIRTUAL_IO io = {&fileLength, &seekTo, &readFrom, &writeTo, &tellOf};
        file = sf_open_virtual(&io, SFM_WRITE, &info, this);
        if (!file && error == 0)
            error = EINVAL;
    }
    ~NewTrackFile() {
        if (file)
            sf_close(file);
        if (fd >= 0)
            ::close(fd);
    }
    NewTrackFile(const NewTrackFile&) = delete;
    NewTrackFile& operator=(const NewTrackFile&) = delete;

    bool ok() const { return file && error == 0; }
    int errorNumber() const { return error ? error : EIO; }
    SNDFILE* get() const { return file; }

    // Closes the file (libsndfile writes its final header) and syncs it to the disk.
    bool finish() {
        if (!file)
            return false;
        const int closed = sf_close(file);
        file = nullptr;
        if (error == 0 && closed != 0)
            error = EIO;
        if (error == 0 && ::fsync(fd) != 0)
            error = errno;
        if (::close(fd) != 0 && error == 0)
            error = errno;
        fd = -1;
        return error == 0;
    }

private:
    static NewTrackFile& self(void* data) { return *static_cast<NewTrackFile*>(data); }
    static sf_count_t fileLength(void* data) {
        struct stat st {};
        return ::fstat(self(data).fd, &st) == 0 ? st.st_size : -1;
    }
    static sf_count_t seekTo(sf_count_t offset, int whence, void* data) {
        return ::lseek(self(data).fd, offset, whence);
    }
    static sf_count_t readFrom(void* into, sf_count_t bytes, void* data) {
        const ssize_t got = ::read(self(data).fd, into, static_cast<size_t>(bytes));
        return got < 0 ? 0 : got;
    }
    static sf_count_t writeTo(const void* from, sf_count_t bytes, void* data) {
        NewTrackFile& f = self(data);
        if (f.error != 0)
            return 0;
        if (f.hooks.failWrite) {
            if (const int e = f.hooks.failWrite(f.path); e != 0) {
                f.error = e;
                return 0;
            }
        }
        const auto* p = static_cast<const char*>(from);
        sf_count_t done = 0;
        while (done < bytes) {
            const ssize_t n = ::write(f.fd, p + done, static_cast<size_t>(bytes - done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                f.error = n < 0 ? errno : ENOSPC;
                break;
            }
            done += n;
        }
        return done;
    }
    static sf_count_t tellOf(void* data) { return ::lseek(self(data).fd, 0, SEEK_CUR); }

    std::string path;
    const RecutHooks& hooks;
    int fd = -1;
    int error = 0;
    SNDFILE* file = nullptr;
};

sf_count_t readFrames(SNDFILE* f, int* into, sf_count_t n) {
    return sf_readf_int(f, into, n);
}
sf_count_t readFrames(SNDFILE* f, double* into, sf_count_t n) {
    return sf_readf_double(f, into, n);
}
sf_count_t writeFrames(SNDFILE* f, const int* from, sf_count_t n) {
    return sf_writef_int(f, from, n);
}
sf_count_t writeFrames(SNDFILE* f, const double* from, sf_count_t n) {
    return sf_writef_double(f, from, n);
}

RecutResult failure(RecutProblem problem, const RecordedSide& side, const std::string& path,
                    const std::string& text) {
    RecutResult r;
    r.problem = problem;
    r.tracks = side.tracks();
    r.path = path;
    r.errorText = text;
    return r;
}

RecutResult writeFailure(int error, const RecordedSide& side, const std::string& path) {
    const bool full = error == ENOSPC || error == EDQUOT;
    return failure(full ? RecutProblem::DiskFull : RecutProblem::WriteFailed, side, path,
                   std::strerror(error));
}

// Copies the side into new files cut at `boundaries`, in the sample type that carries the
// files' format exactly: integers for PCM, doubles for floating point.
template <typename Sample>
RecutResult writeNewSet(const RecordedSide& side, const std::vector<int64_t>& boundaries,
                        const RecutHooks& hooks, Steps& step) {
    SF_INFO format{};
    format.samplerate = static_cast<int>(side.sampleRate);
    format.channels = static_cast<int>(side.channels);
    format.format = side.format;
    std::vector<Sample> block(static_cast<size_t>(kCopyBlockFrames) * side.channels);

    std::vector<int64_t> ends = boundaries; // side frame where each new track ends
    ends.push_back(side.frames());
    int64_t at = 0; // side frame
    int oldTrack = 0;
    std::unique_ptr<SoundFile> source;
    int64_t sourceLeft = 0;
    for (size_t n = 0; n < ends.size(); ++n) {
        const std::string path = newTrackPath(side.folder, static_cast<int>(n + 1));
        step();
        NewTrackFile out(path, format, hooks);
        if (!out.ok())
            return writeFailure(out.errorNumber(), side, path);
        while (at < ends[n]) {
            if (sourceLeft == 0) {
                ++oldTrack;
                const std::string oldPath = trackFilePath(side.folder, oldTrack);
                source = std::make_unique<SoundFile>(oldPath);
                if (!*source)
                    return failure(RecutProblem::ReadFailed, side, oldPath, sf_strerror(nullptr));
                sourceLeft = side.trackFrames[static_cast<size_t>(oldTrack - 1)];
                continue;
            }
            const sf_count_t want = std::min({kCopyBlockFrames, sourceLeft, ends[n] - at});
            if (readFrames(source->get(), block.data(), want) != want)
                return failure(RecutProblem::ReadFailed, side, trackFilePath(side.folder, oldTrack),
                               "the file ends early");
            if (writeFrames(out.get(), block.data(), want) != want || !out.ok())
                return writeFailure(out.errorNumber(), side, path);
            at += want;
            sourceLeft -= want;
        }
        if (!out.finish())
            return writeFailure(out.errorNumber(), side, path);
    }
    return {};
}

bool usesFloatingPoint(int format) {
    const int sub = format & SF_FORMAT_SUBMASK;
    return sub == SF_FORMAT_FLOAT || sub == SF_FORMAT_DOUBLE;
}

uintmax_t bytesOfSide(const RecordedSide& side) {
    uintmax_t bytes = 0;
    for (int t = 1; t <= side.tracks(); ++t) {
        std::error_code ec;
        const uintmax_t size = fs::file_size(trackFilePath(side.folder, t), ec);
        if (!ec)
            bytes += size;
    }
    return bytes;
}

} // namespace

std::string recutJournalPath(const std::string& folder) {
    return folder + "/WXRTTmpFile.recut";
}

bool isRecutTemporary(const std::string& name) {
    return startsWith(name, kNewPrefix) || name == "WXRTTmpFile.recut" ||
           name == "WXRTTmpFile.recut.tmp" || name == "WXRTTmpFile.count.tmp";
}

RecutResult recutSide(const RecordedSide& side, const std::vector<int64_t>& boundaries) {
    return recutSide(side, boundaries, noHooks());
}

void finishInterruptedRecut(const std::string& folder) {
    finishInterruptedRecut(folder, noHooks());
}

void finishInterruptedRecut(const std::string& folder, const RecutHooks& hooks) {
    std::error_code ec;
    if (!fs::is_directory(folder, ec))
        return;
    Steps step{hooks};
    Journal journal;
    if (fs::exists(recutJournalPath(folder), ec)) {
        // A journal only ever appears whole (renamed into place), so one that cannot be read
        // was not written by us: leave the folder as it is.
        if (readJournal(folder, journal))
            rollForward(folder, journal, step);
        return;
    }
    rollBack(folder, step);
}

RecutResult recutSide(const RecordedSide& side, const std::vector<int64_t>& boundaries,
                      const RecutHooks& hooks) {
    const int64_t total = side.frames();
    if (side.tracks() < 1 || side.channels == 0)
        return failure(RecutProblem::BadBoundaries, side, {}, {});
    for (size_t i = 0; i < boundaries.size(); ++i) {
        const bool rising = i == 0 || boundaries[i] > boundaries[i - 1];
        if (!rising || boundaries[i] <= 0 || boundaries[i] >= total)
            return failure(RecutProblem::BadBoundaries, side, {}, {});
    }
    if (boundaries == side.liveBoundaries()) {
        RecutResult same;
        same.tracks = side.tracks();
        return same;
    }

    // Leftovers of an earlier attempt would be taken for this one's files.
    finishInterruptedRecut(side.folder);
    const SideOpen now = openRecordedSide(side.folder, side.tracks());
    if (now.problem != SideProblem::None || now.side.trackFrames != side.trackFrames ||
        now.side.format != side.format)
        return failure(RecutProblem::ReadFailed, side, now.path.empty() ? side.folder : now.path,
                       "the track files are not the side that was read");

    const uintmax_t needed = bytesOfSide(side) + kSpareBytes;
    uintmax_t available = 0;
    if (hooks.freeSpace) {
        available = hooks.freeSpace(side.folder);
    } else {
        std::error_code ec;
        const fs::space_info space = fs::space(side.folder, ec);
        available = ec ? needed : space.available;
    }
    if (available < needed)
        return failure(RecutProblem::DiskFull, side, side.folder, std::strerror(ENOSPC));

    Steps step{hooks};
    const RecutResult written = usesFloatingPoint(side.format)
                                    ? writeNewSet<double>(side, boundaries, hooks, step)
                                    : writeNewSet<int>(side, boundaries, hooks, step);
    if (written.problem != RecutProblem::None) {
        Steps cleanup{noHooks()};
        rollBack(side.folder, cleanup);
        return written;
    }
    if (!syncPath(side.folder, true)) {
        const int error = errno;
        Steps cleanup{noHooks()};
        rollBack(side.folder, cleanup);
        return writeFailure(error, side, side.folder);
    }

    // From the moment the journal is in place the new set is the side.
    const Journal journal{side.tracks(), static_cast<int>(boundaries.size()) + 1,
                          std::max(side.tracks(), trackFilesInARow(side.folder))};
    if (const int error = replaceFile(journalTempPath(side.folder), recutJournalPath(side.folder),
                                      journalText(journal), step);
        error != 0) {
        Steps cleanup{noHooks()};
        rollBack(side.folder, cleanup);
        return writeFailure(error, side, recutJournalPath(side.folder));
    }
    syncPath(side.folder, true);
    rollForward(side.folder, journal, step);

    RecutResult done;
    done.tracks = journal.newTracks;
    return done;
}

} // namespace waxline
