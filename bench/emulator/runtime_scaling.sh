#!/bin/sh
# Runs the 63-jobs benchmark with 1 core and with every hardware thread and
# prints the speed-up. Usage: runtime_scaling.sh path/to/kesh_runtime_bench
set -eu
bench=${1:?usage: runtime_scaling.sh path/to/kesh_runtime_bench}
all=$(getconf _NPROCESSORS_ONLN)
time_with() {
  KESH_EMU_CORES=$1 "$bench" --benchmark_filter=SixtyThree --benchmark_format=csv 2>/dev/null |
    awk -F, '/SixtyThree/ { print $3 }'
}
one=$(time_with 1)
many=$(time_with "$all")
echo "63 conv jobs: 1 core ${one} ms, ${all} cores ${many} ms, speed-up $(echo "$one $many" | awk '{ printf "%.2f", $1 / $2 }')"
