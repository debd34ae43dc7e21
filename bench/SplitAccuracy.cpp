// How well each way of splitting a side finds its tracks, on realistic synthetic sides whose
// truth is known: the live gap detector as the input chain feeds it, the offline track finder on
// its history, and the whole-side splitter without and with the track count. Prints figures; it
// is a benchmark, not a test.
//
//   split_accuracy [--sides N] [--first-seed S] [--preset none|riaa] [--verbose]
#include "cli/DemoSide.h"
#include "filters/AudioFilter.h"
#include "filters/GapDetector.h"
#include "filters/SideAnalyser.h"
#include "filters/SideSplitter.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

using namespace Sonra::Audio::Filters;
using waxline::cli::DemoSideGenerator;
using waxline::cli::DemoSideLayout;
using waxline::cli::DemoSideOptions;
// Processor time of this (single-threaded) program: on a machine shared with other work the
// wall clock measures the neighbours as much as the code.
using TimePoint = std::clock_t;
TimePoint now() {
    return std::clock();
}

constexpr size_t kBlock = 65536;

// The live splits: a new track file starts at each gap start that sound follows (the last gap
// start of a side runs into the album end and starts no track).
struct LiveSplits : GapDetector::Listener {
    const GapDetector* detector = nullptr;
    std::vector<double> starts;
    std::vector<double> splits;
    double now() const {
        return static_cast<double>(detector->history().size()) *
               static_cast<double>(detector->frameLength()) / detector->rate();
    }
    void TrackSilenceStarted() override { starts.push_back(now()); }
    void TrackSilenceEnded() override {
        if (!starts.empty() && (splits.empty() || splits.back() < starts.back()))
            splits.push_back(starts.back());
    }
    void AlbumEnded() override {}
};

struct Score {
    const char* name;
    int sides = 0;
    int exact = 0;      // one boundary in every gap and none elsewhere
    int countRight = 0; // as many tracks as the side has
    int boundaries = 0;
    int inGap = 0;
    int inMusic = 0;
    int gaps = 0;
    int gapsFound = 0;
    double seconds = 0; // analysis time
};

void judge(Score& s, const DemoSideLayout& side, const std::vector<double>& at, bool verbose) {
    ++s.sides;
    s.boundaries += static_cast<int>(at.size());
    s.gaps += static_cast<int>(side.gaps.size());
    std::vector<int> perGap(side.gaps.size(), 0);
    int inGap = 0;
    int inMusic = 0;
    for (double b : at) {
        bool placed = false;
        for (size_t g = 0; g < side.gaps.size(); ++g) {
            if (b >= side.gaps[g].start && b <= side.gaps[g].end) {
                ++perGap[g];
                ++inGap;
                placed = true;
            }
        }
        if (placed)
            continue;
        for (const auto& t : side.tracks)
            if (b > t.start && b < t.end) {
                ++inMusic;
                if (verbose)
                    std::printf("    %-22s boundary %9.3f s inside music\n", s.name, b);
            }
    }
    int found = 0;
    bool exact = at.size() == side.gaps.size();
    for (size_t g = 0; g < perGap.size(); ++g) {
        found += perGap[g] > 0;
        exact = exact && perGap[g] == 1;
        if (verbose && perGap[g] == 0)
            std::printf("    %-22s missed gap %9.3f .. %9.3f s\n", s.name, side.gaps[g].start,
                        side.gaps[g].end);
    }
    s.inGap += inGap;
    s.inMusic += inMusic;
    s.gapsFound += found;
    s.exact += exact;
    s.countRight += at.size() == side.gaps.size();
}

double percent(int part, int whole) {
    return whole > 0 ? 100.0 * part / whole : 100.0;
}

std::vector<double> secondsOf(const SplitProposal& p, double rate) {
    std::vector<double> at;
    for (const auto& b : p.boundaries)
        at.push_back(static_cast<double>(b.sample) / rate);
    return at;
}

double since(TimePoint start) {
    return static_cast<double>(now() - start) / CLOCKS_PER_SEC;
}

} // namespace

