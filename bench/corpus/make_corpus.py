"""Writes the split-accuracy corpus: one WAV and one truth file per side, each side from its seed.

Sides are made from freely licensed game soundtracks (rock, orchestral, blues, electronic and
world pieces) and degraded as records, cassettes and live recordings are. The source pieces are
divided once, by name, into a development pool and a held-out pool; a held-out side uses only
held-out pieces, so no figure quoted on the held-out part comes from music any method was tuned
on. Run through bench/corpus/build-corpus, which installs what this needs.

Truth file, one item a line, times in seconds from the start of the side:
    rate R / category C / part development|held-out / seed S / length L
    track START END        the audible music (from and to 50 dB under the track's loudest)
    gap START END          between two tracks: a boundary belongs here
    segue POINT FROM TO    a cross-fade with no gap: the boundary belongs within 1 s of POINT
    noboundary START END WHY   lead-in, run-out, tape leader, pianissimo, a long track's join
"""

import argparse
import hashlib
import os
import subprocess
import sys
import wave

import numpy as np

SOURCE_FOLDERS = [
    "/usr/share/games/hedgewars/Data/Music",
    "/usr/share/games/lincity-ng/music/default",
]
CATEGORIES = ["record", "digital-fade", "cassette", "segue", "pianissimo", "short-long", "live",
              "mixed"]
SIDES_PER_CATEGORY = 8
DEMO_SIDES = 9
HELD_OUT_SHARE = 0.3  # of the source pieces, chosen by a hash of the name


def db(value):
    return 10.0 ** (value / 20.0)


def name_hash(path):
    return hashlib.sha1(os.path.basename(path).encode()).hexdigest()


def held_out_side(index):
    return index % 3 == 1


class Sources:
    """The source pieces at a sample rate, decoded once, with leading and trailing quiet cut."""

    def __init__(self):
        self.paths = []
        for folder in SOURCE_FOLDERS:
            if os.path.isdir(folder):
                self.paths += sorted(os.path.join(folder, f) for f in os.listdir(folder)
                                     if f.endswith(".ogg"))
        if not self.paths:
            sys.exit("make_corpus: no source music found; run bench/corpus/build-corpus")
        self.cache = {}
        ranked = sorted(self.paths, key=name_hash)
        self.held_out = set(ranked[:round(HELD_OUT_SHARE * len(ranked))])

    def pool(self, held_out):
        return [p for p in self.paths if (p in self.held_out) == held_out]

    def load(self, path, rate):
        key = (path, rate)
        if key not in self.cache:
            raw = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", "f32le", "-ac", "2",
                                  "-ar", str(rate), "-"], check=True, capture_output=True).stdout
            x = np.frombuffer(raw, dtype="<f4").reshape(-1, 2).astype(np.float32)
            hop = rate // 20
            frames = len(x) // hop
            rms = np.sqrt(np.mean(x[:frames * hop].reshape(frames, -1) ** 2, axis=1) + 1e-20)
            loud = np.nonzero(20 * np.log10(rms) > -55)[0]
            x = x[loud[0] * hop:(loud[-1] + 1) * hop] if len(loud) else x
            if len(self.cache) > 12:
                self.cache.pop(next(iter(self.cache)))
            self.cache[key] = x
        return self.cache[key]


def ramp(n, fall_db=60.0, falling=True):
    """A fade linear in dB down to fall_db, ending at exact zero."""
    if n <= 0:
        return np.ones(0, dtype=np.float32)
    g = db(-fall_db * np.linspace(0, 1, n, dtype=np.float64))
    g[-1] = 0.0
    g = g.astype(np.float32)
    return g if falling else g[::-1].copy()


def excerpt(sources, rng, path, rate, seconds):
    """`seconds` of the piece from a random place, looped with a cross-fade when it is longer."""
    x = sources.load(path, rate)
    n = int(seconds * rate)
    joins = []
    if n <= len(x):
        first = int(rng.integers(0, len(x) - n + 1))
        return x[first:first + n].copy(), joins
    # A loop joins the piece's end to its start: cut its soft opening and closing first, or the
    # join would be a long near-silence in the middle of a track, which no one could tell from
    # a gap.
    hop = rate // 20
    frames = len(x) // hop
    rms = np.sqrt(np.mean(x[:frames * hop].reshape(frames, -1) ** 2, axis=1) + 1e-20)
    level = 20 * np.log10(rms)
    loud = np.nonzero(level > level.max() - 30)[0]
    x = x[loud[0] * hop:(loud[-1] + 1) * hop]
    out = np.zeros((n, 2), dtype=np.float32)
    fade = int(2 * rate)
    at = 0
    while at < n:
        take = min(len(x), n - at)
        piece = x[:take].copy()
        if at > 0:
            k = min(fade, take)
            piece[:k] *= np.linspace(0, 1, k, dtype=np.float32)[:, None]
            out[at:at + k] *= np.linspace(1, 0, k, dtype=np.float32)[:, None]
            joins.append(at / rate)
        out[at:at + take] += piece
        at += take - fade if take == len(x) else take
    return out, joins


