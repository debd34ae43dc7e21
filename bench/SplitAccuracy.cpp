// How well each way of splitting a side finds its tracks on the corpus that bench/corpus builds
// (records, cassettes and live sides made from real music, and realistic demo sides), judged
// against each side's truth file: the live gap detector as the input chain feeds it, the
// offline track finder on its history, and the whole-side splitter without a count, with the
// track count and with the sleeve's durations; and how often the proposal would be trusted over
// the live splits when it is worse. Prints figures; it is a benchmark, not a test.
//
//   split_accuracy [--corpus DIR] [--part held-out|development|all] [--cache DIR] [--verbose]
//                  [--gaps FILE]
//
// With --gaps, every quiet stretch the splitter considers is written to FILE as a CSV row: its
// side, what the truth says it is (1 a gap between tracks, 0 anything else), and what the
// splitter and GapContext measure of it, for fitting and checking a gap classifier.
//
// With --cache, what the audio yields (the side's features, the live splits, the track finder's
// starts and their processor time) is kept per side in DIR and read back on later runs, so a
// change to the splitter is measured in seconds instead of a pass over every recording.
//
// A side is exact when every gap holds exactly one boundary, every segue has one within 1 s of
// the cross-fade's middle, and no boundary lies anywhere else. Without a count a side is also
// right when only segue boundaries are missing. A boundary "in music" lies inside a track
// (further than 1 s from a segue point) or in a stretch where none may fall (lead-in, run-out,
// tape leader, pianissimo).
#include "GapContext.h"

#include "filters/AudioFilter.h"
#include "filters/GapDetector.h"
#include "filters/ProposalTrust.h"
#include "filters/SideAnalyser.h"
#include "filters/SideSplitter.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Sonra::Audio::Filters;
namespace fs = std::filesystem;

constexpr size_t kBlock = 65536;
constexpr double kSegueTolerance = 1.0;

// Processor time of this single-threaded program: the wall clock would measure the neighbours.
double cpuSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

struct Span {
    double start;
    double end;
};

struct Truth {
    std::string name;
    std::string category;
    std::string part;
    double length = 0;
    std::vector<Span> tracks;
    std::vector<Span> gaps;
    std::vector<double> segues; // the cross-fades' middles
    std::vector<Span> noBoundary;

    size_t boundaries() const { return gaps.size() + segues.size(); }

    // The sleeve: each track from its start to the next one's, rounded to the second; a track
    // that a cross-fade leads into starts at the fade's middle.
    std::vector<double> durations() const {
        std::vector<double> starts{tracks.front().start};
        for (size_t i = 1; i < tracks.size(); ++i) {
            double start = tracks[i].start;
            for (double p : segues)
                if (p > tracks[i].start - 1 && p < tracks[i - 1].end + 1)
                    start = p;
            starts.push_back(start);
        }
        std::vector<double> d;
        for (size_t i = 0; i < starts.size(); ++i) {
            const double next = i + 1 < starts.size() ? starts[i + 1] : tracks.back().end;
            d.push_back(std::round(next - starts[i]));
        }
        return d;
    }
};

bool readTruth(const fs::path& path, Truth& t) {
    std::ifstream in(path);
    if (!in)
        return false;
    t.name = path.stem().string();
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string key;
        words >> key;
        Span s{};
        if (key == "category")
            words >> t.category;
        else if (key == "part")
            words >> t.part;
        else if (key == "length")
            words >> t.length;
        else if (key == "track" && words >> s.start >> s.end)
            t.tracks.push_back(s);
        else if (key == "gap" && words >> s.start >> s.end)
            t.gaps.push_back(s);
        else if (key == "noboundary" && words >> s.start >> s.end)
            t.noBoundary.push_back(s);
        else if (key == "segue") {
            double point = 0;
            if (words >> point)
                t.segues.push_back(point);
        }
    }
    std::sort(t.segues.begin(), t.segues.end());
    return !t.tracks.empty();
}

