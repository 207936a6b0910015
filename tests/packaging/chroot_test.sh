#!/usr/bin/env bash
# Installs the Debian packages into fresh Debian roots, as a user's machine gets
# them, and checks from inside each root (not run by ctest: it needs root and
# debootstrap):
#   host library alone   installs into its private folder, which the system's
#                        loader does not know (ldconfig -p does not list it)
#   development files    install beside it; the pkg-config file points at it
#   tools                kesh_player -t 0 passes without LD_LIBRARY_PATH, against
#                        the host library
#   tools + vendor       with a stand-in vendor libkesh_pattern_25.so in the system
#                        library folder, kesh_player loads the stand-in, never the
#                        host library
# Usage: tests/packaging/chroot_test.sh PACKAGE_DIR [BASE_ROOT]
#   PACKAGE_DIR  holds the .deb files (scripts/build-packages.sh makes them)
#   BASE_ROOT    a debootstrapped Debian 12 root to copy; made (and kept there) if
#                missing. Default: PACKAGE_DIR/debian12-base
set -euo pipefail
packages=$(cd "$1" && pwd)
base=${2:-$packages/debian12-base}
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH

fail() { echo "FAIL: $*" >&2; exit 1; }
pass() { echo "passed: $*"; }
deb_of() { ls "$packages/$1"_*.deb; }

if [ ! -x "$base/bin/sh" ]; then
  echo "making the base root $base (debootstrap, Debian 12 minbase)"
  debootstrap --variant=minbase bookworm "$base" http://deb.debian.org/debian >"$work/debootstrap.log" 2>&1 ||
    { tail -n 20 "$work/debootstrap.log"; fail "debootstrap"; }
fi
arch=$(chroot "$base" dpkg --print-architecture)
triplet=$(chroot "$base" dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null ||
          ls -d "$base"/usr/lib/*-linux-gnu* | head -n 1 | xargs basename)

# fresh_root NAME: a copy of the base root at $work/NAME.
fresh_root() {
  cp -a "$base" "$work/$1"
  echo "$work/$1"
}
# install_into ROOT PACKAGE...: dpkg -i the packages' .deb files inside ROOT.
install_into() {
  local root=$1 package
  shift
  mkdir -p "$root/tmp/debs"
  for package in "$@"; do cp "$(deb_of "$package")" "$root/tmp/debs/"; done
  chroot "$root" sh -c 'dpkg -i /tmp/debs/*.deb' >"$work/dpkg.log" 2>&1 ||
    { cat "$work/dpkg.log" >&2; fail "dpkg -i $* in a fresh root"; }
  rm -rf "$root/tmp/debs"
}
# in_root ROOT COMMAND: runs the shell command inside ROOT with no LD_LIBRARY_PATH.
in_root() { chroot "$1" env -u LD_LIBRARY_PATH sh -c "$2"; }

# A library with the device library's soname and symbol version whose every call
# fails (null handles, nonzero statuses) and which says it was loaded: a vendor's
# library that kesh_player must prefer to the host library.
make_standin() {
  local header=$source_dir/include/kesh/kesh_pattern.h dir=$work/standin line
  mkdir -p "$dir"
  {
    echo '#include <stdio.h>'
    echo '__attribute__((constructor)) static void said(void) { fputs("stand-in vendor library loaded\n", stderr); }'
    grep -oE '^[A-Za-z_]+\*? *kesh[A-Za-z]+\(' "$header" | while read -r line; do
      case $line in
        int*) echo "int ${line##* }void) { return 1; }" ;;
        *) echo "void* ${line##* }void) { return 0; }" ;;
      esac
    done
  } >"$dir/standin.c"
  {
    echo 'KESH_PATTERN { global:'
    grep -oE 'kesh[A-Za-z]+\(' "$header" | tr -d '(' | sort -u | sed 's/$/;/'
    echo 'local: *; };'
  } >"$dir/standin.map"
  cc -shared -fPIC -o "$dir/libkesh_pattern_25.so" -Wl,-soname,libkesh_pattern_25.so \
    -Wl,--version-script,"$dir/standin.map" "$dir/standin.c" || fail "stand-in library does not build"
  echo "$dir/libkesh_pattern_25.so"
}

root=$(fresh_root hostlib)
install_into "$root" libkesh-pattern-host
[ -f "$root/usr/lib/$triplet/kesh_pattern_host/libkesh_pattern_25.so" ] || fail "host library not in its private folder"
listed=$(in_root "$root" 'ldconfig -p | grep libkesh_pattern_25 || true')
[ -z "$listed" ] || fail "the system's loader knows the host library: $listed"
pass "host library alone: private folder, unknown to the system's loader"

root=$(fresh_root dev)
install_into "$root" libkesh-pattern-host libkesh-pattern-dev
pc=$root/usr/lib/$triplet/pkgconfig/kesh_pattern.pc
[ -f "$root/usr/include/kesh/kesh_pattern.h" ] || fail "header not installed"
[ -f "$root/usr/lib/$triplet/cmake/KeshPattern/KeshPatternConfig.cmake" ] || fail "CMake package not installed"
grep -q "^libdir=.*/kesh_pattern_host\$" "$pc" || fail "kesh_pattern.pc does not point at the private folder: $(cat "$pc")"
pass "development files beside the host library"

root=$(fresh_root tools)
install_into "$root" libkesh-pattern-host kesh-player
out=$(in_root "$root" 'kesh_player -t 0' 2>&1) || fail "kesh_player -t 0 exits $?: $out"
[ "$(tail -n 1 <<<"$out")" = "Test pattern passed!!!" ] || fail "kesh_player -t 0 did not pass: $out"
linked=$(in_root "$root" 'ldd /usr/libexec/kesh_player/kesh_player' || true)
grep -q 'libkesh_pattern_25.so => not found' <<<"$linked" ||
  fail "the player proper finds a library of its own, not through the system's loader"
pass "$arch: kesh_player -t 0 passes against the host library, without LD_LIBRARY_PATH"

standin=$(make_standin)
cp "$standin" "$root/usr/lib/$triplet/"
in_root "$root" ldconfig
resolved=$(in_root "$root" 'readlink -f "$(ldd /usr/libexec/kesh_player/kesh_player | awk "/libkesh_pattern_25/ {print \$3}")"')
[ "$resolved" = "/usr/lib/$triplet/libkesh_pattern_25.so" ] || fail "the loader resolves '$resolved'"
status=0
out=$(in_root "$root" 'KESH_EMU_TRACE=stderr kesh_player -t 0' 2>&1) || status=$?
grep -q '^stand-in vendor library loaded$' <<<"$out" || fail "kesh_player did not load the stand-in: $out"
if grep -q '^keshCreatePlayer' <<<"$out"; then fail "the host library ran (it traced a call): $out"; fi
[ "$status" -eq 1 ] || fail "kesh_player against the refusing stand-in exits $status, not 1: $out"
echo "$out" | sed 's/^/    /'
pass "$arch: with a vendor library in /usr/lib/$triplet, kesh_player loads it, not the host library"
