#!/usr/bin/env bash
# Usage: chroot_test.sh PACKAGE_DIR BASE_ROOT (as root; not run by ctest). The .deb files installed as a user
# would into a copy of BASE_ROOT (minbase bookworm, made by debootstrap if missing): the host library private,
# development files, kesh_player -t 0 passing, and a stand-in vendor library in the system folder winning.
set -euo pipefail
packages=$(cd "$1" && pwd) base=$2 header=$(dirname "$0")/../../include/kesh/kesh_pattern.h work=$(mktemp -d)
root=$work/root && trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
mirror=$(grep -hv '^\s*#' /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null |
         grep -oE "https?://[^ ]+" | grep -v security | head -n 1 || true)
[ -x "$base/bin/sh" ] || debootstrap --variant=minbase bookworm "$base" "$mirror" >/dev/null
cp -a "$base" "$root" && cp /etc/resolv.conf "$root/etc/resolv.conf" && mkdir "$root/tmp/debs"
in_root() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root sh -c "$1"; }
lib=/usr/lib/$(basename "$(ls -d "$root"/usr/lib/*-linux-gnu* | head -n 1)")

# As a user would: apt-get brings what the packages depend on from the archive.
cp "$packages"/{libkesh-pattern-host,libkesh-pattern-dev,kesh-player}_*.deb "$root/tmp/debs/"
in_root 'apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq /tmp/debs/*.deb' \
  >"$work/apt.log" 2>&1 || { cat "$work/apt.log" >&2; fail "apt-get install"; }
[ -f "$root$lib/kesh_pattern_host/libkesh_pattern_25.so" ] || fail "host library not in its private folder"
! grep -q libkesh_pattern_25 <<<"$(in_root 'ldconfig -p')" || fail "the system's loader knows the host library"
[ -f "$root/usr/include/kesh/kesh_pattern.h" ] && [ -f "$root$lib/cmake/KeshPattern/KeshPatternConfig.cmake" ] ||
  fail "development files not installed"
grep -q "^libdir=.*/kesh_pattern_host\$" "$root$lib/pkgconfig/kesh_pattern.pc" || fail "kesh_pattern.pc: wrong libdir"
out=$(in_root 'kesh_player -t 0' 2>&1) || fail "kesh_player -t 0 exits $?: $out"
[ "$(tail -n 1 <<<"$out")" = "Test pattern passed!!!" ] || fail "kesh_player -t 0 did not pass: $out"

# A vendor library stand-in: the device library's soname and symbols, announcing that it was
# loaded; its null player ends the tool at the first call.
{ echo '#include <stdio.h>'
  echo '__attribute__((constructor)) static void said(void) { fputs("stand-in vendor library loaded\n", stderr); }'
  grep -oE 'kesh[A-Za-z]+\(' "$header" | sort -u | sed 's/.*/void* &void) { return 0; }/'; } >"$work/standin.c"
echo 'KESH_PATTERN { global: *; };' >"$work/standin.map"
cc -shared -fPIC -o "$root$lib/libkesh_pattern_25.so" -Wl,-soname,libkesh_pattern_25.so \
  -Wl,--version-script,"$work/standin.map" "$work/standin.c" || fail "stand-in library does not build"
in_root ldconfig
status=0 && out=$(in_root 'kesh_player -t 0' 2>&1) || status=$?
grep -q '^stand-in vendor library loaded$' <<<"$out" || fail "kesh_player did not load the stand-in: $out"
[ "$status" -eq 1 ] || fail "kesh_player against the refusing stand-in exits $status, not 1: $out"
echo "passed: private host library, development files, kesh_player -t 0, stand-in vendor library preferred"
