#!/bin/sh
# Per-job cost of the host library: allocations and mutex locks (counted by
# kesh_job_cost itself) and user-space instructions (callgrind totals at two
# job counts; their difference cancels start-up). Instruction counts repeat
# from run to run, unlike times on a shared machine.
# Usage: job_cost.sh path/to/kesh_job_cost
set -eu
cost=${1:?usage: job_cost.sh path/to/kesh_job_cost}
"$cost" 2000
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
instructions() {
  valgrind --tool=callgrind --callgrind-out-file="$work/out.$1" "$cost" "$1" >/dev/null 2>&1
  callgrind_annotate "$work/out.$1" 2>/dev/null | awk '/PROGRAM TOTALS/ { gsub(",", "", $1); print $1 }'
}
few=$(instructions 1000)
many=$(instructions 3000)
echo "instructions per job: $(((many - few) / 2000))"
