# waxline-cli export on track files laid out as a recording leaves them. A quote in the export
# folder's path must not matter to anything.

  $ ex="rock'n'roll exports"; mkdir "$ex"
  $ fresh() { rm -rf "$ex"/* Music; for n in $(seq "$1"); do tone "$ex/WXRTTmpFile.$n.wav"; done; }
  $ export_ab() { waxline-cli export --export-dir "$ex" --artist A --album B --library Music "$@"; echo "[$?]"; }

# Only the counted tracks are exported; names are taken as typed, quotes and all.

  $ fresh 3; printf '2\nfinished\n' >"$ex/WXRTTmpFile.count"
  $ waxline-cli export --export-dir "$ex" --artist 'Sam & Co' --album "Live '79" \
  >     --title 'A "b" $(echo x)' --library Music; echo "[$?]"
  waxline-cli export: 1 title for 2 tracks: track 2 will have no title; an extra split may have shifted the names, so check them
  The recording in rock'n'roll exports finished cleanly: 2 tracks
  Exporting 2 tracks from rock'n'roll exports to Music
  No track was ready before the export: each is encoded now
  track 1/2  #1  Music/Sam & Co/Live '79/01 A "b" $(echo x).mp3
  track 2/2  #2  Music/Sam & Co/Live '79/02 Unknown.mp3
  
  Library files made:
    Music/Sam & Co/Live '79/01 A "b" $(echo x).mp3
    Music/Sam & Co/Live '79/02 Unknown.mp3
  [0]
  $ files Music
  Sam & Co/Live '79/01 A "b" $(echo x).mp3
  Sam & Co/Live '79/02 Unknown.mp3

# An interrupted recording: a trailing track of groove noise (faint hiss, a click every
# revolution) is left out.

  $ fresh 2; printf '2\n' >"$ex/WXRTTmpFile.count"
  $ python3 -c 'import random, struct, wave
  > random.seed(1); w = wave.open("groove.wav", "wb"); w.setnchannels(2); w.setsampwidth(2); w.setframerate(44100)
  > s = [int((random.random() - 0.5) * 131 + (6553 if i % 79380 < 20 else 0)) for i in range(4 * 44100)]
  > w.writeframes(b"".join(struct.pack("<hh", v, v) for v in s))'
  $ mv groove.wav "$ex/WXRTTmpFile.3.wav"
  $ export_ab
  The recording in rock'n'roll exports was interrupted (it did not stop cleanly): 3 track files, the last one cut off
  Track file 3 holds nothing but groove noise: it is left out
  Exporting 2 tracks from rock'n'roll exports to Music
  No track was ready before the export: each is encoded now
  track 1/2  #1  Music/A/B/01 Unknown.mp3
  track 2/2  #2  Music/A/B/02 Unknown.mp3
  
  Library files made:
    Music/A/B/01 Unknown.mp3
    Music/A/B/02 Unknown.mp3
  [0]
  $ files Music
  A/B/01 Unknown.mp3
  A/B/02 Unknown.mp3

# --tracks overrides the count.

  $ fresh 2; printf '2\nfinished\n' >"$ex/WXRTTmpFile.count"
  $ export_ab --tracks 1
  Exporting 1 track from rock'n'roll exports to Music
  No track was ready before the export: each is encoded now
  track 1/1  #1  Music/A/B/01 Unknown.mp3
  
  Library files made:
    Music/A/B/01 Unknown.mp3
  [0]
  $ files Music
  A/B/01 Unknown.mp3

# An empty track file fails the run, but not the other tracks.

  $ fresh 3; printf '3\nfinished\n' >"$ex/WXRTTmpFile.count"; : >"$ex/WXRTTmpFile.2.wav"
  $ export_ab
  The recording in rock'n'roll exports finished cleanly: 3 tracks
  Exporting 3 tracks from rock'n'roll exports to Music
  No track was ready before the export: each is encoded now
  track 1/3  #1  Music/A/B/01 Unknown.mp3
  export of track 2 failed: track file WXRTTmpFile.2.wav is empty
  track 2/3  #2  FAILED: track file WXRTTmpFile.2.wav is empty
  track 3/3  #3  Music/A/B/03 Unknown.mp3
  1 of 3 tracks failed:
    track 2: track file WXRTTmpFile.2.wav is empty
  
  Library files made:
    Music/A/B/01 Unknown.mp3
    Music/A/B/03 Unknown.mp3
  [1]
  $ files Music
  A/B/01 Unknown.mp3
  A/B/03 Unknown.mp3

# No encoder on PATH.

  $ fresh 1; cli=$(command -v waxline-cli)
  $ PATH=/nonexistent "$cli" export --export-dir "$ex" --artist A --album B --library Music; echo "[$?]"
  The recording in rock'n'roll exports was interrupted (it did not stop cleanly): 1 track file, the last one cut off
  Exporting 1 track from rock'n'roll exports to Music
  No track was ready before the export: each is encoded now
  export of track 1 failed: encoder failed with exit status 127: ffmpeg -i 'rock'\''n'\''roll exports/WXRTTmpFile.1.wav' -codec:a libmp3lame -qscale:a 2 'rock'\''n'\''roll exports/WXRTTmpFile.1.mp3'
    ffmpeg was found neither beside the program nor on PATH
  track 1/1  #1  FAILED: encoder failed with exit status 127: ffmpeg -i 'rock'\''n'\''roll exports/WXRTTmpFile.1.wav' -codec:a libmp3lame -qscale:a 2 'rock'\''n'\''roll exports/WXRTTmpFile.1.mp3'
    ffmpeg was found neither beside the program nor on PATH
  1 of 1 tracks failed:
    track 1: encoder failed with exit status 127: ffmpeg -i 'rock'\''n'\''roll exports/WXRTTmpFile.1.wav' -codec:a libmp3lame -qscale:a 2 'rock'\''n'\''roll exports/WXRTTmpFile.1.mp3'
    ffmpeg was found neither beside the program nor on PATH
  
  Library files made:
  [1]
  $ files Music

# A music folder that cannot be written: nothing is exported, and the way out is said.

  $ fresh 1; echo "a file where the folder should be" >Music
  $ waxline-cli export --export-dir "$ex" --artist A --album B --library Music/Sub; echo "[$?]"
  waxline-cli export: the music folder Music/Sub cannot be written (Not a directory): choose another with --library DIR; nothing was exported
  The recording in rock'n'roll exports was interrupted (it did not stop cleanly): 1 track file, the last one cut off
  [1]
  $ rm Music

# More titles than tracks names the unused ones; fewer is said but fine.

  $ fresh 2; printf '2\nfinished\n' >"$ex/WXRTTmpFile.count"
  $ export_ab --title One --title Two --title 'Three Left'
  waxline-cli export: warning: 3 titles for 2 tracks: not used "Three Left"; a missed split may have joined two tracks, so check the names
  The recording in rock'n'roll exports finished cleanly: 2 tracks
  Exporting 2 tracks from rock'n'roll exports to Music
  No track was ready before the export: each is encoded now
  track 1/2  #1  Music/A/B/01 One.mp3
  track 2/2  #2  Music/A/B/02 Two.mp3
  
  Library files made:
    Music/A/B/01 One.mp3
    Music/A/B/02 Two.mp3
  [1]
  $ files Music
  A/B/01 One.mp3
  A/B/02 Two.mp3
  $ fresh 3; printf '3\nfinished\n' >"$ex/WXRTTmpFile.count"
  $ export_ab --title One
  waxline-cli export: 1 title for 3 tracks: tracks 2 to 3 will have no title; an extra split may have shifted the names, so check them
  The recording in rock'n'roll exports finished cleanly: 3 tracks
  Exporting 3 tracks from rock'n'roll exports to Music
  No track was ready before the export: each is encoded now
  track 1/3  #1  Music/A/B/01 One.mp3
  track 2/3  #2  Music/A/B/02 Unknown.mp3
  track 3/3  #3  Music/A/B/03 Unknown.mp3
  
  Library files made:
    Music/A/B/01 One.mp3
    Music/A/B/02 Unknown.mp3
    Music/A/B/03 Unknown.mp3
  [0]
  $ files Music
  A/B/01 One.mp3
  A/B/02 Unknown.mp3
  A/B/03 Unknown.mp3

# Nothing to export, and a missing artist.

  $ fresh 0; export_ab
  No recorded tracks to export in rock'n'roll exports
  [2]
  $ fresh 1; waxline-cli export --export-dir "$ex" --album B --library Music; echo "[$?]"
  waxline-cli export: --artist and --album are needed (they may be empty: "")
  Usage: waxline-cli export --artist A --album B [--title T]... [--normalise] [--tracks N] [--export-dir DIR] [--library DIR] [--jobs N] [--unicode-tags] [--format mp3|flac|both] [--clean clicks,hum] [--clean-flac] [--loudness] [--sheets]
  [2]

# Unicode names read back as typed with --unicode-tags, and as Latin-1 bytes read as UTF-8 without.

  $ fresh 1; waxline-cli export --export-dir "$ex" --artist Café --album B --title Café --library Music >/dev/null
  $ tags "Music/Café/B/01 Café.mp3" | grep -E '^(artist|title)='
  artist=CafÃ©
  title=CafÃ©
  $ fresh 1; waxline-cli export --export-dir "$ex" --artist Café --album B --title Café --library Music --unicode-tags >/dev/null
  $ tags "Music/Café/B/01 Café.mp3" | grep -E '^(artist|title)='
  artist=Café
  title=Café
