#!/bin/sh
# Installs, with apt-get, what building kesh_player and running all its tests needs
# on Debian 12 (or a later Debian or Ubuntu); further package names given as
# arguments are installed too. Packages already installed are left alone. Runs
# apt-get through sudo when not run as root.
set -eu
packages="cmake ninja-build g++ libgtest-dev libgmock-dev libbenchmark-dev libhwy-dev
nlohmann-json3-dev libtinyxml2-dev libxml2-utils pkg-config file groff-base man-db bsdextrautils valgrind python3 chromium $*"

missing=""
for package in $packages; do
  dpkg -s "$package" >/dev/null 2>&1 || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=""
[ "$(id -u)" -eq 0 ] || as_root=sudo
echo "installing:$missing"
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq ||
  echo "apt-get update reported errors; installing from the lists there are"
# shellcheck disable=SC2086  # a list of package names
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
