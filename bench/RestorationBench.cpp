// How well the restoration library cleans real music with modelled damage, beside the other
// ways of doing it: clicks (1 to 60 samples, 2 to 20 a second, both signs, five shapes),
// crackle bursts and scratches at known positions are added to each piece, then repaired by
// the library (detecting on its own), by a straight line and by least-squares AR interpolation
// (both told the true positions), and by ffmpeg's adeclick in both its methods (its output
// aligned to the input by cross-correlation first). Hum (50 or 60 Hz and harmonics) is added
// to the same pieces and removed; and the loudness meter is held against ffmpeg's ebur128 on
// the EBU test signals. Prints figures; it is a benchmark, not a test.
//
//   restoration_bench PIECE.wav... [--seconds S] [--no-adeclick] [--verbose]
//                     [--threshold K] [--confirmation K] [--significance K] [--order P]
//
// PIECE.wav: mono float files of real music (bench/restoration decodes them).
#include "exporting/TrackAudio.h"
#include "exporting/TrackLoudness.h"
#include "restoration/ArModel.h"
#include "restoration/ClickRemover.h"
#include "restoration/HumRemover.h"
#include "restoration/LsarInterpolation.h"

#include <sndfile.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace waxline;
using restoration::ClickSpan;
constexpr double kRate = 44100;

struct Damage {
    std::vector<float> damaged;
    std::vector<ClickSpan> clicks; // the true positions, ascending, not overlapping
    std::vector<double> heights;   // of each click
    std::vector<int> category;     // 0 click, 1 crackle, 2 scratch
    std::vector<int> shapes;       // the shape of each
};

// The music's level around a position: the RMS of 2048 samples either side.
double localLevel(const std::vector<float>& x, size_t at) {
    const size_t from = at > 2048 ? at - 2048 : 0, to = std::min(x.size(), at + 2048);
    double sum = 0;
    for (size_t i = from; i < to; ++i)
        sum += static_cast<double>(x[i]) * x[i];
    return std::sqrt(sum / static_cast<double>(std::max<size_t>(1, to - from)));
}

// A click's shape at sample i of n.
double shape(int kind, int i, int n, std::mt19937& random) {
    const double u = (i + 0.5) / n;
    switch (kind) {
    case 0: // a sharp spike with a short tail
        return i == 0 ? 1.0 : std::exp(-3.0 * i) * (i % 2 ? -0.5 : 0.5);
    case 1: // a ringing decay from full height, as a stylus knocked
        return std::exp(-4.0 * i / n) * std::cos(std::numbers::pi * 5 * i / n);
    case 2: // a smooth bump, as dust under the stylus
        return std::sin(std::numbers::pi * u);
    case 3: // a flat-topped step, as a scratch's edge
        return u < 0.1 || u > 0.9 ? 0.5 : 1.0;
    default: { // noise, as a rough click: random signs, half to full height
        std::uniform_real_distribution<double> unit(0, 1);
        return (unit(random) < 0.5 ? -1 : 1) * (0.5 + 0.5 * unit(random));
    }
    }
}

