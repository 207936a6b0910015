#!/usr/bin/env bash
# Manual checks in a fresh Debian 12 root; need root and debootstrap (not run by ctest).
# Usage: chroot_test.sh packages PACKAGE_DIR BASE_ROOT
#          the .deb files installed as on a user's machine: the host library alone, in a private folder
#          the system's loader does not know; then the development files and the tools, kesh_player -t 0
#          passing without LD_LIBRARY_PATH, and a stand-in vendor library in the system folder winning
#        chroot_test.sh readme BASE_ROOT: README's first command, word for word, on the committed tree
# BASE_ROOT (minbase bookworm, from the mirror this machine's apt uses) is made with debootstrap if missing.
set -euo pipefail
mode=$1
[ "$mode" = packages ] && { packages=$(cd "$2" && pwd); shift; }
base=$2 source_dir=$(cd "$(dirname "$0")/../.." && pwd) work=$(mktemp -d) && root=$work/root
trap 'umount "$root"/{proc,dev/pts,dev} 2>/dev/null || true; rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
mirror=$(grep -hv '^\s*#' /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null |
         grep -oE "https?://[^ ]+" | grep -v security | head -n 1 || true)
[ -x "$base/bin/sh" ] || debootstrap --variant=minbase bookworm "$base" "$mirror" >/dev/null
cp -a "$base" "$root" && cp /etc/resolv.conf "$root/etc/resolv.conf"
in_root() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root sh -c "$1"; }

if [ "$mode" = readme ]; then
  mount -t proc proc "$root/proc" && mount --bind /dev "$root/dev" && mount --bind /dev/pts "$root/dev/pts"
  mkdir -p "$root/root/kesh_player" && git -C "$source_dir" archive HEAD | tar -x -C "$root/root/kesh_player"
  command=$(awk '/^```sh/ {block = 1; next} block && !/^#/ {print; exit}' "$source_dir/README.md")
  echo "README's first command: $command"
  start=$(date +%s) status=0
  in_root "cd /root/kesh_player && $command" >"$work/readme.log" 2>&1 || status=$?
  tail -n 8 "$work/readme.log" && echo "status $status after $(($(date +%s) - start)) s"
  [ "$status" -eq 0 ] && [ "$(tail -n 1 "$work/readme.log")" = "Test pattern passed!!!" ]
  exit
fi

# install PACKAGE...: as a user would, apt-get bringing what the packages depend on from the archive.
install() {
  mkdir -p "$root/tmp/debs" && for package in "$@"; do cp "$packages/$package"_*.deb "$root/tmp/debs/"; done
  in_root 'apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq /tmp/debs/*.deb' \
    >"$work/apt.log" 2>&1 || { cat "$work/apt.log" >&2; fail "apt-get install $*"; }
}
lib=/usr/lib/$(basename "$(ls -d "$root"/usr/lib/*-linux-gnu* | head -n 1)")
install libkesh-pattern-host
[ -f "$root$lib/kesh_pattern_host/libkesh_pattern_25.so" ] || fail "host library not in its private folder"
! grep -q libkesh_pattern_25 <<<"$(in_root 'ldconfig -p')" || fail "the system's loader knows the host library"
install libkesh-pattern-dev kesh-player
[ -f "$root/usr/include/kesh/kesh_pattern.h" ] && [ -f "$root$lib/cmake/KeshPattern/KeshPatternConfig.cmake" ] ||
  fail "development files not installed"
grep -q "^libdir=.*/kesh_pattern_host\$" "$root$lib/pkgconfig/kesh_pattern.pc" || fail "kesh_pattern.pc: wrong libdir"
out=$(in_root 'kesh_player -t 0' 2>&1) || fail "kesh_player -t 0 exits $?: $out"
[ "$(tail -n 1 <<<"$out")" = "Test pattern passed!!!" ] || fail "kesh_player -t 0 did not pass: $out"

# A vendor library stand-in: the device library's soname and symbols, announcing that it was
# loaded; its null player ends the tool at the first call.
names=$(grep -oE 'kesh[A-Za-z]+\(' "$source_dir/include/kesh/kesh_pattern.h" | tr -d '(' | sort -u)
{ echo '#include <stdio.h>'
  echo '__attribute__((constructor)) static void said(void) { fputs("stand-in vendor library loaded\n", stderr); }'
  sed 's/.*/void* &(void) { return 0; }/' <<<"$names"; } >"$work/standin.c"
{ echo 'KESH_PATTERN { global:'; sed 's/$/;/' <<<"$names"; echo 'local: *; };'; } >"$work/standin.map"
cc -shared -fPIC -o "$root$lib/libkesh_pattern_25.so" -Wl,-soname,libkesh_pattern_25.so \
  -Wl,--version-script,"$work/standin.map" "$work/standin.c" || fail "stand-in library does not build"
in_root ldconfig
status=0
out=$(in_root 'KESH_EMU_TRACE=stderr kesh_player -t 0' 2>&1) || status=$?
grep -q '^stand-in vendor library loaded$' <<<"$out" || fail "kesh_player did not load the stand-in: $out"
! grep -q '^keshCreatePlayer' <<<"$out" || fail "the host library ran (it traced a call): $out"
[ "$status" -eq 1 ] || fail "kesh_player against the refusing stand-in exits $status, not 1: $out"
echo "passed: private host library, development files, kesh_player -t 0, stand-in vendor library preferred"
