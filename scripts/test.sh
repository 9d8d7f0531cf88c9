#!/usr/bin/env bash
# Builds mplsfwd and runs every test.
#   scripts/test.sh                 # build/ , RelWithDebInfo
#   MPLSFWD_SANITIZE=ON scripts/test.sh build-asan   # AddressSanitizer + UndefinedBehaviorSanitizer
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
bash "$root/scripts/deps.sh"
# ccache keys objects by paths relative to the checkout, so another clone of the tree reuses them.
launcher=()
if command -v ccache >/dev/null; then
  export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$root" -B "$build" -G Ninja -DMPLSFWD_WERROR=ON "${launcher[@]}" -DMPLSFWD_SANITIZE="${MPLSFWD_SANITIZE:-OFF}" \
  -DMPLSFWD_BUILD_BENCH="${MPLSFWD_BUILD_BENCH:-ON}" >/dev/null
cmake --build "$build" -j "$(nproc)"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
