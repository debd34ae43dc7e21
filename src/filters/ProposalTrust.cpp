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
        if (near && !moved) {
            if (b.confidence < kSureGap) {
                doubtfulAdded = true;
                doubt(b.sample);
            }
            continue;
        }
        ++t.added;
        if (b.confidence < kSureGap) {
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
    } else if (doubtfulAdded) {
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
