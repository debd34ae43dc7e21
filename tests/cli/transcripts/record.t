# waxline-cli record as a process: limits, kills and signals. A track file must always stay a WAV
# that libsndfile and ffprobe open, with a header that tells its true length.

  $ demo_side one.wav --tracks 1 --seed 2; demo_side two.wav --tracks 2 --seed 5
  $ deck() { echo "--virtual-device file=$1,speed=$2 --export-dir $3"; }

# The time limit counts recorded audio, not the status ticks: at any speed 1.5 s is 66150 frames.

  $ for speed in 1 20 max; do
  >     waxline-cli record $(deck one.wav $speed at-$speed) --split off --preset none --max-seconds 1.5 >/dev/null
  >     echo "$speed: $(soxi -s at-$speed/WXRTTmpFile.1.wav) frames at $(soxi -r at-$speed/WXRTTmpFile.1.wav) Hz"; done
  1: 66150 frames at 44100 Hz
  20: 66150 frames at 44100 Hz
  max: 66150 frames at 44100 Hz

# Writes fail once the track file reaches a size limit (SIGXFSZ ignored, so they fail with EFBIG):
# the recording stops and says so, and the file holds what fitted, at most one 4096-frame block
# short of the limit.

  $ (trap '' XFSZ; exec prlimit --fsize=1000000 waxline-cli record $(deck one.wav 40 big) \
  >     --split off --preset none --max-seconds 60) | grep -E "could not be written|before is kept"; echo "[${PIPESTATUS[0]}]"
  
  waxline-cli record: The recording was stopped because track file big/WXRTTmpFile.1.wav could not be written (System error : File too large. (File too large)). What was recorded before is kept; check the disk and record again.
  [1]
  $ frames=$(soxi -s big/WXRTTmpFile.1.wav); bytes=$((44 + 4 * frames))
  $ [ $bytes -le 1000000 ] && [ $bytes -ge $((1000000 - 4 * 4096)) ] && echo "fits the limit"
  fits the limit
  $ [ "$(data_bytes big/WXRTTmpFile.1.wav)" = $((4 * frames)) ] && echo "header tells the length"
  header tells the length
  $ awk -v p="$(seconds big/WXRTTmpFile.1.wav)" -v f=$frames 'BEGIN { if (p - f / 44100 < 0.01 && f / 44100 - p < 0.01) print "ffprobe agrees" }'
  ffprobe agrees

# record makes each counted track's MP3 behind the recording unless told not to, and export says
# which tracks were ready and takes them.

  $ waxline-cli record $(deck two.wav 20 early) --preset none | grep "while recording"
  2 of 2 tracks encoded to MP3 while recording
  $ waxline-cli export --export-dir early --artist A --album B --library EarlyMusic | grep -E "ready|track"
  The recording in early finished cleanly: 2 tracks
  Exporting 2 tracks from early to EarlyMusic
  Encoded while recording, ready before the export: tracks 1-2 of 2
  track 1/2  #1  EarlyMusic/A/B/01 Unknown.mp3  (encoded while recording)
  track 2/2  #2  EarlyMusic/A/B/02 Unknown.mp3  (encoded while recording)
  $ waxline-cli record $(deck two.wav 20 late) --preset none --no-early-encoding | grep "while recording"; echo "[$?]"
  [1]
  $ waxline-cli export --export-dir late --artist A --album B --library LateMusic | grep -E "ready|track"
  The recording in late finished cleanly: 2 tracks
  Exporting 2 tracks from late to LateMusic
  No track was ready before the export: each is encoded now
  track 1/2  #1  LateMusic/A/B/01 Unknown.mp3
  track 2/2  #2  LateMusic/A/B/02 Unknown.mp3

# A full disk: the recording stops and says so once, in words a person can act on. The disk is a
# 600 kB tmpfs in a private mount namespace.

  $ mkdir disk; unshare -rm sh -c "mount -t tmpfs -o size=600k tmpfs disk &&
  >     exec waxline-cli record $(deck one.wav max disk/exports) --split off --preset none"; echo "[$?]"
  Recording from input 1 into disk/exports
  
  waxline-cli record: The disk is full: the recording was stopped while writing disk/exports/WXRTTmpFile.1.wav. What was recorded before is kept; free space on the disk that holds disk/exports and record again.
  Recording ended (stopped): 1 track, 0 dropped buffers
    disk/exports/WXRTTmpFile.1.wav  00:00:03 (3.436 s)
  Encoding the last tracks to MP3...
  0 of 1 track encoded to MP3 while recording
  [1]

# The engine's diagnostic lines go to the log beside the export folder; the terminal sees them only
# with --verbose, and the user's lines always. Each run appends under its own heading.

  $ diagnostics="selectInputFromDeviceList Device = |setNoFilter|Found device VID 0x08BB"
  $ for verbose in "" --verbose; do
  >     waxline-cli record --discard $(deck one.wav 20 logged) --preset none --max-seconds 1 $verbose >out.txt 2>&1
  >     echo "[$?] $(grep -cE "Recording from input|Recording ended \(time limit\)" out.txt) $(grep -cE "$diagnostics" out.txt) $(grep -cE "$diagnostics" logged.log)"; done
  [0] 2 0 3
  [0] 2 3 6
  $ grep -c "Recording from input" logged.log; grep -c "waxline-cli record" logged.log
  0
  2

# A recording that was never exported is not thrown away by the next one unless asked; once
# exported (or discarded) the folder is free again.

  $ keep() { waxline-cli record $(deck one.wav max kept) --split off --preset none --max-seconds "$@" 2>&1 | grep -E "never exported"; soxi -s kept/WXRTTmpFile.1.wav; }
  $ keep 1
  44100
  $ keep 2
  waxline-cli record: kept holds a recording (1 track file) that was never exported; export it first (waxline-cli export --export-dir kept --artist A --album B), or give --discard to record over it
  44100
  $ keep 2 --discard
  88200
  $ waxline-cli export --export-dir kept --artist A --album B --library KeptMusic >/dev/null
  $ keep 1
  44100
