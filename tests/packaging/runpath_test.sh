#!/usr/bin/env bash
# No program of the build tree or of an installed tree loads a library planted
# in the working directory: run from a folder holding a libgcc_s.so.1 and a
# libkesh_pattern_25.so whose constructors leave a marker file, every program
# resolves its libraries elsewhere, and the tools run without leaving a marker.
# Usage: runpath_test.sh BUILD_DIR CMAKE C_COMPILER [SKIP_REASON]
# A non-empty SKIP_REASON skips the test (exit status 77).
set -euo pipefail
build=$1 cmake=$2 cc=$3 skip_reason=${4:-}
[ -z "$skip_reason" ] || { echo "skipped: $skip_reason"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH
fail() { echo "FAIL: $*" >&2; exit 1; }

planted=$work/planted
mkdir -p "$planted"
cat >"$work/plant.c" <<'C'
#include <stdio.h>
__attribute__((constructor)) static void plant(void) {
  FILE* marker = fopen("planted_library_loaded", "w");
  if (marker != NULL) fclose(marker);
}
C
for name in libgcc_s.so.1 libkesh_pattern_25.so; do
  "$cc" -shared -fPIC -o "$planted/$name" "$work/plant.c" || fail "cannot build the planted $name"
done

# Every ELF program under folder $1: no empty run path entry, and no library
# resolved into the planted folder.
check_tree() {
  local program paths count=0
  while IFS= read -r -d '' program; do
    [ "$(head -c 4 "$program" | tail -c 3)" = "ELF" ] || continue
    count=$((count + 1))
    paths=$(readelf -d "$program" | sed -n 's/.*R\(UN\)\{0,1\}PATH.*\[\(.*\)\]$/\2/p')
    case ":$paths:" in
      *::*) fail "$program has an empty run path entry: [$paths]" ;;
    esac
    if (cd "$planted" && ldd "$program") | grep -F "$planted"; then
      fail "$program resolves a library in the working directory"
    fi
  done < <(find "$1" -type f -perm -u+x -print0)
  [ "$count" -gt 0 ] || fail "no programs found under $1"
  echo "$count programs under $1 checked"
}

# Runs the tools of bin folder $1 from the planted folder: none may run the
# planted constructors.
run_tools() {
  (cd "$planted" && "$1/kesh_player" -t 0 >/dev/null) || fail "$1/kesh_player -t 0 failed"
  (cd "$planted" && "$1/kesh_pattern_asm" >/dev/null 2>&1) || true
  (cd "$planted" && "$1/kesh_gen_cases" >/dev/null 2>&1) || true
  [ ! -e "$planted/planted_library_loaded" ] || fail "a program of $1 ran a planted library's constructor"
}

check_tree "$build/bin"
run_tools "$build/bin"
"$cmake" --install "$build" --prefix "$work/prefix" >"$work/install.log" 2>&1 ||
  { cat "$work/install.log" >&2; fail "cannot install the build"; }
check_tree "$work/prefix/bin"
run_tools "$work/prefix/bin"
echo "ok"
