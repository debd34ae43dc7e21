#include "cli/LookupSession.h"

#include "cli/LookupRun.h"
#include "cli/SplitsSession.h"
#include "cli/Terminal.h"
#include "filters/SideAnalyser.h"
#include "filters/SideSplitter.h"

#include <cstdio>

namespace waxline::cli {

bool lookupAfterRecording(const std::string& folder, int tracks, const std::string& text,
                          int& tracksNow) {
    tracksNow = tracks;
    const auto [artist, album] = artistAndAlbum(text);
    std::fprintf(userOut(), "Looking up %s\n", text.c_str());
    std::fflush(userOut());
    LookupRun run;
    std::string why;
    const auto side = run.analyse(folder, tracks, why);
    if (!side) {
        std::fprintf(userErr(), "waxline-cli digitize: %s; the names are left as typed\n",
                     why.c_str());
        return false;
    }
    const auto found = run.bestRelease(artist, album, *side, why);
    if (!found) {
        std::fprintf(userErr(), "waxline-cli digitize: %s; the names are left as typed\n",
                     why.c_str());
        return false;
    }
    const auto& [release, fit] = *found;
    run.printFit(release, fit);
    if (!fit.confident) {
        std::fprintf(userErr(),
                     "waxline-cli digitize: the best listing found does not fit the side "
                     "closely enough to cut by; the names are left as typed\n");
        return false;
    }
    return run.apply(*side, release, fit, "digitize", tracksNow);
}

std::pair<std::string, std::string> artistAndAlbum(const std::string& text) {
    const auto dash = text.find(" - ");
    if (dash == std::string::npos)
        return {"", text};
    return {text.substr(0, dash), text.substr(dash + 3)};
}

void useKeptNames(ExportOptions& options, const lookup::KeptNames& names, const QByteArray& cover) {
    options.artist = names.artist;
    options.album = names.album;
    if (options.titles.empty())
        for (const lookup::KeptTrack& t : names.tracks)
            options.titles.push_back(t.title);
    options.trackNumbers = lookup::trackNumbersOf(names);
    options.releaseTags = lookup::releaseTagsOf(names, cover);
}

} // namespace waxline::cli
