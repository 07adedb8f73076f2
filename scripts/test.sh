#!/usr/bin/env bash
# Sets everything up, builds, and runs the whole test suite twice: first the
# ordinary build (build/), then the same suite built with AddressSanitizer and
# UndefinedBehaviorSanitizer (build-asan/). KESTREL_TESTS=plain or
# KESTREL_TESTS=sanitized runs one half only.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
halves=${KESTREL_TESTS:-plain sanitized}
"$top/scripts/setup-deps.sh"

for half in $halves; do
  case $half in
  plain)
    "$top/scripts/build.sh"
    (cd "${KESTREL_BUILD_DIR:-$top/build}" && ctest --output-on-failure -j "$(nproc)" --timeout 600)
    ;;
  sanitized)
    # -O1 keeps the sanitized build and run quick; no benchmarks in it. The screenshot
    # test (label gui) is left to the plain half: it only paints.
    KESTREL_BUILD_DIR=${KESTREL_ASAN_BUILD_DIR:-$top/build-asan} "$top/scripts/build.sh" \
      -DKESTREL_SANITIZE=ON -DKESTREL_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g"
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:detect_stack_use_after_return=0
    export LSAN_OPTIONS=suppressions=$top/tests/sanitizers/lsan.supp:print_suppressions=0
    export UBSAN_OPTIONS=suppressions=$top/tests/sanitizers/ubsan.supp:print_stacktrace=1:halt_on_error=1
    (cd "${KESTREL_ASAN_BUILD_DIR:-$top/build-asan}" && ctest --output-on-failure -j "$(nproc)" --timeout 900 -LE gui)
    ;;
  *)
    echo "KESTREL_TESTS: unknown half '$half' (plain, sanitized)" >&2
    exit 2
    ;;
  esac
done
