# waxline-cli record killed or stopped by a signal. A track file must always stay a WAV
# that libsndfile and ffprobe open, with a header that tells its true length.

  $ demo_side one.wav --tracks 1 --seed 2; demo_side two.wav --tracks 2 --seed 5
  $ deck() { echo "--virtual-device file=$1,speed=$2 --export-dir $3"; }

# Killed mid-track, the file's header covers all it had been fed but the last second; that is at
# least what the last live line showed, less half a second for its rounding.

  $ signal_when KILL "grep -qE 'track 1  00:(00:0[3-9]|00:[1-5]|0[1-9]:)' out.log" \
  >     waxline-cli record $(deck two.wav 4 killed) --split off --preset none
  exit 137
  $ shown=$(grep -oE 'track 1  [0-9:]+' out.log | tail -1 | awk -F'[ :]+' '{ print $3 * 3600 + $4 * 60 + $5 }')
  $ awk -v s=$shown -v f=$(soxi -s killed/WXRTTmpFile.1.wav) -v p=$(seconds killed/WXRTTmpFile.1.wav) \
  >     'BEGIN { if (s >= 3 && f / 44100 >= s - 1.5 && p >= s - 1.5) print "kept what was shown" }'
  kept what was shown

# A logout (SIGHUP) or a shutdown (SIGTERM) stops a recording as cleanly as Ctrl-C: exit 0, the
# track file complete and the count left for the export.

  $ for sig in INT TERM HUP; do
  >     signal_when $sig "[ -e $sig/WXRTTmpFile.1.wav ] && sleep 0.5" waxline-cli record $(deck one.wav 4 $sig) --split off --preset none
  >     grep -c "Recording ended (interrupted)" out.log; cat $sig/WXRTTmpFile.count
  >     f=$(soxi -s $sig/WXRTTmpFile.1.wav); [ $f -gt 44100 ] && [ "$(data_bytes $sig/WXRTTmpFile.1.wav)" = $((4 * f)) ] && echo complete; done
  exit 0
  1
  1
  finished
  complete
  exit 0
  1
  1
  finished
  complete
  exit 0
  1
  1
  finished
  complete

# Killed during the second track, the recording leaves a count of the tracks closed so far, not
# marked finished; the export then says it was interrupted and takes the cut-off track too. (A
# child forked but not yet running its program holds the folder's lock for a moment.)

  $ signal_when KILL '[ -e mid/WXRTTmpFile.2.wav ] && [ $(stat -c %s mid/WXRTTmpFile.2.wav) -ge 1764000 ] && [ "$(cat mid/WXRTTmpFile.count)" = 1 ]' \
  >     waxline-cli record $(deck two.wav 10 mid) --preset none
  exit 137
  $ cat mid/WXRTTmpFile.count
  1
  $ for i in $(seq 100); do waxline-cli export --export-dir mid --artist A --album B --library Music >out.txt 2>&1 && break; sleep 0.1; done
  $ grep -o "was interrupted.*" out.txt; files Music
  was interrupted (it did not stop cleanly): 2 track files, the last one cut off
  A/B/01 Unknown.mp3
  A/B/02 Unknown.mp3

# Killed while a closed track is encoded behind the recording: the encoder goes with the recorder,
# and nothing it left is taken for a finished MP3. The export encodes that track itself, to the
# same audio as the export's command makes of it.

  $ signal_when KILL "[ -e bg/WXRTTmpFile.1.encoding.mp3 ]" waxline-cli record $(deck two.wav 10 bg) --preset none
  exit 137
  $ for i in $(seq 250); do pgrep -f "$PWD/bg" >/dev/null || pgrep -f " bg/" >/dev/null || break; sleep 0.02; done
  $ pgrep -af " bg/"; echo "[$?]"
  [1]
  $ waxline-cli export --export-dir bg --artist A --album B --library BgMusic --tracks 1 | grep "ready before"
  No track was ready before the export: each is encoded now
  $ ffmpeg -nostdin -v error -i bg/WXRTTmpFile.1.wav -codec:a libmp3lame -qscale:a 2 reference.mp3
  $ [ "$(ffmpeg -v error -i "BgMusic/A/B/01 Unknown.mp3" -f s16le - | md5sum)" = "$(ffmpeg -v error -i reference.mp3 -f s16le - | md5sum)" ] && echo "same audio"
  same audio
