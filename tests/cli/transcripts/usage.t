# Help goes to standard output and exits 0; each command's help explains its own options. The
# line shown is the help's first; the grep fails the command when the option is not explained.

  $ help() { waxline-cli "$@" 2>/dev/null >help.txt; echo "exit $? $(head -1 help.txt | cut -c1-30)"; }
  $ explains() { grep -c -- "$1" help.txt; }
  $ help -h && explains make-demo-side
  exit 0 Usage: waxline-cli COMMAND [AR
  1
  $ help --help && explains digitize
  exit 0 Usage: waxline-cli COMMAND [AR
  1
  $ help analyse -h && explains --output
  exit 0 Usage: waxline-cli analyse FIL
  2
  $ help analyse side.wav --help && explains --tracks
  exit 0 Usage: waxline-cli analyse FIL
  2
  $ help make-demo-side --help && explains --length
  exit 0 Usage: waxline-cli make-demo-s
  2
  $ help devices -h && explains --latency
  exit 0 Usage: waxline-cli devices [--
  2
  $ help record -h && explains --max-seconds
  exit 0 Usage: waxline-cli record [--v
  2
  $ help record --preset none --help && explains --split
  exit 0 Usage: waxline-cli record [--v
  2
  $ help record --help && explains --durations
  exit 0 Usage: waxline-cli record [--v
  2
  $ help export -h && explains --library
  exit 0 Usage: waxline-cli export --ar
  2
  $ help digitize --help && explains --artist
  exit 0 Usage: waxline-cli digitize [-
  2
  $ help splits -h && explains --apply
  exit 0 Usage: waxline-cli splits [--e
  2

# A bad command line exits 2 with the usage.

  $ for args in "analyse" "analyse a.wav b.wav" "analyse x.wav --preset loud" \
  >     "analyse x.wav --bogus" "make-demo-side" "frobnicate"; do
  >     waxline-cli $args >out.txt 2>&1; echo "$? $(grep -c Usage out.txt)"; done
  2 1
  2 1
  2 1
  2 1
  2 1
  2 1

# Each bad value or unusable file: exit 2 and one line on standard error naming what is wrong,
# nothing on standard output, nothing made.

  $ bad() { waxline-cli "$@" 2>&1 >/dev/null; echo "[$?]"; }
  $ bad make-demo-side new.wav --length 0
  waxline-cli make-demo-side: --length takes seconds above 0 and up to 14400 (4 hours) (see waxline-cli make-demo-side --help)
  [2]
  $ bad make-demo-side new.wav --length -30
  waxline-cli make-demo-side: --length takes seconds above 0 and up to 14400 (4 hours) (see waxline-cli make-demo-side --help)
  [2]
  $ bad make-demo-side new.wav --length nan
  waxline-cli make-demo-side: --length takes a finite number, not 'nan' (see waxline-cli make-demo-side --help)
  [2]
  $ bad make-demo-side new.wav --length inf
  waxline-cli make-demo-side: --length takes a finite number, not 'inf' (see waxline-cli make-demo-side --help)
  [2]
  $ bad make-demo-side new.wav --length 14401
  waxline-cli make-demo-side: --length takes seconds above 0 and up to 14400 (4 hours) (see waxline-cli make-demo-side --help)
  [2]
  $ bad make-demo-side new.wav --tracks 0
  waxline-cli make-demo-side: --tracks takes a whole number from 1 to 40, not '0' (see waxline-cli make-demo-side --help)
  [2]
  $ bad make-demo-side new.wav --tracks 8 --length 200
  waxline-cli make-demo-side: the side is too short for that many tracks (see waxline-cli make-demo-side --help)
  [2]
  $ bad record --virtual-device speed=0,file=none.wav
  waxline-cli record: bad virtual device item "speed=0": must be above 0 (or step, or max)
  [2]
  $ bad record --virtual-device speed=-3,file=none.wav
  waxline-cli record: bad virtual device item "speed=-3": must lie between 0 and 10000
  [2]
  $ bad devices --virtual-device speed=0
  waxline-cli devices: bad virtual device item "speed=0": must be above 0 (or step, or max)
  [2]
  $ bad digitize --artist A --album B --virtual-device speed=0,file=none.wav
  waxline-cli record: bad virtual device item "speed=0": must be above 0 (or step, or max)
  [2]
  $ bad record --max-seconds -1
  waxline-cli record: --max-seconds must not be negative (see waxline-cli record --help)
  [2]
  $ bad record --max-seconds nan
  waxline-cli record: --max-seconds takes a finite number, not 'nan' (see waxline-cli record --help)
  [2]
  $ bad record --gain nan
  waxline-cli record: --gain takes a finite number, not 'nan' (see waxline-cli record --help)
  [2]
  $ bad record --gain inf
  waxline-cli record: --gain takes a finite number, not 'inf' (see waxline-cli record --help)
  [2]
  $ bad record --tracks 0 --export-dir exports
  waxline-cli record: --tracks takes a whole number from 1 to 40, not '0' (see waxline-cli record --help)
  [2]
  $ bad record --tracks 41 --export-dir exports
  waxline-cli record: --tracks takes a whole number from 1 to 40, not '41' (see waxline-cli record --help)
  [2]
  $ bad record --durations 3:1x --export-dir exports
  waxline-cli record: --durations: '3:1x' is neither a duration (3:12) nor a track label (A1, A1-A5) (see waxline-cli record --help)
  [2]
  $ bad digitize --artist A --album B --tracks 0 --export-dir exports
  waxline-cli digitize: --tracks takes a whole number from 1 to 40, not '0' (see waxline-cli digitize --help)
  [2]
  $ bad digitize --artist A --album B --durations A5-A1 --export-dir exports
  waxline-cli digitize: --durations: the range 'A5-A1' runs backwards, across sides or against the durations (see waxline-cli digitize --help)
  [2]
  $ sox -n -r 44100 -c 1 mono.wav synth 0.02 sine 440
  $ sox -n -r 44100 -c 6 six.wav synth 0.02 sine 440
  $ sox -n -r 22050 -c 2 low.wav synth 0.02 sine 440
  $ echo "not a sound file" >text.wav
  $ bad analyse missing.wav
  waxline-cli analyse: cannot read missing.wav: System error : No such file or directory.
  [2]
  $ bad analyse text.wav
  waxline-cli analyse: cannot read text.wav: Format not recognised.
  [2]
  $ bad analyse mono.wav
  waxline-cli analyse: mono.wav has 1 channel; a stereo file is needed
  [2]
  $ bad analyse six.wav
  waxline-cli analyse: six.wav has 6 channels; a stereo file is needed
  [2]
  $ bad analyse low.wav
  waxline-cli analyse: low.wav is at 22050 Hz; 44100, 48000, 88200 or 96000 Hz is needed
  [2]
  $ ls
  help.txt
  low.wav
  mono.wav
  out.txt
  six.wav
  text.wav
  transcript.sh

# analyse never writes over its input, however the output names it; through a link to write
# elsewhere is fine.

  $ demo_side side.wav --tracks 1 --seed 3 && digest=$(samples side.wav)
  $ ln -s side.wav link.wav && ln side.wav hard.wav && mkdir sub
  $ for output in side.wav link.wav hard.wav sub/../side.wav .//side.wav; do
  >     waxline-cli analyse side.wav --output "$output"; echo "[$?]"; done
  waxline-cli analyse: --output side.wav is the input file itself; writing it would destroy what is read, so name another file
  [2]
  waxline-cli analyse: --output link.wav is the input file itself; writing it would destroy what is read, so name another file
  [2]
  waxline-cli analyse: --output hard.wav is the input file itself; writing it would destroy what is read, so name another file
  [2]
  waxline-cli analyse: --output sub/../side.wav is the input file itself; writing it would destroy what is read, so name another file
  [2]
  waxline-cli analyse: --output .//side.wav is the input file itself; writing it would destroy what is read, so name another file
  [2]
  $ [ "$(samples side.wav)" = "$digest" ] && echo unchanged
  unchanged
  $ waxline-cli analyse link.wav --output eq.wav >/dev/null; echo "[$?]"
  Audio has transitioned out of silence
  Audio has transitioned into silence
  [0]
