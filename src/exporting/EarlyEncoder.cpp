#include "exporting/EarlyEncoder.h"

#include "exporting/ExportFolders.h"
#include "exporting/Mp3Encoder.h"

#include <fcntl.h>
#include <sched.h>
#include <sndfile.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>

extern char** environ;

namespace waxline::exporting {

namespace fs = std::filesystem;

namespace {

constexpr size_t kHashedBytes = 64 * 1024;
constexpr std::chrono::milliseconds kQuietTime{500};
constexpr std::chrono::seconds kQuietLimit{10};
constexpr const char* kStampHeader = "waxline-early-mp3 1";

// The kernel's I/O priority encoding (linux/ioprio.h): the class in the top bits.
constexpr int kIoprioWhoProcess = 1;
constexpr int kIoprioClassIdle = 3;
constexpr int kIoprioClassShift = 13;

uint64_t fnv1a(uint64_t hash, const char* data, size_t size) {
    for (size_t i = 0; i < size; ++i) {
        hash ^= static_cast<unsigned char>(data[i]);
        hash *= 1099511628211ull;
    }
    return hash;
}

std::string withSuffix(const std::string& wavPath, const char* suffix) {
    return fs::path(wavPath).replace_extension(suffix).string();
}

std::optional<TrackStamp> readStamp(const std::string& path) {
    std::ifstream in(path);
    std::string header;
    TrackStamp stamp;
    if (!std::getline(in, header) || header != kStampHeader)
        return std::nullopt;
    if (!(in >> stamp.size >> stamp.modifiedNanos >> stamp.frames >> stamp.contentHash))
        return std::nullopt;
    return stamp;
}

void removeQuietly(const std::string& path) {
    std::error_code ec;
    fs::remove(path, ec);
}

} // namespace

std::optional<TrackStamp> stampOf(const std::string& wavPath) {
    struct stat status {};
    if (::stat(wavPath.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    SF_INFO info{};
    SNDFILE* file = sf_open(wavPath.c_str(), SFM_READ, &info);
    if (!file)
        return std::nullopt;
    sf_close(file);
    TrackStamp stamp;
    stamp.size = static_cast<uint64_t>(status.st_size);
    stamp.modifiedNanos =
        static_cast<int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    stamp.frames = info.frames;

    std::ifstream in(wavPath, std::ios::binary);
    std::vector<char> block(kHashedBytes);
    uint64_t hash = 14695981039346656037ull;
    in.read(block.data(), static_cast<std::streamsize>(block.size()));
    hash = fnv1a(hash, block.data(), static_cast<size_t>(in.gcount()));
    if (stamp.size > kHashedBytes) {
        in.clear();
        // The last block, or what follows the first one when the file is shorter than two.
        const uint64_t tail = std::max<uint64_t>(kHashedBytes, stamp.size - kHashedBytes);
        in.seekg(static_cast<std::streamoff>(tail));
        in.read(block.data(), static_cast<std::streamsize>(block.size()));
        hash = fnv1a(hash, block.data(), static_cast<size_t>(in.gcount()));
    }
    stamp.contentHash = hash;
    return stamp;
}

std::string earlyMp3Path(const std::string& wavPath) {
    return withSuffix(wavPath, ("early." + mp3Encoding().extension).c_str());
}

std::string earlyStampPath(const std::string& wavPath) {
    return withSuffix(wavPath, "early.stamp");
}

std::string earlyPartialPath(const std::string& wavPath) {
    // ffmpeg picks the output format by the name's ending, so the partial name ends in .mp3 too.
    return withSuffix(wavPath, ("encoding." + mp3Encoding().extension).c_str());
}

bool earlyMp3Ready(const std::string& wavPath) {
    const auto stamp = readStamp(earlyStampPath(wavPath));
    if (!stamp)
        return false;
    std::error_code ec;
    const auto size = fs::file_size(earlyMp3Path(wavPath), ec);
    if (ec || size == 0)
        return false;
    const auto now = stampOf(wavPath);
    return now && *now == *stamp;
}

bool takeEarlyMp3(const std::string& wavPath, const std::string& mp3Path) {
    const bool ready = earlyMp3Ready(wavPath);
    std::error_code ec;
    if (ready)
        fs::rename(earlyMp3Path(wavPath), mp3Path, ec);
    // The stamp goes last: a stamp without its MP3 is never taken for a finished one.
    removeQuietly(earlyMp3Path(wavPath));
    removeQuietly(earlyStampPath(wavPath));
    return ready && !ec;
}

std::vector<std::pair<int, int>> trackRuns(const std::vector<int>& tracks) {
    std::vector<std::pair<int, int>> runs;
    for (const int track : tracks) {
        if (!runs.empty() && runs.back().second + 1 == track)
            runs.back().second = track;
        else
            runs.emplace_back(track, track);
    }
    return runs;
}

EarlyEncoder::~EarlyEncoder() {
    cancelAndWait();
}

void EarlyEncoder::begin(const std::string& recordingFolder) {
    cancelAndWait();
    std::lock_guard lock(mutex);
    folder = recordingFolder;
    offered = 0;
    finished = 0;
}

void EarlyEncoder::tracksClosed(int count) {
    std::lock_guard lock(mutex);
    if (folder.empty() || count <= offered)
        return;
    for (int track = offered + 1; track <= count; ++track)
        waiting.push_back(track);
    offered = count;
    if (!worker.joinable()) {
        cancelling = false;
        worker = std::thread([this] { work(); });
    }
    changed.notify_all();
}

void EarlyEncoder::settle(int track) {
    std::unique_lock lock(mutex);
    waiting.erase(std::remove(waiting.begin(), waiting.end(), track), waiting.end());
    if (running == track) {
        abandoned = track;
        if (child > 0)
            ::kill(child, SIGKILL);
    }
    changed.wait(lock, [&] { return running != track; });
}

void EarlyEncoder::finish() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return waiting.empty() && running == 0; });
}

