#!/usr/bin/env bash
# Mutation check of the tests: applies each mutant of scripts/mutants.txt in turn to a scratch copy
# of the tree, rebuilds it incrementally and runs the tests that the change can reach. Prints one
# line per mutant (killed, survived, build-failed or stale) and finally "killed K of N".
#
#   scripts/mutants.sh [-i] [-j jobs] [-t seconds per test executable] [name-regex]
#
# -i works in the checkout itself and its build/ instead (no second build to make; each file is
# put back as it was after its mutant, also on interrupt): for a machine too busy for a second
# build. The checkout must then stay untouched while the run lasts.
#
# The scratch tree and its build (tree/build, as in a checkout) live in $MPLSFWD_MUTANT_DIR (default
# /tmp/mplsfwd-mutants-$USER) and are reused between runs, so that each mutant costs one recompiled
# file, the relinks and the tests. ccache is told to ignore where a tree lives, so the first build
# of the scratch tree reuses the objects of a checkout built the same way
# (CCACHE_BASEDIR=<checkout> CCACHE_NOHASHDIR=1). Only the test executables that the mutant's build relinked are run (an executable that was
# not relinked cannot see the change), plus the command-line scenarios when mplsfwd-sim changed.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=2
limit=300
inplace=0
while getopts "ij:t:" opt; do
   case $opt in
      i) inplace=1 ;;
      j) jobs=$OPTARG ;;
      t) limit=$OPTARG ;;
      *) exit 2 ;;
   esac
done
shift $((OPTIND - 1))
filter=${1:-.}
work=${MPLSFWD_MUTANT_DIR:-/tmp/mplsfwd-mutants-${USER:-$(id -un)}}
src=$work/tree
build=$src/build
mkdir -p "$work"
if [ $inplace = 1 ]; then
   src=$root
   build=$root/build
fi

if [ $inplace = 0 ]; then
   # Fresh copy of the tree as it stands (tracked and untracked files, not ignored ones). File times are
   # kept so that the reused build only rebuilds what changed; the files that mutants touched last time
   # get a new time, as their objects may still hold a mutant.
   find "$src" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} + 2>/dev/null
   mkdir -p "$src"
   (cd "$root" && git ls-files -co --exclude-standard -z | xargs -0 -I{} sh -c 'test -e "{}" && printf "%s\0" "{}"' |
      tar --null -T - -cf -) | tar -xf - -C "$src"
   if [ -f "$work/touched" ]; then
      while read -r f; do [ -e "$src/$f" ] && touch "$src/$f"; done <"$work/touched"
      rm -f "$work/touched"
   fi
fi
export CCACHE_BASEDIR=$src CCACHE_NOHASHDIR=1
cmake -S "$src" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
   -DMPLSFWD_BUILD_BENCH=OFF >/dev/null || exit 2
build_tree() {
   local t=()
   [ -n "${1:-}" ] && for x in "$@"; do t+=(--target "$x"); done
   nice -n 10 cmake --build "$build" -j "$jobs" "${t[@]}" >"$work/build.log" 2>&1
}

