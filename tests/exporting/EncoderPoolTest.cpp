#include "exporting/EncoderPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace waxline::exporting {
namespace {

// Holds the encodings of chosen tracks until the test lets them go, and records what was
// started, in order and on which thread.
class FakeEncoder {
public:
    explicit FakeEncoder(std::set<int> held = {})
        : held(std::move(held)) {}

    EncodedTrack operator()(int track) {
        std::unique_lock lock(mutex);
        const int attempt = ++attempts[track];
        started.push_back(track);
        threads[track] = std::this_thread::get_id();
        changed.notify_all();
        changed.wait(lock, [&] { return !held.count(track); });
        EncodedTrack result;
        result.mp3Path = "t" + std::to_string(track) + "#" + std::to_string(attempt);
        if (failFirst.count(track) && attempt == 1)
            result.problem = {ExportProblem::Kind::EncoderFailed, {}, "broken", "ffmpeg"};
        ++finished;
        return result;
    }

    void release(int track) {
        std::lock_guard lock(mutex);
        held.erase(track);
        changed.notify_all();
    }

    // Waits until every one of `tracks` has started.
    void awaitStarted(std::set<int> tracks) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] {
            return std::all_of(tracks.begin(), tracks.end(), [&](int t) {
                return std::find(started.begin(), started.end(), t) != started.end();
            });
        });
    }

    std::vector<int> startOrder() {
        std::lock_guard lock(mutex);
        return started;
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::set<int> held;
    std::set<int> failFirst;
    std::map<int, int> attempts;
    std::map<int, std::thread::id> threads;
    std::vector<int> started;
    std::atomic<int> finished{0};
};

EncoderPool::Encode through(FakeEncoder& fake) {
    return [&fake](int track) { return fake(track); };
}

TEST(EncoderPool, HandsEveryTrackOverInTrackOrderOnceEach) {
    struct Case {
        unsigned workers;
        int tracks;
    };
    const Case cases[] = {{1, 5}, {2, 7}, {3, 22}, {4, 2}};
    for (const auto& c : cases) {
        FakeEncoder fake;
        // Costs falling with the track number make later tracks start (and end) first.
        EncoderPool pool(c.workers, through(fake),
                         [&](int track) { return static_cast<uint64_t>(100 - track); });
        pool.offer(c.tracks);
        for (int track = 1; track <= c.tracks; ++track)
            EXPECT_EQ(pool.take(track).mp3Path, "t" + std::to_string(track) + "#1")
                << c.workers << " workers";
        pool.stop();
        for (int track = 1; track <= c.tracks; ++track)
            EXPECT_EQ(fake.attempts[track], 1) << "track " << track;
        EXPECT_EQ(fake.attempts.size(), static_cast<size_t>(c.tracks));
    }
}

TEST(EncoderPool, TracksOfferedLaterAreEncodedToo) {
    FakeEncoder fake;
    EncoderPool pool(2, through(fake));
    pool.offer(2);
    EXPECT_EQ(pool.take(1).mp3Path, "t1#1");
    pool.offer(1); // a smaller count changes nothing
    EXPECT_EQ(pool.take(2).mp3Path, "t2#1");
    EXPECT_EQ(pool.take(3).mp3Path, "t3#1"); // taking offers it
    pool.offer(4);
    EXPECT_EQ(pool.take(4).mp3Path, "t4#1");
}

// A worker that has done its share helps the busiest one, longest waiting track first.
TEST(EncoderPool, AnIdleWorkerTakesTheLongestWaitingTrackFirst) {
    // Shared out as {1} and {2, 3, 4, 5}; track 2 holds the second worker up.
    const std::map<int, uint64_t> costs = {{1, 100}, {2, 10}, {3, 30}, {4, 20}, {5, 40}};
    FakeEncoder fake({2});
    EncoderPool pool(2, through(fake), [&](int track) { return costs.at(track); });
    pool.offer(5);
    fake.awaitStarted({1, 3, 4, 5});
    fake.release(2);
    for (int track = 1; track <= 5; ++track)
        EXPECT_TRUE(pool.take(track).ok());
    std::vector<int> helped;
    for (int track : fake.startOrder()) {
        if (track != 1 && track != 2)
            helped.push_back(track);
    }
    EXPECT_EQ(helped, (std::vector<int>{5, 3, 4}));
}

