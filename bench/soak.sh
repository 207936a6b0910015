#!/usr/bin/env bash
# Soak: runs the tool for N runs over the six built-in cases and reports its
# memory (RSS), open descriptors and time per run near the start and near the
# end, so that growth over a long run shows. Not part of CI.
# Usage: bench/soak.sh N [BUILD_DIR]   (an optimised build; default build/default)
set -euo pipefail
runs=${1:?usage: bench/soak.sh N [BUILD_DIR]} player=${2:-build/default}/bin/kesh_player work=$(mktemp -d)
trap 'rm -rf "$work"; [ -z "${pid:-}" ] || kill "$pid" 2>/dev/null || true' EXIT
if [ ! -x "$player" ] || ((runs < 20)); then echo "needs N >= 20 and a built $player" >&2; exit 2; fi
"$player" -l "$runs" -t 0 -t 1 -t 2 -t 3 -t 4 -t 5 >"$work/out.log" 2>"$work/err.log" &
pid=$! started=$(date +%s%N) && : >"$work/samples"
# One sample a line: milliseconds since the start, runs begun, RSS in KiB, open descriptors.
while kill -0 "$pid" 2>/dev/null; do
  run=$(tail -c 65536 "$work/out.log" | grep -o '^\[[0-9]*/' | tail -n 1 | tr -d '[/' || true)
  rss=$(awk '/^VmRSS:/ {print $2}' "/proc/$pid/status" 2>/dev/null || true)
  fds=$(find "/proc/$pid/fd" -mindepth 1 -maxdepth 1 2>/dev/null | wc -l || true)
  [ -z "$run" ] || [ -z "$rss" ] || echo "$((($(date +%s%N) - started) / 1000000)) $run $rss $fds" >>"$work/samples"
  sleep 0.2
done
wait "$pid" && status=0 || status=$?
pid=
echo "runs: $runs, passed: $(grep -c 'Test pattern passed!!!' "$work/out.log" || true), exit status: $status," \
  "total: $((($(date +%s%N) - started) / 1000000)) ms"
[ "$status" -eq 0 ] || { echo "the tool failed:" >&2; tail -n 5 "$work/err.log" >&2; exit 1; }
# Start: the samples of the first tenth of the runs (after the first run); end: those of the last tenth.
awk -v runs="$runs" '
  { ms[NR] = $1; run[NR] = $2; rss[NR] = $3; fds[NR] = $4 }
  $2 > 1 && $2 <= 1 + runs / 10 { s0 = s0 ? s0 : NR; s1 = NR }
  $2 > runs - runs / 10 { e0 = e0 ? e0 : NR; e1 = NR }
  function per(a, b) { return (ms[b] - ms[a]) / (run[b] - run[a]) }
  function report(label, a, b) {
    printf "%s (runs %d..%d): RSS %d KiB, open descriptors %d, %.2f ms per run\n",
           label, run[a], run[b], rss[b], fds[b], per(a, b)
  }
  END {
    if (!s0 || !e0 || s1 == s0 || e1 == e0) { print "too few samples: raise N"; exit 1 }
    report("start", s0, s1); report("end  ", e0, e1)
    printf "end/start: RSS %.3f, descriptors %.3f, time per run %.3f\n",
           rss[e1] / rss[s1], fds[e1] / fds[s1], per(e0, e1) / per(s0, s1)
  }' "$work/samples"
