#include "filters/ProposalTrust.h"

#include <algorithm>
#include <cstdlib>

namespace Sonra::Audio::Filters {

ProposalTrust ProposalTrust::judge(const SideSplitter& splitter, const SplitProposal& proposal,
                                   const std::vector<int64_t>& live) {
    ProposalTrust t;
    if (proposal.problem != SplitProposal::Problem::None)
        return t;
    const double rate = splitter.features().sampleRate;
    const auto same = static_cast<int64_t>(kSameSeconds * rate);
    auto matches = [&](const SplitBoundary& b, int64_t l) {
        return std::llabs(b.sample - l) <= same || (l >= b.quietStart && l <= b.quietEnd);
    };
    bool doubtfulAdded = false;
    bool doubtfulRemoved = false;
    double firstDoubt = -1;
    auto doubt = [&](int64_t sample) {
        const double s = static_cast<double>(sample) / rate;
        if (firstDoubt < 0 || s < firstDoubt)
            firstDoubt = s;
    };
    const auto second = static_cast<int64_t>(rate);
    auto clear = [&](const SplitBoundary& b) {
        return b.confidence >= kSureGap &&
               splitter.lowBandPeak(b.sample - second / 4, b.sample + second / 4) <= kDarkDb;
    };
    // A break inside a track sounds like a gap but is seldom as long as the side's real gaps.
    std::vector<double> lengths;
    for (const SplitBoundary& b : proposal.boundaries)
        if (clear(b))
            lengths.push_back(b.cleanSeconds);
    double typical = 0;
    if (!lengths.empty()) {
        std::nth_element(lengths.begin(), lengths.begin() + (lengths.size() - 1) / 2,
                         lengths.end());
        typical = lengths[(lengths.size() - 1) / 2];
    }
    // A count or a sleeve that leaves out a gap as clear as the ones it keeps chose by chance.
    bool chosenByChance = false;
    for (const SplitBoundary& g : splitter.propose().boundaries) {
        if (!clear(g))
            continue;
        bool kept = false;
        for (const SplitBoundary& b : proposal.boundaries)
            kept = kept || (b.sample >= g.quietStart && b.sample <= g.quietEnd);
        if (!kept) {
            chosenByChance = true;
            doubt(g.sample);
        }
    }
    for (const SplitBoundary& b : proposal.boundaries) {
        bool near = false;
        bool moved = true;
        for (int64_t l : live) {
            if (!matches(b, l))
                continue;
            near = true;
            // The live split in the same gap, or a second from the proposed one, is the same.
            moved = moved && !(l >= b.quietStart && l <= b.quietEnd) &&
                    std::llabs(b.sample - l) > second;
        }
        // A proposal is only as sure as its least sure boundary, kept ones included.
        const bool sure = clear(b) && b.cleanSeconds >= kShortOfTypical * typical;
        if (near && !moved) {
            if (!sure) {
                doubtfulAdded = true;
                doubt(b.sample);
            }
            continue;
        }
        ++t.added;
        if (!sure) {
            doubtfulAdded = true;
            doubt(b.sample);
        }
    }
    // The live detector splits two seconds into the quiet it heard: that stretch must be music.
    const auto quietBefore = static_cast<int64_t>(2.0 * rate);
    for (int64_t l : live) {
        bool near = false;
        for (const SplitBoundary& b : proposal.boundaries)
            near = near || matches(b, l);
        if (near)
            continue;
        ++t.removed;
        if (splitter.musicMargin(l - quietBefore, l) < kSureMusicDb) {
            doubtfulRemoved = true;
            doubt(l);
        }
    }
    t.at = std::max(0.0, firstDoubt);
    if (!t.differs()) {
        t.choice = Choice::Proposal;
        t.reason = Reason::Agrees;
    } else if (doubtfulAdded || chosenByChance) {
        t.reason = Reason::DoubtfulAdded;
    } else if (doubtfulRemoved) {
        t.reason = Reason::DoubtfulRemoved;
    } else {
        t.choice = Choice::Proposal;
        t.reason = Reason::Confident;
    }
    return t;
}

} // namespace Sonra::Audio::Filters
