# The whole job headless: a synthetic side played by the virtual turntable is recorded, split at
# its gaps and exported; the run-out groove after the album end is not.

  $ demo_side side.wav --tracks 2 --seed 5
  $ waxline-cli digitize --virtual-device "usb=08bb:2900,name=USB Audio CODEC ,file=side.wav,speed=40" \
  >     --export-dir exports --library Music --artist Deck --album Side --title First >/dev/null; echo "[$?]"
  waxline-cli export: 1 title for 2 tracks: track 2 will have no title; an extra split may have shifted the names, so check them
  [0]
  $ files Music; tags "Music/Deck/Side/02 Unknown.mp3" | grep -E "^(artist|track)="
  Deck/Side/01 First.mp3
  Deck/Side/02 Unknown.mp3
  artist=Deck
  track=2

# Ctrl-C during digitize: the tracks so far are kept, nothing reaches the library (the cut-off
# track would carry its full title), and the user is told how to export them.

  $ signal_when INT "[ -s cut/WXRTTmpFile.1.wav ] && sleep 1.5" waxline-cli digitize \
  >     --virtual-device file=side.wav,speed=10 --export-dir cut --library CutMusic \
  >     --artist Deck --album Side --title One --title Two
  exit 130
  $ grep -c interrupted out.log; grep -o "waxline-cli export --export-dir cut" out.log
  2
  waxline-cli export --export-dir cut
  $ [ -s cut/WXRTTmpFile.1.wav ] && [ ! -e cut/WXRTTmpFile.1.mp3 ] && [ ! -e CutMusic ] && echo "kept, not exported"
  kept, not exported
