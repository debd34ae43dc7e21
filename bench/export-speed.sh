#!/usr/bin/env bash
# Export speed: a 30-minute demo side of 7 tracks exported by `waxline-cli export` (encodings
# overlapping, one per core) against encoding the same 7 tracks one after another with the same
# ffmpeg command. Prints both times and their ratio; the target is a ratio of at most 0.6.
# Usage: bench/export-speed.sh [BUILD_DIR]   (default: build, built if needed)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
[ -x "$build/src/cli/waxline-cli" ] || scripts/build "$build" >/dev/null
cli=$(cd "$build/src/cli" && pwd)/waxline-cli
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

now() { date +%s.%N; }
calc() { awk "BEGIN { printf \"%.6f\", $1 }"; }

echo "== Making a 30-minute side of 7 tracks and cutting it at the track boundaries"
"$cli" make-demo-side "$work/side.wav" --tracks 7 --length 1800 --seed 11 >"$work/layout.txt"
mkdir -p "$work/exports" "$work/sequential"
n=0
while read -r kind number start _ dots end _; do
    [ "$kind" = track ] || continue
    n=$((n + 1))
    sox "$work/side.wav" "$work/exports/WXRTTmpFile.$n.wav" trim "$start" "=$end"
    printf '  track %d: %8.1f s\n' "$n" "$(calc "$end - $start")"
done < <(grep '^track' "$work/layout.txt" | sed 's/\.\./ .. /')
echo "$n" >"$work/exports/WXRTTmpFile.count"
echo "  cores: $(nproc), load average before: $(cut -d' ' -f1-3 /proc/loadavg) (figures need an idle machine)"


# Two rounds, alternating, and the best time of each: a single run on a small machine is at the
# mercy of whatever else wakes up.
rounds=${ROUNDS:-2}
sequential=
pipeline=
for round in $(seq 1 "$rounds"); do
    echo "== Round $round: encoding the tracks one after another"
    t0=$(now)
    for i in $(seq 1 "$n"); do
        ffmpeg -nostdin -hide_banner -loglevel error -y -i "$work/exports/WXRTTmpFile.$i.wav" \
            -codec:a libmp3lame -qscale:a 2 "$work/sequential/$i.mp3"
    done
    t1=$(now)
    s=$(calc "$t1 - $t0")

    echo "== Round $round: waxline-cli export (encode, tag, import into the library)"
    rm -rf "$work/Music"
    t0=$(now)
    "$cli" export --artist Bench --album Speed --export-dir "$work/exports" \
        --library "$work/Music" >"$work/export.log"
    t1=$(now)
    p=$(calc "$t1 - $t0")
    printf '  one after another %7.2f s, waxline export %7.2f s\n' "$s" "$p"
    if [ -z "$sequential" ] || awk "BEGIN { exit !($s < $sequential) }"; then sequential=$s; fi
    if [ -z "$pipeline" ] || awk "BEGIN { exit !($p < $pipeline) }"; then pipeline=$p; fi
done
made=$(find "$work/Music" -name '*.mp3' | wc -l)

ratio=$(calc "$pipeline / $sequential")
printf 'one after another: %7.2f s  (best of %d)\n' "$sequential" "$rounds"
printf 'waxline export:    %7.2f s  (best of %d; %d library files)\n' "$pipeline" "$rounds" "$made"
printf 'ratio:             %7.3f  (target <= 0.6: %s)\n' "$ratio" \
    "$(awk "BEGIN { print ($ratio <= 0.6) ? \"met\" : \"NOT met\" }")"