Damage damage(const std::vector<float>& clean, double perSecond, unsigned seed) {
    std::mt19937 random(seed);
    Damage d{clean, {}, {}, {}, {}};
    std::exponential_distribution<double> gap(perSecond / kRate);
    std::uniform_real_distribution<double> unit(0, 1);
    const double scratchPeriod = kRate * 60 / (100.0 / 3); // one turn of a 33 rpm record
    double nextScratch = kRate * 1.3;
    int category = 0;
    auto add = [&](size_t at, int length, double height, int kind) {
        if (at < 200 || at + static_cast<size_t>(length) + 200 >= clean.size())
            return;
        if (!d.clicks.empty() && at <= d.clicks.back().last + 8)
            return;
        for (int i = 0; i < length; ++i)
            d.damaged[at + static_cast<size_t>(i)] +=
                static_cast<float>(height * shape(kind, i, length, random));
        d.clicks.push_back({at, at + static_cast<size_t>(length) - 1});
        d.heights.push_back(std::abs(height));
        d.category.push_back(category);
        d.shapes.push_back(kind);
    };
    for (double at = 1000; at < static_cast<double>(clean.size()); at += gap(random)) {
        // Heights go with the music's level around them, as a click stands out of quiet and
        // loud passages alike; never below a floor the surface noise would hide.
        const double level = localLevel(clean, static_cast<size_t>(at));
        while (nextScratch < at) {
            category = 2; // a scratch: a long step, once a turn, 1.5 to 6 times the level
            add(static_cast<size_t>(nextScratch), 20 + static_cast<int>(unit(random) * 40),
                std::max(0.02, level * (1.5 + 4.5 * unit(random))), 3);
            nextScratch += scratchPeriod;
        }
        const double sign = unit(random) < 0.5 ? -1 : 1;
        if (unit(random) < 0.15) { // a crackle burst: 8 short clicks within 40 ms, 1 to 3 times
            category = 1;          // the level
            size_t p = static_cast<size_t>(at);
            for (int k = 0; k < 8; ++k, p += 60 + static_cast<size_t>(unit(random) * 160))
                add(p, 1 + static_cast<int>(unit(random) * 4),
                    sign * std::max(0.01, level * (1 + 2 * unit(random))),
                    static_cast<int>(unit(random) * 5));
            continue;
        }
        // Lengths spread evenly in log from 1 to 60; heights 1.5 to 15 times the level.
        category = 0;
        const int length = static_cast<int>(std::exp(unit(random) * std::log(60.0)));
        add(static_cast<size_t>(at), std::max(1, length),
            sign * std::min(0.9, std::max(0.02, level * 1.5 * std::pow(10, unit(random)))),
            static_cast<int>(unit(random) * 5));
    }
    return d;
}

struct Score {
    double found = 0, clicks = 0, spans = 0, trueSpans = 0;
    double foundOf[3] = {}, clicksOf[3] = {};
    double identical = 0, cleanSamples = 0;
    double signal = 0, error = 0;
    double foundSignal = 0, foundError = 0; // around the clicks that were found
    double cpuSeconds = 0, audioSeconds = 0;
    void add(const Score& o) {
        found += o.found, clicks += o.clicks, spans += o.spans, trueSpans += o.trueSpans;
        for (int c = 0; c < 3; ++c)
            foundOf[c] += o.foundOf[c], clicksOf[c] += o.clicksOf[c];
        identical += o.identical, cleanSamples += o.cleanSamples;
        signal += o.signal, error += o.error;
        foundSignal += o.foundSignal, foundError += o.foundError;
        cpuSeconds += o.cpuSeconds, audioSeconds += o.audioSeconds;
    }
};

// Spans of changed samples: what a method that reports nothing did, as its detections.
std::vector<ClickSpan> changedSpans(const std::vector<float>& before,
                                    const std::vector<float>& after) {
    std::vector<ClickSpan> spans;
    for (size_t i = 0; i < before.size() && i < after.size(); ++i)
        if (before[i] != after[i]) {
            if (!spans.empty() && i <= spans.back().last + 8)
                spans.back().last = i;
            else
                spans.push_back({i, i});
        }
    return spans;
}

