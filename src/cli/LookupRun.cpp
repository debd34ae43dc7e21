#include "cli/LookupRun.h"

#include "cli/SplitsSession.h"
#include "cli/Terminal.h"
#include "filters/SideAnalyser.h"
#include "lookup/KeptNames.h"
#include "lookup/MusicBrainzJson.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace waxline::cli {

using namespace lookup;
using Sonra::Audio::Filters::SideAnalyser;
using Sonra::Audio::Filters::SideSplitter;
using Sonra::Audio::Filters::SplitProposal;

namespace {

// Releases read to fit them cost a second each under the service's rule.
constexpr int kReadForDigitize = 3;

// Runs one call of the client to its answer; the client's own time-out ends every wait.
template <typename T, typename Call> Answer<T> await(Call call) {
    Answer<T> result;
    QEventLoop loop;
    bool done = false;
    call([&](Answer<T> a) {
        result = std::move(a);
        done = true;
        loop.quit();
    });
    if (!done)
        loop.exec();
    return result;
}

} // namespace

std::string describe(LookupProblem problem, int httpStatus) {
    switch (problem) {
    case LookupProblem::None:
        return {};
    case LookupProblem::NoNetwork:
        return "the music database cannot be reached (no network?)";
    case LookupProblem::TimedOut:
        return "the music database did not answer within 10 seconds";
    case LookupProblem::Busy:
        return "the music database is busy and asked us to wait; try again in a minute";
    case LookupProblem::ServiceError:
        return "the music database answered with error " + std::to_string(httpStatus);
    case LookupProblem::BadAnswer:
        return "the music database's answer could not be read";
    case LookupProblem::NoMatch:
        return "the music database knows no such release";
    case LookupProblem::NoCover:
        return "the cover archive has no front cover for the release";
    }
    return {};
}

std::string fitText(const Release& release, const ListingFit& fit) {
    const Medium& medium = release.media[static_cast<size_t>(fit.medium)];
    std::string where = fit.side.empty() ? "whole " + medium.format : "side " + fit.side;
    if (release.media.size() > 1)
        where += " of disc " + std::to_string(medium.position);
    const ListedTrack& first = medium.tracks[fit.firstTrack];
    const ListedTrack& last = medium.tracks[fit.firstTrack + fit.trackCount - 1];
    where += " (" + first.number + (fit.trackCount > 1 ? "-" + last.number : "") + ")";
    if (fit.at45)
        where += ", a 33 played at 45";
    const double percent = (fit.speed / (fit.at45 ? 1.35 : 1.0) - 1) * 100;
    char speed[48];
    std::snprintf(speed, sizeof speed, ", %.1f %% %s", std::abs(percent),
                  percent >= 0 ? "fast" : "slow");
    if (std::abs(percent) >= 0.1)
        where += speed;
    return where;
}

LookupRun::LookupRun() {
    if (!QCoreApplication::instance()) {
        static int argc = 1;
        static char name[] = "waxline-cli";
        static char* argv[] = {name, nullptr};
        static QCoreApplication app(argc, argv);
    }
    client = std::make_unique<LookupClient>(ServiceConfig::fromEnvironment());
}

LookupRun::~LookupRun() = default;

std::optional<LookupRun::Side> LookupRun::analyse(const std::string& folder, int tracks,
                                                  std::string& why) {
    const SideOpen open = openRecordedSide(folder, tracks);
    if (open.problem != SideProblem::None || open.side.sampleRate < 8000) {
        why = "cannot read the recorded side in " + folder;
        return std::nullopt;
    }
    Side side;
    side.recorded = open.side;
    SideAnalyser analyser(side.recorded.sampleRate);
    if (!readSide(side.recorded, [&](const float* samples, size_t frames) {
            analyser.addInterleaved(samples, frames, side.recorded.channels);
        })) {
        why = "cannot read the track files in " + folder;
        return std::nullopt;
    }
    side.splitter = std::make_unique<SideSplitter>(analyser.takeFeatures());
    const SplitProposal proposal = side.splitter->propose();
    if (proposal.problem != SplitProposal::Problem::None) {
        why = "nothing on the recorded side sounds like music";
        return std::nullopt;
    }
    const double rate = side.recorded.sampleRate;
    side.shape.musicStart = static_cast<double>(proposal.musicStart) / rate;
    side.shape.musicEnd = static_cast<double>(proposal.musicEnd) / rate;
    for (const auto& b : proposal.boundaries)
        side.shape.boundaries.push_back(static_cast<double>(b.sample) / rate);
    return side;
}

std::optional<std::vector<ReleaseSummary>> LookupRun::search(const QString& query,
                                                             std::string& why) {
    const auto answer = await<std::vector<ReleaseSummary>>(
        [&](auto done) { client->search(query, 10, std::move(done)); });
    if (!answer.ok()) {
        why = answer.problem == LookupProblem::NoMatch
                  ? "the music database found no release"
                  : describe(answer.problem, answer.httpStatus);
        return std::nullopt;
    }
    return answer.value;
}

