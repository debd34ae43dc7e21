#include "demoside/DemoSide.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace waxline::demoside {
namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr size_t kTableSize = 4096;
constexpr double kRunOutSeconds = 65;
constexpr double kRevolutionSeconds = 1.8; // 33 1/3 rpm
constexpr double kFadeSeconds = 0.4;

// Notes of the melody voice stay in 440-554 Hz, where the gap detector listens; bass and
// harmony voices move around it.
constexpr double kMelody[] = {440.0, 466.2, 493.9, 523.3, 554.4};
constexpr double kHarmony[] = {220.0, 246.9, 261.6, 293.7, 329.6};
constexpr double kBass[] = {55.0, 61.7, 65.4, 73.4, 82.4, 98.0};

// Realistic sides.
constexpr double kFloorDb = -45; // where fades start and end, relative to the track's level
// Mean power per channel of the three voices at full level with the swell at its middle, 0.75:
// the sum over voices of gain^2 * pan share^2 * (1 + 1/4 + 1/9) / 2, averaged over the channels.
constexpr double kMusicPower = 0.0142 * 0.5625;
constexpr size_t kLevelStep = 32; // samples between updates of a track's level

template <size_t N> double pick(const double (&table)[N], double u) {
    return table[std::min(N - 1, static_cast<size_t>(u * N))];
}

} // namespace

DemoSideGenerator::DemoSideGenerator(const DemoSideOptions& options)
    : rngState(0x9E3779B97F4A7C15ull ^
               (static_cast<uint64_t>(options.seed) * 0xD1B54A32D192ED03ull)) {
    if (options.tracks < (options.realistic ? 0 : 1) || options.tracks > 40)
        throw std::invalid_argument("the number of tracks must be from 1 to 40");
    if (!(options.lengthSeconds >= 0 && options.lengthSeconds <= kMaxDemoSideSeconds))
        throw std::invalid_argument("the side's length must be from 0 (automatic) to 4 hours");
    if (options.sampleRate < 8000)
        throw std::invalid_argument("the sample rate is too low");
    sideLayout.sampleRate = options.sampleRate;

    sineTable.resize(kTableSize + 1);
    for (size_t i = 0; i <= kTableSize; ++i)
        sineTable[i] = static_cast<float>(std::sin(kTwoPi * static_cast<double>(i) / kTableSize));
    if (options.realistic) {
        planRealistic(options);
        return;
    }

    const double leadIn = 2.0 + uniform();
    std::vector<double> gaps(static_cast<size_t>(options.tracks - 1));
    double gapTotal = 0;
    for (double& g : gaps) {
        // Long enough for four whole half-second frames of quiet, however the frames fall.
        g = 2.6 + 1.4 * uniform();
        gapTotal += g;
    }
    std::vector<double> lengths(static_cast<size_t>(options.tracks));
    if (options.lengthSeconds > 0) {
        const double music = options.lengthSeconds - leadIn - gapTotal - kRunOutSeconds;
        double weightSum = 0;
        for (double& l : lengths) {
            l = 0.8 + 0.4 * uniform();
            weightSum += l;
        }
        for (double& l : lengths)
            l = l / weightSum * music;
        if (*std::min_element(lengths.begin(), lengths.end()) < 15)
            throw std::invalid_argument("the side is too short for that many tracks");
    } else {
        for (double& l : lengths)
            l = 46 + 34 * uniform(); // longer than the 45 s the track finder takes for music
    }

    double t = 0;
    sideLayout.leadIn = {t, leadIn};
    t = leadIn;
    for (size_t i = 0; i < lengths.size(); ++i) {
        sideLayout.tracks.push_back({t, t + lengths[i]});
        t += lengths[i];
        if (i < gaps.size()) {
            sideLayout.gaps.push_back({t, t + gaps[i]});
            t += gaps[i];
        }
    }
    sideLayout.runOut = {t, t + kRunOutSeconds};
    frameCount = static_cast<size_t>(std::llround(sideLayout.runOut.end * options.sampleRate));
}