TEST(EncoderPool, AFailedTrackIsEncodedAgainOnRequest) {
    FakeEncoder fake({3});
    fake.failFirst = {2};
    EncoderPool pool(2, through(fake));
    pool.offer(3);
    const EncodedTrack first = pool.take(2);
    EXPECT_FALSE(first.ok());
    EXPECT_EQ(first.problem.kind, ExportProblem::Kind::EncoderFailed);
    pool.encodeAgain(2);
    const EncodedTrack second = pool.take(2);
    EXPECT_TRUE(second.ok());
    EXPECT_EQ(second.mp3Path, "t2#2");

    // Asked again while it is being encoded: that encoding's result is dropped.
    fake.awaitStarted({3});
    pool.encodeAgain(3);
    fake.release(3);
    EXPECT_EQ(pool.take(3).mp3Path, "t3#2");
    // Asked again after its result was taken: encoded anew as well.
    EXPECT_EQ(pool.take(1).mp3Path, "t1#1");
    pool.encodeAgain(1);
    EXPECT_EQ(pool.take(1).mp3Path, "t1#2");
}

TEST(EncoderPool, DestructionWaitsForTheEncodingUnderWayAndStartsNoOther) {
    FakeEncoder fake({1});
    auto pool = std::make_unique<EncoderPool>(1, through(fake));
    pool->offer(3);
    fake.awaitStarted({1});
    std::atomic<bool> destroyed{false};
    int finishedWhenDestroyed = -1;
    auto destroyer = std::async(std::launch::async, [&] {
        pool.reset();
        finishedWhenDestroyed = fake.finished;
        destroyed = true;
    });
    // The destructor cannot return while track 1 is held.
    EXPECT_EQ(destroyer.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_FALSE(destroyed);
    fake.release(1);
    destroyer.get();
    EXPECT_EQ(finishedWhenDestroyed, 1);
    EXPECT_EQ(fake.startOrder(), std::vector<int>{1});
}

TEST(EncoderPool, ATrackNoWorkerWillEncodeIsEncodedByWhoeverTakesIt) {
    FakeEncoder fake;
    EncoderPool pool(2, through(fake));
    pool.offer(1);
    EXPECT_EQ(pool.take(1).mp3Path, "t1#1");
    EXPECT_NE(fake.threads[1], std::this_thread::get_id());
    pool.stop();
    EXPECT_EQ(pool.take(2).mp3Path, "t2#1"); // offered after the stop
    EXPECT_EQ(fake.threads[2], std::this_thread::get_id());
    EXPECT_EQ(pool.take(1).mp3Path, "t1#2"); // taken before
}

// The busiest worker's total of the best split, by trying every split.
uint64_t bestPeak(const std::vector<uint64_t>& costs, const std::vector<uint64_t>& loads) {
    const size_t workers = loads.size();
    std::vector<size_t> choice(costs.size(), 0);
    uint64_t best = UINT64_MAX;
    for (;;) {
        std::vector<uint64_t> total = loads;
        for (size_t i = 0; i < costs.size(); ++i)
            total[choice[i]] += costs[i];
        best = std::min(best, *std::max_element(total.begin(), total.end()));
        size_t i = 0;
        while (i < choice.size() && ++choice[i] == workers)
            choice[i++] = 0;
        if (i == choice.size())
            return best;
    }
}

TEST(BalancedShares, FindTheBestSplitWhereLongestFirstDoesNot) {
    struct Case {
        const char* name;
        std::vector<uint64_t> costs;
        std::vector<uint64_t> loads;
    };
    const Case cases[] = {
        // A 30-minute side of 7 tracks (file sizes in 100 kB): longest first gives 0.553 of
        // the whole to one core, the best split 0.515.
        {"seven tracks", {505, 395, 348, 364, 449, 448, 511}, {0, 0}},
        {"equal halves need a swap", {3, 3, 2, 2, 2}, {0, 0}},
        {"one long track", {50, 5, 5, 5}, {0, 0}},
        {"three workers", {8, 7, 6, 5, 4, 3, 3}, {0, 0, 0}},
        {"a worker already busy", {4, 4, 3, 3}, {6, 0}},
        {"fewer tracks than workers", {9}, {0, 0, 0}},
        {"nothing to share", {}, {0, 0}},
    };
    for (const auto& c : cases) {
        const auto shares = balancedShares(c.costs, c.loads);
        ASSERT_EQ(shares.size(), c.loads.size()) << c.name;
        std::vector<size_t> seen;
        uint64_t peak = 0;
        for (size_t w = 0; w < shares.size(); ++w) {
            EXPECT_TRUE(std::is_sorted(shares[w].begin(), shares[w].end())) << c.name;
            uint64_t total = c.loads[w];
            for (size_t i : shares[w]) {
                total += c.costs[i];
                seen.push_back(i);
            }
            peak = std::max(peak, total);
        }
        std::sort(seen.begin(), seen.end());
        std::vector<size_t> all(c.costs.size());
        for (size_t i = 0; i < all.size(); ++i)
            all[i] = i;
        EXPECT_EQ(seen, all) << c.name;
        EXPECT_EQ(peak, bestPeak(c.costs, c.loads)) << c.name;
    }
}

} // namespace
} // namespace waxline::exporting