Score judge(const std::vector<float>& clean, const Damage& d, const std::vector<float>& out,
            const std::vector<ClickSpan>& detected) {
    Score s;
    std::vector<char> inClick(clean.size(), 0), inFound(clean.size(), 0);
    for (const auto& c : d.clicks)
        for (size_t i = c.first; i <= c.last; ++i)
            inClick[i] = 1;
    for (const auto& c : detected)
        for (size_t i = c.first; i <= c.last && i < clean.size(); ++i)
            inFound[i] = 1;
    for (size_t k = 0; k < d.clicks.size(); ++k) {
        const auto& c = d.clicks[k];
        bool hit = false;
        for (size_t i = c.first; i <= c.last; ++i)
            hit = hit || inFound[i];
        s.found += hit;
        s.foundOf[d.category[k]] += hit;
        s.clicksOf[d.category[k]] += 1;
        // The click and 10 samples either side: a repair that smears shows here.
        for (size_t i = c.first - 10; i <= c.last + 10; ++i) {
            const double signal = static_cast<double>(clean[i]) * clean[i];
            const double error = std::pow(static_cast<double>(out[i]) - clean[i], 2);
            s.signal += signal;
            s.error += error;
            s.foundSignal += hit ? signal : 0;
            s.foundError += hit ? error : 0;
        }
    }
    s.clicks = static_cast<double>(d.clicks.size());
    for (const auto& c : detected) {
        bool real = false;
        for (size_t i = c.first; i <= c.last && i < clean.size(); ++i)
            real = real || inClick[i];
        s.trueSpans += real;
    }
    s.spans = static_cast<double>(detected.size());
    for (size_t i = 0; i < clean.size(); ++i)
        if (!inClick[i]) {
            s.cleanSamples += 1;
            s.identical += out[i] == d.damaged[i];
        }
    return s;
}

void print(const char* name, const Score& s) {
    std::printf("  %-34s recall %.3f  precision %.3f  untouched %.4f  SNR %5.1f dB", name,
                s.found / s.clicks, s.spans ? s.trueSpans / s.spans : 0.0,
                s.identical / s.cleanSamples, 10 * std::log10(s.signal / s.error));
    if (s.cpuSeconds > 0)
        std::printf("  %.0fx real time", s.audioSeconds / s.cpuSeconds);
    std::printf("\n    recall of clicks %.3f, crackle %.3f, scratches %.3f; SNR around the clicks "
                "found %.1f dB\n",
                s.foundOf[0] / s.clicksOf[0], s.foundOf[1] / s.clicksOf[1],
                s.foundOf[2] / s.clicksOf[2], 10 * std::log10(s.foundSignal / s.foundError));
}

double cpuNow() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

bool writeMono(const std::string& path, const std::vector<float>& x) {
    exporting::TrackAudio a;
    a.rate = static_cast<int>(kRate);
    a.channels = 1;
    a.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    a.samples = x;
    return exporting::writeTrackAudio(path, a);
}

// ffmpeg's adeclick on x, its output shifted back to line up with x (the lag of the largest
// cross-correlation within 8192 samples, on a stretch in the middle).
std::vector<float> adeclick(const std::vector<float>& x, const char* method) {
    const std::string in = "/tmp/waxline-bench-declick-in.wav";
    const std::string out = "/tmp/waxline-bench-declick-out.wav";
    writeMono(in, x);
    const std::string command = std::string("ffmpeg -v error -y -i ") + in +
                                " -af adeclick=m=" + method + " -c:a pcm_f32le " + out;
    if (std::system(command.c_str()) != 0)
        return {};
    const std::vector<float> y = exporting::readTrackAudio(out).samples;
    // adeclick's window delays its output by a few thousand samples.
    const size_t mid = x.size() / 2, span = 4096;
    long best = 0;
    double bestSum = -1e300;
    for (long lag = -8192; lag <= 8192; ++lag) {
        double sum = 0;
        for (size_t i = mid; i < mid + span; ++i) {
            const long j = static_cast<long>(i) + lag;
            if (j >= 0 && static_cast<size_t>(j) < y.size())
                sum += static_cast<double>(x[i]) * y[static_cast<size_t>(j)];
        }
        if (sum > bestSum)
            bestSum = sum, best = lag;
    }
    std::vector<float> aligned(x.size(), 0.0f);
    for (size_t i = 0; i < x.size(); ++i) {
        const long j = static_cast<long>(i) + best;
        if (j >= 0 && static_cast<size_t>(j) < y.size())
            aligned[i] = y[static_cast<size_t>(j)];
    }
    std::remove(in.c_str());
    std::remove(out.c_str());
    return aligned;
}

