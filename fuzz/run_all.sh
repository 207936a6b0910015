#!/usr/bin/env bash
# Builds the fuzz targets (`fuzz` preset) and runs each for SECONDS on its seeds
# (fuzz/<name>_seeds/ for <name>_fuzzer, else the binaries built from
# fuzz/seeds/); prints each target's executions and the total. Status 1 when a
# target found something, kept in the printed folder. Not part of CI.
# Usage: fuzz/run_all.sh SECONDS [JOBS]   (JOBS: build parallelism, default 2)
set -euo pipefail
seconds=${1:?usage: fuzz/run_all.sh SECONDS [JOBS]} jobs=${2:-2}
source=$(cd "$(dirname "$0")/.." && pwd)
build=$source/build/fuzz
cd "$source"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target kesh_fuzzers -j "$jobs" >/dev/null

work=$(mktemp -d)
echo "findings and logs: $work"
targets=$(find "$build/bin" -maxdepth 1 -type f -perm -u+x -name '*_fuzzer' -printf '%f\n' | sort)
[ -n "$targets" ] || { echo "no fuzz targets built" >&2; exit 2; }

total=0 found=0
for target in $targets; do
  corpus=$work/$target.corpus
  mkdir -p "$corpus" "$work/$target.findings"
  for seeds in "$source/fuzz/${target%_fuzzer}_seeds" "$build/fuzz/seed_corpus"; do
    [ -d "$seeds" ] && { cp -r "$seeds/." "$corpus/"; break; }
  done
  status=0
  "$build/bin/$target" -max_total_time="$seconds" -print_final_stats=1 \
    -artifact_prefix="$work/$target.findings/" "$corpus" >"$work/$target.log" 2>&1 || status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$target.log" | tail -n 1)
  total=$((total + ${runs:=0}))
  if [ "$status" -ne 0 ] || [ -n "$(ls -A "$work/$target.findings")" ]; then
    found=1
    echo "$target: $runs executions, FINDING (status $status, see $work/$target.log)"
  else
    echo "$target: $runs executions, no finding"
  fi
done
echo "total: $total executions"
exit "$found"
