#pragma once

#include "exporting/ExportProblem.h"
#include "exporting/TrackLoudness.h"
#include "restoration/Cleaning.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace waxline::exporting {

// What a worker made of one track: its MP3, its FLAC or both, tagged, beside the track file.
struct EncodedTrack {
    std::string mp3Path;  // the file the library gets first: the MP3, or the FLAC when alone
    std::string flacPath; // the lossless copy, when one is made
    std::vector<TrackLoudness> loudness;  // per file made, in the order above, when measured
    restoration::CleaningReport cleaning; // what cleaning repaired, when asked for
    ExportProblem problem;                // none when the MP3 is there and tagged
    std::vector<TrackWarning> warnings;
    bool early = false; // its MP3 was made behind the recording, only tagged here
    bool ok() const { return !problem.failed(); }
};

// Splits tracks of the given costs between workers that already carry `loads` (one entry per
// worker) so that the busiest worker's total is as small as a greedy start (longest track to
// the least loaded worker) improved by moves and swaps between workers can make it. Returns
// each worker's tracks (indexes into `costs`) in ascending order.
std::vector<std::vector<size_t>> balancedShares(const std::vector<uint64_t>& costs,
                                                std::vector<uint64_t> loads);

// Encodes the tracks of one export on worker threads while the export thread takes the
// results in track order. The offered tracks are shared out between the workers by their
// cost (balancedShares), so that both cores finish together; a worker goes through its
// share in track order, so that the export thread can finish early tracks while later ones
// are encoded, and one that runs out takes the longest waiting track of the busiest share.
// A track asked for again goes before all others. Destroying the pool stops it and joins
// the workers: encodings under way run to their end, tracks not started are dropped.
class EncoderPool {
public:
    // Runs on a worker thread, one track at a time per worker; must touch only that track's
    // files and must not throw.
    using Encode = std::function<EncodedTrack(int track)>;
    // The expected work of a track (the size of its file); without it tracks are equal.
    using Cost = std::function<uint64_t(int track)>;

    EncoderPool(unsigned workers, Encode encode, Cost cost = {});
    ~EncoderPool();
    EncoderPool(const EncoderPool&) = delete;
    EncoderPool& operator=(const EncoderPool&) = delete;

    // Tracks 1 to `count` may be encoded from now on; a smaller count than before changes
    // nothing (the recorder only ever adds tracks).
    void offer(int count);

    // Blocks until `track` is encoded and hands the result over, offering the track first if
    // needed. A track the pool no longer holds (taken before, or the pool stopped before it
    // started) is encoded on the calling thread.
    EncodedTrack take(int track);

    // Encodes `track` anew before any other: a result not yet taken is dropped, and one
    // under way is dropped when it ends.
    void encodeAgain(int track);

    // Hands out no more tracks and joins the workers. Idempotent.
    void stop();

private:
    void work(size_t worker);
    int nextTrack(size_t worker);
    void shareOut();

    Encode encode;
    Cost cost;

    std::mutex mutex;
    std::condition_variable changed;
    int offered = 0;
    bool stopping = false;
    std::map<int, uint64_t> costs;
    std::vector<std::deque<int>> shares; // per worker, waiting tracks in track order
    std::deque<int> again;               // asked for again, before the shares
    std::map<int, size_t> running;       // track -> the worker encoding it
    std::vector<uint64_t> runningCost;   // per worker, the cost of its track under way
    std::set<int> rerun;                 // running tracks whose result is to be dropped
    std::map<int, EncodedTrack> done;
    std::vector<std::thread> workers;
};

} // namespace waxline::exporting