struct Verdict {
    bool exact = false;
    bool right = false; // exact, or only segue boundaries missing
    int inMusic = 0;
    int errors = 0;        // boundaries misplaced or doubled, and gaps or segues missed
    double segueError = 0; // the worst cross-fade's distance to its nearest boundary
};

Verdict judge(const Truth& t, const std::vector<double>& at) {
    Verdict v;
    std::vector<int> perGap(t.gaps.size(), 0);
    std::vector<int> perSegue(t.segues.size(), 0);
    int stray = 0;
    for (double b : at) {
        bool placed = false;
        for (size_t s = 0; s < t.segues.size() && !placed; ++s)
            if (std::fabs(b - t.segues[s]) <= kSegueTolerance) {
                ++perSegue[s];
                placed = true;
            }
        for (size_t g = 0; g < t.gaps.size() && !placed; ++g)
            if (b >= t.gaps[g].start && b <= t.gaps[g].end) {
                ++perGap[g];
                placed = true;
            }
        if (placed)
            continue;
        ++stray;
        bool bad = false;
        for (const Span& s : t.tracks)
            bad = bad || (b > s.start && b < s.end);
        for (const Span& s : t.noBoundary)
            bad = bad || (b >= s.start && b <= s.end);
        v.inMusic += bad;
    }
    bool gapsExact = true;
    int missed = 0;
    int doubled = 0;
    for (int n : perGap) {
        gapsExact = gapsExact && n == 1;
        missed += n == 0;
        doubled += std::max(0, n - 1);
    }
    bool seguesExact = true;
    bool seguesAtMostOne = true;
    for (int n : perSegue) {
        seguesExact = seguesExact && n == 1;
        seguesAtMostOne = seguesAtMostOne && n <= 1;
        missed += n == 0;
        doubled += std::max(0, n - 1);
    }
    // How far the nearest boundary lies from each cross-fade's middle.
    for (double point : t.segues) {
        double nearest = t.length;
        for (double b : at)
            nearest = std::min(nearest, std::fabs(b - point));
        v.segueError = std::max(v.segueError, nearest);
    }
    v.exact = stray == 0 && gapsExact && seguesExact;
    v.right = stray == 0 && gapsExact && seguesAtMostOne;
    v.errors = stray + missed + doubled;
    return v;
}

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

enum Method { Live, Finder, Free, Counted, Timed, Chosen, ChosenCounted, Methods };
const char* const kMethodNames[Methods] = {
    "live detector",       "FindTracks",      "splitter",    "splitter, count",
    "splitter, durations", "kept (no count)", "kept (count)"};

struct Tally {
    int sides = 0;
    int exact = 0;
    int right = 0;
    int inMusic = 0;
    int shown = 0;      // the proposal differed from the live splits and was trusted
    int shownRight = 0; // ... and was right
    int shownWorse = 0; // ... and was worse than the live splits
    int maxSegueMs = 0;
    int segueSides = 0;
    double cpu = 0;
    double audio = 0;
};

void add(Tally& t, const Verdict& v, bool segues) {
    ++t.sides;
    t.segueSides += segues;
    t.exact += v.exact;
    t.right += v.right;
    t.inMusic += v.inMusic;
    t.maxSegueMs = std::max(t.maxSegueMs, static_cast<int>(std::lround(v.segueError * 1000)));
}

std::vector<double> secondsOf(const SplitProposal& p, double rate) {
    std::vector<double> at;
    for (const auto& b : p.boundaries)
        at.push_back(static_cast<double>(b.sample) / rate);
    return at;
}

bool worse(const Verdict& proposal, const Verdict& live) {
    return proposal.errors > live.errors || (live.right && !proposal.right);
}

