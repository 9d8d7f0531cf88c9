#!/usr/bin/env bash
set -euo pipefail
build=$1
consumer=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
cmake -S "$consumer" -B "$scratch/build" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/build" >/dev/null
out=$("$scratch/build/consumer")
echo "$out"
[[ $out == "consumer ok"* ]]