bool withAdeclick = true;
restoration::ClickSettings settings;
bool verbose = false;

// Which clicks the library missed, by length and shape.
void missedByKind(const Damage& d, const std::vector<ClickSpan>& found) {
    int missed[4][5] = {}, all[4][5] = {};
    size_t f = 0;
    for (size_t k = 0; k < d.clicks.size(); ++k) {
        const auto& c = d.clicks[k];
        while (f < found.size() && found[f].last < c.first)
            ++f;
        const bool hit = f < found.size() && found[f].first <= c.last;
        const size_t length = c.last - c.first + 1;
        const int l = length == 1 ? 0 : length <= 5 ? 1 : length <= 20 ? 2 : 3;
        const int h = d.shapes[k];
        ++all[l][h];
        missed[l][h] += !hit;
    }
    int nearFalse = 0, farFalse = 0;
    for (const auto& span : found) {
        size_t nearest = SIZE_MAX;
        bool real = false;
        for (const auto& c : d.clicks) {
            real = real || (span.first <= c.last && c.first <= span.last);
            const size_t gap = span.first > c.last ? span.first - c.last : c.first - span.last;
            nearest = std::min(nearest, gap);
        }
        if (!real)
            (nearest < 200 ? nearFalse : farFalse) += 1;
    }
    std::printf("    false spans: %d within 200 samples of a click, %d farther\n", nearFalse,
                farFalse);
    std::printf("    missed (length 1, 2-5, 6-20, 21-60 x spike, ringing, bump, step, noise):");
    for (int l = 0; l < 4; ++l) {
        std::printf(" |");
        for (int h = 0; h < 5; ++h)
            std::printf(" %d/%d", missed[l][h], all[l][h]);
    }
    std::printf("\n");
}

