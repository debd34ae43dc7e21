#!/usr/bin/env bash
# Compares the input chain (peaks, the RIAA preset on both channels, the gap detector) over a
# record side with `sox FILE -n riaa` on the same file. Prints both times and their ratio; the
# best of three runs of each counts. Without FILE it makes a 30-minute demo side first.
# Usage: bench/compare-sox.sh [FILE.wav]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build build >/dev/null
cli=build/src/cli/waxline-cli

file=${1:-}
if [ -z "$file" ]; then
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    file=$work/side.wav
    "$cli" make-demo-side "$file" --tracks 7 --length 1800 >/dev/null
fi
[ -r "$file" ] || { echo "compare-sox: cannot read $file" >&2; exit 2; }

best() { sort -g | head -1; }
wall() {
    local s e
    s=$(date +%s.%N)
    "$@" >/dev/null 2>&1
    e=$(date +%s.%N)
    awk "BEGIN { print $e - $s }"
}
ratio() { awk "BEGIN { printf \"%.2f\", $1 / $2 }"; }

cat "$file" >/dev/null # both start from the page cache
sox_s=$(for _ in 1 2 3; do wall sox "$file" -n riaa; done | best)
chain_s=$(for _ in 1 2 3; do
    "$cli" analyse "$file" --preset riaa --timing 2>&1 >/dev/null | sed -n 's/^chain: \([0-9.]*\) s.*/\1/p'
done | best)
cli_s=$(for _ in 1 2 3; do wall "$cli" analyse "$file" --preset riaa; done | best)
audio_s=$(soxi -D "$file")

printf 'audio:                            %8.1f s\n' "$audio_s"
printf 'sox FILE -n riaa:                 %8.3f s\n' "$sox_s"
printf 'input chain (InputProcCallback):  %8.3f s   ratio %s\n' "$chain_s" "$(ratio "$chain_s" "$sox_s")"
printf 'waxline-cli analyse, whole run:   %8.3f s   ratio %s (reading the file included)\n' \
    "$cli_s" "$(ratio "$cli_s" "$sox_s")"
