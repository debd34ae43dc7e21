#pragma once

#include "filters/SideSplitter.h"

#include <cstdint>
#include <vector>

namespace Sonra::Audio::Filters {

// Which splits a side should keep: the live detector's, which the recording made, or the
// whole-side splitter's proposal. The proposal wins only where it is sure: each of its
// boundaries is a clear gap, and each live split it leaves out lies in sound it is sure is music.
// Anything less leaves the live splits standing and the proposal as a suggestion.
struct ProposalTrust {
    enum class Choice { Live, Proposal };
    enum class Reason {
        Agrees,          // the proposal splits where the live detector did
        Confident,       // every difference is a clear gap added or a split inside music removed
        DoubtfulAdded,   // a boundary it adds (or keeps) is not a clear gap
        DoubtfulRemoved, // a live split it removes might be a gap after all
        NoProposal,      // the splitter had nothing to propose (no music, a bad count)
    };
    Choice choice = Choice::Live;
    Reason reason = Reason::NoProposal;
    int added = 0;   // proposed boundaries with no live split in their gap
    int removed = 0; // live splits with no proposed boundary near them
    double at = 0;   // side seconds of the first doubtful boundary, for the front end's words

    bool differs() const { return added > 0 || removed > 0; }

    // A boundary the proposal adds must be at least this sure of its gap.
    static constexpr float kSureGap = 0.9f;
    // ... and the half second around it no more than this far above the noise in the low band,
    // where soft music too faint for the level to tell would lie (a gap's edges may hold a fade).
    static constexpr float kDarkDb = 1;
    // ... and its quiet at least this share of the side's typical clear gap.
    static constexpr double kShortOfTypical = 0.4;
    // A live split it removes must lie in sound this far above the groove noise throughout
    // the live detector's two seconds of quiet before it.
    static constexpr float kSureMusicDb = 12;
    // A live split and a proposed boundary this close, or the live split inside the
    // boundary's quiet stretch, stand for the same gap: the live detector, deaf to the last
    // of a fade, often splits a few seconds early. The proposal moves it only when sure.
    static constexpr double kSameSeconds = 6;

    static ProposalTrust judge(const SideSplitter& splitter, const SplitProposal& proposal,
                               const std::vector<int64_t>& live);
};

} // namespace Sonra::Audio::Filters
