#!/usr/bin/env bash
# Packs the build as the Debian package, checks its control fields and copyright, unpacks it into
# a throw-away root and runs both programs from there; the launcher's StartupWMClass must be the
# class the running window carries. (scripts/package has lintian judge the package.)
# Usage: DebPackageTest.sh BUILD_DIR
set -euo pipefail
build=$1
for tool in cpack dpkg-deb dpkg-shlibdeps; do
    command -v "$tool" >/dev/null || { echo "SKIP: $tool is missing"; exit 77; }
done
work=$(mktemp -d)
pid=
cleanup() {
    [ -n "$pid" ] && kill "$pid" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT
fail=0
bad() { echo "FAIL: $*"; fail=1; }

(cd "$build" && cpack -G DEB -B "$work/out" >"$work/cpack.log" 2>&1) ||
    { cat "$work/cpack.log"; echo "FAIL: cpack"; exit 1; }
arch=$(dpkg --print-architecture)
debs=("$work"/out/waxline_*_"$arch".deb)
[ -f "${debs[0]}" ] || { ls "$work/out"; echo "FAIL: no waxline_<version>_$arch.deb"; exit 1; }
deb=${debs[0]}
version=$(dpkg-deb -f "$deb" Version)
[ "$(basename "$deb")" = "waxline_${version}_$arch.deb" ] || bad "$(basename "$deb") for version $version"

# Encoding runs ffmpeg; the window needs Qt's widgets, the capture PulseAudio.
depends=$(dpkg-deb -f "$deb" Depends)
for needed in ffmpeg libqt6widgets6 libpulse0 libsndfile1; do
    grep -Eq "(^|, )$needed( |,|$)" <<<"$depends" || bad "Depends lacks $needed: $depends"
done

root=$work/root
dpkg-deb -x "$deb" "$root"
doc=$root/usr/share/doc/waxline
head -n1 "$doc/copyright" | grep -q '^Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/$' ||
    bad "copyright is not machine-readable"
grep -qx 'License: GPL-3.0-or-later' "$doc/copyright" || bad "copyright names no GPL-3.0-or-later"

export HOME=$work/home XDG_RUNTIME_DIR=$work/run XDG_CONFIG_HOME=$work/home/.config
export WAXLINE_EXPORT_DIR=$work/exports WAXLINE_MUSIC_DIR=$work/music
mkdir -p "$HOME" && mkdir -m 700 "$XDG_RUNTIME_DIR"
shots=$work/shots
(cd / && QT_QPA_PLATFORM=offscreen "$root/usr/bin/waxline" --screenshot-panels "$shots") ||
    bad "unpacked waxline --screenshot-panels"
for n in 1 2 6; do
    [ -s "$shots/panel-$n.png" ] || bad "no panel-$n.png from the unpacked program"
done
(cd / && "$root/usr/bin/waxline-cli" --help | grep -q '^Usage: waxline-cli') || bad "unpacked waxline-cli --help"

# The dock groups a window under its launcher by the class in WM_CLASS.
wmclass=$(sed -n 's/^StartupWMClass=//p' "$root/usr/share/applications/org.waxline.Waxline.desktop")
[ -n "$wmclass" ] || bad "the launcher has no StartupWMClass"
if command -v xvfb-run >/dev/null && command -v xdotool >/dev/null && command -v xprop >/dev/null; then
    "$root/usr/bin/waxline-cli" make-demo-side "$work/side.wav" --tracks 1 --length 90 >/dev/null
    cat >"$work/window.sh" <<'INNER'
unset QT_QPA_PLATFORM
"$1" --virtual-device "usb=08bb:2900,name=USB Audio CODEC ,file=$2,speed=1" >/dev/null 2>&1 &
app=$!
for _ in $(seq 75); do
    window=$(xdotool search --all --pid "$app" --onlyvisible --name Waxline 2>/dev/null | head -n1 || true)
    [ -n "$window" ] && break
    sleep 0.2
done
[ -n "$window" ] && xprop -id "$window" WM_CLASS
kill "$app"
INNER
    class=$(xvfb-run -a -s "-screen 0 1024x768x24" bash "$work/window.sh" "$root/usr/bin/waxline" \
        "$work/side.wav" | sed -n 's/^WM_CLASS(STRING) = "[^"]*", "\([^"]*\)"$/\1/p')
    [ "$class" = "$wmclass" ] || bad "the window's class is '$class', the launcher's StartupWMClass '$wmclass'"
else
    echo "note: no xvfb-run, xdotool or xprop; the window's class was not compared"
fi

[ $fail = 0 ] && echo "$(basename "$deb"): packed, unpacked and run; all checks passed"
exit $fail
