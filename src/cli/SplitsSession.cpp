#include "cli/SplitsSession.h"

#include "cli/Terminal.h"
#include "filters/ProposalTrust.h"
#include "filters/SideAnalyser.h"
#include "filters/SideSplitter.h"
#include "filters/SleeveTimes.h"
#include "lookup/KeptNames.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace waxline::cli {

using Sonra::Audio::Filters::ProposalTrust;
using Sonra::Audio::Filters::SideAnalyser;
using Sonra::Audio::Filters::SideSplitter;
using Sonra::Audio::Filters::SleeveTimes;
using Sonra::Audio::Filters::SplitProposal;

namespace {

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// "1:23.4", "1:02:03" or plain seconds ("83.4"); negative when it is none of them.
double parseTime(const std::string& text) {
    const double clock = SleeveTimes::parseDuration(text);
    if (clock >= 0)
        return clock;
    if (text.empty() || !(std::isdigit(static_cast<unsigned char>(text[0])) || text[0] == '.'))
        return -1;
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    return *end == '\0' && std::isfinite(seconds) ? seconds : -1;
}

SleeveTimes parseSleeve(const std::string& text) {
    const SleeveTimes sleeve = SleeveTimes::parse(text);
    switch (sleeve.problem) {
    case SleeveTimes::Problem::None:
        break;
    case SleeveTimes::Problem::Empty:
        throw BadValue("--durations holds no duration");
    case SleeveTimes::Problem::BadEntry:
        throw BadValue("--durations: '" + sleeve.entry +
                       "' is neither a duration (3:12) nor a track label (A1, A1-A5)");
    case SleeveTimes::Problem::BadRange:
        throw BadValue("--durations: the range '" + sleeve.entry +
                       "' runs backwards, across sides or against the durations");
    }
    if (sleeve.count < 1 || sleeve.count > SideSplitter::kMaxTracks)
        throw BadValue("--durations names " + std::to_string(sleeve.count) +
                       " tracks; a side holds 1 to " + std::to_string(SideSplitter::kMaxTracks));
    return sleeve;
}

std::string trustLineOf(const ProposalTrust& t) {
    switch (t.reason) {
    case ProposalTrust::Reason::Agrees:
        return "The proposal agrees with the live splits.";
    case ProposalTrust::Reason::Confident:
        return "Trusting the proposal: every boundary it adds is a clear gap, and every live split "
               "it drops lies inside music.";
    case ProposalTrust::Reason::DoubtfulAdded:
        return "Trusting the live splits: the proposal's boundary at " + sideClock(t.at) +
               " is not a clear gap.";
    case ProposalTrust::Reason::DoubtfulRemoved:
        return "Trusting the live splits: the proposal drops the live split at " + sideClock(t.at) +
               ", which may be a real gap.";
    case ProposalTrust::Reason::NoProposal:
        break;
    }
    return "Trusting the live splits: there is no proposal.";
}

std::string clockList(const std::vector<double>& seconds) {
    std::string text;
    for (double s : seconds)
        text += (text.empty() ? "" : ", ") + sideClock(s);
    return text;
}

} // namespace

std::string sideClock(double seconds) {
    const long long tenths = std::llround(std::max(0.0, seconds) * 10);
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld.%lld", tenths / 600, tenths % 600 / 10,
                  tenths % 10);
    return text;
}

