#!/usr/bin/env bash
# Builds the Debian packages and the archive: an optimised build with debug symbols
# (split off into the -dbgsym packages), installed below /usr. The files land in
# BUILD_DIR: *_ARCH.deb, *-dbgsym_*_ARCH.ddeb and *_ARCH.tar.gz.
# Usage: scripts/build-packages.sh [BUILD_DIR [extra cmake arguments, e.g. a toolchain]]
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$source_dir/build/package}
shift || true
cmake -S "$source_dir" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_C_FLAGS_RELEASE="-O3 -DNDEBUG -g" -DCMAKE_CXX_FLAGS_RELEASE="-O3 -DNDEBUG -g" \
  -DCMAKE_INSTALL_PREFIX=/usr \
  -DKESH_BUILD_TESTS=OFF -DKESH_BUILD_BENCHMARKS=OFF "$@"
cmake --build "$build" -j "${KESH_JOBS:-2}"
(cd "$build" && cpack)

# CPack's -dbgsym packages list their files under the build's absolute paths and
# carry no copyright; repack each with its md5sums fixed and, as Debian's own have
# it, its doc folder a link to that of the package it depends on.
for ddeb in "$build"/*-dbgsym_*.ddeb; do
  root=$(mktemp -d)
  dpkg-deb -R "$ddeb" "$root"
  package=$(dpkg-deb -f "$ddeb" Package)
  mkdir -p "$root/usr/share/doc"
  ln -s "${package%-dbgsym}" "$root/usr/share/doc/$package"
  (cd "$root" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
  dpkg-deb --root-owner-group -b "$root" "$ddeb" >/dev/null
  rm -rf "$root"
done
ls "$build"/*.deb "$build"/*.ddeb "$build"/*.tar.gz