# The tests that can catch a fault in a folder: its own test executable and those of the folders
# built on it that drive it as a whole (the simulator and its command-line scenarios; the transit
# tests run on the simulated platform). A platform folder is judged by its own tests alone: that
# keeps each mutant to a few relinks. Quickest first: a mutant is tried against them in this order
# and the first that fails kills it.
tests_for() {
   case $1 in
      src/platform/*) d=${1#src/platform/}; d=${d%%/*}; echo "${d}_tests" ;;
      src/Fal/*) echo "fal_tests transit_tests" ;;
      src/transit/*) echo "transit_tests mplsfwd-sim sim_tests" ;;
      src/decap/*) echo "decap_tests mplsfwd-sim sim_tests" ;;
      src/pseudowire/*) echo "pseudowire_tests mplsfwd-sim sim_tests" ;;
      sim/* | tools/*) echo "transit_tests mplsfwd-sim sim_tests" ;;
      *) echo "all" ;;
   esac
}

# first_failure <targets...>: builds and runs one target after the other and stops at the first
# that fails (1) or does not build (3); 0 when all pass.
first_failure() {
   local t rc
   for t in "$@"; do
      run_tests "$t"
      rc=$?
      [ $rc != 0 ] && return $rc
   done
   return 0
}

# run_tests <targets...>: builds them and runs them; "all" runs every test executable and scenario.
run_tests() {
   local targets=("$@") exes=() t failed=0 cli=0
   if [ "${targets[*]}" = all ]; then
      build_tree "" || return 3
      mapfile -t exes < <(find "$build/tests" -type f -name '*_tests' -perm -u+x | sort)
      cli=1
   else
      build_tree "${targets[@]}" || return 3
      for t in "${targets[@]}"; do
         if [ "$t" = mplsfwd-sim ]; then
            cli=1
         else
            exes+=("$(find "$build/tests" -type f -name "$t" -perm -u+x | head -1)")
         fi
      done
   fi
   if [ ${#exes[@]} -gt 0 ]; then
      printf '%s\n' "${exes[@]}" | xargs -P "$jobs" -I{} sh -c \
         'timeout '"$limit"' nice -n 10 "{}" --gtest_brief=1 >/dev/null 2>&1 || { echo "{}"; exit 1; }' \
         >"$work/failed.log" || failed=1
   fi
   if [ $cli = 1 ]; then
      nice -n 10 ctest --test-dir "$build" -R '^(example|sim_cli)\.' -j "$jobs" --timeout "$limit" \
         >"$work/ctest.log" 2>&1 || failed=1
   fi
   return $failed
}

# The plan: one line per chosen mutant, "name<TAB>file<TAB>text<TAB>replacement" (escaped).
python3 - "$root/scripts/mutants.txt" "$src" "$filter" >"$work/plan" <<'EOF'
import re, sys
table, src, pattern = sys.argv[1], sys.argv[2], sys.argv[3]
mutants, cur, mode = [], None, None
for line in open(table).read().split("\n"):
    if mode is None:
        if line.startswith("== "):
            cur = {"name": line[3:].strip(), "file": None, "old": [], "new": []}
            mutants.append(cur)
        elif cur is not None and cur["file"] is None and line.strip() and not line.startswith("#"):
            cur["file"] = line.strip()
        elif line == "<<<":
            mode = "old"
    elif line == "===":
        mode = "new"
    elif line == ">>>":
        mode = None
    else:
        cur[mode].append(line)
for m in mutants:
    if not re.search(pattern, m["name"]):
        continue
    print(m["name"], m["file"], "\n".join(m["old"]).replace("\\", "\\\\").replace("\n", "\\n"),
          "\n".join(m["new"]).replace("\\", "\\\\").replace("\n", "\\n"), sep="\t")
EOF

# The unchanged tree must build and pass what the chosen mutants will run.
baseline=$(cut -f2 "$work/plan" | while read -r f; do tests_for "$f"; done | tr ' ' '\n' | sort -u)
if echo "$baseline" | grep -qx all; then baseline=all; fi
start=$(date +%s)
# shellcheck disable=SC2086
run_tests $baseline || {
   echo "the unchanged tree fails: $work/build.log $work/failed.log $work/ctest.log"
   exit 2
}
echo "unchanged tree passes: $(echo $baseline) ($(($(date +%s) - start))s)"

apply_py='
import sys, os
path, old, new = sys.argv[1], sys.argv[2], sys.argv[3]
dec = lambda s: s.encode().decode("unicode_escape") if s else ""
old, new = dec(old), dec(new)
if not os.path.exists(path):
    sys.exit(3)
text = open(path).read()
if text.count(old) != 1:
    sys.exit(3)
if new:
    text = text.replace(old, new)
else:
    text = text.replace(old + "\n", "", 1) if text.count(old + "\n") == 1 else text.replace(old, "")
open(path, "w").write(text)
'

killed=0
total=0
while IFS=$'\t' read -r name file old new; do
   total=$((total + 1))
   start=$(date +%s)
   cp "$src/$file" "$work/original" 2>/dev/null
   trap 'cat "$work/original" >"$src/$file"; exit 130' INT TERM
   if ! python3 -c "$apply_py" "$src/$file" "$old" "$new"; then
      printf '%-50s stale (text not found exactly once in %s)\n' "$name" "$file"
      continue
   fi
   echo "$file" >>"$work/touched"
   # shellcheck disable=SC2046
   first_failure $(tests_for "$file")
   case $? in
      0) status=survived ;;
      3) status=build-failed ;;
      *) status=killed killed=$((killed + 1)) ;;
   esac
   cat "$work/original" >"$src/$file"  # a new file time: the next build recompiles it
   trap - INT TERM
   printf '%-50s %-8s %4ss  %s\n' "$name" "$status" $(($(date +%s) - start)) "$file"
done <"$work/plan"
# Leave the scratch build matching the tree.
build_tree && rm -f "$work/touched"
echo "killed $killed of $total"
