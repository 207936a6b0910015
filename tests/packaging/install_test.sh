#!/usr/bin/env bash
# The build installed into a fresh temporary prefix, checked as its users meet it. MODE:
#   consumers  C programs link the host library through find_package and through pkg-config, and run
#   player     the installed kesh_player, also moved elsewhere, loads the tree's host library
#              without LD_LIBRARY_PATH, though the player proper has no path of its own to it
#   manpages   pages installed compressed, rendering cleanly; kesh_player.1 describes every option
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
# expect_ok CONSUMER [VAR=VALUE...]: the consumer prints "ok".
expect_ok() { [ "$(env "${@:2}" "$1")" = ok ] || fail "$1 did not print ok"; }

run_consumers() {
  local consumer=$source/tests/packaging/consumer pcdir flags resolved
  quietly "find_package consumer does not configure" \
    "$cmake" -S "$consumer" -B "$work/by_cmake" -DCMAKE_C_COMPILER="$cc" -DCMAKE_PREFIX_PATH="$prefix"
  quietly "find_package consumer does not build" "$cmake" --build "$work/by_cmake"
  resolved=$(ldd "$work/by_cmake/kesh_consumer" | awk '/libkesh_pattern_25/ {print $3}')
  [[ "$(readlink -f "$resolved")" == "$(readlink -f "$prefix")"/* ]] || fail "the consumer loads '$resolved'"
  expect_ok "$work/by_cmake/kesh_consumer"
  pcdir=$(dirname "$(find "$prefix" -name kesh_pattern.pc | head -n 1)")
  flags=$(PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs kesh_pattern) || fail "pkg-config does not know kesh_pattern"
  # shellcheck disable=SC2086  # the flags are a word list by design
  "$cc" -o "$work/by_pkgconfig" "$consumer/main.c" $flags || fail "pkg-config consumer does not build with: $flags"
  expect_ok "$work/by_pkgconfig" LD_LIBRARY_PATH="$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir kesh_pattern)"
}

run_player() {
  local tree
  for tree in "$prefix" "$work/moved"; do
    [ -d "$tree" ] || mv "$prefix" "$tree"
    quietly "$tree/bin/kesh_player -h fails" "$tree/bin/kesh_player" -h
    ! grep -q 'libkesh_pattern_25.so => /' <<<"$(ldd "$tree/libexec/kesh_player/kesh_player")" ||
      fail "the player proper finds a libkesh_pattern_25.so of its own"
    grep -q "calling init: $(readlink -f "$tree")/.*/libkesh_pattern_25.so" <<<"$(LD_DEBUG=libs "$tree/bin/kesh_player" \
      -h 2>&1 >/dev/null)" || fail "$tree/bin/kesh_player does not load the tree's host library"
  done
}

run_manpages() {
  local page rendered option section
  for page in man7/kesh_pattern.7 $(cd "$prefix/bin" && ls kesh* | sed 's|^|man1/|; s/$/.1/'); do
    [ -f "$prefix/share/man/$page.gz" ] || fail "$page is not installed (compressed)"
    [ -z "$(zcat "$prefix/share/man/$page.gz" | groff -t -man -Tutf8 -ww -z 2>&1)" ] || fail "$page renders with warnings"
  done
  rendered=$(MANWIDTH=200 man -l "$prefix/share/man/man1/kesh_player.1.gz" 2>/dev/null | col -b)
  for section in OPTIONS "COMMAND FILES" GROUPING "EXIT STATUS" EXAMPLES; do
    grep -q "^[A-Z -]*$section\$" <<<"$rendered" || fail "kesh_player.1 lacks $section"
  done
  [ -x "$prefix/bin/kesh_player" ] || return 0
  for option in $("$prefix/bin/kesh_player" -h | grep -o -- '--[a-z_]*' | sort -u); do
    # an item of its own: "-l, --loop runs" or "--pack Pack ..."
    grep -qE -- "^ +(-[a-z], )?$option( |\$)" <<<"$rendered" || fail "kesh_player.1 does not describe $option"
  done
}

run_runpath() {
  local planted=$work/planted tree program paths name
  mkdir -p "$planted"
  printf '#include <stdio.h>\n%s\n' '__attribute__((constructor)) static void plant(void) {
    FILE* f = fopen("planted_library_loaded", "w"); if (f) fclose(f); }' >"$work/plant.c"
  for name in libgcc_s.so.1 libkesh_pattern_25.so; do
    "$cc" -shared -fPIC -o "$planted/$name" "$work/plant.c" || fail "cannot build the planted $name"
  done
  for tree in "$build/bin" "$prefix/bin"; do
    while IFS= read -r -d '' program; do
      [ "$(head -c 4 "$program" | tail -c 3)" = ELF ] || continue
      paths=$(readelf -d "$program" | sed -n 's/.*R\(UN\)\{0,1\}PATH.*\[\(.*\)\]$/\2/p')
      [[ ":$paths:" != *::* ]] || fail "$program has an empty run path entry: [$paths]"
      ! (cd "$planted" && ldd "$program") | grep -F "$planted" || fail "$program resolves a planted library"
    done < <(find "$tree" -type f -perm -u+x -print0)
    (cd "$planted" && "$tree/kesh_player" -t 0 >/dev/null) || fail "$tree/kesh_player -t 0 failed"
    (cd "$planted" && { "$tree/kesh_pattern_asm"; "$tree/kesh_gen_cases"; }) >/dev/null 2>&1 || true
    [ ! -e "$planted/planted_library_loaded" ] || fail "a program of $tree ran a planted library's constructor"
  done
}

quietly "cmake --install fails" "$cmake" --install "$build" --prefix "$prefix"
"run_$mode" && echo "passed: $mode"