void clickFigures(const std::vector<std::vector<float>>& pieces) {
    Score ours, line, lsar, add, save, none, truthDamaged, coveredDamaged;
    unsigned seed = 1;
    for (const auto& clean : pieces) {
        for (double rate : {2.0, 8.0, 20.0}) {
            const Damage d = damage(clean, rate, seed++);
            std::vector<float> out = d.damaged;
            const double start = cpuNow();
            const auto found = restoration::removeClicks(out, settings);
            Score s = judge(clean, d, out, found);
            s.cpuSeconds = cpuNow() - start;
            s.audioSeconds = static_cast<double>(clean.size()) / kRate;
            ours.add(s);
            if (verbose)
                missedByKind(d, found);

            // The comparisons are told where the clicks are; those closer together than the
            // model order are filled as one, as the library does.
            std::vector<float> straight = d.damaged, known = d.damaged;
            const size_t block = 4096, order = 32;
            for (const auto& c : d.clicks) {
                const double a = straight[c.first - 1], b = straight[c.last + 1];
                const double n = static_cast<double>(c.last - c.first + 2);
                for (size_t i = c.first; i <= c.last; ++i)
                    straight[i] = static_cast<float>(a + (b - a) * (i - c.first + 1) / n);
            }
            for (size_t k = 0; k < d.clicks.size();) {
                std::vector<size_t> unknown;
                size_t j = k;
                do {
                    for (size_t i = d.clicks[j].first; i <= d.clicks[j].last; ++i)
                        unknown.push_back(i);
                    ++j;
                } while (j < d.clicks.size() && d.clicks[j].first <= d.clicks[j - 1].last + order);
                // The model of the clean block: the known-position reference at its best.
                const size_t from = (d.clicks[k].first / block) * block;
                const auto model = restoration::fitArModel(
                    clean.data() + from, std::min(block, clean.size() - from), order);
                restoration::interpolateLsar(known.data(), known.size(), unknown, model);
                k = j;
            }
            if (verbose) {
                // Where the library's SNR goes: LSAR with models of the damaged audio, on the
                // true spans, and on the library's spans grown to cover the clicks they touch.
                auto lsarWith = [&](const std::vector<ClickSpan>& spans) {
                    std::vector<float> y = d.damaged;
                    for (size_t k = 0; k < spans.size();) {
                        std::vector<size_t> unknown;
                        size_t j = k;
                        do {
                            for (size_t i = spans[j].first; i <= spans[j].last; ++i)
                                unknown.push_back(i);
                            ++j;
                        } while (j < spans.size() && spans[j].first <= spans[j - 1].last + order);
                        const size_t from = (spans[k].first / block) * block;
                        const auto model = restoration::fitArModel(
                            d.damaged.data() + from, std::min(block, d.damaged.size() - from),
                            order);
                        restoration::interpolateLsar(y.data(), y.size(), unknown, model);
                        k = j;
                    }
                    return y;
                };
                std::vector<ClickSpan> all(found), covered;
                for (const auto& c : d.clicks)
                    for (const auto& f : found)
                        if (f.first <= c.last && c.first <= f.last)
                            all.push_back(c);
                std::sort(all.begin(), all.end(),
                          [](const ClickSpan& a, const ClickSpan& b) { return a.first < b.first; });
                for (const ClickSpan& c : all)
                    if (!covered.empty() && c.first <= covered.back().last + 1)
                        covered.back().last = std::max(covered.back().last, c.last);
                    else
                        covered.push_back(c);
                truthDamaged.add(judge(clean, d, lsarWith(d.clicks), d.clicks));
                coveredDamaged.add(judge(clean, d, lsarWith(covered), found));
            }
            none.add(judge(clean, d, d.damaged, {}));
            line.add(judge(clean, d, straight, d.clicks));
            lsar.add(judge(clean, d, known, d.clicks));
            if (!withAdeclick)
                continue;
            const auto a = adeclick(d.damaged, "a");
            if (!a.empty())
                add.add(judge(clean, d, a, changedSpans(d.damaged, a)));
            const auto sv = adeclick(d.damaged, "s");
            if (!sv.empty())
                save.add(judge(clean, d, sv, changedSpans(d.damaged, sv)));
        }
    }
    std::printf("Clicks (%.0f clicks in %.0f s of music, 2, 8 and 20 a second):\n", ours.clicks,
                ours.audioSeconds);
    print("no repair (the damaged music)", none);
    print("restoration (detects by itself)", ours);
    print("straight line, known positions", line);
    print("LSAR, known positions, clean model", lsar);
    if (verbose) {
        print("LSAR, known positions, damaged model", truthDamaged);
        print("LSAR, found spans covering clicks", coveredDamaged);
    }
    print("ffmpeg adeclick, add method", add);
    print("ffmpeg adeclick, save method", save);
}

