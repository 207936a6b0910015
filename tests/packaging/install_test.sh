#!/usr/bin/env bash
# Checks the installed tree as its users meet it, after installing the build into
# a fresh temporary prefix:
#   consumers  a C program links the host library through find_package and through
#              pkg-config, and runs (creates a player and destroys it)
#   player     the installed kesh_player starts without LD_LIBRARY_PATH, with the
#              installed library (the machine has no other), also after the tree is
#              moved elsewhere (the end-to-end tests play the cases; here the loader
#              is what counts)
#   manpages   every page renders without a warning, and every option of the
#              tool's usage text is described in its page
# Usage: install_test.sh MODE BUILD_DIR SOURCE_DIR CMAKE C_COMPILER [SKIP_REASON]
# A non-empty SKIP_REASON skips the test (exit status 77).
set -euo pipefail
mode=$1 build=$2 source=$3 cmake=$4 cc=$5 skip_reason=${6:-}
[ -z "$skip_reason" ] || { echo "skipped: $skip_reason"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
unset LD_LIBRARY_PATH

fail() { echo "FAIL: $*" >&2; exit 1; }
# Runs a command quietly; shows its output and fails with MESSAGE if it fails.
quietly() {
  local message=$1
  shift
  "$@" >"$work/step.log" 2>&1 || { cat "$work/step.log" >&2; fail "$message"; }
}
# The only libkesh_pattern_25 that binary $1 loads must be the one of tree $2.
expect_library_of() {
  local resolved
  resolved=$(ldd "$1" | awk '/libkesh_pattern_25/ {print $3}')
  [[ -n "$resolved" && "$(readlink -f "$resolved")" == "$(readlink -f "$2")"/* ]] ||
    fail "$1 loads '$resolved', not the library of $2"
}
# Runs consumer $1 (with the environment in the rest) and expects it to print "ok".
expect_ok() {
  local out
  out=$(env "${@:2}" "$1") || fail "$1 exits $?"
  [ "$out" = "ok" ] || fail "$1 printed '$out'"
}

run_consumers() {
  local consumer=$source/tests/packaging/consumer pcdir flags
  quietly "find_package(KeshPattern) consumer does not configure" \
    "$cmake" -S "$consumer" -B "$work/by_cmake" -DCMAKE_C_COMPILER="$cc" -DCMAKE_PREFIX_PATH="$prefix"
  quietly "find_package(KeshPattern) consumer does not build" "$cmake" --build "$work/by_cmake"
  expect_library_of "$work/by_cmake/kesh_consumer" "$prefix"
  expect_ok "$work/by_cmake/kesh_consumer"

  pcdir=$(dirname "$(find "$prefix" -name kesh_pattern.pc | head -n 1)")
  flags=$(PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs kesh_pattern) || fail "pkg-config does not know kesh_pattern"
  # shellcheck disable=SC2086  # the flags are a word list by design
  "$cc" -o "$work/by_pkgconfig" "$consumer/main.c" $flags || fail "pkg-config consumer does not build with: $flags"
  expect_ok "$work/by_pkgconfig" LD_LIBRARY_PATH="$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir kesh_pattern)"
}

run_player() {
  local tree out
  for tree in "$prefix" "$work/moved"; do
    [ -d "$tree" ] || mv "$prefix" "$tree"
    out=$("$tree/bin/kesh_player" -h 2>&1) || fail "$tree/bin/kesh_player -h exits $?: $out"
    # The player proper has no path of its own to the host library; its launcher
    # hands it the tree's when the system has none.
    if ldd "$tree/libexec/kesh_player/kesh_player" | grep -q 'libkesh_pattern_25.so => /'; then
      fail "the player proper finds a libkesh_pattern_25.so of its own"
    fi
    out=$(LD_DEBUG=libs "$tree/bin/kesh_player" -h 2>&1 >/dev/null)
    grep -q "calling init: $(readlink -f "$tree")/.*/libkesh_pattern_25.so" <<<"$out" ||
      fail "$tree/bin/kesh_player does not load the tree's host library"
  done
}

run_manpages() {
  local pages page tool rendered option section out
  pages=$(find "$prefix/share/man" -type f -name 'kesh*.[17].gz' | sort)
  for page in kesh_pattern.7 $(for tool in "$prefix"/bin/kesh*; do basename "$tool"; done | sed 's/$/.1/'); do
    grep -q "/$page.gz\$" <<<"$pages" || fail "$page is not installed (compressed)"
  done
  for page in $pages; do
    out=$(zcat "$page" | groff -t -man -Tutf8 -ww -z 2>&1)
    [ -z "$out" ] || fail "$page: $out"
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

quietly "cmake --install fails" "$cmake" --install "$build" --prefix "$prefix"
case "$mode" in
  consumers | player | manpages) "run_$mode" ;;
  *) fail "unknown mode $mode" ;;
esac
echo "passed: $mode"
