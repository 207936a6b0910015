#!/usr/bin/env bash
# Unpacks Debian packages of another architecture into a folder of their own, for a
# cross build to compile and link against, without installing them: a multiarch
# install would bring that architecture's C library beside the cross toolchain's,
# and the programs under test would then load the wrong one under qemu-user.
# Usage: scripts/fetch-target-packages.sh ARCH DEST PACKAGE...   (as root, or through sudo)
# Does nothing when DEST already holds every package's files (DEST/.fetched lists them).
set -euo pipefail
arch=$1 dest=$2
shift 2
wanted="$arch $*"
[ "$(cat "$dest/.fetched" 2>/dev/null)" = "$wanted" ] && exit 0

as_root=""
[ "$(id -u)" -eq 0 ] || as_root=sudo
added=""
if ! dpkg --print-foreign-architectures | grep -qx "$arch"; then
  $as_root dpkg --add-architecture "$arch"
  added=yes
fi
download=$(mktemp -d)
$as_root chown _apt "$download" 2>/dev/null || true  # apt downloads as its own user
cleanup() {
  rm -rf "$download"
  # Only the package lists knew the architecture: nothing of it was installed.
  if [ -n "$added" ]; then
    $as_root dpkg --remove-architecture "$arch" && $as_root apt-get update -qq || true
  fi
}
trap cleanup EXIT
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq ||
  echo "apt-get update reported errors; downloading from the lists there are"
(cd "$download" && $as_root apt-get download -qq "${@/%/:$arch}")
mkdir -p "$dest"
for deb in "$download"/*.deb; do
  dpkg-deb -x "$deb" "$dest"
done
echo "$wanted" >"$dest/.fetched"
