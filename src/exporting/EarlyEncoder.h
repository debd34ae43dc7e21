#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace waxline::exporting {

// What a track file was when an MP3 was made from it: a file that was cut again, recorded
// anew or changed in any way since differs in at least one of these.
struct TrackStamp {
    uint64_t size = 0;
    int64_t modifiedNanos = 0;
    int64_t frames = 0;       // the length its header gives
    uint64_t contentHash = 0; // of its first and last 64 KiB
    bool operator==(const TrackStamp&) const = default;
};

// The stamp of the track file as it is now; nothing when it cannot be read as audio.
std::optional<TrackStamp> stampOf(const std::string& wavPath);

// Where a track's MP3 made behind the recording lies once it is finished, its stamp (written
// only after the MP3 is complete) and the name ffmpeg writes to meanwhile. All three sit beside
// the track file, so emptying the export folder takes them along.
std::string earlyMp3Path(const std::string& wavPath);
std::string earlyStampPath(const std::string& wavPath);
std::string earlyPartialPath(const std::string& wavPath);

// Whether a finished early MP3 of the track file is there and was made from the file as it is
// now.
bool earlyMp3Ready(const std::string& wavPath);

// Moves a ready early MP3 to `mp3Path` for the export to tag; true when it did. Early files
// that do not fit the track file any more are removed, and false tells the caller to encode.
bool takeEarlyMp3(const std::string& wavPath, const std::string& mp3Path);

// Ascending track numbers gathered into runs of consecutive ones, first and last of each:
// {1, 2, 3, 5} gives {1, 3}, {5, 5}. For saying which tracks were ready in few words.
std::vector<std::pair<int, int>> trackRuns(const std::vector<int>& tracks);

// Encodes the closed track files of a recording to MP3 while the next one records, with the
// export's own ffmpeg command, one at a time, at the lowest CPU and I/O priority so that the
// recording never waits for it. An MP3 becomes visible to the export only as a whole: ffmpeg
// writes to a partial name, which is renamed when it is done, and only then is the stamp of its
// source written (under a temporary name, renamed too). A kill at any step leaves nothing the
// export would take for finished.
// Main thread, except settle(), which the export's workers call.
class EarlyEncoder {
public:
    EarlyEncoder() = default;
    ~EarlyEncoder();
    EarlyEncoder(const EarlyEncoder&) = delete;
    EarlyEncoder& operator=(const EarlyEncoder&) = delete;

    // A new recording into `folder`: whatever ran for the last one is cancelled first.
    void begin(const std::string& folder);

    // Tracks 1 to `count` of the recording are closed and may be encoded; counts at or below
    // one given before change nothing.
    void tracksClosed(int count);

    // Before the export encodes `track` itself: drops it when it waits here, and stops it when
    // it is being encoded, as at idle priority on a busy machine it may not finish for long;
    // one finished before stays for the export to take. Any thread.
    void settle(int track);

    // Waits until every track offered so far is encoded (or given up).
    void finish();

    // Kills a running ffmpeg, drops the waiting tracks, waits for the worker and removes
    // partial files. Finished early MP3s stay. Idempotent.
    void cancelAndWait();

    // How many MP3s were finished since begin(); for reports and tests.
    int finishedCount() const;

private:
    void work();
    bool encodeOne(int track);
    std::optional<TrackStamp> quietStamp(const std::string& wav);
    void removePartials();

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::string folder;
    bool cancelling = false;
    int offered = 0;
    int running = 0;   // the track being encoded, 0 for none
    int abandoned = 0; // the running track the export took over
    pid_t child = -1;
    int finished = 0;
    std::deque<int> waiting;
    std::thread worker;
};

} // namespace waxline::exporting