std::optional<Release> LookupRun::read(const std::string& releaseId, std::string& why) {
    const auto answer = await<Release>([&](auto done) {
        client->readRelease(QString::fromStdString(releaseId), std::move(done));
    });
    if (!answer.ok()) {
        why = describe(answer.problem, answer.httpStatus);
        return std::nullopt;
    }
    return answer.value;
}

std::vector<LookupRun::Candidate> LookupRun::candidates(const std::vector<ReleaseSummary>& found,
                                                        const Side* side, int readAtMost,
                                                        const std::string& onlySide,
                                                        bool untilConfident) {
    std::vector<Candidate> list;
    for (const ReleaseSummary& s : found)
        list.push_back({s, std::nullopt, std::nullopt});
    std::stable_sort(list.begin(), list.end(), [](const Candidate& a, const Candidate& b) {
        return a.summary.hasAnalogueMedium() && !b.summary.hasAnalogueMedium();
    });
    if (!side)
        return list;
    for (size_t i = 0; i < list.size() && static_cast<int>(i) < readAtMost; ++i) {
        std::string why;
        list[i].release = read(list[i].summary.id, why);
        if (!list[i].release)
            continue;
        const auto fits = fitRelease(*list[i].release, side->shape, onlySide);
        if (!fits.empty())
            list[i].fit = fits.front();
        if (untilConfident && list[i].fit && list[i].fit->confident)
            break;
    }
    std::stable_sort(list.begin(), list.end(), [](const Candidate& a, const Candidate& b) {
        return (a.fit ? a.fit->score : -1) > (b.fit ? b.fit->score : -1);
    });
    return list;
}

std::optional<std::pair<Release, ListingFit>> LookupRun::bestRelease(const std::string& artist,
                                                                     const std::string& album,
                                                                     const Side& side,
                                                                     std::string& why) {
    const auto found = search(
        artistAlbumQuery(QString::fromStdString(artist), QString::fromStdString(album)), why);
    if (!found)
        return std::nullopt;
    // Usually the first record found fits: a lookup with its cover then costs four requests.
    const auto list = candidates(*found, &side, kReadForDigitize, {}, true);
    if (list.empty() || !list.front().fit) {
        why = "no listing found fits the recorded side";
        return std::nullopt;
    }
    return std::make_pair(*list.front().release, *list.front().fit);
}

void LookupRun::printFit(const Release& release, const ListingFit& fit) const {
    std::fprintf(userOut(), "Found %s - %s (%s, %s, %s): %s, fit %.0f %%%s\n",
                 release.summary.artist.c_str(), release.summary.title.c_str(),
                 release.summary.formatText().c_str(), release.summary.country.c_str(),
                 release.summary.year().c_str(), fitText(release, fit).c_str(), fit.score * 100,
                 fit.confident ? "" : " (not sure)");
    std::fflush(userOut());
}

bool LookupRun::apply(const Side& side, const Release& release, const ListingFit& fit,
                      const char* command, int& tracksNow) {
    QByteArray cover;
    if (release.hasFrontCover) {
        const auto answer = await<QByteArray>([&](auto done) {
            client->fetchFrontCover(QString::fromStdString(release.summary.id), 1200,
                                    std::move(done));
        });
        if (answer.ok())
            cover = coverForTags(answer.value);
        if (cover.isEmpty())
            std::fprintf(userOut(), "No cover embedded: %s\n",
                         answer.ok() ? "the archive's picture could not be read"
                                     : describe(answer.problem, answer.httpStatus).c_str());
    }
    // The listing at the speed the deck ran, which the splitter fits to the side's gaps.
    std::vector<double> seconds;
    for (double d : fit.durations)
        seconds.push_back(d / fit.speed);
    const SplitProposal proposal = side.splitter->proposeDurations(seconds);
    if (proposal.problem != SplitProposal::Problem::None) {
        std::fprintf(userErr(),
                     "waxline-cli %s: the listing's lengths do not fit the music on the side; "
                     "the tracks are as they were\n",
                     command);
        return false;
    }
    SplitsPlan plan;
    plan.method = "fitted to the listing";
    for (const auto& b : proposal.boundaries) {
        plan.boundaries.push_back(b.sample);
        plan.confidence.push_back(b.confidence);
    }
    const int now = applySplits(side.recorded, plan, command);
    if (now < 0)
        return false;
    tracksNow = now;
    if (!keepNames(side.recorded.folder, namesOf(release, fit), cover)) {
        std::fprintf(userErr(), "waxline-cli %s: cannot keep the names in %s\n", command,
                     side.recorded.folder.c_str());
        return false;
    }
    std::fprintf(userOut(), "Kept the names of %zu track%s%s for the export\n", fit.trackCount,
                 fit.trackCount == 1 ? "" : "s", cover.isEmpty() ? "" : " and the front cover");
    std::fflush(userOut());
    return true;
}

} // namespace waxline::cli
