#!/usr/bin/env bash
# Usage: pass_through_bench.sh [BUILD_DIR] [RUNS] [REPEAT]. Wall time of `kesh_player -t 0 ... -t 5 -l RUNS`
# directly and under kesh_report (JUnit and JSON), alternating: the medians and their ratio (goal: at most 1.05).
set -euo pipefail
build=${1:-build/default} runs=${2:-200} repeat=${3:-5}
player=$build/bin/kesh_player report=$build/bin/kesh_report work=$(mktemp -d) TIMEFORMAT=%R
[ -x "$player" ] && [ -x "$report" ] || { echo "missing $player or $report: build the tree first" >&2; exit 2; }
trap 'rm -rf "$work"' EXIT
cases=(-t 0 -t 1 -t 2 -t 3 -t 4 -t 5 -l "$runs")
median() { sort -n | awk '{v[NR]=$1} END {print (NR % 2) ? v[(NR+1)/2] : (v[NR/2] + v[NR/2+1]) / 2}'; }
for ((k = 0; k < repeat; ++k)); do
  { time "$player" "${cases[@]}" >/dev/null 2>&1 || true; } 2>>"$work/direct"
  { time "$report" --junit "$work/r.xml" --json "$work/r.json" -- "$player" "${cases[@]}" >/dev/null 2>&1 || true; } \
    2>>"$work/report"
done
direct=$(median <"$work/direct") reported=$(median <"$work/report")
echo "direct: $direct s, under report: $reported s (medians of $repeat)"
awk -v a="$reported" -v b="$direct" 'BEGIN {printf "ratio: %.3f\n", a / b}'
