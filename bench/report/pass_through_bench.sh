#!/usr/bin/env bash
# The cost of running the tool under kesh_report: wall time of
# `kesh_player -t 0 -t 1 -t 2 -t 3 -t 4 -t 5 -l RUNS` run directly and under
# the report (writing JUnit and JSON), alternating, REPEAT times each; prints
# the medians and their ratio. The goal is a ratio of at most 1.05.
# Usage: bench/report/pass_through_bench.sh [BUILD_DIR] [RUNS] [REPEAT]
set -euo pipefail
build=${1:-build/default}
runs=${2:-200}
repeat=${3:-5}
player=$build/bin/kesh_player
report=$build/bin/kesh_report
[ -x "$player" ] && [ -x "$report" ] || { echo "missing $player or $report: build the tree first" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cases=(-t 0 -t 1 -t 2 -t 3 -t 4 -t 5 -l "$runs")

seconds() {  # wall seconds of the command given
  local start=$(date +%s%N)
  "$@" >"$work/out" 2>"$work/err" || true
  awk -v ns=$(($(date +%s%N) - start)) 'BEGIN {printf "%.4f\n", ns / 1e9}'
}
median() { sort -n | awk '{v[NR]=$1} END {print (NR % 2) ? v[(NR+1)/2] : (v[NR/2] + v[NR/2+1]) / 2}'; }

for ((k = 0; k < repeat; ++k)); do
  seconds "$player" "${cases[@]}" >>"$work/direct"
  seconds "$report" --junit "$work/r.xml" --json "$work/r.json" -- "$player" "${cases[@]}" >>"$work/report"
done
direct=$(median <"$work/direct")
reported=$(median <"$work/report")
echo "direct:       ${direct} s (median of $repeat)"
echo "under report: ${reported} s (median of $repeat)"
awk -v a="$reported" -v b="$direct" 'BEGIN {printf "ratio:        %.3f\n", a / b}'
