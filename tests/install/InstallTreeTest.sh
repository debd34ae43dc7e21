#!/usr/bin/env bash
# Installs the build into a fresh prefix, validates the launcher entry and the AppStream file,
# checks every installed piece, and runs the installed program from there.
# Usage: InstallTreeTest.sh BUILD_DIR
set -euo pipefail
build=$1
for tool in desktop-file-validate appstreamcli; do
    command -v "$tool" >/dev/null || { echo "SKIP: $tool is missing"; exit 77; }
done
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

fail=0
expect() { [ -s "$prefix/$1" ] || { echo "FAIL: $1 is not installed"; fail=1; }; }
for file in bin/waxline bin/waxline-cli \
    share/waxline/translations/waxline_en.qm share/waxline/translations/waxline_de.qm \
    share/waxline/help/help_en.html share/waxline/help/help_de.html \
    share/applications/org.waxline.Waxline.desktop \
    share/metainfo/org.waxline.Waxline.metainfo.xml \
    share/icons/hicolor/scalable/apps/waxline.svg; do
    expect "$file"
done
for size in 48 64 128; do
    png=share/icons/hicolor/${size}x${size}/apps/waxline.png
    expect "$png"
    # The PNG header's width and height fields: bytes 16-23, big-endian.
    dims=$(od -An -tu1 -j16 -N8 "$prefix/$png" 2>/dev/null | awk '{print $3*256+$4 "x" $7*256+$8}')
    [ "$dims" = "${size}x${size}" ] || { echo "FAIL: $png is $dims"; fail=1; }
done

desktop-file-validate "$prefix/share/applications/org.waxline.Waxline.desktop" || fail=1
grep -qx 'Categories=AudioVideo;Audio;Recorder;' "$prefix/share/applications/org.waxline.Waxline.desktop" ||
    { echo "FAIL: categories"; fail=1; }
appstreamcli validate --no-net "$prefix/share/metainfo/org.waxline.Waxline.metainfo.xml" || fail=1

# The installed program carries its forms, artwork and catalogues; run it away from the build.
shots=$(mktemp -d -p "$prefix")
(cd / && QT_QPA_PLATFORM=offscreen "$prefix/bin/waxline" --screenshot-panels "$shots" --locale de) ||
    { echo "FAIL: installed waxline --screenshot-panels"; fail=1; }
for n in 1 2 6; do
    [ -s "$shots/panel-$n.png" ] || { echo "FAIL: no panel-$n.png from the installed program"; fail=1; }
done
(cd / && "$prefix/bin/waxline-cli" --help >/dev/null) || { echo "FAIL: installed waxline-cli"; fail=1; }
[ $fail = 0 ] && echo "installed tree at a temporary prefix: all checks passed"
exit $fail