void humFigures(const std::vector<std::vector<float>>& pieces) {
    std::printf(
        "Hum (-40 dBFS fundamental wandering by 0.02 Hz, harmonics 2 to 5 falling 4 dB each; "
        "4 s of lead-in and run-out):\n");
    double worstReduction = 1e9, worstChange = 0;
    unsigned seed = 0;
    for (const auto& piece : pieces) {
        // Off any search grid, and wandering by 0.02 Hz over half a minute, as mains does.
        const double mains = seed % 2 ? 59.977 : 50.023;
        // The piece as a side has it: a lead-in and a run-out of surface noise (-60 dBFS)
        // either side, where the hum shows.
        std::mt19937 random(seed++);
        std::normal_distribution<double> surface(0, 0.001);
        std::vector<float> clean(static_cast<size_t>(kRate * 4));
        for (float& v : clean)
            v = static_cast<float>(surface(random));
        clean.insert(clean.end(), piece.begin(), piece.end());
        clean.insert(clean.end(), clean.begin(), clean.begin() + static_cast<long>(kRate * 4));
        std::vector<float> hummed(clean.size());
        std::vector<double> phase(clean.size());
        double turns = 0;
        for (size_t i = 0; i < phase.size(); ++i) {
            phase[i] = turns;
            const double t = static_cast<double>(i) / kRate;
            turns += (mains + 0.02 * std::sin(2 * std::numbers::pi * t / 30)) / kRate;
        }
        for (int h = 1; h <= 5; ++h)
            for (size_t i = 0; i < hummed.size(); ++i)
                hummed[i] += static_cast<float>(0.01 * std::pow(10, -4.0 * (h - 1) / 20) *
                                                std::sin(2 * std::numbers::pi * h * phase[i]));
        std::vector<float> x = clean;
        for (size_t i = 0; i < x.size(); ++i)
            x[i] += hummed[i];
        const auto hum = restoration::findHum(restoration::quietStretches(x, kRate), kRate,
                                              restoration::HumChoice::Auto);
        // The hum left: the notches are linear, so what they make of the hum alone is what is
        // left of it in the music; measured past their settling at the ends.
        std::vector<float> left = hummed;
        restoration::removeHum(left, kRate, hum);
        double worst = 1e9;
        for (int h = 1; h <= 5; ++h) {
            double re0 = 0, im0 = 0, re1 = 0, im1 = 0;
            for (size_t i = static_cast<size_t>(kRate); i + static_cast<size_t>(kRate) < x.size();
                 ++i) {
                const double w = 2 * std::numbers::pi * h * phase[i];
                re0 += hummed[i] * std::cos(w), im0 += hummed[i] * std::sin(w);
                re1 += left[i] * std::cos(w), im1 += left[i] * std::sin(w);
            }
            worst = std::min(
                worst, 10 * std::log10((re0 * re0 + im0 * im0) / (re1 * re1 + im1 * im1 + 1e-30)));
        }
        // Elsewhere: the notches' response to probe tones 100 Hz to 16 kHz, 10 Hz or more away
        // from every harmonic notched.
        double change = 0;
        for (double f = 100; f <= 16000; f *= 1.05) {
            bool near = false;
            for (int h : hum.harmonics)
                near = near || std::abs(f - hum.fundamental * h) < 10;
            if (near)
                continue;
            std::vector<float> probe(static_cast<size_t>(kRate * 2));
            for (size_t i = 0; i < probe.size(); ++i)
                probe[i] = static_cast<float>(0.1 * std::sin(2 * std::numbers::pi * f * i / kRate));
            std::vector<float> passed = probe;
            restoration::removeHum(passed, kRate, hum);
            double in = 0, out = 0;
            for (size_t i = probe.size() / 4; i < probe.size() * 3 / 4; ++i)
                in += probe[i] * probe[i], out += passed[i] * passed[i];
            change = std::max(change, std::abs(10 * std::log10(out / in)));
        }
        std::printf("  mains %.3f Hz: found %.3f Hz, %zu harmonics; hum %.1f dB less at the "
                    "worst harmonic; %.3f dB change elsewhere\n",
                    mains, hum.fundamental, hum.harmonics.size(), worst, change);
        worstReduction = std::min(worstReduction, worst);
        worstChange = std::max(worstChange, change);
    }
    std::printf("  worst: %.1f dB less hum, %.3f dB change elsewhere\n", worstReduction,
                worstChange);
}

