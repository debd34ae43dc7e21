#pragma once

#include "filters/SideSplitter.h"
#include "lookup/ListingFit.h"
#include "lookup/LookupClient.h"
#include "splitting/RecordedSide.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// One lookup on the command line: the client driven to each answer in turn, the recorded side
// analysed once for both the fit and the re-cut.
namespace waxline::cli {

// The command line's words for why a lookup gave nothing.
std::string describe(lookup::LookupProblem problem, int httpStatus);

class LookupRun {
public:
    LookupRun(); // makes the process's QCoreApplication when there is none yet
    ~LookupRun();

    struct Side {
        RecordedSide recorded;
        std::unique_ptr<Sonra::Audio::Filters::SideSplitter> splitter;
        lookup::SideShape shape;
    };
    // The side in `folder` read and analysed; nullopt with `why` when it cannot be.
    std::optional<Side> analyse(const std::string& folder, int tracks, std::string& why);

    std::optional<std::vector<lookup::ReleaseSummary>> search(const QString& query,
                                                              std::string& why);
    std::optional<lookup::Release> read(const std::string& releaseId, std::string& why);

    struct Candidate {
        lookup::ReleaseSummary summary;
        std::optional<lookup::Release> release; // read to fit it
        std::optional<lookup::ListingFit> fit;
    };
    // Records and tapes first; the first `readAtMost` of them read and fitted to the side, or
    // (`untilConfident`) only until one fits it confidently.
    std::vector<Candidate> candidates(const std::vector<lookup::ReleaseSummary>& found,
                                      const Side* side, int readAtMost,
                                      const std::string& onlySide = {},
                                      bool untilConfident = false);

    // Searches artist and album and returns the best fitting release with its fit.
    std::optional<std::pair<lookup::Release, lookup::ListingFit>>
    bestRelease(const std::string& artist, const std::string& album, const Side& side,
                std::string& why);

    void printFit(const lookup::Release& release, const lookup::ListingFit& fit) const;

    // Fetches the cover, re-cuts the side to the fitted listing and keeps the names in its
    // folder; false with the reason said as `command`.
    bool apply(const Side& side, const lookup::Release& release, const lookup::ListingFit& fit,
               const char* command, int& tracksNow);

private:
    std::unique_ptr<lookup::LookupClient> client;
};

// "A (B1-B5, 33 at 45, 1.2 % fast)": which part of which medium, and how fast it ran.
std::string fitText(const lookup::Release& release, const lookup::ListingFit& fit);

} // namespace waxline::cli