void printTable(const std::string& title, const std::map<std::string, Tally[Methods]>& tallies) {
    std::printf("\n%s\n", title.c_str());
    std::printf("%-14s %-21s %6s %11s %11s %9s %16s %8s %12s %10s\n", "category", "method", "sides",
                "exact", "right", "in music", "notice right", "worse*", "CPU s/30min", "segue err");
    for (const auto& [category, row] : tallies) {
        for (int m = 0; m < Methods; ++m) {
            const Tally& t = row[m];
            if (t.sides == 0)
                continue;
            char exact[32], right[32], notice[32], worseText[16];
            std::snprintf(exact, sizeof exact, "%d (%.0f%%)", t.exact, 100.0 * t.exact / t.sides);
            std::snprintf(right, sizeof right, "%d (%.0f%%)", t.right, 100.0 * t.right / t.sides);
            const bool gated = m == Free || m == Counted || m == Timed;
            std::snprintf(notice, sizeof notice, "%d/%d", t.shownRight, t.shown);
            std::snprintf(worseText, sizeof worseText, "%d", t.shownWorse);
            char segue[16] = "";
            if (t.segueSides > 0)
                std::snprintf(segue, sizeof segue, "%.1f s", t.maxSegueMs / 1000.0);
            std::printf("%-14s %-21s %6d %11s %11s %9d %16s %8s %12.3f %10s\n", category.c_str(),
                        kMethodNames[m], t.sides, exact, right, t.inMusic, gated ? notice : "",
                        gated ? worseText : "", t.audio > 0 ? t.cpu / t.audio * 1800 : 0.0, segue);
        }
    }
}

// What one pass over a side's audio yields, everything the splitter and the judges need.
struct Scanned {
    SideFeatures features;
    std::vector<double> liveSplits;
    std::vector<double> finderStarts;
    double liveCpu = 0;
    double finderCpu = 0;
    double scanCpu = 0;
    int64_t frames = 0;
};

template <typename T> void put(std::ofstream& out, const std::vector<T>& v) {
    const uint64_t n = v.size();
    out.write(reinterpret_cast<const char*>(&n), sizeof n);
    out.write(reinterpret_cast<const char*>(v.data()), static_cast<std::streamsize>(n * sizeof(T)));
}

template <typename T> bool get(std::ifstream& in, std::vector<T>& v) {
    uint64_t n = 0;
    if (!in.read(reinterpret_cast<char*>(&n), sizeof n) || n > (uint64_t{1} << 32))
        return false;
    v.resize(n);
    return static_cast<bool>(
        in.read(reinterpret_cast<char*>(v.data()), static_cast<std::streamsize>(n * sizeof(T))));
}

constexpr uint32_t kCacheVersion = 1;

void saveScan(const fs::path& path, const Scanned& s) {
    std::ofstream out(path, std::ios::binary);
    const SideFeatures& f = s.features;
    const uint64_t hop = f.hop, bins = f.bins;
    const double numbers[] = {f.sampleRate, f.firstBinHz, f.binHz,
                              s.liveCpu,    s.finderCpu,  s.scanCpu};
    const int64_t counts[] = {f.inputFrames, s.frames};
    out.write(reinterpret_cast<const char*>(&kCacheVersion), sizeof kCacheVersion);
    out.write(reinterpret_cast<const char*>(&hop), sizeof hop);
    out.write(reinterpret_cast<const char*>(&bins), sizeof bins);
    out.write(reinterpret_cast<const char*>(numbers), sizeof numbers);
    out.write(reinterpret_cast<const char*>(counts), sizeof counts);
    put(out, f.level);
    put(out, f.loudness);
    put(out, f.spectrum);
    put(out, s.liveSplits);
    put(out, s.finderStarts);
}

