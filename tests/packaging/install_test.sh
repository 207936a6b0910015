#!/usr/bin/env bash
# The build installed into a fresh temporary prefix, checked as its users meet it. MODE:
#   consumers  C programs link the host library through find_package and through pkg-config, and run
#   player     kesh_player, installed then moved, loads the tree's host library though it has no path to it
#   manpages   pages installed compressed, rendering cleanly
#   runpath    no program of the build or installed tree loads libraries planted in the working folder
# Usage: install_test.sh MODE BUILD_DIR SOURCE_DIR CMAKE C_COMPILER [SKIP_REASON] (non-empty: exit 77)
set -euo pipefail
mode=$1 build=$2 source=$3 cmake=$4 cc=$5 work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
[ -z "${6:-}" ] || { echo "skipped: $6"; exit 77; }
prefix=$work/prefix && unset LD_LIBRARY_PATH
fail() { echo "FAIL: $*" >&2; exit 1; }
# quietly MESSAGE COMMAND...: runs the command; shows its output and fails with MESSAGE if it fails.
quietly() { "${@:2}" >"$work/step.log" 2>&1 || { cat "$work/step.log" >&2; fail "$1"; }; }

run_consumers() {
  local consumer=$source/tests/packaging/consumer pcdir
  quietly "find_package consumer does not configure" \
    "$cmake" -S "$consumer" -B "$work/by_cmake" -DCMAKE_C_COMPILER="$cc" -DCMAKE_PREFIX_PATH="$prefix"
  quietly "find_package consumer does not build" "$cmake" --build "$work/by_cmake"
  grep -q "libkesh_pattern_25.so => $(readlink -f "$prefix")/" <<<"$(ldd "$work/by_cmake/kesh_consumer")" ||
    fail "the consumer does not load the installed library"
  quietly "the find_package consumer fails" "$work/by_cmake/kesh_consumer"
  pcdir=$(dirname "$(find "$prefix" -name kesh_pattern.pc)") && export PKG_CONFIG_PATH=$pcdir
  quietly "pkg-config consumer does not build" \
    "$cc" -o "$work/by_pc" "$consumer/main.c" $(pkg-config --cflags --libs kesh_pattern)
  quietly "the pkg-config consumer fails" \
    env LD_LIBRARY_PATH="$(pkg-config --variable=libdir kesh_pattern)" "$work/by_pc"
}

run_player() {
  local tree=$work/moved
  mv "$prefix" "$tree"
  ! grep -q 'libkesh_pattern_25.so => /' <<<"$(ldd "$tree/libexec/kesh_player/kesh_player")" ||
    fail "the player proper finds a libkesh_pattern_25.so of its own"
  grep -q "calling init: $(readlink -f "$tree")/.*/libkesh_pattern_25.so" \
    <<<"$(LD_DEBUG=libs "$tree/bin/kesh_player" -h 2>&1)" || fail "kesh_player does not load the tree's host library"
}

run_manpages() {
  local page
  for page in man7/kesh_pattern.7 $(cd "$prefix/bin" && ls kesh* | sed 's|^|man1/|; s/$/.1/'); do
    [ -z "$({ zcat "$prefix/share/man/$page.gz" | groff -t -man -Tutf8 -ww -z; } 2>&1)" ] ||
      fail "$page is missing or renders with warnings"
  done
}

run_runpath() {
  local planted=$work/planted program
  mkdir -p "$planted"
  echo '__attribute__((constructor)) static void plant(void) { __builtin_trap(); }' >"$work/plant.c"
  for program in libgcc_s.so.1 libkesh_pattern_25.so; do
    "$cc" -shared -fPIC -o "$planted/$program" "$work/plant.c" || fail "cannot build the planted $program"
  done
  for program in "$build"/bin/* "$prefix"/bin/*; do
    ! (cd "$planted" && ldd "$program" 2>/dev/null) | grep -E "=> (\.|$planted)" ||
      fail "$program resolves a planted library"
  done
  for program in "$build"/bin/kesh_player "$prefix"/bin/kesh_player; do
    (cd "$planted" && "$program" -t 0 >/dev/null) || fail "$program -t 0 failed or ran a planted library"
  done
}

quietly "cmake --install fails" "$cmake" --install "$build" --prefix "$prefix"
"run_$mode" && echo "passed: $mode"
