#!/usr/bin/env bash
# The window on a real X server: waxline starts on the virtual turntable, shows panel 1 as its
# shaped window (a screen grab, not the widget's own rendering), goes on to the next panel on
# Return, keeps running when the close is declined and exits 0 when it is confirmed. Then a
# recording: Esc and Return on its panel keep every track; killed on the naming panel, the next
# start offers the side back, and saving it puts every track into the music folder.
# Usage: RealWindowTest.sh WAXLINE WAXLINE_CLI
set -euo pipefail
if [ "${1:-}" != --inside ]; then
    for tool in xvfb-run xdotool xwd convert; do
        command -v "$tool" >/dev/null || { echo "SKIP: $tool is missing"; exit 77; }
    done
    exec xvfb-run -a -s "-screen 0 1024x768x24 -noreset" bash "$0" --inside "$@"
fi
shift
app=$1 cli=$2
work=$(mktemp -d)
pid=
cleanup() {
    [ -n "$pid" ] && kill "$pid" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT
# A private home, so the export folder and settings are the test's own.
export HOME=$work/home XDG_RUNTIME_DIR=$work/run XDG_CONFIG_HOME=$work/home/.config
export WAXLINE_EXPORT_DIR=$work/exports WAXLINE_MUSIC_DIR=$work/music
mkdir -p "$HOME" && mkdir -m 700 "$XDG_RUNTIME_DIR"
unset QT_QPA_PLATFORM
fail() { echo "FAIL: $*"; [ -f "$work/app.log" ] && sed 's/^/    waxline: /' "$work/app.log"; exit 1; }

"$cli" make-demo-side "$work/side.wav" --tracks 1 --length 90 --seed 5 >/dev/null
deck="usb=08bb:2900,name=USB Audio CODEC ,file=$work/side.wav,speed=1"
"$app" --virtual-device "$deck" >"$work/app.log" 2>&1 &
pid=$!

visibleWindows() { xdotool search --all --pid "$pid" --onlyvisible --name Waxline 2>/dev/null || true; }
# The limit is generous: a sanitizer build starting among other tests can take many seconds.
waitFor() { # waitFor N: until the process shows N visible windows, for up to 45 s
    for _ in $(seq 225); do
        [ "$(visibleWindows | wc -l)" -eq "$1" ] && return 0
        kill -0 "$pid" 2>/dev/null || fail "waxline ended while waiting for $1 window(s)"
        sleep 0.2
    done
    fail "waxline did not show $1 window(s): $(visibleWindows | while read -r w; do
        xdotool getwindowname "$w"; done | tr '\n' '|')"
}
grab() { xwd -root -silent | convert xwd:- "$work/$1.png"; }
# The fraction of a box's pixels within 12 % of a colour.
share() { # share SHOT COLOUR W H X Y
    convert "$work/$1.png" -crop "$3x$4+$5+$6" +repage -fuzz 12% -fill white -opaque "$2" \
        -fill black +opaque white -format '%[fx:mean]' info:
}
pixel() { convert "$work/$1.png" -crop "1x1+$2+$3" +repage -depth 8 -format '%[hex:p{0,0}]' info:; }
atLeast() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a >= b) }'; }

waitFor 1
sleep 1 # the first paint
window=$(visibleWindows | head -1)
eval "$(xdotool getwindowgeometry --shell "$window")"
[ "$WIDTH" -eq 720 ] && [ "$HEIGHT" -eq 480 ] || fail "window is ${WIDTH}x$HEIGHT, not 720x480"
grab panel1

