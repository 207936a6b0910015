#!/usr/bin/env bash
# Times the golden comparison and the tool end to end; every figure is a ratio
# against a baseline measured in the same run.
# Usage: bench/driver/run_bench.sh [BUILD_DIR]   (an optimised build; default build/default)
set -euo pipefail
bin=${1:-build/default}/bin && player=${1:-build/default}/bin/kesh_player
for needed in "$player" "$bin/kesh_driver_bench" "$bin/kesh_pattern_asm"; do
  [ -x "$needed" ] || { echo "missing $needed: build the tree first" >&2; exit 2; }; done
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
# assemble NAME TEXT: the pattern of TEXT as $work/NAME.bin.
assemble() { echo "$2" >"$work/$1.kasm" && "$bin/kesh_pattern_asm" assemble "$work/$1.kasm" -o "$work/$1.bin"; }

# median_pair_us A B: medians of 31 alternate wall-clock runs (us) of commands A and B (split at
# spaces, output dropped), so that both see the same load; stored in $first and $second.
median_pair_us() {
  local a=() b=() start
  for _ in $(seq 31); do
    start=$(date +%s%N) && { $1 >/dev/null 2>&1 || true; } && a+=($((($(date +%s%N) - start) / 1000)))
    start=$(date +%s%N) && { $2 >/dev/null 2>&1 || true; } && b+=($((($(date +%s%N) - start) / 1000)))
  done
  first=$(printf '%s\n' "${a[@]}" | sort -n | sed -n 16p) second=$(printf '%s\n' "${b[@]}" | sort -n | sed -n 16p)
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'; }
# Median real time of a benchmark, in nanoseconds.
median_ns() {
  awk -F, -v name="\"$1_median\"" '$1 == name { t = $3; u = $5; gsub(/"/, "", u);
    print t * (u == "ms" ? 1e6 : u == "us" ? 1e3 : u == "s" ? 1e9 : 1) }' "$work/bench.csv"
}

"$bin/kesh_driver_bench" --benchmark_format=csv --benchmark_repetitions=5 \
  --benchmark_report_aggregates_only=true 2>/dev/null >"$work/bench.csv"
echo "2 MB compareGolden equal / memcmp: $(ratio "$(median_ns BM_CompareGoldenEqual)" "$(median_ns BM_MemcmpEqual)") (target <= 1.1)"
echo "2 MB full-mismatch listing / fwrite of the same bytes:" \
  "$(ratio "$(median_ns BM_CompareGoldenFullMismatch)" "$(median_ns BM_FwriteSameBytes)") (target <= 2)"

size=$((2 * 1024 * 1024))
assemble copy "arg in index=0 size=$size
arg out index=1 size=$size
copy dst=arg:out src=arg:in length=$size"
head -c "$size" /dev/urandom | tee "$work/in.bin" >"$work/out.bin"
compare="$player -f $work/copy.bin -i $work/in.bin -o $work/out.bin" plain="cmp $work/in.bin $work/out.bin"
$compare >/dev/null || { echo "the 2 MB copy did not pass" >&2; exit 1; }
median_pair_us "$compare" "$plain"
echo "two equal 2 MB files, whole processes, kesh_player / cmp: $(ratio "$first" "$second") (target <= 2)"
# Minor page faults: fresh buffers show up here long before they show in times.
faults() { /usr/bin/time -f %R "$@" 2>&1 >/dev/null | tail -1; }
[ ! -x /usr/bin/time ] || echo "page faults: kesh_player $(faults $compare), cmp $(faults $plain)"

median_pair_us "$player -t 5" "$player -t 5 -l 0"
echo "kesh_player -t 5, whole run / settings only (-l 0): $(ratio "$first" "$second") ($first us vs $second us)"

# 63 compute-heavy jobs: one group against 63 groups in turn. Zero operands give a zero golden.
assemble matmul "arg a index=0 size=36864
arg b index=1 size=36864
arg c index=2 size=36864
matmul dst=arg:c a=arg:a b=arg:b m=192 k=192 n=192 multiplier=1 shift=0 out=i8"
for name in a b c; do head -c $((192 * 192)) /dev/zero >"$work/$name.bin"; done
job="-f $work/matmul.bin -i $work/a.bin -i $work/b.bin -o $work/c.bin"
echo "$job -l 63" >"$work/one_group.txt"
for _ in $(seq 63); do echo "$job"; done >"$work/groups.txt"
"$player" --command "$work/one_group.txt" >/dev/null || { echo "the 63-job group did not pass" >&2; exit 1; }
median_pair_us "$player --command $work/groups.txt" "$player --command $work/one_group.txt"
echo "63 jobs, speed-up of one group: $(ratio "$first" "$second") (library cores: ${KESH_EMU_CORES:-$(nproc)})"
