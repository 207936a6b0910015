#!/usr/bin/env bash
# Times the golden comparison and the tool end to end; every figure is a ratio
# against a baseline measured in the same run.
# Usage: bench/driver/run_bench.sh [BUILD_DIR]   (an optimised build; default build/default)
set -euo pipefail
bin=${1:-build/default}/bin
player=$bin/kesh_player
for needed in "$player" "$bin/kesh_driver_bench" "$bin/kesh_driver_bench_data"; do
  [ -x "$needed" ] || { echo "missing $needed: build the tree first" >&2; exit 2; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Best of five wall-clock times of a command, in milliseconds; its output is dropped.
best_ms() {
  local best=999999999 start ms
  for _ in 1 2 3 4 5; do
    start=$(date +%s%N)
    "$@" >/dev/null 2>&1 || true
    ms=$((($(date +%s%N) - start) / 1000000))
    ((ms < best)) && best=$ms
  done
  echo "$best"
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'; }
# Median real time of a benchmark, in nanoseconds.
median_ns() {
  awk -F, -v name="\"$1_median\"" '$1 == name { t = $3; u = $5; gsub(/"/, "", u);
    print t * (u == "ms" ? 1e6 : u == "us" ? 1e3 : u == "s" ? 1e9 : 1) }' "$work/bench.csv"
}

echo "== golden comparison (2 MB) =="
"$bin/kesh_driver_bench" --benchmark_format=csv --benchmark_repetitions=5 \
  --benchmark_report_aggregates_only=true 2>/dev/null >"$work/bench.csv"
equal=$(median_ns BM_CompareGoldenEqual) memcmp=$(median_ns BM_MemcmpEqual)
listing=$(median_ns BM_CompareGoldenFullMismatch) fwrite=$(median_ns BM_FwriteSameBytes)
echo "compareGolden equal / memcmp:              $(ratio "$equal" "$memcmp")  (target <= 1.1; $equal ns vs $memcmp ns)"
echo "full-mismatch listing / fwrite same bytes: $(ratio "$listing" "$fwrite")  (target <= 2; $listing ns vs $fwrite ns)"

echo "== two equal 2 MB files compared, whole processes: kesh_player vs cmp =="
size=$((2 * 1024 * 1024))
"$bin/kesh_driver_bench_data" copy "$size" >"$work/copy.bin"
head -c "$size" /dev/urandom >"$work/in.bin"
cp "$work/in.bin" "$work/out.bin"
compare=(-f "$work/copy.bin" -i "$work/in.bin" -o "$work/out.bin")
"$player" "${compare[@]}" >/dev/null || { echo "the 2 MB copy did not pass" >&2; exit 1; }
tool=$(best_ms "$player" "${compare[@]}") plain=$(best_ms cmp "$work/in.bin" "$work/out.bin")
echo "kesh_player / cmp: $(ratio "$tool" "$plain")  (target <= 2; $tool ms vs $plain ms)"
# Page faults (minor): fresh buffers show up here long before they show in times.
faults() { /usr/bin/time -f %R "$@" 2>&1 >/dev/null | tail -1; }
if [ -x /usr/bin/time ]; then
  echo "page faults: kesh_player $(faults "$player" "${compare[@]}"), cmp $(faults cmp "$work/in.bin" "$work/out.bin")"
fi

echo "== kesh_player -t 5 =="
full=$(best_ms "$player" -t 5) parse=$(best_ms "$player" -t 5 -l 0)
echo "whole run: $full ms; settings only (-l 0): $parse ms; ratio $(ratio "$full" "$parse")"

echo "== 63 compute-heavy jobs: one group vs 63 groups =="
"$bin/kesh_driver_bench_data" >"$work/matmul.bin"
# Zero operands give a zero product, so the golden is zero as well.
for name in a b c; do head -c $((192 * 192)) /dev/zero >"$work/$name.bin"; done
job="-f $work/matmul.bin -i $work/a.bin -i $work/b.bin -o $work/c.bin"
echo "$job -l 63" >"$work/one_group.txt"
for _ in $(seq 63); do echo "$job"; done >"$work/groups.txt"
"$player" --command "$work/one_group.txt" >/dev/null || { echo "the 63-job group did not pass" >&2; exit 1; }
together=$(best_ms "$player" --command "$work/one_group.txt")
apart=$(best_ms "$player" --command "$work/groups.txt")
echo "one group: $together ms; one group after another: $apart ms; speed-up $(ratio "$apart" "$together")" \
  "(library cores: ${KESH_EMU_CORES:-$(nproc)})"
