#!/usr/bin/env bash
# Sets everything up, builds, and runs every benchmark; each prints "name: value unit" lines.
# bench_window_live starts the real window under xvfb-run (about a minute).
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$top/scripts/setup-deps.sh"
"$top/scripts/build.sh"
build=${KESTREL_BUILD_DIR:-$top/build}
for b in "$build"/bench/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" "$@"
done
