#include "lookup/ListingFit.h"

#include <algorithm>
#include <cmath>

namespace waxline::lookup {

namespace {

// Sleeves round to the second and the recording finds each gap within a second or two.
constexpr double kBoundaryTolerance = 4.0;
constexpr double kSpeedStep = 0.002;
constexpr double kSpeedRange = 0.03;
constexpr double kThirtyThreeAt45 = 45.0 / (100.0 / 3.0);
constexpr int kMaxTracksOnSide = 40;

struct Alignment {
    double gain = 0; // sum over matched pairs of 1 - (error / tolerance)^2 / 2
    int matched = 0;
};

// The monotone matching of predicted to recorded boundaries with the largest gain; a listed
// boundary left out is a merge, a recorded one left out a split.
Alignment align(const std::vector<double>& predicted, const std::vector<double>& recorded) {
    const size_t n = predicted.size();
    const size_t m = recorded.size();
    std::vector<double> best((n + 1) * (m + 1), 0);
    std::vector<int> count((n + 1) * (m + 1), 0);
    auto at = [m](size_t i, size_t j) { return i * (m + 1) + j; };
    for (size_t i = 1; i <= n; ++i) {
        for (size_t j = 1; j <= m; ++j) {
            double b = best[at(i - 1, j)];
            int c = count[at(i - 1, j)];
            if (best[at(i, j - 1)] > b) {
                b = best[at(i, j - 1)];
                c = count[at(i, j - 1)];
            }
            const double error = predicted[i - 1] - recorded[j - 1];
            if (std::abs(error) < kBoundaryTolerance) {
                const double z = error / kBoundaryTolerance;
                const double g = best[at(i - 1, j - 1)] + 1 - 0.5 * z * z;
                if (g > b) {
                    b = g;
                    c = count[at(i - 1, j - 1)] + 1;
                }
            }
            best[at(i, j)] = b;
            count[at(i, j)] = c;
        }
    }
    return {best[at(n, m)], count[at(n, m)]};
}

ListingFit fitAtSpeed(const std::vector<double>& listed, const SideShape& shape, double speed) {
    ListingFit fit;
    fit.speed = speed;
    const double music = shape.musicEnd - shape.musicStart;
    double known = 0;
    int missing = 0;
    for (double d : listed) {
        known += d;
        missing += d > 0 ? 0 : 1;
    }
    // A track without a length takes an equal share of what the recording leaves over.
    const double share = missing ? std::max(1.0, (music * speed - known) / missing) : 0;
    fit.durations = listed;
    for (double& d : fit.durations)
        if (!(d > 0))
            d = share;
    fit.missingLengths = missing;

    std::vector<double> predicted;
    double sum = 0;
    for (size_t i = 0; i + 1 < fit.durations.size(); ++i) {
        sum += fit.durations[i];
        predicted.push_back(shape.musicStart + sum / speed);
    }
    sum += fit.durations.back();
    const double endError = std::abs(shape.musicStart + sum / speed - shape.musicEnd);
    const Alignment a = align(predicted, shape.boundaries);
    const size_t both = predicted.size() + shape.boundaries.size();
    fit.merged = static_cast<int>(predicted.size()) - a.matched;
    fit.split = static_cast<int>(shape.boundaries.size()) - a.matched;
    const double agreement = both ? 2 * a.gain / static_cast<double>(both) : 1.0;
    // The last listed length often holds a fade or a run-out the recording does not count.
    const double endTolerance = 6 + 0.01 * music;
    const double z = endError / endTolerance;
    const double missingPrice = 1 - 0.3 * missing / static_cast<double>(listed.size());
    fit.score = (0.25 + 0.75 * agreement) * std::exp(-0.5 * z * z) * missingPrice;
    return fit;
}

} // namespace

ListingFit fitTracks(const Medium& medium, size_t first, size_t count, const SideShape& shape) {
    ListingFit best;
    if (count == 0 || count > kMaxTracksOnSide || first + count > medium.tracks.size() ||
        !(shape.musicEnd > shape.musicStart))
        return best;
    std::vector<double> listed;
    for (size_t i = first; i < first + count; ++i)
        listed.push_back(medium.tracks[i].seconds);
    for (const double nominal : {1.0, kThirtyThreeAt45}) {
        for (double step = -kSpeedRange; step <= kSpeedRange + 1e-9; step += kSpeedStep) {
            const ListingFit fit = fitAtSpeed(listed, shape, nominal * (1 + step));
            if (fit.score > best.score) {
                best = fit;
                best.at45 = nominal != 1.0;
            }
        }
    }
    best.firstTrack = first;
    best.trackCount = count;
    best.confident = best.score >= 0.6 && best.merged + best.split <= 1 &&
                     best.missingLengths * 2 < static_cast<int>(count);
    return best;
}

std::vector<ListingFit> fitRelease(const Release& release, const SideShape& shape,
                                   const std::string& onlySide) {
    std::vector<ListingFit> fits;
    auto add = [&](int medium, const std::string& side, size_t first, size_t count) {
        if (!onlySide.empty() && side != onlySide)
            return;
        ListingFit fit = fitTracks(release.media[static_cast<size_t>(medium)], first, count, shape);
        if (fit.trackCount == 0)
            return;
        fit.medium = medium;
        fit.side = side;
        // Records and tapes are what is digitised: a CD listing of the same music ranks after.
        const Medium& m = release.media[static_cast<size_t>(medium)];
        if (!m.isVinyl() && !m.isCassette())
            fit.score *= 0.97;
        fits.push_back(fit);
    };
    for (size_t mi = 0; mi < release.media.size(); ++mi) {
        const Medium& medium = release.media[mi];
        const int index = static_cast<int>(mi);
        const size_t total = medium.tracks.size();
        const std::vector<std::string> letters = medium.sideLetters();
        if (!letters.empty()) {
            size_t first = 0;
            for (const std::string& letter : letters) {
                size_t count = 0;
                while (first + count < total &&
                       sideLetterOf(medium.tracks[first + count].number) == letter)
                    ++count;
                add(index, letter, first, count);
                first += count;
            }
        } else {
            // Numbered 1..N: a side is some first or some last run of the tracks.
            for (size_t k = 1; k < total; ++k) {
                add(index, "A", 0, k);
                add(index, "B", k, total - k);
            }
        }
        // A cassette may be recorded in one go, both sides and the turn between them.
        if (medium.isCassette() || letters.empty())
            add(index, "", 0, total);
    }
    std::stable_sort(fits.begin(), fits.end(),
                     [](const ListingFit& a, const ListingFit& b) { return a.score > b.score; });
    return fits;
}

} // namespace waxline::lookup
