# Every command that writes into the export folder refuses at once while another program holds
# it, names the holder and what it does there, and touches nothing; once let go, the folder is
# free. The shell holds the folder's lock here, as another program would.

  $ demo_side one.wav --tracks 1 --seed 2; mkdir exports; tone exports/WXRTTmpFile.1.wav
  $ printf '1\nfinished\n' >exports/WXRTTmpFile.count; before=$(md5sum <exports/WXRTTmpFile.1.wav)
  $ hold() { exec 9>exports/.waxline.lock; flock -n 9 && printf 'pid=4242\nprogram=Waxline\nuse=%s\n' $1 >&9; }
  $ try_all() {
  >     waxline-cli record --discard --max-seconds 1 --virtual-device file=one.wav,speed=max --export-dir exports; echo "[$?]"
  >     waxline-cli digitize --artist A --album B --discard --max-seconds 1 --library Music \
  >         --virtual-device file=one.wav,speed=max --export-dir exports; echo "[$?]"
  >     waxline-cli export --export-dir exports --artist A --album B --library Music; echo "[$?]"
  >     waxline-cli splits --apply --tracks 2 --folder exports; echo "[$?]"
  >     [ "$(md5sum <exports/WXRTTmpFile.1.wav)" = "$before" ] && ls exports && ls Music; }
  $ hold recording && try_all
  waxline-cli record: the export folder exports is in use: Waxline (process 4242) is recording into it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  waxline-cli digitize: the export folder exports is in use: Waxline (process 4242) is recording into it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  waxline-cli export: the export folder exports is in use: Waxline (process 4242) is recording into it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  waxline-cli splits: the export folder exports is in use: Waxline (process 4242) is recording into it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  WXRTTmpFile.1.wav
  WXRTTmpFile.count
  ls: cannot access 'Music': No such file or directory
  [2]
  $ hold exporting && try_all
  waxline-cli record: the export folder exports is in use: Waxline (process 4242) is exporting from it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  waxline-cli digitize: the export folder exports is in use: Waxline (process 4242) is exporting from it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  waxline-cli export: the export folder exports is in use: Waxline (process 4242) is exporting from it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  waxline-cli splits: the export folder exports is in use: Waxline (process 4242) is exporting from it; wait until it has finished, or use another folder with --export-dir DIR
  [1]
  WXRTTmpFile.1.wav
  WXRTTmpFile.count
  ls: cannot access 'Music': No such file or directory
  [2]
  $ exec 9>&-
  $ waxline-cli export --export-dir exports --artist A --album B --library Music >/dev/null; files Music
  A/B/01 Unknown.mp3
