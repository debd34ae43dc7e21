# waxline-cli clean on one file, and export's archive choices. The input is a stereo tone, 2 s,
# with two one-sample clicks a channel (left up at 20000 and 60000, right down 77 samples later),
# written here by Python so that nothing of ours makes it.
  $ python3 - <<'EOF'
  > import math, struct, wave
  > l = [0.3 * math.sin(2 * math.pi * 440 * i / 44100) for i in range(88200)]
  > r = [0.3 * math.sin(2 * math.pi * 550 * i / 44100) for i in range(88200)]
  > for at in (20000, 60000):
  >     l[at] += 0.4
  >     r[at + 77] -= 0.4
  > w = wave.open("in.wav", "wb")
  > w.setnchannels(2), w.setsampwidth(2), w.setframerate(44100)
  > w.writeframes(b"".join(struct.pack("<hh", round(a * 32767), round(b * 32767)) for a, b in zip(l, r)))
  > EOF
  $ changed() { python3 -c 'import sys, wave
  > a, b = (memoryview(wave.open(f).readframes(1 << 24)).cast("h") for f in sys.argv[1:])
  > print([i // 2 for i in range(len(a)) if a[i] != b[i]] if len(a) == len(b) else "lengths differ")' "$@"; }

# Cleaning clicks changes the four clicked samples and nothing else; a side without hum is left
# as it is.
  $ waxline-cli clean in.wav --output out.wav --clicks | sed 's/in [0-9.]* s$/in T s/'
  clicks repaired: 4 (4 samples)
  out.wav: 2.0 s of audio cleaned in T s
  $ changed in.wav out.wav
  [20000, 20077, 60000, 60077]
  $ waxline-cli clean in.wav --output hum.wav --hum 50 | sed 's/in [0-9.]* s$/in T s/'
  hum: none found, nothing notched
  hum.wav: 2.0 s of audio cleaned in T s
  $ changed in.wav hum.wav
  []

# What clean refuses, writing nothing.
  $ waxline-cli clean in.wav --output in.wav --clicks
  waxline-cli clean: the output would overwrite the input in.wav: a recording is never cleaned in place (see waxline-cli clean --help)
  [2]
  $ waxline-cli clean in.wav --output out2.wav
  waxline-cli clean: nothing to do: give --clicks, --hum 50|60|auto or both
  Usage: waxline-cli clean IN.wav --output OUT.wav [--clicks] [--hum 50|60|auto]
  [2]
  $ waxline-cli clean in.wav --output out2.wav --hum 55
  waxline-cli clean: --hum takes 50, 60 or auto, not '55' (see waxline-cli clean --help)
  [2]
  $ ls *.wav
  hum.wav
  in.wav
  out.wav

# Export as MP3 and FLAC, cleaned and measured: the FLAC is the archive, holding the recording
# untouched, with its sheets beside it.
  $ mkdir exp && cp in.wav exp/WXRTTmpFile.1.wav && printf '1\nfinished\n' > exp/WXRTTmpFile.count
  $ waxline-cli export --export-dir exp --library lib --artist A --album B --title T --format both \
  > --clean clicks,hum --loudness
  The recording in exp finished cleanly: 1 track
  Exporting 1 track from exp to lib
  No track was ready before the export: each is encoded now
  track 1/1  #1  lib/A/B/01 T.mp3
             lib/A/B/01 T.flac
    clicks repaired: 4 (4 samples)
    hum: none found, nothing notched
    loudness: -11.1 LUFS, ReplayGain -6.90 dB
  
  Library files made:
    lib/A/B/01 T.mp3
    lib/A/B/01 T.flac
  $ files lib
  A/B/01 T.flac
  A/B/01 T.mp3
  A/B/01-01 B.cue
  A/B/01-01 B.txt
  $ samples in.wav; samples "lib/A/B/01 T.flac"
  9d4265ce6820dfb4b6472742871c11cd
  9d4265ce6820dfb4b6472742871c11cd
  $ tags "lib/A/B/01 T.flac" | grep -v ENCODER
  ALBUM=B
  ARTIST=A
  REPLAYGAIN_ALBUM_GAIN=-6.90 dB
  REPLAYGAIN_ALBUM_PEAK=0.313599
  REPLAYGAIN_TRACK_GAIN=-6.90 dB
  REPLAYGAIN_TRACK_PEAK=0.313599
  TITLE=T
  track=1

# Choices that do not go together.
  $ waxline-cli export --export-dir exp --artist A --album B --format ogg
  waxline-cli export: --format takes mp3, flac or both, not 'ogg' (see waxline-cli export --help)
  [2]
  $ waxline-cli export --export-dir exp --artist A --album B --clean-flac
  waxline-cli export: --clean-flac needs --clean
  Usage: waxline-cli export --artist A --album B [--title T]... [--normalise] [--tracks N] [--export-dir DIR] [--library DIR] [--jobs N] [--unicode-tags] [--format mp3|flac|both] [--clean clicks,hum] [--clean-flac] [--loudness] [--sheets]
  [2]
