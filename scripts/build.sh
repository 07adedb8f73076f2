#!/usr/bin/env bash
# Configures and builds Kestrel into build/ with Ninja. Extra arguments go to cmake.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${KESTREL_BUILD_DIR:-$top/build}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
fi
cmake --build "$build" -j "$(nproc)"