int main(int argc, char** argv) {
    int sides = 48;
    uint32_t firstSeed = 1;
    AudioFilter::Type preset = AudioFilter::NoFilter;
    bool verbose = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--sides" && i + 1 < argc)
            sides = std::atoi(argv[++i]);
        else if (a == "--first-seed" && i + 1 < argc)
            firstSeed = static_cast<uint32_t>(std::strtoul(argv[++i], nullptr, 10));
        else if (a == "--preset" && i + 1 < argc) {
            const std::string p = argv[++i];
            if (p != "none" && p != "riaa") {
                std::fprintf(stderr, "split_accuracy: --preset none or riaa\n");
                return 2;
            }
            preset = p == "riaa" ? AudioFilter::RIAAPlayback : AudioFilter::NoFilter;
        } else if (a == "--verbose")
            verbose = true;
        else {
            std::fprintf(stderr, "usage: split_accuracy [--sides N] [--first-seed S] "
                                 "[--preset none|riaa] [--verbose]\n");
            return 2;
        }
    }

    Score live{"live detector"};
    Score finder{"FindTracks"};
    Score alone{"splitter"};
    Score counted{"splitter, count given"};
    double audioSeconds = 0;
    int totalTracks = 0;
    std::vector<float> left(kBlock), right(kBlock);

    for (int k = 0; k < sides; ++k) {
        DemoSideOptions options;
        options.realistic = true;
        options.tracks = 0;
        options.seed = firstSeed + static_cast<uint32_t>(k);
        DemoSideGenerator generator(options);
        const DemoSideLayout& side = generator.layout();
        const double rate = side.sampleRate;
        audioSeconds += side.length();
        totalTracks += static_cast<int>(side.tracks.size());
        if (verbose)
            std::printf("seed %u: %zu tracks, %.0f s, noise %.1f dBFS\n", options.seed,
                        side.tracks.size(), side.length(), side.noiseDb);

        LiveSplits events;
        GapDetector detector(events, side.sampleRate);
        detector.SetSampleRate(side.sampleRate);
        detector.SetDiagnosticWriter([](const char*) {});
        events.detector = &detector;
        AudioFilter equaliser;
        equaliser.Set(preset);
        SideAnalyser analyser(side.sampleRate);

        double liveSeconds = 0;
        double scanSeconds = 0;
        while (size_t n = generator.render(left.data(), right.data(), kBlock)) {
            auto t0 = now();
            analyser.addPlanar(left.data(), right.data(), n);
            scanSeconds += since(t0);
            // As the input chain feeds the detector: equalised frames, runs cut at its frames.
            t0 = now();
            GapDetector::Feed feed(detector);
            for (size_t i = 0; i < n;) {
                const auto run = static_cast<size_t>(std::min<uint64_t>(n - i, feed.room()));
                equaliser.process(left.data() + i, right.data() + i, run,
                                  [&feed](float l, float r) { feed.add(l, r); });
                feed.endRun();
                i += run;
            }
            feed.finish();
            liveSeconds += since(t0);
        }

        judge(live, side, events.splits, verbose);
        live.seconds += liveSeconds;

        auto t0 = now();
        std::vector<GapDetector::TrackItem> items;
        detector.FindTracks(items);
        std::vector<double> found;
        for (size_t i = 1; i < items.size(); ++i)
            found.push_back(items[i].start);
        judge(finder, side, found, verbose);
        finder.seconds += liveSeconds + since(t0);

        t0 = now();
        SideSplitter splitter(analyser.takeFeatures());
        const double learn = since(t0);
        t0 = now();
        const SplitProposal free = splitter.propose();
        judge(alone, side, secondsOf(free, rate), verbose);
        alone.seconds += scanSeconds + learn + since(t0);
        t0 = now();
        const SplitProposal given = splitter.proposeCount(static_cast<int>(side.tracks.size()));
        judge(counted, side, secondsOf(given, rate), verbose);
        counted.seconds += scanSeconds + learn + since(t0);
        std::fflush(stdout);
    }

    // One 30-minute side of seven tracks, timed alone: the splitter's speed target.
    double thirtyMinutes = 0;
    {
        DemoSideOptions options;
        options.realistic = true;
        options.tracks = 7;
        options.seed = firstSeed;
        options.lengthSeconds = 1800;
        DemoSideGenerator generator(options);
        SideAnalyser analyser(generator.layout().sampleRate);
        while (size_t n = generator.render(left.data(), right.data(), kBlock)) {
            const auto t0 = now();
            analyser.addPlanar(left.data(), right.data(), n);
            thirtyMinutes += since(t0);
        }
        const auto t0 = now();
        const SideSplitter splitter(analyser.takeFeatures());
        const SplitProposal p = splitter.propose();
        thirtyMinutes += since(t0);
        if (p.boundaries.size() != generator.layout().gaps.size())
            std::printf("(the 30-minute side came out as %zu tracks, not 7)\n",
                        p.boundaries.size() + 1);
    }

    std::printf("%d realistic sides (seeds %u-%u), %d tracks, %d gaps, %.1f hours of audio; "
                "live detector after preset %s\n",
                sides, firstSeed, firstSeed + static_cast<uint32_t>(sides) - 1, totalTracks,
                live.gaps, audioSeconds / 3600, preset == AudioFilter::NoFilter ? "none" : "riaa");
    std::printf("%-22s %12s %12s %16s %14s %12s %14s\n", "", "sides exact", "count right",
                "in their gap", "gaps found", "in music", "CPU s/30 min");
    for (const Score* s : {&live, &finder, &alone, &counted}) {
        char exact[32], count[32], inGap[32], gapsFound[32];
        std::snprintf(exact, sizeof exact, "%d (%.0f%%)", s->exact, percent(s->exact, s->sides));
        std::snprintf(count, sizeof count, "%d (%.0f%%)", s->countRight,
                      percent(s->countRight, s->sides));
        std::snprintf(inGap, sizeof inGap, "%d/%d (%.1f%%)", s->inGap, s->boundaries,
                      percent(s->inGap, s->boundaries));
        std::snprintf(gapsFound, sizeof gapsFound, "%d/%d", s->gapsFound, s->gaps);
        std::printf("%-22s %12s %12s %16s %14s %12d %14.3f\n", s->name, exact, count, inGap,
                    gapsFound, s->inMusic, s->seconds / audioSeconds * 1800);
    }
    std::printf("a 30-minute side of 7 tracks: analysed and split in %.3f s of processor time\n",
                thirtyMinutes);
    return 0;
}