void EarlyEncoder::cancelAndWait() {
    {
        std::lock_guard lock(mutex);
        cancelling = true;
        waiting.clear();
        if (child > 0)
            ::kill(child, SIGKILL);
        changed.notify_all();
    }
    if (worker.joinable())
        worker.join();
    removePartials();
    std::lock_guard lock(mutex);
    cancelling = false;
}

int EarlyEncoder::finishedCount() const {
    std::lock_guard lock(mutex);
    return finished;
}

void EarlyEncoder::removePartials() {
    if (folder.empty())
        return;
    for (int track = 1; track <= offered; ++track) {
        const std::string wav = trackFileName(folder, track);
        removeQuietly(earlyPartialPath(wav));
        removeQuietly(earlyStampPath(wav) + ".part");
    }
}

// Worker thread.
void EarlyEncoder::work() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [&] { return cancelling || !waiting.empty(); });
        if (cancelling)
            return;
        const int track = waiting.front();
        waiting.pop_front();
        running = track;
        lock.unlock();
        const bool made = encodeOne(track);
        lock.lock();
        running = 0;
        abandoned = 0;
        if (made)
            ++finished;
        changed.notify_all();
    }
}

// Worker thread: waits until the track file has not changed for kQuietTime, as a closed file
// never does again while the one being recorded is written many times a second. Nothing when
// it is missing, keeps changing for kQuietLimit, or the wait was cancelled or taken over.
std::optional<TrackStamp> EarlyEncoder::quietStamp(const std::string& wav) {
    const auto start = std::chrono::system_clock::now();
    for (;;) {
        auto stamp = stampOf(wav);
        if (!stamp)
            return std::nullopt;
        const auto modified = std::chrono::system_clock::time_point(
            std::chrono::duration_cast<std::chrono::system_clock::duration>(
                std::chrono::nanoseconds(stamp->modifiedNanos)));
        const auto now = std::chrono::system_clock::now();
        if (now - modified >= kQuietTime)
            return stamp;
        if (now - start >= kQuietLimit)
            return std::nullopt;
        std::unique_lock lock(mutex);
        if (changed.wait_for(lock, kQuietTime / 5, [&] { return cancelling || abandoned != 0; }))
            return std::nullopt;
    }
}

// Worker thread.
bool EarlyEncoder::encodeOne(int track) {
    const std::string wav = trackFileName(folder, track);
    const auto before = quietStamp(wav);
    if (!before || earlyMp3Ready(wav))
        return false;
    const std::string program = ffmpegProgram();
    if (program.empty())
        return false;
    // Whatever an earlier run left for this track goes first, the stamp before its MP3.
    removeQuietly(earlyStampPath(wav));
    removeQuietly(earlyMp3Path(wav));
    const std::string partial = earlyPartialPath(wav);
    removeQuietly(partial);

    const std::vector<std::string> words = encoderArguments(program, wav, partial, mp3Encoding());
    std::vector<char*> argv;
    for (const auto& word : words)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);

    const int devNull = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    const pid_t parent = ::getpid();
    pid_t pid = -1;
    {
        std::lock_guard lock(mutex);
        if (cancelling || abandoned == track) {
            if (devNull >= 0)
                ::close(devNull);
            return false;
        }
        pid = ::fork();
        if (pid == 0) {
            // Only system calls from here to exec. Dies with us, stays out of the terminal's
            // Ctrl-C, and runs only when nothing else wants the processor or the disk.
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::getppid() != parent)
                ::_exit(127);
            ::setpgid(0, 0);
            ::setpriority(PRIO_PROCESS, 0, 19);
            sched_param idle{};
            ::sched_setscheduler(0, SCHED_IDLE, &idle);
            ::syscall(SYS_ioprio_set, kIoprioWhoProcess, 0, kIoprioClassIdle << kIoprioClassShift);
            if (devNull >= 0) {
                ::dup2(devNull, 0);
                ::dup2(devNull, 1);
                ::dup2(devNull, 2);
            }
            ::execve(argv[0], argv.data(), environ);
            ::_exit(127);
        }
        child = pid;
    }
    if (devNull >= 0)
        ::close(devNull);
    if (pid < 0) {
        std::lock_guard lock(mutex);
        child = -1;
        return false;
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    {
        std::lock_guard lock(mutex);
        child = -1;
        if (cancelling || abandoned == track) {
            removeQuietly(partial);
            return false;
        }
    }
    std::error_code ec;
    const auto after = stampOf(wav);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || !after || *after != *before ||
        fs::file_size(partial, ec) == 0 || ec) {
        // Failed, or the track file changed meanwhile: the export encodes it itself.
        removeQuietly(partial);
        return false;
    }
    fs::rename(partial, earlyMp3Path(wav), ec);
    if (ec) {
        removeQuietly(partial);
        return false;
    }
    const std::string stampPart = earlyStampPath(wav) + ".part";
    {
        std::ofstream out(stampPart, std::ios::trunc);
        out << kStampHeader << '\n'
            << before->size << ' ' << before->modifiedNanos << ' ' << before->frames << ' '
            << before->contentHash << '\n';
        if (!out.flush()) {
            out.close();
            removeQuietly(stampPart);
            return false;
        }
    }
    fs::rename(stampPart, earlyStampPath(wav), ec);
    if (ec) {
        removeQuietly(stampPart);
        return false;
    }
    return true;
}

} // namespace waxline::exporting
