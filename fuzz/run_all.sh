#!/usr/bin/env bash
# Usage: fuzz/run_all.sh SECONDS. Builds the fuzz targets (`fuzz` preset), runs each for SECONDS from its
# seed corpus (new inputs go to a work folder) and prints the executions; status 1 on a finding.
set -euo pipefail
seconds=${1:?usage: fuzz/run_all.sh SECONDS}
cd "$(dirname "$0")/.."
cmake --preset fuzz >/dev/null && cmake --build --preset fuzz --target kesh_fuzzers -j 2 >/dev/null
build=$PWD/build/fuzz work=$(mktemp -d) total=0 found=0
for seeds in "$build"/fuzz/seed_corpus/*/; do
  target=$(basename "$seeds") status=0
  "$build/bin/$target" -max_total_time="$seconds" -print_final_stats=1 -create_missing_dirs=1 \
    -artifact_prefix="$work/$target-" "$work/$target" "$seeds" >"$work/$target.log" 2>&1 || status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$target.log" | tail -n 1)
  total=$((total + ${runs:=0}))
  [ "$status" -eq 0 ] || found=1
  echo "$target: $runs executions, status $status"
done
echo "total: $total executions; logs, new inputs and findings in $work"
exit "$found"
