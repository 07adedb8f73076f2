#!/usr/bin/env bash
# Sets everything up, builds, and runs the main job: records the built-in
# simulated line for a few seconds and shows what the recording holds.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$top/scripts/setup-deps.sh"
"$top/scripts/build.sh"
build=${KESTREL_BUILD_DIR:-$top/build}
out="$build/demo/Demo.ksr"
mkdir -p "$(dirname "$out")"
"$build/tools/kestrel-cli/kestrel-cli" record --simulate -o "$out" --replace --duration 3
"$build/tools/kestrel-cli/kestrel-cli" info "$out"