SplitsRequest splitsRequestFrom(Arguments& args, bool allowAt) {
    SplitsRequest request;
    request.tracks =
        static_cast<int>(args.integerOption("--tracks", 1, SideSplitter::kMaxTracks).value_or(0));
    request.durations = args.option("--durations").value_or("");
    if (const auto at = allowAt ? args.option("--at") : std::nullopt) {
        request.byHand = true;
        std::string rest = *at;
        while (true) {
            const auto comma = rest.find(',');
            const std::string entry = trimmed(rest.substr(0, comma));
            const double seconds = parseTime(entry);
            if (seconds < 0)
                throw BadValue("--at: '" + entry + "' is not a time (m:ss.s or seconds)");
            if (!request.atSeconds.empty() && seconds <= request.atSeconds.back())
                throw BadValue("--at: the times must rise, and " + entry + " does not follow " +
                               sideClock(request.atSeconds.back()));
            request.atSeconds.push_back(seconds);
            if (comma == std::string::npos)
                break;
            rest = rest.substr(comma + 1);
        }
        if (request.atSeconds.size() + 1 > static_cast<size_t>(SideSplitter::kMaxTracks))
            throw BadValue("--at gives " + std::to_string(request.atSeconds.size()) +
                           " boundaries; a side holds 1 to " +
                           std::to_string(SideSplitter::kMaxTracks) + " tracks");
    }
    const int given = (request.tracks > 0) + !request.durations.empty() + request.byHand;
    if (given > 1)
        throw UsageError(allowAt ? "give only one of --tracks, --durations and --at"
                                 : "give --tracks or --durations, not both");
    if (!request.durations.empty())
        parseSleeve(request.durations);
    return request;
}

SplitsPlan planSplits(const RecordedSide& side, const SplitsRequest& request) {
    SplitsPlan plan;
    const double rate = side.sampleRate;
    const double length = static_cast<double>(side.frames()) / rate;
    if (request.byHand) {
        plan.method = "typed by hand";
        for (double seconds : request.atSeconds) {
            const auto frame = static_cast<int64_t>(std::llround(seconds * rate));
            if (frame <= 0 || frame >= side.frames())
                throw BadValue("--at " + sideClock(seconds) + " lies outside the side (0:00.0 to " +
                               sideClock(length) + ")");
            plan.boundaries.push_back(frame);
            plan.confidence.push_back(-1);
        }
        return plan;
    }

    if (rate < 8000)
        throw std::runtime_error("the track files' sample rate of " +
                                 std::to_string(side.sampleRate) + " Hz is too low to analyse");
    SideAnalyser analyser(side.sampleRate);
    if (!readSide(side, [&](const float* samples, size_t frames) {
            analyser.addInterleaved(samples, frames, side.channels);
        }))
        throw std::runtime_error("cannot read the track files in " + side.folder);
    const SideSplitter splitter(analyser.takeFeatures());

    SplitProposal proposal;
    std::vector<double> durations;
    if (!request.durations.empty()) {
        const SleeveTimes sleeve = parseSleeve(request.durations);
        durations = sleeve.durations;
        if (durations.empty()) {
            proposal = splitter.proposeCount(sleeve.count);
            plan.method =
                "whole-side splitter, " + std::to_string(sleeve.count) + " tracks from the sleeve";
        } else {
            proposal = splitter.proposeDurations(durations);
            plan.method = "whole-side splitter, fitted to the sleeve's " +
                          std::to_string(durations.size()) + " durations";
        }
    } else if (request.tracks > 0) {
        proposal = splitter.proposeCount(request.tracks);
        plan.method =
            "whole-side splitter, " + std::to_string(request.tracks) + " tracks from the sleeve";
    } else {
        proposal = splitter.propose();
        plan.method = "whole-side splitter";
    }

    switch (proposal.problem) {
    case SplitProposal::Problem::None:
        break;
    case SplitProposal::Problem::NoMusic:
        throw std::runtime_error("nothing on the side sounds like more than groove noise, so "
                                 "there are no tracks to propose");
    case SplitProposal::Problem::CountOutOfRange:
        throw BadValue("a side holds 1 to " + std::to_string(SideSplitter::kMaxTracks) + " tracks");
    case SplitProposal::Problem::DurationsDoNotFit: {
        double total = 0;
        for (double d : durations)
            total += d;
        const double music = static_cast<double>(proposal.musicEnd - proposal.musicStart) / rate;
        throw BadValue("--durations add up to " + sideClock(total) + ", which does not fit the " +
                       sideClock(music > 0 ? music : length) + " of music on the side");
    }
    }
    for (const auto& b : proposal.boundaries) {
        plan.boundaries.push_back(b.sample);
        plan.confidence.push_back(b.confidence);
    }
    const ProposalTrust trust = ProposalTrust::judge(splitter, proposal, side.liveBoundaries());
    plan.trusted = trust.choice == ProposalTrust::Choice::Proposal;
    plan.trustLine = trustLineOf(trust);
    return plan;
}

