#!/usr/bin/env bash
# Runs one libFuzzer target for a while, from its seed corpus in fuzz/corpus/TARGET/.
#   scripts/fuzz.sh TARGET SECONDS [libFuzzer options...]    # TARGET: scenario, text, lfib, pcap
# Builds the targets with clang in build-fuzz/ (MPLSFWD_FUZZ_BUILD overrides). New inputs go to
# build-fuzz/corpus/TARGET/ (the seeds in the repo are not touched); a crash leaves its input in
# build-fuzz/ and the exit code is not 0.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
target=${1:?usage: fuzz.sh TARGET SECONDS}
seconds=${2:?usage: fuzz.sh TARGET SECONDS}
shift 2
build=${MPLSFWD_FUZZ_BUILD:-$root/build-fuzz}
launcher=()
if command -v ccache >/dev/null; then
  export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
if [ ! -f "$build/CMakeCache.txt" ]; then
  CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DMPLSFWD_FUZZ=ON -DMPLSFWD_BUILD_TESTS=OFF \
    -DMPLSFWD_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
fi
cmake --build "$build" -j "${MPLSFWD_JOBS:-2}" --target "fuzz_$target"
mkdir -p "$build/corpus/$target"
cd "$build"
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
"./fuzz/fuzz_$target" -max_total_time="$seconds" -print_final_stats=1 -max_len=4096 \
  -timeout=10 "$@" "corpus/$target" "$root/fuzz/corpus/$target"
