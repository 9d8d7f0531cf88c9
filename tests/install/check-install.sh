#!/usr/bin/env bash
# Installs the build into a scratch prefix, then builds and runs what an integrator builds against
# it: the consumer (CMake, no C++ standard set by the consumer), the example agents (components),
# and a pkg-config build; an unknown component must fail find_package.
set -euo pipefail
build=$1
consumer=$2
examples=${3:-}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
lib=$(ls -d "$prefix"/lib*/ | head -1)

# The installed headers define no macro without the MPLSFWD_ prefix (include guards are #pragma once).
if grep -rnE '^\s*#\s*define\s+[A-Za-z_]' "$prefix/include" | grep -vE '#\s*define\s+MPLSFWD_'; then
  echo "installed headers define unprefixed macros" >&2
  exit 1
fi

# Every header that an installed header includes is installed too.
missing=0
while IFS='|' read -r file kind path; do
  if [[ $kind == '<' ]]; then target=$prefix/include/$path; else target=$(dirname "$file")/$path; fi
  if [[ ! -f $target ]]; then
    echo "$file includes $path, which is not installed" >&2
    missing=1
  fi
done < <(grep -rE '^\s*#\s*include\s+(<mplsfwd/|")' "$prefix/include" |
         sed -E 's/^([^:]*):\s*#\s*include\s+([<"])([^>"]*)[>"].*/\1|\2|\3/')
[[ $missing == 0 ]]

cmake -S "$consumer" -B "$scratch/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/build" >/dev/null
out=$("$scratch/build/consumer")
echo "$out"
[[ $out == "consumer ok"* ]]

"$prefix/bin/mplsfwd-sim" --version | grep -q "^mplsfwd-sim [0-9]"
[[ -f $prefix/share/doc/mplsfwd/embedding.md && -f $prefix/share/doc/mplsfwd/LICENSE ]]

# pkg-config alone, without CMake.
PKG_CONFIG_PATH=$lib/pkgconfig pkg-config --exists mplsfwd
# shellcheck disable=SC2046
c++ -o "$scratch/pc-consumer" "$consumer/main.cpp" \
  $(PKG_CONFIG_PATH=$lib/pkgconfig pkg-config --cflags --libs mplsfwd)
"$scratch/pc-consumer" | grep -q "^consumer ok"
echo "pkg-config consumer ok"

# An unknown component is refused.
mkdir -p "$scratch/bogus"
cat >"$scratch/bogus/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.20)
project(bogus LANGUAGES CXX)
find_package(mplsfwd REQUIRED COMPONENTS transit warp-drive)
CMAKE
if cmake -S "$scratch/bogus" -B "$scratch/bogus/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null 2>&1; then
  echo "find_package accepted an unknown component" >&2
  exit 1
fi

if [[ -n $examples ]]; then
  cmake -S "$examples" -B "$scratch/embed" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
  cmake --build "$scratch/embed" >/dev/null
  transit=$("$scratch/embed/transit-agent")
  echo "$transit"
  grep -q "^programmed: .*" <<<"$transit"
  grep -q "^refused: .*reason RouteFull" <<<"$transit"
  decap=$("$scratch/embed/decap-agent")
  echo "$decap"
  grep -q "^programmed: label 500 -> VRF red" <<<"$decap"
  grep -q "^refused: .*501.* reason 1" <<<"$decap"
fi
