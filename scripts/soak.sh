#!/usr/bin/env bash
# Runs the random sequences over the whole agent for about HOURS hours, round after round of fresh
# seeds (each round shifts every seed of the test by 100,000).
#   scripts/soak.sh HOURS [build dir]
# Stops at the first round with a failing seed; its message names the scenario file that replays
# it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
hours=${1:?usage: soak.sh HOURS [build dir]}
build=${2:-$root/build}
cmake --build "$build" -j "${MPLSFWD_JOBS:-2}" --target sim_tests
end=$(( $(date +%s) + $(awk "BEGIN { print int($hours * 3600) }") ))
round=0
while [ "$(date +%s)" -lt "$end" ]; do
  round=$((round + 1))
  echo "round $round: seeds shifted by $(( round * 100000 ))"
  MPLSFWD_RANDOM_OFFSET=$(( round * 100000 )) "$build/tests/sim/sim_tests" \
    --gtest_filter='Seeds/AgentRandom.*' --gtest_brief=1
done
