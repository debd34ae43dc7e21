#include "exporting/EncoderPool.h"

#include <algorithm>
#include <numeric>

namespace waxline::exporting {

std::vector<std::vector<size_t>> balancedShares(const std::vector<uint64_t>& costs,
                                                std::vector<uint64_t> loads) {
    const size_t workers = std::max<size_t>(1, loads.size());
    loads.resize(workers, 0);
    std::vector<std::vector<size_t>> shares(workers);

    // Greedy start: the longest track to the worker with the least to do.
    std::vector<size_t> order(costs.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return costs[a] > costs[b]; });
    for (size_t track : order) {
        const size_t least =
            static_cast<size_t>(std::min_element(loads.begin(), loads.end()) - loads.begin());
        shares[least].push_back(track);
        loads[least] += costs[track];
    }

    // Then lighten the busiest worker by the move or swap that helps most, while one helps.
    // Each step lowers the busiest load or the number of workers carrying it, so it ends.
    for (;;) {
        const size_t busiest =
            static_cast<size_t>(std::max_element(loads.begin(), loads.end()) - loads.begin());
        const uint64_t top = loads[busiest];
        uint64_t bestPeak = top;
        size_t bestOther = 0, bestMine = 0, bestTheirs = 0;
        bool found = false, bestIsSwap = false;
        for (size_t other = 0; other < workers; ++other) {
            if (other == busiest)
                continue;
            for (size_t m = 0; m < shares[busiest].size(); ++m) {
                const uint64_t mine = costs[shares[busiest][m]];
                const uint64_t moved = std::max(top - mine, loads[other] + mine);
                if (moved < bestPeak) {
                    bestPeak = moved;
                    bestOther = other;
                    bestMine = m;
                    bestIsSwap = false;
                    found = true;
                }
                for (size_t t = 0; t < shares[other].size(); ++t) {
                    const uint64_t theirs = costs[shares[other][t]];
                    if (theirs >= mine)
                        continue;
                    const uint64_t swapped =
                        std::max(top - mine + theirs, loads[other] - theirs + mine);
                    if (swapped < bestPeak) {
                        bestPeak = swapped;
                        bestOther = other;
                        bestMine = m;
                        bestTheirs = t;
                        bestIsSwap = true;
                        found = true;
                    }
                }
            }
        }
        if (!found)
            break;
        const size_t mine = shares[busiest][bestMine];
        shares[busiest].erase(shares[busiest].begin() + static_cast<std::ptrdiff_t>(bestMine));
        loads[busiest] -= costs[mine];
        if (bestIsSwap) {
            const size_t theirs = shares[bestOther][bestTheirs];
            shares[bestOther].erase(shares[bestOther].begin() +
                                    static_cast<std::ptrdiff_t>(bestTheirs));
            loads[bestOther] -= costs[theirs];
            shares[busiest].push_back(theirs);
            loads[busiest] += costs[theirs];
        }
        shares[bestOther].push_back(mine);
        loads[bestOther] += costs[mine];
    }
    for (auto& share : shares)
        std::sort(share.begin(), share.end());
    return shares;
}

EncoderPool::EncoderPool(unsigned workerCount, Encode encode, Cost cost)
    : encode(std::move(encode))
    , cost(std::move(cost)) {
    const size_t n = std::max(1u, workerCount);
    shares.resize(n);
    runningCost.resize(n, 0);
    for (size_t w = 0; w < n; ++w)
        workers.emplace_back([this, w] { work(w); });
}

EncoderPool::~EncoderPool() {
    stop();
}

void EncoderPool::stop() {
    {
        std::lock_guard lock(mutex);
        stopping = true;
    }
    changed.notify_all();
    for (auto& worker : workers) {
        if (worker.joinable())
            worker.join();
    }
}

void EncoderPool::offer(int count) {
    std::map<int, uint64_t> added;
    {
        std::lock_guard lock(mutex);
        if (count <= offered)
            return;
        for (int track = offered + 1; track <= count; ++track)
            added[track] = 0;
    }
    // The cost may ask the file system, so it is found outside the lock.
    for (auto& [track, c] : added)
        c = cost ? cost(track) : 1;
    {
        std::lock_guard lock(mutex);
        for (const auto& [track, c] : added) {
            if (track <= offered)
                continue;
            costs[track] = c;
            shares.front().push_back(track);
        }
        offered = std::max(offered, count);
        shareOut();
    }
    changed.notify_all();
}