bool loadScan(const fs::path& path, Scanned& s) {
    std::ifstream in(path, std::ios::binary);
    uint32_t version = 0;
    uint64_t hop = 0, bins = 0;
    double numbers[6] = {};
    int64_t counts[2] = {};
    if (!in.read(reinterpret_cast<char*>(&version), sizeof version) || version != kCacheVersion ||
        !in.read(reinterpret_cast<char*>(&hop), sizeof hop) ||
        !in.read(reinterpret_cast<char*>(&bins), sizeof bins) ||
        !in.read(reinterpret_cast<char*>(numbers), sizeof numbers) ||
        !in.read(reinterpret_cast<char*>(counts), sizeof counts))
        return false;
    SideFeatures& f = s.features;
    f.hop = hop;
    f.bins = bins;
    f.sampleRate = numbers[0];
    f.firstBinHz = numbers[1];
    f.binHz = numbers[2];
    s.liveCpu = numbers[3];
    s.finderCpu = numbers[4];
    s.scanCpu = numbers[5];
    f.inputFrames = counts[0];
    s.frames = counts[1];
    return get(in, f.level) && get(in, f.loudness) && get(in, f.spectrum) &&
           get(in, s.liveSplits) && get(in, s.finderStarts) &&
           f.spectrum.size() == f.level.size() * f.bins;
}

