#!/usr/bin/env bash
# Export speed: `waxline-cli export` (encodings overlapping, one per core) against encoding the
# same tracks one after another with the same ffmpeg command, on a 30-minute demo side of 7
# tracks and a 28-minute side of 22 tracks. Prints both times and their ratio per side; the
# target is a ratio of at most 0.55 on both. For reference it also times the bare ffmpeg runs
# two at a time (xargs -P2, no tagging, no library): what two lanes of ffmpeg cost on this
# machine, whatever the export does around them.
# Usage: bench/export-speed.sh [BUILD_DIR]   (default: build, built if needed)
#        ROUNDS=N (default 3) alternating rounds per side, the best time of each kept;
#        SIDES="7:1800 22:1680" the sides as TRACKS:SECONDS.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
[ -x "$build/src/cli/waxline-cli" ] || scripts/build "$build" >/dev/null
cli=$(cd "$build/src/cli" && pwd)/waxline-cli
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

now() { date +%s.%N; }
calc() { awk "BEGIN { printf \"%.6f\", $1 }"; }
target=0.55
rounds=${ROUNDS:-3}
summary=()

# One track the way the export encodes it, from the side's folder ($1) to its own folder;
# exported so that xargs' shells run the very same command.
encode_one() {
    ffmpeg -nostdin -hide_banner -loglevel error -y \
        -i "$1/exports/WXRTTmpFile.$2.wav" -codec:a libmp3lame -qscale:a 2 \
        "$1/sequential/$2.mp3"
}
export -f encode_one

# One side: make it, cut it at the track boundaries, then time both ways.
bench_side() {
    local tracks=$1 seconds=$2 side="$work/side-$1"
    echo "== A ${seconds}-second side of $tracks tracks, cut at the track boundaries"
    mkdir -p "$side/exports" "$side/sequential"
    "$cli" make-demo-side "$side/side.wav" --tracks "$tracks" --length "$seconds" --seed 11 \
        >"$side/layout.txt"
    local n=0 kind number start dots end
    while read -r kind number start _ dots end _; do
        [ "$kind" = track ] || continue
        n=$((n + 1))
        sox "$side/side.wav" "$side/exports/WXRTTmpFile.$n.wav" trim "$start" "=$end"
    done < <(grep '^track' "$side/layout.txt" | sed 's/\.\./ .. /')
    rm "$side/side.wav"
    echo "$n" >"$side/exports/WXRTTmpFile.count"
    echo "  cores: $(nproc), load average before: $(cut -d' ' -f1-3 /proc/loadavg)" \
        "(figures need an idle machine)"

    # Alternating rounds, the best time of each: a single run on a small machine is at the
    # mercy of whatever else wakes up.
    local sequential= pipeline= lanes= s p l t0 t1
    for round in $(seq 1 "$rounds"); do
        t0=$(now)
        for i in $(seq 1 "$n"); do
            encode_one "$side" "$i"
        done
        t1=$(now)
        s=$(calc "$t1 - $t0")

        t0=$(now)
        seq 1 "$n" | xargs -P2 -I{} bash -c 'encode_one "$0" {}' "$side"
        t1=$(now)
        l=$(calc "$t1 - $t0")

        rm -rf "$side/Music"
        t0=$(now)
        "$cli" export --artist Bench --album Speed --export-dir "$side/exports" \
            --library "$side/Music" >"$side/export.log"
        t1=$(now)
        p=$(calc "$t1 - $t0")
        printf '  round %d: one after another %7.2f s, two bare lanes %7.2f s, waxline export %7.2f s\n' \
            "$round" "$s" "$l" "$p"
        if [ -z "$sequential" ] || awk "BEGIN { exit !($s < $sequential) }"; then sequential=$s; fi
        if [ -z "$lanes" ] || awk "BEGIN { exit !($l < $lanes) }"; then lanes=$l; fi
        if [ -z "$pipeline" ] || awk "BEGIN { exit !($p < $pipeline) }"; then pipeline=$p; fi
    done
    local made ratio
    made=$(find "$side/Music" -name '*.mp3' | wc -l)
    ratio=$(calc "$pipeline / $sequential")
    summary+=("$(printf '%2d tracks: one after another %7.2f s, waxline export %7.2f s (%d library files), ratio %.3f (target <= %s: %s); two bare lanes %.3f' \
        "$n" "$sequential" "$pipeline" "$made" "$ratio" "$target" \
        "$(awk "BEGIN { print ($ratio <= $target) ? \"met\" : \"NOT met\" }")" \
        "$(calc "$lanes / $sequential")")")
    rm -rf "$side"
}

for pair in ${SIDES:-7:1800 22:1680}; do
    bench_side "${pair%%:*}" "${pair##*:}"
done
echo "== Best of $rounds rounds"
printf '%s\n' "${summary[@]}"