uint64_t DemoSideGenerator::nextRandom() {
    // splitmix64: small, fast and the same on every platform.
    uint64_t z = (rngState += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

double DemoSideGenerator::uniform() {
    return static_cast<double>(nextRandom() >> 11) * 0x1.0p-53;
}

void DemoSideGenerator::startNotes(size_t trackIndex) {
    const double rate = sideLayout.sampleRate;
    const double lengths[] = {0.25, 0.5, 0.5, 0.75, 1.0};
    noteEnd = position + static_cast<size_t>(pick(lengths, uniform()) * rate);
    const double* tables[] = {kMelody, kHarmony, kBass};
    const size_t sizes[] = {std::size(kMelody), std::size(kHarmony), std::size(kBass)};
    for (int v = 0; v < 3; ++v) {
        // Each track keeps its own colour: a transposition by track number within the tables.
        const size_t idx = (static_cast<size_t>(uniform() * sizes[v]) + trackIndex) % sizes[v];
        voices[v].increment = tables[v][idx] / rate;
    }
    voices[0].gain = 0.16f;
    voices[0].pan = 0.4f;
    voices[1].gain = 0.12f;
    voices[1].pan = 0.7f;
    voices[2].gain = 0.2f;
    voices[2].pan = 0.5f;
}

float DemoSideGenerator::surfaceNoise() {
    // Sum of four uniforms: a cheap, nearly Gaussian hiss about 62 dB below full scale.
    double s = 0;
    for (int i = 0; i < 4; ++i)
        s += uniform() - 0.5;
    return static_cast<float>(s * 0.0014);
}

float DemoSideGenerator::crackle(bool runOut) {
    const double rate = sideLayout.sampleRate;
    if (uniform() < 3.0 / rate)
        clickLevel = static_cast<float>((uniform() < 0.5 ? -1 : 1) * (0.03 + 0.2 * uniform()));
    if (runOut && position >= nextRevolutionClick) {
        clickLevel = 0.25f;
        nextRevolutionClick = position + static_cast<size_t>(kRevolutionSeconds * rate);
    }
    const float out = clickLevel;
    clickLevel *= 0.35f; // a click dies away within a few samples
    return out;
}

size_t DemoSideGenerator::render(float* left, float* right, size_t frames) {
    if (realistic)
        return renderRealistic(left, right, frames);
    const double rate = sideLayout.sampleRate;
    const size_t n = std::min(frames, frameCount - position);
    for (size_t i = 0; i < n; ++i, ++position) {
        const double t = static_cast<double>(position) / rate;
        float l = surfaceNoise();
        float r = surfaceNoise();
        const bool runOut = t >= sideLayout.runOut.start;
        const float c = crackle(runOut);
        l += c;
        r += c * 0.8f;

        for (size_t k = 0; k < sideLayout.tracks.size(); ++k) {
            const auto& span = sideLayout.tracks[k];
            if (t < span.start || t >= span.end)
                continue;
            if (position >= noteEnd)
                startNotes(k);
            const double into = t - span.start;
            const double left_ = span.end - t;
            const double fade = std::min({1.0, into / kFadeSeconds, left_ / kFadeSeconds});
            // Slow swells between half and full level give the passage its dynamics.
            const double swell =
                0.75 + 0.25 * std::sin(kTwoPi * into / (7.0 + 3.0 * static_cast<double>(k)));
            voicesSample(static_cast<float>(fade * swell), l, r);
            break;
        }
        left[i] = l;
        right[i] = r;
    }
    return n;
}

void DemoSideGenerator::planRealistic(const DemoSideOptions& options) {
    realistic = true;
    const DemoSideRealism& realism = options.realism;
    if (realism.minGapSeconds < 0 || realism.maxGapSeconds < realism.minGapSeconds)
        throw std::invalid_argument("the gap lengths are not a range");
    const double rate = options.sampleRate;
    const size_t count = options.tracks > 0
                             ? static_cast<size_t>(options.tracks)
                             : 3 + std::min<size_t>(11, static_cast<size_t>(uniform() * 12));

    sideLayout.noiseDb = -66 + 12 * uniform();
    sideLayout.humHz = uniform() < 0.5 ? 50 : 60;
    sideLayout.humDb = -78 + 20 * uniform();
    sideLayout.rumbleDb = -58 + 16 * uniform();
    clicksPerSecond = 0.5 + 4 * uniform();
    runOutClicks = uniform() < 0.7;

    const double leadIn = 1 + 3 * uniform();
    std::vector<double> gaps(count - 1);
    double gapTotal = 0;
    for (double& g : gaps) {
        g = realism.minGapSeconds + (realism.maxGapSeconds - realism.minGapSeconds) * uniform();
        gapTotal += g;
    }
    const double runOut = 25 + 40 * uniform();
    std::vector<double> lengths(count);
    double weightSum = 0;
    for (double& l : lengths) {
        l = 0.5 + uniform();
        weightSum += l;
    }
    const double music =
        options.lengthSeconds > 0
            ? options.lengthSeconds - leadIn - gapTotal - runOut
            : std::clamp(static_cast<double>(count) * (60 + 100 * uniform()), 180.0, 1320.0);
    for (double& l : lengths)
        l = l / weightSum * music;
    if (*std::min_element(lengths.begin(), lengths.end()) < 20)
        throw std::invalid_argument("the side is too short for that many tracks");

    double t = 0;
    sideLayout.leadIn = {0, leadIn};
    t = leadIn;
    for (size_t i = 0; i < count; ++i) {
        sideLayout.tracks.push_back({t, t + lengths[i]});
        t += lengths[i];
        if (i < gaps.size()) {
            sideLayout.gaps.push_back({t, t + gaps[i]});
            t += gaps[i];
        }
    }
    sideLayout.runOut = {t, t + runOut};
    frameCount = static_cast<size_t>(std::llround(sideLayout.runOut.end * rate));

    // Surface noise is a sum of four uniforms (variance 1/3), scaled to the side's level.
    noiseScale = static_cast<float>(std::pow(10.0, sideLayout.noiseDb / 20) / std::sqrt(1.0 / 3));

    // Mains hum with the harmonics a ground loop adds, one whole period in a table.
    const size_t period = static_cast<size_t>(std::lround(rate / sideLayout.humHz));
    const double harmonics[] = {1.0, 0.35, 0.5, 0.15, 0.25};
    double sumSquares = 0;
    for (double h : harmonics)
        sumSquares += h * h / 2;
    const double humScale = std::pow(10.0, sideLayout.humDb / 20) / std::sqrt(sumSquares);
    humTable.resize(period);
    for (size_t i = 0; i < period; ++i) {
        double v = 0;
        for (size_t h = 0; h < std::size(harmonics); ++h)
            v += harmonics[h] *
                 std::sin(kTwoPi * static_cast<double>((h + 1) * i) / static_cast<double>(period) +
                          0.7 * static_cast<double>(h));
        humTable[i] = static_cast<float>(humScale * v);
    }

    // Rumble: white noise through two one-pole low-passes at 8-18 Hz; the noise bandwidth of the
    // pair is pi/4 times the corner, which sets the scale for the wanted level.
    const double corner = 8 + 10 * uniform();
    rumbleCoefficient = 1 - std::exp(-kTwoPi * corner / rate);
    const double rumbleVariance = (1.0 / 12) * (0.25 * 3.141592653589793 * corner) / (rate / 2);
    rumbleScale = std::pow(10.0, sideLayout.rumbleDb / 20) / std::sqrt(rumbleVariance);
    warpLevel = 0.5 * std::pow(10.0, sideLayout.rumbleDb / 20);

    const size_t introTrack =
        uniform() < realism.softIntroChance ? static_cast<size_t>(uniform() * count) : count;
    for (size_t i = 0; i < count; ++i)
        planTrack(i, realism, i == introTrack);

    struct Burst {
        DemoSideLayout::Span span;
        double rate;
        float level;
    };
    std::vector<Burst> bursts;
    auto addBurst = [&](const DemoSideLayout::Span& within, double longest) {
        const double length = std::min(longest, 0.2 + uniform());
        const double start = within.start + (within.end - within.start - length) * uniform();
        bursts.push_back({{start, start + length},
                          50 + 250 * uniform(),
                          static_cast<float>(0.003 + 0.04 * uniform())});
    };
    for (const auto& g : sideLayout.gaps)
        if (uniform() < realism.crackleInGapChance)
            addBurst(g, 0.8 * (g.end - g.start));
    for (const auto& tr : sideLayout.tracks)
        if (uniform() < 0.2)
            addBurst(tr, 1.5);
    if (uniform() < 0.3)
        addBurst(sideLayout.leadIn, 0.8 * leadIn);
    std::sort(bursts.begin(), bursts.end(),
              [](const Burst& a, const Burst& b) { return a.span.start < b.span.start; });
    for (const Burst& b : bursts) {
        sideLayout.crackleBursts.push_back(b.span);
        burstRates.push_back(b.rate);
        burstLevels.push_back(b.level);
    }
}

void DemoSideGenerator::planTrack(size_t index, const DemoSideRealism& realism, bool softIntro) {
    const DemoSideLayout::Span span = sideLayout.tracks[index];
    const double length = span.end - span.start;
    Envelope e;
    e.gain = static_cast<float>(std::pow(10.0, (-4 + 8 * uniform()) / 20));
    const double noisePower = std::pow(10.0, sideLayout.noiseDb / 10);
    // The level, relative to the track's own, at which the music alone has the power that lifts
    // the groove noise by snrDb.
    auto quietDb = [&](double snrDb) {
        const double target = noisePower * (std::pow(10.0, snrDb / 10) - 1);
        const double full = kMusicPower * static_cast<double>(e.gain) * e.gain;
        return std::min(-6.0, 10 * std::log10(target / full));
    };
    auto add = [&](double t, double db) {
        e.times.push_back(span.start + t);
        e.db.push_back(db);
    };

    double opening;
    if (softIntro) {
        const double intro = std::min(4 + 11 * uniform(), 0.25 * length);
        const double db = quietDb(4 + 6 * uniform());
        add(0, kFloorDb);
        add(0.05, db);
        add(intro, db);
        add(intro + 2, 0);
        sideLayout.softIntros.push_back({span.start, span.start + intro});
        opening = intro + 2;
    } else if (uniform() < realism.fadeInChance) {
        opening = std::min(2 + 6 * uniform(), 0.2 * length);
        add(0, kFloorDb);
        add(opening, 0);
        sideLayout.fadeIns.push_back({span.start, span.start + opening});
    } else {
        opening = 0.03;
        add(0, kFloorDb);
        add(opening, 0);
    }

    // Every track dies away to the floor: a long fade or the ring of its last chord.
    const bool fade = uniform() < realism.fadeOutChance;
    const double closing = fade ? std::min(3 + 9 * uniform(), 0.25 * length) : 0.5 + 2 * uniform();
    if (fade)
        sideLayout.fadeOuts.push_back({span.end - closing, span.end});

    if (uniform() < realism.quietPassageChance) {
        const double quiet = 2 + 6 * uniform();
        // Three seconds of full music either side, one second of diminuendo and crescendo.
        const double room = length - opening - closing - quiet - 2 - 6;
        const double at = opening + 3 + std::max(0.0, room) * uniform();
        const double db = quietDb(3 + 5 * uniform());
        if (room > 0) {
            add(at, 0);
            add(at + 1, db);
            add(at + 1 + quiet, db);
            add(at + 2 + quiet, 0);
            sideLayout.quietPassages.push_back({span.start + at + 1, span.start + at + 1 + quiet});
        }
    }
    add(length - closing, 0);
    add(length, kFloorDb);
    envelopes.push_back(std::move(e));
}

float DemoSideGenerator::trackLevel(size_t index, double t) const {
    const Envelope& e = envelopes[index];
    double db = e.db.back();
    if (t <= e.times.front()) {
        db = e.db.front();
    } else {
        for (size_t k = 1; k < e.times.size(); ++k) {
            if (t < e.times[k]) {
                const double span = e.times[k] - e.times[k - 1];
                const double f = span > 0 ? (t - e.times[k - 1]) / span : 1;
                db = e.db[k - 1] + f * (e.db[k] - e.db[k - 1]);
                break;
            }
        }
    }
    // The swell belongs to full-level music; quiet passages and fade ends hold still.
    const double into = t - sideLayout.tracks[index].start;
    const double swell =
        0.75 + 0.25 * std::sin(kTwoPi * into / (7.0 + 3.0 * static_cast<double>(index % 6)));
    const double mix = std::clamp((db + 20) / 20, 0.0, 1.0);
    return static_cast<float>(e.gain * std::pow(10.0, db / 20) * (0.75 + (swell - 0.75) * mix));
}

void DemoSideGenerator::voicesSample(float level, float& l, float& r) {
    for (auto& v : voices) {
        float s = 0;
        for (int h = 1; h <= 3; ++h) {
            double ph = v.phase * h;
            ph -= std::floor(ph);
            const double pos = ph * kTableSize;
            const size_t idx = static_cast<size_t>(pos);
            const float frac = static_cast<float>(pos - static_cast<double>(idx));
            s += (sineTable[idx] + frac * (sineTable[idx + 1] - sineTable[idx])) /
                 static_cast<float>(h);
        }
        v.phase += v.increment;
        v.phase -= std::floor(v.phase);
        l += level * v.gain * s * (1.0f - v.pan);
        r += level * v.gain * s * v.pan;
    }
}

size_t DemoSideGenerator::renderRealistic(float* left, float* right, size_t frames) {
    const double rate = sideLayout.sampleRate;
    const auto& tracks = sideLayout.tracks;
    const auto& bursts = sideLayout.crackleBursts;
    const double warpStep = 0.55 / rate; // the once-a-revolution sway of a warped record
    const size_t n = std::min(frames, frameCount - position);
    for (size_t i = 0; i < n; ++i, ++position) {
        const double t = static_cast<double>(position) / rate;
        double nl = 0;
        double nr = 0;
        for (int k = 0; k < 4; ++k) {
            nl += uniform() - 0.5;
            nr += uniform() - 0.5;
        }
        float l = static_cast<float>(nl) * noiseScale;
        float r = static_cast<float>(nr) * noiseScale;

        const float hum = humTable[humPosition];
        humPosition = humPosition + 1 == humTable.size() ? 0 : humPosition + 1;
        rumbleState[0] += rumbleCoefficient * (uniform() - 0.5 - rumbleState[0]);
        rumbleState[1] += rumbleCoefficient * (rumbleState[0] - rumbleState[1]);
        rumblePhase += warpStep;
        rumblePhase -= std::floor(rumblePhase);
        const double warp = sineTable[static_cast<size_t>(rumblePhase * kTableSize)];
        const float rumble = static_cast<float>(rumbleScale * rumbleState[1] + warpLevel * warp);
        // Rumble is mostly vertical motion of the stylus: it reaches the channels out of phase.
        l += hum + rumble;
        r += hum - 0.5f * rumble;

        while (currentBurst < bursts.size() && t >= bursts[currentBurst].end)
            ++currentBurst;
        const bool inBurst = currentBurst < bursts.size() && t >= bursts[currentBurst].start;
        const double clickRate = inBurst ? burstRates[currentBurst] : clicksPerSecond;
        if (uniform() < clickRate / rate) {
            const double size = inBurst ? burstLevels[currentBurst] * (0.3 + uniform())
                                        : std::pow(10.0, -2.3 + 1.5 * uniform());
            clickLevel = static_cast<float>((uniform() < 0.5 ? -1 : 1) * size);
            clickDecay = static_cast<float>(0.3 + 0.5 * uniform());
        }
        if (runOutClicks && t >= sideLayout.runOut.start && position >= nextRevolutionClick) {
            clickLevel = 0.1f;
            clickDecay = 0.35f;
            nextRevolutionClick = position + static_cast<size_t>(kRevolutionSeconds * rate);
        }
        l += clickLevel;
        r += 0.8f * clickLevel;
        clickLevel *= clickDecay;

        while (currentTrack < tracks.size() && t >= tracks[currentTrack].end)
            ++currentTrack;
        if (currentTrack < tracks.size() && t >= tracks[currentTrack].start) {
            if (position >= noteEnd)
                startNotes(currentTrack);
            if (position >= levelUpdate) {
                musicLevel = trackLevel(currentTrack, t);
                levelUpdate = position + kLevelStep;
            }
            // Summed apart before they join the noise: the sides made so far depend on that order.
            float vl = 0;
            float vr = 0;
            voicesSample(musicLevel, vl, vr);
            l += vl;
            r += vr;
        }
        left[i] = l;
        right[i] = r;
    }
    return n;
}

} // namespace waxline::demoside