// Under the lock: shares every waiting track out afresh, counting what each worker has under
// way.
void EncoderPool::shareOut() {
    std::vector<int> waiting;
    for (auto& share : shares) {
        waiting.insert(waiting.end(), share.begin(), share.end());
        share.clear();
    }
    std::vector<uint64_t> waitingCosts;
    for (int track : waiting)
        waitingCosts.push_back(costs[track]);
    const auto planned = balancedShares(waitingCosts, runningCost);
    for (size_t w = 0; w < shares.size(); ++w) {
        for (size_t i : planned[w])
            shares[w].push_back(waiting[i]);
        std::sort(shares[w].begin(), shares[w].end());
    }
}

// Under the lock: the track `worker` should encode next, or 0.
int EncoderPool::nextTrack(size_t worker) {
    for (auto it = again.begin(); it != again.end(); ++it) {
        if (!running.count(*it)) {
            const int track = *it;
            again.erase(it);
            return track;
        }
    }
    if (!shares[worker].empty()) {
        const int track = shares[worker].front();
        shares[worker].pop_front();
        return track;
    }
    // Out of work: help the share with the most left, with its longest track.
    std::deque<int>* busiest = nullptr;
    uint64_t most = 0;
    for (auto& share : shares) {
        uint64_t left = 0;
        for (int track : share)
            left += costs[track];
        if (!share.empty() && (!busiest || left > most)) {
            most = left;
            busiest = &share;
        }
    }
    if (!busiest)
        return 0;
    auto longest = std::max_element(busiest->begin(), busiest->end(),
                                    [&](int a, int b) { return costs[a] < costs[b]; });
    const int track = *longest;
    busiest->erase(longest);
    return track;
}

void EncoderPool::work(size_t worker) {
    std::unique_lock lock(mutex);
    for (;;) {
        int track = 0;
        changed.wait(lock, [&] { return stopping || (track = nextTrack(worker)) != 0; });
        if (stopping)
            return;
        running[track] = worker;
        runningCost[worker] = costs[track];
        lock.unlock();
        EncodedTrack result = encode(track);
        lock.lock();
        running.erase(track);
        runningCost[worker] = 0;
        if (rerun.erase(track))
            again.push_front(track);
        else
            done[track] = std::move(result);
        changed.notify_all();
    }
}

void EncoderPool::encodeAgain(int track) {
    offer(track);
    {
        std::lock_guard lock(mutex);
        done.erase(track);
        if (running.count(track)) {
            rerun.insert(track);
            return;
        }
        for (auto& share : shares)
            share.erase(std::remove(share.begin(), share.end(), track), share.end());
        again.erase(std::remove(again.begin(), again.end(), track), again.end());
        again.push_front(track);
        costs.emplace(track, 1);
    }
    changed.notify_all();
}

EncodedTrack EncoderPool::take(int track) {
    offer(track);
    std::unique_lock lock(mutex);
    auto held = [&] {
        if (done.count(track) || running.count(track))
            return true;
        if (stopping)
            return false;
        if (std::find(again.begin(), again.end(), track) != again.end())
            return true;
        for (const auto& share : shares) {
            if (std::find(share.begin(), share.end(), track) != share.end())
                return true;
        }
        return false;
    };
    changed.wait(lock, [&] { return done.count(track) > 0 || !held(); });
    if (auto it = done.find(track); it != done.end()) {
        EncodedTrack result = std::move(it->second);
        done.erase(it);
        return result;
    }
    // Nobody will encode it: do it here, and make sure no worker starts it meanwhile.
    for (auto& share : shares)
        share.erase(std::remove(share.begin(), share.end(), track), share.end());
    again.erase(std::remove(again.begin(), again.end(), track), again.end());
    lock.unlock();
    return encode(track);
}

} // namespace waxline::exporting
