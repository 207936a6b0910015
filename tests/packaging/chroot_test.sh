#!/usr/bin/env bash
# Manual checks in fresh Debian 12 roots; need root and debootstrap (not run by ctest).
# Usage: chroot_test.sh packages PACKAGE_DIR BASE_ROOT
#          each .deb installed as on a user's machine: the host library in a private folder the
#          system's loader does not know, development files beside it, kesh_player -t 0 passing
#          without LD_LIBRARY_PATH, and a stand-in vendor library in the system folder winning
#        chroot_test.sh readme BASE_ROOT: README's first command, word for word, on the committed tree
# BASE_ROOT (minbase bookworm) is made with debootstrap if missing.
set -euo pipefail
mode=$1
[ "$mode" = packages ] && { packages=$(cd "$2" && pwd); shift; }
base=$2 source_dir=$(cd "$(dirname "$0")/../.." && pwd) work=$(mktemp -d)
trap 'umount "$work"/*/{proc,dev/pts,dev} 2>/dev/null || true; rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH
fail() { echo "FAIL: $*" >&2; exit 1; }
# The base root comes from the mirror this machine's apt already uses.
mirror=$(cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources 2>/dev/null | grep -v "^\s*#" | grep -oE "https?://[^ ]+" | grep -v security | head -n 1 || true)
[ -x "$base/bin/sh" ] || debootstrap --variant=minbase bookworm "$base" "$mirror" >/dev/null
fresh_root() { cp -a "$base" "$work/$1" && echo "$work/$1"; }
in_root() { chroot "$1" env -u LD_LIBRARY_PATH sh -c "$2"; }

if [ "$mode" = readme ]; then
  root=$(fresh_root readme)
  cp /etc/resolv.conf "$root/etc/resolv.conf"
  mount -t proc proc "$root/proc" && mount --bind /dev "$root/dev" && mount --bind /dev/pts "$root/dev/pts"
  mkdir -p "$root/home/user/kesh_player"
  git -C "$source_dir" archive HEAD | tar -x -C "$root/home/user/kesh_player"
  command=$(awk '/^```sh/ {block = 1; next} block && !/^#/ {print; exit}' "$source_dir/README.md")
  echo "README's first command: $command"
  start=$(date +%s) status=0
  chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/home/user \
    sh -c "cd /home/user/kesh_player && $command" >"$work/readme.log" 2>&1 || status=$?
  tail -n 8 "$work/readme.log"
  echo "status $status after $(($(date +%s) - start)) s"
  [ "$status" -eq 0 ] && [ "$(tail -n 1 "$work/readme.log")" = "Test pattern passed!!!" ]
  exit
fi

triplet=$(chroot "$base" dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null ||
          ls -d "$base"/usr/lib/*-linux-gnu* | head -n 1 | xargs basename)
# install_into NAME PACKAGE...: a fresh root with the packages' .deb files installed; prints its path.
install_into() {
  local root
  root=$(fresh_root "$1") && shift && mkdir -p "$root/tmp/debs"
  for package in "$@"; do cp "$packages/$package"_*.deb "$root/tmp/debs/"; done
  # As a user would: apt-get brings what the packages depend on from the archive.
  cp /etc/resolv.conf "$root/etc/resolv.conf"
  in_root "$root" 'apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq /tmp/debs/*.deb' \
    >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log" >&2; fail "apt-get install $*"; }
  echo "$root"
}

root=$(install_into hostlib libkesh-pattern-host)
[ -f "$root/usr/lib/$triplet/kesh_pattern_host/libkesh_pattern_25.so" ] || fail "host library not in its private folder"
[ -z "$(in_root "$root" 'ldconfig -p | grep libkesh_pattern_25 || true')" ] || fail "the system's loader knows the host library"

root=$(install_into dev libkesh-pattern-host libkesh-pattern-dev)
[ -f "$root/usr/include/kesh/kesh_pattern.h" ] || fail "header not installed"
[ -f "$root/usr/lib/$triplet/cmake/KeshPattern/KeshPatternConfig.cmake" ] || fail "CMake package not installed"
grep -q "^libdir=.*/kesh_pattern_host\$" "$root/usr/lib/$triplet/pkgconfig/kesh_pattern.pc" ||
  fail "kesh_pattern.pc does not point at the private folder"

root=$(install_into tools libkesh-pattern-host kesh-player)
out=$(in_root "$root" 'kesh_player -t 0' 2>&1) || fail "kesh_player -t 0 exits $?: $out"
[ "$(tail -n 1 <<<"$out")" = "Test pattern passed!!!" ] || fail "kesh_player -t 0 did not pass: $out"
grep -q 'libkesh_pattern_25.so => not found' <<<"$(in_root "$root" 'ldd /usr/libexec/kesh_player/kesh_player')" ||
  fail "the player proper finds a library of its own, not through the system's loader"

# A vendor library stand-in: the device library's soname and symbol version,
# every call refusing (null handles, status 1), announcing that it was loaded.
header=$source_dir/include/kesh/kesh_pattern.h
{
  echo '#include <stdio.h>'
  echo '__attribute__((constructor)) static void said(void) { fputs("stand-in vendor library loaded\n", stderr); }'
  grep -oE '^[A-Za-z_]+\*? *kesh[A-Za-z]+\(' "$header" | sed -E 's/^int.* (kesh.*)/int \1void) { return 1; }/;
    s/^[^i].* (kesh.*)/void* \1void) { return 0; }/'
} >"$work/standin.c"
{ echo 'KESH_PATTERN { global:'; grep -oE 'kesh[A-Za-z]+\(' "$header" | tr -d '(' | sort -u | sed 's/$/;/'
  echo 'local: *; };'; } >"$work/standin.map"
cc -shared -fPIC -o "$root/usr/lib/$triplet/libkesh_pattern_25.so" -Wl,-soname,libkesh_pattern_25.so \
  -Wl,--version-script,"$work/standin.map" "$work/standin.c" || fail "stand-in library does not build"
in_root "$root" ldconfig
status=0
out=$(in_root "$root" 'KESH_EMU_TRACE=stderr kesh_player -t 0' 2>&1) || status=$?
grep -q '^stand-in vendor library loaded$' <<<"$out" || fail "kesh_player did not load the stand-in: $out"
! grep -q '^keshCreatePlayer' <<<"$out" || fail "the host library ran (it traced a call): $out"
[ "$status" -eq 1 ] || fail "kesh_player against the refusing stand-in exits $status, not 1: $out"
echo "passed: private host library, development files, kesh_player -t 0, stand-in vendor library preferred"
