# Helpers for the command-line transcripts, sourced before each one runs in its own folder.

# demo_side FILE [make-demo-side options]: a synthetic side, made once per build and copied
# after that; prints nothing. Its gap layout is kept beside it as FILE.layout.
demo_side() {
    local file=$1
    shift
    local cli cache key
    cli=$(command -v waxline-cli)
    cache="$(dirname "$cli")/test-sides"
    key="transcript-$(echo "$* $(stat -c %Y "$cli")" | md5sum | cut -c1-16)"
    mkdir -p "$cache"
    if [ ! -s "$cache/$key.wav" ]; then
        waxline-cli make-demo-side "$cache/$key.$$.wav" "$@" >"$cache/$key.$$.layout" || return 1
        mv "$cache/$key.$$.layout" "$cache/$key.layout"
        mv "$cache/$key.$$.wav" "$cache/$key.wav"
    fi
    cp "$cache/$key.wav" "$file"
    cp "$cache/$key.layout" "$file.layout"
}

# cut_into FOLDER SIDE [START_FRAME ...]: the side as the recorder leaves it, one track file
# from each start, with a finished count.
cut_into() {
    local folder=$1 side=$2
    shift 2
    mkdir -p "$folder"
    local from=0 n=1 at
    for at in "$@"; do
        sox "$side" "$folder/WXRTTmpFile.$n.wav" trim "${from}s" "=${at}s"
        from=$at
        n=$((n + 1))
    done
    sox "$side" "$folder/WXRTTmpFile.$n.wav" trim "${from}s"
    printf '%s\nfinished\n' "$n" >"$folder/WXRTTmpFile.count"
}

# gap_middle SIDE N: the frame in the middle of the side's Nth gap.
gap_middle() {
    awk -v n="$2" '/gap/ { if (++seen == n) printf "%d\n", ($2 + $5) / 2 * 44100 }' "$1.layout"
}

# starts FOLDER: each track file's start in frames, after the first.
starts() {
    local at=0 n=1
    while [ -e "$1/WXRTTmpFile.$((n + 1)).wav" ]; do
        at=$((at + $(soxi -s "$1/WXRTTmpFile.$n.wav")))
        echo "$at"
        n=$((n + 1))
    done
}

# in_gaps SIDE FOLDER: for each track start, whether it lies inside the matching gap.
in_gaps() {
    starts "$2" | awk -v layout="$1.layout" 'BEGIN {
        while ((getline line < layout) > 0)
            if (split(line, f) && f[1] == "gap") { lo[++n] = f[2]; hi[n] = f[5] }
    } { s = $1 / 44100; print "start " NR ": " ((s >= lo[NR] && s <= hi[NR]) ? "in gap " NR : "at " s " s, outside gap " NR) }'
}

# samples FILE...: a digest of the files' samples joined, headers left out.
samples() {
    sox "$@" -t s16 - | md5sum | cut -c1-32
}

# tone FILE [SECONDS]: a stereo 440 Hz tone at half scale, 16-bit 44.1 kHz.
tone() {
    sox -n -r 44100 -c 2 -b 16 "$1" synth "${2:-0.8}" sine 440 vol 0.5
}

# files DIR: every file below DIR, as paths relative to it, sorted.
files() {
    (cd "$1" 2>/dev/null && find . -type f | sed 's|^\./||' | LC_ALL=C sort)
}

# tags FILE: the audio file's tags as ffprobe reads them, one "key=value" a line, sorted.
tags() {
    ffprobe -v error -show_entries format_tags -of default=noprint_wrappers=1 "$1" |
        sed 's/^TAG://' | LC_ALL=C sort
}

# signal_when SIGNAL CONDITION COMMAND...: runs the command in the background with its output in
# out.log, sends it SIGNAL once the shell test CONDITION holds (checked every 20 ms, for at most a
# minute), and prints the exit status it ended with (128 + the signal's number when killed).
signal_when() {
    local signal=$1 condition=$2
    shift 2
    "$@" >out.log 2>&1 &
    local pid=$! end=$(($(date +%s) + 60))
    until eval "$condition"; do
        if [ "$(date +%s)" -ge $end ]; then
            echo "never held: $condition"
            break
        fi
        sleep 0.02
    done
    kill -s "$signal" $pid
    { wait $pid; } 2>/dev/null
    echo "exit $?"
}

# data_bytes FILE: the size of the WAV file's data chunk as its header states it.
data_bytes() {
    python3 -c 'import struct, sys
b = open(sys.argv[1], "rb").read(); i = b.find(b"data")
print(struct.unpack("<I", b[i + 4:i + 8])[0] if i >= 0 else -1)' "$1"
}

# seconds FILE: the audio's length as ffprobe reads it.
seconds() {
    ffprobe -v error -show_entries format=duration -of csv=p=0 "$1"
}
