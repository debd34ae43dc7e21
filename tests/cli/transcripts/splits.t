# waxline-cli splits as a person runs it, on a realistic four-track side cut as the recorder
# leaves it.

  $ demo_side side.wav --tracks 4 --seed 3 --realistic
  $ grep -c gap side.wav.layout
  3

# Asking changes nothing. The table holds the live splits beside the proposal: one live split in
# the first gap, one in the music of the second track.

  $ in_music=$(awk '/gap/ { g[++n] = $2; e[n] = $5 } END { printf "%d", (e[1] + g[2]) / 2 * 44100 }' side.wav.layout)
  $ cut_into live side.wav $(gap_middle side.wav 1) $in_music; before=$(samples live/*.wav)
  $ waxline-cli splits --folder live; echo "[$?]"
  The recording in live: 3 tracks, 6:13.5
  Live splits and the proposal (whole-side splitter):
    live       proposed   confidence
    0:51.4     0:51.3     1.00
    1:35.8     -
    -          2:19.9     1.00
    -          3:41.1     1.00
  Live: 3 tracks. Proposed: 4 tracks.
  Trusting the proposal: every boundary it adds is a clear gap, and every live split it drops lies inside music.
  Give --apply to re-cut the tracks as proposed.
  [0]
  $ [ "$(samples live/WXRTTmpFile.[123].wav)" = "$before" ] && ls live
  WXRTTmpFile.1.wav
  WXRTTmpFile.2.wav
  WXRTTmpFile.3.wav
  WXRTTmpFile.count

# A count above what the side holds: the extra boundaries are guesses, and are marked.

  $ cut_into whole side.wav
  $ waxline-cli splits --folder whole --tracks 6; echo "[$?]"
  The recording in whole: 1 track, 6:13.5
  Live splits and the proposal (whole-side splitter, 6 tracks from the sleeve):
    live       proposed   confidence
    -          0:51.3     1.00
    -          2:03.9     0.02  doubtful
    -          2:19.9     1.00
    -          3:41.1     1.00
    -          4:23.4     0.02  doubtful
  Live: 1 track. Proposed: 6 tracks, 2 boundaries doubtful (confidence below 0.5): listen there before applying.
  Trusting the live splits: the proposal's boundary at 2:03.9 is not a clear gap.
  Give --apply to re-cut the tracks as proposed all the same, after listening there.
  [0]

# --apply re-cuts: the files join to the very samples of the side, the count file follows, and the
# MP3s and exported marker of the old cut go. The same again finds nothing to do.

  $ full=$(samples side.wav); third=$(($(soxi -s side.wav) / 3))
  $ recut() { folder=$1; shift; echo old >$folder/WXRTTmpFile.1.mp3; echo exported >$folder/WXRTTmpFile.exported
  >     waxline-cli splits --folder $folder "$@" >out.txt; echo "[$?]"; grep Re-cut out.txt
  >     [ "$(samples $folder/WXRTTmpFile.?.wav)" = "$full" ] && echo "every sample kept"
  >     cat $folder/WXRTTmpFile.count; ls $folder | grep -v wav; in_gaps side.wav $folder; }
  $ recut whole --apply
  [0]
  Re-cut the side into 4 tracks (it had 1), starting at 0:51.3, 2:19.9, 3:41.1
  every sample kept
  4
  finished
  WXRTTmpFile.count
  start 1: in gap 1
  start 2: in gap 2
  start 3: in gap 3
  $ waxline-cli splits --folder whole --apply | tail -1
  The tracks already start there: nothing to re-cut

# The sleeve's count mends a bad live cut.

  $ cut_into bad side.wav $third $((2 * third))
  $ recut bad --tracks 4 --apply
  [0]
  Re-cut the side into 4 tracks (it had 3), starting at 0:51.3, 2:19.9, 3:41.1
  every sample kept
  4
  finished
  WXRTTmpFile.count
  start 1: in gap 1
  start 2: in gap 2
  start 3: in gap 3
  $ waxline-cli splits --folder bad --tracks 4 --apply | tail -1
  The tracks already start there: nothing to re-cut

# Times typed by hand land on the frame they name.

  $ cut_into typed side.wav $third
  $ recut typed --at 1:00,2:00.5,150 --apply | head -2; starts typed
  [0]
  Re-cut the side into 4 tracks (it had 2), starting at 1:00.0, 2:00.5, 2:30.0
  2646000
  5314050
  6615000

# Each bad value: exit 2, one line on standard error naming what is wrong, the files as they were.

  $ cut_into one side.wav; before=$(samples one/*.wav)
  $ bad() { waxline-cli splits --folder one "$@" 2>&1 >/dev/null; echo "[$?]"; }
  $ bad --tracks 0
  waxline-cli splits: --tracks takes a whole number from 1 to 40, not '0' (see waxline-cli splits --help)
  [2]
  $ bad --tracks 41
  waxline-cli splits: --tracks takes a whole number from 1 to 40, not '41' (see waxline-cli splits --help)
  [2]
  $ bad --tracks four
  waxline-cli splits: --tracks takes a whole number from 1 to 40, not 'four' (see waxline-cli splits --help)
  [2]
  $ bad --durations 3:1x
  waxline-cli splits: --durations: '3:1x' is neither a duration (3:12) nor a track label (A1, A1-A5) (see waxline-cli splits --help)
  [2]
  $ bad --durations 30:00,40:00 --apply
  waxline-cli splits: --durations add up to 70:00.0, which does not fit the 5:35.8 of music on the side (see waxline-cli splits --help)
  [2]
  $ bad --durations 0:10,0:10
  waxline-cli splits: --durations add up to 0:20.0, which does not fit the 5:35.8 of music on the side (see waxline-cli splits --help)
  [2]
  $ bad --durations A1-A41
  waxline-cli splits: --durations names 41 tracks; a side holds 1 to 40 (see waxline-cli splits --help)
  [2]
  $ bad --at 1:2x
  waxline-cli splits: --at: '1:2x' is not a time (m:ss.s or seconds) (see waxline-cli splits --help)
  [2]
  $ bad --at 2:00,1:00
  waxline-cli splits: --at: the times must rise, and 1:00 does not follow 2:00.0 (see waxline-cli splits --help)
  [2]
  $ bad --at 99:00 --apply
  waxline-cli splits: --at 99:00.0 lies outside the side (0:00.0 to 6:13.5) (see waxline-cli splits --help)
  [2]
  $ bad --at 0:00
  waxline-cli splits: --at 0:00.0 lies outside the side (0:00.0 to 6:13.5) (see waxline-cli splits --help)
  [2]
  $ [ "$(samples one/*.wav)" = "$before" ] && ls one
  WXRTTmpFile.1.wav
  WXRTTmpFile.count

# Nothing to split: no folder, or an empty one.

  $ mkdir empty
  $ waxline-cli splits --folder none; echo "[$?]"
  No recorded tracks in none
  [2]
  $ waxline-cli splits --folder empty; echo "[$?]"
  No recorded tracks in empty
  [2]

# What a re-cut killed before its switch-over left is cleared away before the side is read.

  $ cp one/WXRTTmpFile.1.wav one/WXRTTmpFile.new.1.wav
  $ waxline-cli splits --folder one | head -1; ls one
  The recording in one: 1 track, 6:13.5
  WXRTTmpFile.1.wav
  WXRTTmpFile.count

# A disk with room for the side but not for a second copy: the re-cut is refused before it writes
# anything. The disk is a tmpfs in a private mount namespace.

  $ demo_side short.wav --tracks 1 --length 90 --seed 5 && cut_into staged short.wav && mkdir disk
  $ unshare -rm sh -c 'mount -t tmpfs -o size=24m tmpfs disk && cp -r staged disk/exports &&
  >     { waxline-cli splits --folder disk/exports --at 0:10 --apply; echo "[$?]";
  >       cmp staged/WXRTTmpFile.1.wav disk/exports/WXRTTmpFile.1.wav && ls disk/exports; }'
  The recording in disk/exports: 1 track, 1:30.0
  waxline-cli splits: cannot re-cut the tracks: not enough free space to write disk/exports (No space left on device): free space on its disk and try again; the tracks are as they were
  Live splits and the proposal (typed by hand):
    live       proposed   confidence
    -          0:10.0     typed
  Live: 1 track. Proposed: 2 tracks.
  [1]
  WXRTTmpFile.1.wav
  WXRTTmpFile.count

# record --tracks N: the side recorded through the virtual deck ends up in N files holding what
# the live splits held, each boundary in its gap.

  $ demo_side three.wav --tracks 3 --seed 8
  $ waxline-cli record --virtual-device file=three.wav,speed=40 --export-dir rec --preset none \
  >     --split off --tracks 3 --max-seconds $(($(soxi -s three.wav) / 44100)) | grep Re-cut
  Re-cut the side into 3 tracks (it had 1), starting at 1:04.1, 2:10.6
  $ cat rec/WXRTTmpFile.count; in_gaps three.wav rec
  3
  finished
  start 1: in gap 1
  start 2: in gap 2

# Durations that do not fit the side digitize recorded: said in one line, the live cut kept and
# nothing exported, since the titles were meant for another cut.

  $ demo_side two.wav --tracks 2 --seed 4; seconds=$(($(soxi -s two.wav) / 44100))
  $ waxline-cli digitize --artist A --album B --virtual-device file=two.wav,speed=40 \
  >     --export-dir dig --library Music --preset none --split off --durations 0:10,0:12 \
  >     --max-seconds $seconds 2>&1 >/dev/null; echo "[$?]"
  waxline-cli digitize: --durations add up to 0:22.0, which does not fit the 2:25.4 of music on the side; the tracks are kept as split live and nothing was exported
  [2]
  $ echo "$(soxi -s dig/WXRTTmpFile.1.wav) $((seconds * 44100))"; ls Music
  9349200 9349200
  ls: cannot access 'Music': No such file or directory
  [2]