def audible(x, rate, floor_db=-400.0):
    """First and last 50 ms frame within 50 dB of the loudest and above floor_db, in seconds:
    a fade that has sunk under the medium's noise is heard no more."""
    hop = rate // 20
    frames = max(1, len(x) // hop)
    rms = np.sqrt(np.mean(x[:frames * hop].reshape(frames, -1) ** 2, axis=1) + 1e-30)
    level = 20 * np.log10(rms)
    on = np.nonzero(level > max(level.max() - 50, floor_db))[0]
    return on[0] * hop / rate, (on[-1] + 1) * hop / rate


def hiss(rng, n, level_db, tilt):
    w = rng.standard_normal((n + 1, 2)).astype(np.float32)
    w = w[1:] - tilt * w[:-1]
    w *= db(level_db) / np.sqrt(np.mean(w ** 2))
    return w


def crackle(rng, n, rate, per_second, level_db, out):
    count = int(rng.poisson(per_second * n / rate))
    kernel_len = int(0.002 * rate)
    t = np.arange(kernel_len, dtype=np.float32)
    for at in rng.integers(0, max(1, n - kernel_len), count):
        size = db(level_db) * float(rng.pareto(2.5) + 0.3) * (1 if rng.random() < 0.5 else -1)
        decay = float(rng.uniform(0.05, 0.4)) * rate / 1000
        shape = np.exp(-t / decay) * np.cos(t * float(rng.uniform(0.3, 1.5)))
        out[at:at + kernel_len, 0] += size * shape
        out[at:at + kernel_len, 1] += size * shape * float(rng.uniform(0.7, 1.0))


def rumble(rng, n, rate, level_db):
    slow = rng.standard_normal((n // (rate // 40) + 2, 2))
    t = np.arange(n) / (rate / 40)
    r = np.stack([np.interp(t, np.arange(len(slow)), slow[:, c]) for c in range(2)], axis=1)
    r *= db(level_db) / np.sqrt(np.mean(r ** 2) + 1e-20)
    return r.astype(np.float32)


def hum(rng, n, rate, level_db):
    f = 50.0 if rng.random() < 0.5 else 60.0
    t = np.arange(n) / rate
    h = np.zeros(n)
    for k, rel in ((1, 0), (2, -8), (3, -10), (5, -16), (7, -22)):
        h += db(rel) * np.sin(2 * np.pi * f * k * t + rng.uniform(0, 6.28))
    h *= db(level_db) / np.sqrt(np.mean(h ** 2))
    return np.stack([h, h * 0.9], axis=1).astype(np.float32), f


def applause(rng, n, rate, level_db):
    """Claps: short bursts of bright noise, dense, rising fast and dying away."""
    out = np.zeros((n, 2), dtype=np.float32)
    density = float(rng.uniform(40, 90))
    count = int(density * n / rate)
    clap_len = int(0.012 * rate)
    t = np.arange(clap_len, dtype=np.float32)
    rise = 0.4 * rate
    fall_from = n - int(rng.uniform(1.5, 3.0) * rate)
    for at in np.sort(rng.integers(0, max(1, n - clap_len), count)):
        env = min(1.0, at / rise)
        if at > fall_from:
            env *= max(0.0, 1 - (at - fall_from) / (n - fall_from)) ** 2
        burst = rng.standard_normal((clap_len, 2)).astype(np.float32)
        burst[1:] -= 0.8 * burst[:-1]
        out[at:at + clap_len] += env * float(rng.uniform(0.3, 1.0)) * burst * np.exp(
            -t / (0.003 * rate))[:, None]
    rms = np.sqrt(np.mean(out ** 2) + 1e-20)
    return out * (db(level_db) / rms)


def time_warp(x, rate, rng):
    """Wow (about 0.5 Hz) and flutter (about 6 Hz), some 0.2 and 0.08 % of speed."""
    n = len(x)
    t = np.arange(n, dtype=np.float64)
    wf, ff = rng.uniform(0.4, 0.8), rng.uniform(5, 9)
    shift = (0.002 * rate / (2 * np.pi * wf)) * np.sin(2 * np.pi * wf * t / rate)
    shift += (0.0008 * rate / (2 * np.pi * ff)) * np.sin(2 * np.pi * ff * t / rate + 1.0)
    warped = np.clip(t + shift, 0, n - 1)
    return np.stack([np.interp(warped, t, x[:, c]) for c in range(2)], axis=1).astype(np.float32)


class Side:
    def __init__(self, name, category, seed, part, rate):
        self.name, self.category, self.seed, self.part, self.rate = name, category, seed, part, rate
        self.tracks, self.gaps, self.segues, self.no_boundary = [], [], [], []
        self.sources = []


def plan_lengths(category, rng):
    if category == "short-long":
        lengths = [float(rng.uniform(15, 28)) for _ in range(int(rng.integers(2, 4)))]
        lengths.insert(int(rng.integers(0, len(lengths) + 1)), float(rng.uniform(730, 800)))
        if rng.random() < 0.5:
            lengths.append(float(rng.uniform(60, 150)))
        return lengths
    count = int(rng.integers(3, 8))
    lengths = [float(rng.uniform(40, 170)) for _ in range(count)]
    if category == "mixed" and rng.random() < 0.5:
        lengths[int(rng.integers(0, count))] = float(rng.uniform(18, 29))
    return lengths


def make_side(sources, category, index, seed):
    rng = np.random.default_rng(seed)
    held = held_out_side(index)
    rate = 48000 if (category == "mixed" or rng.random() < 0.3) else 44100
    side = Side(f"{category}-{index + 1:02d}", category, seed, "held-out" if held else
                "development", rate)
    pool = sources.pool(held)
    lengths = plan_lengths(category, rng)
    picks = rng.permutation(len(pool))
    cassette = category == "cassette"
    live = category == "live"
    mixed = category == "mixed"
    digital = category == "digital-fade" or (mixed and rng.random() < 0.3)

    # The music of each track, faded as a mastering engineer would.
    pieces = []
    for i, seconds in enumerate(lengths):
        path = pool[int(picks[i % len(picks)])]
        side.sources.append(os.path.basename(path))
        x, joins = excerpt(sources, rng, path, rate, seconds)
        fade_in = int(rng.uniform(0.02, 1.5 if rng.random() < 0.7 else 4) * rate)
        x[:fade_in] *= ramp(fade_in, falling=False)[:, None]
        if digital or rng.random() < 0.55:
            fade_out = int(rng.uniform(3, 10) * rate)
            x[-fade_out:] *= ramp(fade_out, 60 if not digital else 90)[:, None]
            if digital:
                x = np.concatenate([x, np.zeros((int(rng.uniform(0.3, 2) * rate), 2),
                                                np.float32)])
        else:
            tail = int(0.25 * rate)
            x[-tail:] *= ramp(tail)[:, None]
        x /= max(1e-9, float(np.abs(x).max()))
        quiet = []
        if category == "pianissimo" and (i == 0 or rng.random() < 0.5) and seconds > 60:
            q0 = float(rng.uniform(15, seconds - 40))
            q1 = q0 + float(rng.uniform(8, 25))
            down = db(-float(rng.uniform(25, 35)))
            t = np.arange(len(x)) / rate
            g = np.interp(t, [0, q0, q0 + 1, q1 - 1, q1, t[-1] + 1], [1, 1, down, down, 1, 1])
            x *= g[:, None].astype(np.float32)
            quiet.append((q0, q1))
        x *= db(float(rng.uniform(-3, 0)))  # tracks of a side differ a little in level
        pieces.append((x, joins, quiet))

    # The layout: lead-in, gaps (or cross-fades), run-out.
    lead_in = float(rng.uniform(0.5, 15) if mixed else rng.uniform(1.5, 6))
    if cassette:
        lead_in = float(rng.uniform(5, 10))
    run_out = float(rng.uniform(2, 40) if mixed else rng.uniform(4, 20))
    segue_joins = set()
    if category == "segue" and len(pieces) > 1:
        for j in rng.choice(len(pieces) - 1, size=min(len(pieces) - 1, int(rng.integers(1, 3))),
                            replace=False):
            segue_joins.add(int(j))
    starts = []
    at = lead_in
    for i, (x, _, _) in enumerate(pieces):
        starts.append(at)
        if i + 1 == len(pieces):
            at += len(x) / rate
        elif i in segue_joins:
            at += len(x) / rate - float(rng.uniform(2, 6))
        elif cassette:
            at += len(x) / rate + float(rng.uniform(1.5, 2.0))
        elif live:
            at += len(x) / rate + float(rng.uniform(4, 10))
        else:
            at += len(x) / rate + float(rng.uniform(1.0, 5.0) if not mixed else
                                         rng.uniform(0.8, 6.0))
    total = at + run_out
    n = int(total * rate)
    music = np.zeros((n, 2), dtype=np.float32)
    bounds = []
    side.segue_points = {}
    for i, (x, joins, quiet) in enumerate(pieces):
        s = int(starts[i] * rate)
        music[s:s + len(x)] += x
        a0, a1 = audible(x, rate)
        bounds.append((starts[i] + a0, starts[i] + a1))
        for j in joins:
            side.no_boundary.append((starts[i] + j - 1.5, starts[i] + j + 1.5, "loop-join"))
        for q0, q1 in quiet:
            side.no_boundary.append((starts[i] + q0, starts[i] + q1, "pianissimo"))
    for i in sorted(segue_joins):
        # The cross-fade, from the next track's first sample to the end of this one: the
        # outgoing track falls as the incoming one rises.
        x = pieces[i][0]
        f0 = starts[i + 1]
        f1 = starts[i] + len(x) / rate
        fade = int((f1 - f0) * rate)
        s = int(f0 * rate)
        music[s:s + fade] -= x[-fade:] * (1 - ramp(fade, 40))[:, None]
        music[s:s + fade] -= pieces[i + 1][0][:fade] * (1 - ramp(fade, 40, falling=False))[:, None]
        side.segue_points[i] = ((f0 + f1) / 2, f0, f1)
    side.segue_joins = segue_joins
    set_truth(side, bounds, total)

    peak_db = float(rng.uniform(-20, -3))
    gain = db(peak_db) / max(1e-9, float(np.abs(music).max()))
    music *= gain
    side.peak_db = peak_db
    if cassette:
        music = time_warp(music, rate, rng)

    # What the medium adds.
    noise = np.zeros_like(music)
    notes = []
    if cassette:
        level = float(rng.uniform(-45, -35))
        tape = hiss(rng, n, level, 0.7)
        leader = int(rng.uniform(2, lead_in - 2) * rate)
        tape[:leader] *= db(-45)
        noise += tape
        side.no_boundary.append((0.0, leader / rate, "tape leader"))
        if rng.random() < 0.5:
            h, f = hum(rng, n, rate, float(rng.uniform(-70, -55)))
            noise += h
        notes.append(f"hiss {level:.1f} dBFS")
    else:
        low, high = (-62, -54) if category == "pianissimo" else (-60, -45)
        level = float(rng.uniform(low, high))
        noise += hiss(rng, n, level, float(rng.uniform(0, 0.5)))
        crackle(rng, n, rate, float(rng.uniform(1, 15)), level + float(rng.uniform(6, 20)), noise)
        noise += rumble(rng, n, rate, float(rng.uniform(-55, -35)))
        if rng.random() < 0.7:
            h, f = hum(rng, n, rate, float(rng.uniform(-68, -50)))
            noise += h
            notes.append(f"hum {f:.0f} Hz")
        notes.append(f"noise {level:.1f} dBFS")
    if live:
        crowd_db = float(rng.uniform(-52, -42))
        level = max(level, crowd_db)
        noise += hiss(rng, n, crowd_db, -0.9) + rumble(rng, n, rate, float(rng.uniform(-55, -45)))
        for (g0, g1) in side.gaps:
            a0 = int(max(0, g0 - 1.0) * rate)
            a1 = int((g1 - 0.3) * rate)
            noise[a0:a1] += applause(rng, a1 - a0, rate, peak_db - float(rng.uniform(8, 16)))
        notes.append("applause")
    if digital:
        # Music mastered digitally: the medium's noise only where no track plays.
        gate = np.ones(n, dtype=np.float32)
        for i, (x, _, _) in enumerate(pieces):
            s = int(starts[i] * rate)
            gate[s:s + len(x)] = 0
        # 50 ms ramps at the edges: a moving average, by running sums.
        edge = int(0.05 * rate)
        sums = np.concatenate([[0.0], np.cumsum(gate, dtype=np.float64)])
        lo = np.clip(np.arange(n) - edge // 2, 0, n)
        hi = np.clip(lo + edge, 0, n)
        gate = ((sums[hi] - sums[lo]) / edge).astype(np.float32)
        noise *= gate[:, None]
        notes.append("digital fades")
    side.notes = ", ".join(notes)
    # The truth as heard: each track from and to where it rises above the noise of the gaps.
    bounds = []
    for i, (x, _, _) in enumerate(pieces):
        a0, a1 = audible(x * gain, rate, level)
        bounds.append((starts[i] + a0, starts[i] + a1))
    set_truth(side, bounds, total)
    return side, music + noise


def set_truth(side, bounds, total):
    side.gaps, side.segues = [], []
    side.no_boundary = [nb for nb in side.no_boundary if nb[2] not in ("lead-in", "run-out")]
    for i in range(len(bounds) - 1):
        if i in side.segue_joins:
            side.segues.append(side.segue_points[i])
        else:
            side.gaps.append((bounds[i][1], bounds[i + 1][0]))
    side.tracks = list(bounds)
    side.no_boundary.append((0.0, bounds[0][0], "lead-in"))
    side.no_boundary.append((bounds[-1][1], total, "run-out"))


def write_side(folder, side, audio):
    os.makedirs(folder, exist_ok=True)
    pcm = np.clip(np.round(audio * 32767), -32768, 32767).astype("<i2")
    with wave.open(os.path.join(folder, side.name + ".wav"), "wb") as w:
        w.setnchannels(2)
        w.setsampwidth(2)
        w.setframerate(side.rate)
        w.writeframes(pcm.tobytes())
    write_truth(folder, side, len(audio) / side.rate)


def write_truth(folder, side, length):
    with open(os.path.join(folder, side.name + ".truth"), "w") as f:
        f.write(f"# {side.notes}; sources: {'; '.join(side.sources)}\n")
        f.write(f"rate {side.rate}\ncategory {side.category}\npart {side.part}\n"
                f"seed {side.seed}\nlength {length:.3f}\n")
        for a, b in side.tracks:
            f.write(f"track {a:.3f} {b:.3f}\n")
        for a, b in side.gaps:
            f.write(f"gap {a:.3f} {b:.3f}\n")
        for p, a, b in side.segues:
            f.write(f"segue {p:.3f} {a:.3f} {b:.3f}\n")
        for a, b, why in side.no_boundary:
            f.write(f"noboundary {a:.3f} {b:.3f} {why}\n")


def make_demo(cli, folder, index, seed):
    side = Side(f"demo-{index + 1:02d}", "demo", seed,
                "held-out" if held_out_side(index) else "development", 44100)
    os.makedirs(folder, exist_ok=True)
    path = os.path.join(folder, side.name + ".wav")
    out = subprocess.run([cli, "make-demo-side", "--realistic", "--seed", str(seed), path],
                         check=True, capture_output=True, text=True).stdout
    length = 0.0
    for line in out.splitlines():
        words = line.replace("..", " ").replace(" s ", " ").split()
        if not words:
            continue
        if words[0] == "track":
            side.tracks.append((float(words[2]), float(words[3])))
        elif words[0] == "gap":
            side.gaps.append((float(words[1]), float(words[2])))
        elif words[0] in ("lead-in", "run-out"):
            side.no_boundary.append((float(words[1]), float(words[2]), words[0]))
            length = max(length, float(words[2]))
        elif words[0] == "quiet":
            side.no_boundary.append((float(words[1]), float(words[2]), "pianissimo"))
    side.notes = "make-demo-side --realistic"
    write_truth(folder, side, length)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--out", default="build/corpus")
    parser.add_argument("--cli", default="build/src/cli/waxline-cli")
    parser.add_argument("--only", default="")
    args = parser.parse_args()
    sources = Sources()
    dev, held = sources.pool(False), sources.pool(True)
    print(f"{len(sources.paths)} source pieces: {len(dev)} for development, {len(held)} held out")
    for c, category in enumerate(CATEGORIES):
        for k in range(SIDES_PER_CATEGORY):
            name = f"{category}-{k + 1:02d}"
            if not name.startswith(args.only):
                continue
            side, audio = make_side(sources, category, k, 1000 * (c + 1) + k)
            folder = os.path.join(args.out, side.part)
            write_side(folder, side, audio)
            print(f"{side.part:12s} {side.name:16s} {len(side.tracks)} tracks, "
                  f"{len(audio) / side.rate / 60:5.1f} min at {side.rate} Hz, {side.notes}",
                  flush=True)
    for k in range(DEMO_SIDES):
        name = f"demo-{k + 1:02d}"
        if name.startswith(args.only):
            part = "held-out" if held_out_side(k) else "development"
            make_demo(args.cli, os.path.join(args.out, part), k, 9001 + k)
            print(f"{part:12s} {name}", flush=True)


if __name__ == "__main__":
    main()
