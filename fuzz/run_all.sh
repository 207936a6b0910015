#!/usr/bin/env bash
# Builds the fuzz targets (`fuzz` preset) and runs each for SECONDS on a copy of
# its seed corpus (fuzz/seed_corpus/<target>/ of the build); prints each target's
# executions and the total. Status 1 when a target found something, kept in the
# printed folder. Not part of CI.
# Usage: fuzz/run_all.sh SECONDS [JOBS]   (JOBS: build parallelism, default 2)
set -euo pipefail
seconds=${1:?usage: fuzz/run_all.sh SECONDS [JOBS]}
cd "$(dirname "$0")/.."
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target kesh_fuzzers -j "${2:-2}" >/dev/null
build=$PWD/build/fuzz work=$(mktemp -d) total=0 found=0
echo "findings and logs: $work"
for seeds in "$build"/fuzz/seed_corpus/*/; do
  target=$(basename "$seeds") status=0
  cp -r "$seeds" "$work/$target.corpus" && mkdir "$work/$target.findings"
  "$build/bin/$target" -max_total_time="$seconds" -print_final_stats=1 \
    -artifact_prefix="$work/$target.findings/" "$work/$target.corpus" >"$work/$target.log" 2>&1 || status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$target.log" | tail -n 1)
  total=$((total + ${runs:=0}))
  if [ "$status" -ne 0 ] || [ -n "$(ls -A "$work/$target.findings")" ]; then
    found=1 && echo "$target: $runs executions, FINDING (status $status, see $work/$target.log)"
  else
    echo "$target: $runs executions, no finding"
  fi
done
echo "total: $total executions"
exit "$found"
