#!/usr/bin/env bash
# Builds mplsfwd and runs its main job.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build
bash "$root/scripts/deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DMPLSFWD_WERROR=ON >/dev/null
cmake --build "$build" -j "$(nproc)" --target mplsfwd-sim
exec "$build/tools/mplsfwd-sim" run "${1:-$root/examples/basic-transit.json}"