// One pass over the side's audio: the live detector fed as the input chain feeds it, and the
// splitter's analyser beside it.
bool scan(const fs::path& wav, Scanned& s) {
    SF_INFO info{};
    SNDFILE* file = sf_open(wav.c_str(), SFM_READ, &info);
    if (!file || info.channels != 2) {
        if (file)
            sf_close(file);
        return false;
    }
    const auto rate = static_cast<unsigned>(info.samplerate);
    LiveSplits events;
    GapDetector detector(events, rate);
    detector.SetSampleRate(rate);
    detector.SetDiagnosticWriter([](const char*) {});
    events.detector = &detector;
    AudioFilter equaliser;
    equaliser.Set(AudioFilter::NoFilter);
    SideAnalyser analyser(rate);
    std::vector<float> block(kBlock * 2), left(kBlock), right(kBlock);
    while (true) {
        const auto n = static_cast<size_t>(sf_readf_float(file, block.data(), kBlock));
        if (n == 0)
            break;
        double t0 = cpuSeconds();
        analyser.addInterleaved(block.data(), n, 2);
        s.scanCpu += cpuSeconds() - t0;
        t0 = cpuSeconds();
        for (size_t i = 0; i < n; ++i) {
            left[i] = block[2 * i];
            right[i] = block[2 * i + 1];
        }
        // As the input chain feeds the detector: equalised frames, runs cut at its frames.
        GapDetector::Feed feed(detector);
        for (size_t i = 0; i < n;) {
            const auto run = static_cast<size_t>(std::min<uint64_t>(n - i, feed.room()));
            equaliser.process(left.data() + i, right.data() + i, run,
                              [&feed](float l, float r) { feed.add(l, r); });
            feed.endRun();
            i += run;
        }
        feed.finish();
        s.liveCpu += cpuSeconds() - t0;
    }
    sf_close(file);
    s.frames = info.frames;
    s.liveSplits = events.splits;
    const double t0 = cpuSeconds();
    std::vector<GapDetector::TrackItem> items;
    detector.FindTracks(items);
    for (size_t i = 1; i < items.size(); ++i)
        s.finderStarts.push_back(items[i].start);
    s.finderCpu = s.liveCpu + cpuSeconds() - t0;
    s.features = analyser.takeFeatures();
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::string corpus = "build/corpus";
    std::string part = "held-out";
    std::string cache;
    bool verbose = false;
    std::string gapsPath;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--corpus" && i + 1 < argc)
            corpus = argv[++i];
        else if (a == "--part" && i + 1 < argc)
            part = argv[++i];
        else if (a == "--cache" && i + 1 < argc)
            cache = argv[++i];
        else if (a == "--verbose")
            verbose = true;
        else if (a == "--gaps" && i + 1 < argc)
            gapsPath = argv[++i];
        else {
            std::fprintf(stderr, "usage: split_accuracy [--corpus DIR] "
                                 "[--part held-out|development|all] [--cache DIR] [--verbose] "
                                 "[--gaps FILE]\n");
            return 2;
        }
    }
    std::vector<fs::path> sides;
    std::error_code ec;
    for (const char* p : {"development", "held-out"})
        if ((part == "all" || part == p) && fs::is_directory(fs::path(corpus) / p, ec))
            for (const auto& e : fs::directory_iterator(fs::path(corpus) / p))
                if (e.path().extension() == ".truth")
                    sides.push_back(e.path());
    std::sort(sides.begin(), sides.end());
    if (sides.empty()) {
        std::fprintf(stderr,
                     "split_accuracy: no sides in %s (part %s); build them with "
                     "bench/corpus/build-corpus\n",
                     corpus.c_str(), part.c_str());
        return 1;
    }

    std::map<std::string, Tally[Methods]> tallies;
    std::FILE* gapsFile = gapsPath.empty() ? nullptr : std::fopen(gapsPath.c_str(), "w");
    if (gapsFile)
        std::fprintf(gapsFile, "side,part,category,label,at,seconds,confidence,position,"
                               "timbre,step,fade,attack,measured,novelty\n");
    for (const fs::path& truthPath : sides) {
        Truth truth;
        fs::path wav = truthPath;
        wav.replace_extension(".wav");
        Scanned scanned;
        const fs::path cached =
            cache.empty() ? fs::path()
                          : fs::path(cache) / (truthPath.parent_path().filename().string() + "-" +
                                               truthPath.stem().string() + ".scan");
        bool ready = readTruth(truthPath, truth) && !cached.empty() && loadScan(cached, scanned);
        if (!ready && !truth.tracks.empty() && scan(wav, scanned)) {
            ready = true;
            if (!cached.empty()) {
                fs::create_directories(cache, ec);
                saveScan(cached, scanned);
            }
        }
        if (!ready) {
            std::fprintf(stderr, "split_accuracy: cannot read %s\n", wav.c_str());
            continue;
        }
        const double rate = scanned.features.sampleRate;
        const double audio = static_cast<double>(scanned.frames) / rate;
        const double liveCpu = scanned.liveCpu;

        Verdict v[Methods];
        double cpu[Methods] = {};
        v[Live] = judge(truth, scanned.liveSplits);
        cpu[Live] = liveCpu;
        v[Finder] = judge(truth, scanned.finderStarts);
        cpu[Finder] = scanned.finderCpu;

        double t0 = cpuSeconds();
        const SideSplitter splitter(std::move(scanned.features));
        const double learn = scanned.scanCpu + cpuSeconds() - t0;
        if (gapsFile) {
            const double musicSeconds =
                static_cast<double>(splitter.propose().musicEnd - splitter.propose().musicStart) /
                rate;
            const double musicFrom = static_cast<double>(splitter.propose().musicStart) / rate;
            for (const SplitBoundary& b : splitter.quietStretches()) {
                const double at = static_cast<double>(b.sample) / rate;
                bool inGap = false;
                for (const Span& g : truth.gaps)
                    inGap = inGap || (at >= g.start && at <= g.end);
                const GapContext c = GapContext::measure(splitter, b);
                std::fprintf(gapsFile,
                             "%s,%s,%s,%d,%.2f,%.2f,%.3f,%.3f,%.3f,%.3f,%.3f,%.3f,%.1f,%.3f\n",
                             truth.name.c_str(), truth.part.c_str(), truth.category.c_str(),
                             inGap ? 1 : 0, at, b.cleanSeconds, b.confidence,
                             (at - musicFrom) / musicSeconds, c.timbreDistance, c.levelStep,
                             c.fadeBefore, c.attackAfter, c.shortestSide, c.novelty);
            }
        }
        std::vector<int64_t> live;
        for (double s : scanned.liveSplits)
            live.push_back(static_cast<int64_t>(std::llround(s * rate)));
        const std::vector<double> sleeve = truth.durations();
        const SplitProposal proposals[3] = {
            splitter.propose(), splitter.proposeCount(static_cast<int>(truth.tracks.size())),
            splitter.proposeDurations(sleeve)};
        ProposalTrust trust[3];
        for (int k = 0; k < 3; ++k) {
            t0 = cpuSeconds();
            v[Free + k] = judge(truth, secondsOf(proposals[k], rate));
            trust[k] = ProposalTrust::judge(splitter, proposals[k], live);
            cpu[Free + k] = learn + cpuSeconds() - t0;
        }
        v[Chosen] = trust[0].choice == ProposalTrust::Choice::Proposal ? v[Free] : v[Live];
        v[ChosenCounted] =
            trust[1].choice == ProposalTrust::Choice::Proposal ? v[Counted] : v[Live];
        cpu[Chosen] = cpu[Free] + liveCpu;
        cpu[ChosenCounted] = cpu[Counted] + liveCpu;

        for (const std::string& key : {truth.category, std::string("all")}) {
            Tally* row = tallies[key];
            for (int m = 0; m < Methods; ++m) {
                add(row[m], v[m], !truth.segues.empty());
                row[m].cpu += cpu[m];
                row[m].audio += audio;
            }
            for (int k = 0; k < 3; ++k) {
                if (trust[k].choice != ProposalTrust::Choice::Proposal || !trust[k].differs())
                    continue;
                Tally& t = row[Free + k];
                ++t.shown;
                t.shownRight += k == 0 ? v[Free].right : v[Free + k].exact;
                t.shownWorse += worse(v[Free + k], v[Live]);
            }
        }
        std::printf("%-16s %-11s %2zu tracks %5.1f min | live %s%s | free %s%s | count %s | "
                    "durations %s | trust %s (%d, +%d -%d at %.1f), with the count %s (%d)\n",
                    truth.name.c_str(), truth.part.c_str(), truth.tracks.size(), audio / 60,
                    v[Live].exact ? "exact" : "wrong", v[Live].inMusic ? "(music)" : "",
                    v[Free].right ? "right" : "wrong", v[Free].inMusic ? "(music)" : "",
                    v[Counted].exact ? "exact" : "wrong", v[Timed].exact ? "exact" : "wrong",
                    trust[0].choice == ProposalTrust::Choice::Proposal ? "proposal" : "live",
                    static_cast<int>(trust[0].reason), trust[0].added, trust[0].removed,
                    trust[0].at,
                    trust[1].choice == ProposalTrust::Choice::Proposal ? "proposal" : "live",
                    static_cast<int>(trust[1].reason));
        if (verbose) {
            auto list = [&](const char* name, const std::vector<double>& at) {
                std::printf("    %-10s", name);
                for (double s : at)
                    std::printf(" %.1f", s);
                std::printf("\n");
            };
            std::vector<double> gaps;
            for (const Span& g : truth.gaps)
                gaps.push_back(0.5 * (g.start + g.end));
            list("gaps", gaps);
            list("segues", truth.segues);
            list("live", scanned.liveSplits);
            std::printf("    %-10s", "free");
            for (const auto& b : proposals[0].boundaries)
                std::printf(" %.1f (%.2f, %.1f s)", static_cast<double>(b.sample) / rate,
                            b.confidence, static_cast<double>(b.quietEnd - b.quietStart) / rate);
            std::printf("\n");
            list("count", secondsOf(proposals[1], rate));
            list("durations", secondsOf(proposals[2], rate));
        }
        std::fflush(stdout);
    }
    printTable("Corpus " + corpus + ", part " + part +
                   " (notice right: trusted proposals differing from the live splits that were "
                   "right / all of them; worse*: notice shown for a proposal worse than the "
                   "live splits)",
               tallies);
    if (gapsFile)
        std::fclose(gapsFile);
    return 0;
}