std::string describe(const RecutResult& r) {
    const std::string kept = "; the tracks are as they were";
    switch (r.problem) {
    case RecutProblem::None:
        return {};
    case RecutProblem::BadBoundaries:
        return "the boundaries do not rise inside the side" + kept;
    case RecutProblem::ReadFailed:
        return "cannot read " + r.path + " (" + r.errorText + ")" + kept;
    case RecutProblem::DiskFull:
        return "not enough free space to write " + r.path + " (" + r.errorText +
               "): free space on its disk and try again" + kept;
    case RecutProblem::WriteFailed:
        return "cannot write " + r.path + " (" + r.errorText + ")" + kept;
    }
    return {};
}

int applySplits(const RecordedSide& side, const SplitsPlan& plan, const char* command) {
    if (plan.boundaries == side.liveBoundaries()) {
        std::fprintf(userOut(), "The tracks already start there: nothing to re-cut\n");
        return side.tracks();
    }
    const RecutResult result = recutSide(side, plan.boundaries);
    if (result.problem != RecutProblem::None) {
        std::fprintf(userErr(), "waxline-cli %s: cannot re-cut the tracks: %s\n", command,
                     describe(result).c_str());
        return -1;
    }
    // Names a lookup kept were for the old cut; a lookup that re-cuts keeps its own afterwards.
    lookup::forgetNames(side.folder);
    std::vector<double> starts;
    for (int64_t b : plan.boundaries)
        starts.push_back(static_cast<double>(b) / side.sampleRate);
    std::fprintf(userOut(), "Re-cut the side into %d track%s (it had %d)%s%s\n", result.tracks,
                 result.tracks == 1 ? "" : "s", side.tracks(),
                 starts.empty() ? "" : ", starting at ", clockList(starts).c_str());
    std::fflush(userOut());
    return result.tracks;
}

int applyRequestAfterRecording(const std::string& folder, int tracks, const SplitsRequest& request,
                               const char* command, int& tracksNow) {
    tracksNow = tracks;
    // Digitize exports nothing then: the tracks would be named for a cut that was not made.
    const std::string kept =
        std::string("the tracks are kept as split live") +
        (std::string(command) == "digitize" ? " and nothing was exported" : "");
    const SideOpen open = openRecordedSide(folder, tracks);
    if (open.problem != SideProblem::None) {
        std::fprintf(userErr(), "waxline-cli %s: cannot read the recorded side (%s); %s\n", command,
                     open.path.empty() ? folder.c_str() : open.path.c_str(), kept.c_str());
        return 1;
    }
    SplitsPlan plan;
    try {
        plan = planSplits(open.side, request);
    } catch (const BadValue& e) {
        std::fprintf(userErr(), "waxline-cli %s: %s; %s\n", command, e.what(), kept.c_str());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(userErr(), "waxline-cli %s: %s; %s\n", command, e.what(), kept.c_str());
        return 1;
    }
    std::fprintf(userOut(), "Splitting the side as asked (%s)\n", plan.method.c_str());
    if (!plan.trustLine.empty())
        std::fprintf(userOut(), "%s\n", plan.trustLine.c_str());
    const int now = applySplits(open.side, plan, command);
    if (now < 0)
        return 1;
    tracksNow = now;
    return 0;
}

} // namespace waxline::cli
