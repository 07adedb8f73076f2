#!/usr/bin/env bash
# Sets everything up, builds, and runs the whole test suite.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$top/scripts/setup-deps.sh"
"$top/scripts/build.sh"
cd "${KESTREL_BUILD_DIR:-$top/build}"
ctest --output-on-failure -j "$(nproc)" --timeout 600