// EBU Tech 3341's first five signals: stereo 1 kHz sines, (dBFS, seconds) in turn.
void loudnessFigures() {
    const struct {
        const char* name;
        std::vector<std::pair<double, double>> parts;
    } signals[] = {
        {"1: -23 dBFS, 20 s", {{-23, 20}}},
        {"2: -33 dBFS, 20 s", {{-33, 20}}},
        {"3: -36, -23, -36 dBFS", {{-36, 10}, {-23, 60}, {-36, 10}}},
        {"4: -72, -36, -23, -36, -72 dBFS",
         {{-72, 10}, {-36, 10}, {-23, 60}, {-36, 10}, {-72, 10}}},
        {"5: -26, -20, -26 dBFS", {{-26, 20}, {-20, 20.1}, {-26, 20}}},
    };
    std::printf("Loudness (EBU Tech 3341 signals at 48 kHz, against ffmpeg ebur128):\n");
    double worst = 0;
    for (const auto& s : signals) {
        std::vector<float> stereo;
        for (auto [level, seconds] : s.parts)
            for (size_t i = 0; i < static_cast<size_t>(seconds * 48000); ++i) {
                const auto v = static_cast<float>(
                    std::pow(10, level / 20) * std::sin(2 * std::numbers::pi * 1000 * i / 48000));
                stereo.insert(stereo.end(), {v, v});
            }
        const double ours = exporting::measureLoudness(stereo, 2, 48000).integrated;
        exporting::TrackAudio a;
        a.rate = 48000;
        a.channels = 2;
        a.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        a.samples = stereo;
        const std::string path = "/tmp/waxline-bench-ebu.wav";
        exporting::writeTrackAudio(path, a);
        const std::string command = "ffmpeg -hide_banner -nostats -i " + path +
                                    " -af ebur128 -f null - 2>&1 | "
                                    "sed -n 's/^ *I: *\\(-\\?[0-9.]*\\) LUFS.*/\\1/p' | tail -1";
        FILE* pipe = popen(command.c_str(), "r");
        double theirs = NAN;
        if (pipe) {
            if (std::fscanf(pipe, "%lf", &theirs) != 1)
                theirs = NAN;
            pclose(pipe);
        }
        std::remove(path.c_str());
        worst = std::max(worst, std::abs(ours - theirs));
        std::printf("  %-34s ours %6.2f LUFS  ffmpeg %6.1f LUFS  difference %.2f LU\n", s.name,
                    ours, theirs, std::abs(ours - theirs));
    }
    std::printf("  worst difference %.2f LU (ffmpeg prints tenths)\n", worst);
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::vector<float>> pieces;
    double seconds = 30;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--threshold" && i + 1 < argc) {
            settings.threshold = std::atof(argv[++i]);
            continue;
        }
        if (arg == "--confirmation" && i + 1 < argc) {
            settings.confirmation = std::atof(argv[++i]);
            continue;
        }
        if (arg == "--significance" && i + 1 < argc) {
            settings.significance = std::atof(argv[++i]);
            continue;
        }
        if (arg == "--order" && i + 1 < argc) {
            settings.order = std::atoi(argv[++i]);
            continue;
        }
        if (arg == "--verbose") {
            verbose = true;
            continue;
        }
        if (arg == "--no-adeclick") {
            withAdeclick = false;
            continue;
        }
        if (arg == "--seconds" && i + 1 < argc) {
            seconds = std::atof(argv[++i]);
            continue;
        }
        auto audio = exporting::readTrackAudio(arg);
        if (!audio.error.empty() || audio.channels != 1 || audio.rate != kRate) {
            std::fprintf(stderr, "restoration_bench: %s is not mono 44.1 kHz audio\n", arg.c_str());
            return 2;
        }
        audio.samples.resize(std::min(audio.samples.size(), static_cast<size_t>(seconds * kRate)));
        pieces.push_back(std::move(audio.samples));
    }
    if (pieces.empty()) {
        std::fprintf(stderr, "usage: restoration_bench PIECE.wav... [--seconds S] [--no-adeclick] "
                             "[--verbose] [--threshold K] [--confirmation K] [--significance K] "
                             "[--order P]\n");
        return 2;
    }
    clickFigures(pieces);
    humFigures(pieces);
    loudnessFigures();
    return 0;
}
