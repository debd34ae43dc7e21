# waxline-cli analyse and make-demo-side, run as a person runs them, on a four-track side.

  $ waxline-cli make-demo-side side.wav --tracks 4 --seed 11 | grep -E "^(gap|track)"
  track 1        2.941 s ..     56.171 s
  gap           56.171 s ..     59.267 s
  track 2       59.267 s ..    121.875 s
  gap          121.875 s ..    125.390 s
  track 3      125.390 s ..    195.201 s
  gap          195.201 s ..    199.003 s
  track 4      199.003 s ..    276.796 s

# Every gap is found, with any of the presets, and the end of the side.

  $ for preset in riaa none chrome; do waxline-cli analyse side.wav --preset $preset 2>&1 | grep -E "silence started|album ended"; done
      58.500 s  silence started
     124.000 s  silence started
     197.500 s  silence started
     279.000 s  silence started
     337.500 s  album ended
      58.500 s  silence started
     124.000 s  silence started
     197.500 s  silence started
     279.000 s  silence started
     337.500 s  album ended
      58.500 s  silence started
     124.000 s  silence started
     197.500 s  silence started
     279.000 s  silence started
     337.500 s  album ended

# One track per song, split in the gaps.

  $ waxline-cli analyse side.wav --preset riaa --tracks 2>&1 | grep -E "^ *track"
  track 1   start      0.000 s  length     57.750 s  samples 0 + 2546775
  track 2   start     57.750 s  length     65.750 s  samples 2546775 + 2899575
  track 3   start    123.500 s  length     73.750 s  samples 5446350 + 3252375
  track 4   start    197.250 s  length     84.750 s  samples 8698725 + 3737475

# The same seed makes the same side, and the same layout; another seed another side.

  $ waxline-cli make-demo-side a.wav --tracks 2 --seed 5 | tail -n +2 >a.txt
  $ waxline-cli make-demo-side b.wav --tracks 2 --seed 5 | tail -n +2 >b.txt
  $ waxline-cli make-demo-side c.wav --tracks 2 --seed 6 >/dev/null
  $ cmp a.wav b.wav && cmp a.txt b.txt && ! cmp -s a.wav c.wav && echo "same seed, same side"
  same seed, same side
