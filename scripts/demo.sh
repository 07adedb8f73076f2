#!/usr/bin/env bash
# Sets everything up, builds, and runs the main job: opens the Kestrel window
# on the built-in simulated line and records at once. With a display the
# window stays open until you close it (stop the recording first). Without a
# display (no $DISPLAY) it runs under Xvfb for a few seconds, saves a
# screenshot, stops the recording cleanly and shows what the recording holds.
#
#   KESTREL_DEMO_SECONDS  how long the headless run records (default 6)
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$top/scripts/setup-deps.sh"
"$top/scripts/build.sh"
build=${KESTREL_BUILD_DIR:-$top/build}
kestrel="$build/bin/kestrel"
data="$build/demo/data"
record="$data/recordings/Demo.ksr"
shot="$build/demo/kestrel-window.png"
mkdir -p "$data/recordings"
rm -f "$record"

if [ -n "${DISPLAY:-}" ]; then
  "$kestrel" --data-dir "$data" --simulate --record "$record"
else
  seconds=${KESTREL_DEMO_SECONDS:-6}
  # Inside Xvfb: start the window, let it record, photograph the screen, then
  # end it with SIGTERM, which stops the recording (stop mark written) and closes.
  KESTREL="$kestrel" DATA="$data" RECORD="$record" SHOT="$shot" SECONDS_TO_RUN="$seconds" \
  xvfb-run -a -s "-screen 0 1280x1024x24" bash -c '
    set -euo pipefail
    "$KESTREL" --data-dir "$DATA" --simulate --record "$RECORD" &
    pid=$!
    sleep "$SECONDS_TO_RUN"
    /usr/bin/import -window root "$SHOT" || echo "kestrel demo: no screenshot (ImageMagick import failed)" >&2
    kill -TERM "$pid"
    wait "$pid"
  '
  echo "Screenshot of the window: $shot"
fi
echo "Recording: $record"
"$build/bin/kestrel-cli" info "$record"
