#!/usr/bin/env bash
# Checks the installed tree as its users meet it. Each mode installs the build into a
# fresh temporary prefix first.
#   consumers  a C program links the host library through find_package and through
#              pkg-config, and runs (creates a player and destroys it)
#   player     the installed kesh_player runs a built-in case without LD_LIBRARY_PATH,
#              with the installed library, also after the tree is moved elsewhere
#   manpages   every page renders without a warning, and every option of the
#              tool's usage text is described in its page
# Usage: install_test.sh MODE BUILD_DIR SOURCE_DIR CMAKE C_COMPILER [SKIP_REASON]
# A non-empty SKIP_REASON skips the test (exit status 77).
set -euo pipefail

mode=$1 build=$2 source=$3 cmake=$4 cc=$5 skip_reason=${6:-}

if [ -n "$skip_reason" ]; then
  echo "skipped: $skip_reason"
  exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
unset LD_LIBRARY_PATH

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

# Runs a command quietly; shows its output and fails with MESSAGE if it fails.
quietly() {
  local message=$1
  shift
  "$@" >"$work/step.log" 2>&1 || { cat "$work/step.log" >&2; fail "$message"; }
}

# The only libkesh_pattern_25 that a binary loads must be the installed one.
expect_installed_library() {
  local binary=$1 tree=$2 resolved
  resolved=$(ldd "$binary" | awk '/libkesh_pattern_25/ {print $3}')
  [ -n "$resolved" ] || fail "$binary does not load libkesh_pattern_25"
  case "$(readlink -f "$resolved")" in
    "$(readlink -f "$tree")"/*) ;;
    *) fail "$binary loads $resolved, not the library of $tree" ;;
  esac
}

run_consumers() {
  local consumer=$source/tests/packaging/consumer out
  quietly "find_package(KeshPattern) consumer does not configure" \
    "$cmake" -S "$consumer" -B "$work/by_cmake" -DCMAKE_C_COMPILER="$cc" -DCMAKE_PREFIX_PATH="$prefix"
  quietly "find_package(KeshPattern) consumer does not build" "$cmake" --build "$work/by_cmake"
  expect_installed_library "$work/by_cmake/kesh_consumer" "$prefix"
  out=$("$work/by_cmake/kesh_consumer") || fail "find_package consumer exits $?"
  [ "$out" = "ok" ] || fail "find_package consumer printed '$out'"

  local pcdir flags
  pcdir=$(dirname "$(find "$prefix" -name kesh_pattern.pc | head -n 1)")
  [ -d "$pcdir" ] || fail "no kesh_pattern.pc installed"
  flags=$(PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs kesh_pattern) ||
    fail "pkg-config does not know kesh_pattern"
  # shellcheck disable=SC2086  # the flags are a word list by design
  "$cc" -o "$work/by_pkgconfig" "$consumer/main.c" $flags ||
    fail "pkg-config consumer does not build with: $flags"
  out=$(LD_LIBRARY_PATH=$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir kesh_pattern) \
        "$work/by_pkgconfig") || fail "pkg-config consumer exits $?"
  [ "$out" = "ok" ] || fail "pkg-config consumer printed '$out'"
}

# Runs built-in case 0 with the kesh_player of the tree at $1.
expect_player_passes() {
  local tree=$1 out status=0
  out=$("$tree/bin/kesh_player" -t 0 2>&1) || status=$?
  [ $status -eq 0 ] || { echo "$out" >&2; fail "$tree/bin/kesh_player -t 0 exits $status"; }
  [ "$(tail -n 1 <<<"$out")" = "Test pattern passed!!!" ] ||
    { echo "$out" >&2; fail "$tree/bin/kesh_player -t 0 did not pass"; }
  expect_installed_library "$tree/bin/kesh_player" "$tree"
}

run_player() {
  [ -x "$prefix/bin/kesh_player" ] || fail "kesh_player is not installed"
  expect_player_passes "$prefix"
  mv "$prefix" "$work/moved"
  expect_player_passes "$work/moved"
}

run_manpages() {
  local pages page warnings
  pages=$(find "$prefix/share/man" -type f -name 'kesh*.[17]' | sort)
  local tool
  for page in kesh_pattern.7 $(for tool in "$prefix"/bin/kesh*; do basename "$tool"; done | sed 's/$/.1/'); do
    grep -q "/$page\$" <<<"$pages" || fail "$page is not installed"
  done
  for page in $pages; do
    warnings=$(groff -t -man -Tutf8 -ww -z "$page" 2>&1)
    [ -z "$warnings" ] || fail "$page: $warnings"
  done

  local player_page=$prefix/share/man/man1/kesh_player.1 rendered option
  rendered=$(MANWIDTH=200 man -l "$player_page" 2>/dev/null | col -b)
  for section in OPTIONS "COMMAND FILES" GROUPING "EXIT STATUS" EXAMPLES; do
    grep -q "^[A-Z -]*$section\$" <<<"$rendered" || fail "kesh_player.1 lacks $section"
  done
  [ -x "$prefix/bin/kesh_player" ] || return 0
  for option in $("$prefix/bin/kesh_player" -h | grep -o -- '--[a-z_]*' | sort -u); do
    # an item of its own: "-l, --loop runs" or "--pack Pack ..."
    grep -qE -- "^ +(-[a-z], )?$option( |\$)" <<<"$rendered" ||
      fail "kesh_player.1 does not describe $option"
  done
}

quietly "cmake --install fails" "$cmake" --install "$build" --prefix "$prefix"
case "$mode" in
  consumers) run_consumers ;;
  player) run_player ;;
  manpages) run_manpages ;;
  *) fail "unknown mode $mode" ;;
esac
echo "passed: $mode"