# The walnut header band (y 8..80) and the cream content box (y 96..396) are on the screen.
walnut=$(share panel1 '#3B2A20' 560 50 $((X + 30)) $((Y + 20)))
cream=$(share panel1 '#F7F1E5' 600 260 $((X + 60)) $((Y + 120)))
echo "panel 1: header $walnut walnut, content box $cream cream"
atLeast "$walnut" 0.3 || fail "only $walnut of the header is walnut"
atLeast "$cream" 0.5 || fail "only $cream of the content box is cream"
# The corners lie outside the rounded shape: there the screen shows the root window, whose colour
# a point far from the window gives; it is neither walnut nor cream.
root=$(pixel panel1 1020 764)
[ "$(share panel1 "#$root" 1 1 1020 764)" = 1 ] || fail "cannot read the root colour"
atLeast "$(share panel1 "#$root" 1 1 $((X + 30)) $((Y + 20)))" 1 && fail "the header has the root colour"
for corner in "$((X + 3)) $((Y + 3))" "$((X + WIDTH - 4)) $((Y + 3))" \
    "$((X + 3)) $((Y + HEIGHT - 4))" "$((X + WIDTH - 4)) $((Y + HEIGHT - 4))"; do
    set -- $corner
    [ "$(pixel panel1 "$1" "$2")" = "$root" ] || fail "corner $1,$2 is window-coloured, not the root's"
done

# Return presses panel 1's default button: the deck is found and the level panel follows.
xdotool key Return
sleep 1.5
grab panel2
changed=$(compare -metric AE "$work/panel1.png" "$work/panel2.png" null: 2>&1 || true)
echo "Return: $changed pixels changed"
[ "${changed%% *}" -gt 2000 ] 2>/dev/null || fail "Return left the window as it was ($changed pixels changed)"
atLeast "$(share panel2 '#3B2A20' 560 50 $((X + 30)) $((Y + 20)))" 0.3 || fail "panel 2 lost its header"

# Ctrl+Q asks (the window needs the input focus, which no window manager gives it here); No
# keeps the application running.
xdotool windowfocus --sync "$window"
xdotool key ctrl+q
waitFor 2
xdotool key Escape
waitFor 1
sleep 0.5
kill -0 "$pid" 2>/dev/null || fail "declining the close ended the application"
# Asked again by the window's Close button, Return confirms (Yes is the default) and the process ends by itself with 0.
xdotool mousemove $((X + 680)) $((Y + 44)) click 1
waitFor 2
xdotool key Return
for _ in $(seq 100); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
kill -0 "$pid" 2>/dev/null && fail "waxline still runs 10 s after the confirmed close"
status=0
wait "$pid" || status=$?
pid=
[ "$status" -eq 0 ] || fail "waxline exited with $status after the confirmed close"
echo "real window under Xvfb: shaped panel 1, Return to the next panel, declined and confirmed close: passed"

# Record two tracks, then Esc and Return on the recording panel: Esc does nothing there and
# Return is Stop, so both tracks stay and the naming panel follows.
"$app" --virtual-device "$deck" >"$work/app.log" 2>&1 &
pid=$!
waitFor 1
window=$(visibleWindows | head -1)
eval "$(xdotool getwindowgeometry --shell "$window")"
key() { xdotool windowfocus --sync "$window" key "$@"; }
key Return # panel 1: the deck is found
sleep 1.5
key Return # panel 2: Record
sleep 2.5
xdotool mousemove $((X + 128)) $((Y + 338)) click 1 # New Track
sleep 2.5
key Escape
sleep 0.5
key Return
sleep 1.5
exports=$WAXLINE_EXPORT_DIR
for n in 1 2; do
    size=$(stat -c %s "$exports/WXRTTmpFile.$n.wav" 2>/dev/null || echo 0)
    [ "$size" -gt 200000 ] || fail "track $n is not there after Esc and Return ($size bytes)"
done
[ ! -e "$exports/WXRTTmpFile.3.wav" ] || fail "Return started another track"
[ "$(tr '\n' ' ' <"$exports/WXRTTmpFile.count")" = "2 finished " ] ||
    fail "the recording did not stop with 2 tracks: $(cat "$exports/WXRTTmpFile.count")"
echo "Esc then Return on the recording panel: both tracks kept, the recording stopped"

# Killed on the naming panel: the next start offers the side back; Return saves it.
kill -9 "$pid"
wait "$pid" 2>/dev/null || true
"$app" --virtual-device "$deck" >"$work/app.log" 2>&1 &
pid=$!
waitFor 2 # the window and the question
question=$(visibleWindows | tail -1)
xdotool windowfocus --sync "$question" key Return
waitFor 1
window=$(visibleWindows | head -1)
xdotool windowfocus --sync "$window" type "Found Artist"
key Return # panel 7's Next: the export
for _ in $(seq 150); do
    [ "$(find "$WAXLINE_MUSIC_DIR" -name '*.mp3' 2>/dev/null | wc -l)" -ge 2 ] && break
    sleep 0.2
done
mp3s=$(find "$WAXLINE_MUSIC_DIR" -name '*.mp3' | wc -l)
[ "$mp3s" -eq 2 ] || fail "saving the side offered back made $mp3s MP3s, not 2"
echo "killed on the naming panel: offered back at the next start, both tracks saved"
