#!/usr/bin/env bash
# Runs README's first command, word for word, as a new user on a fresh Debian 12
# machine would: in a copy of a debootstrapped root that has nothing but Debian's
# minimal base, on a copy of the committed tree. Prints how long it took. Needs
# root and debootstrap (not run by ctest).
# Usage: tests/packaging/readme_chroot_test.sh BASE_ROOT
#   BASE_ROOT  a debootstrapped Debian 12 (minbase) root to copy; made if missing
set -euo pipefail
base=$1
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
root=$(mktemp -d)
cleanup() {
  umount "$root/proc" "$root/dev/pts" "$root/dev" 2>/dev/null || true
  rm -rf "$root"
}
trap cleanup EXIT

if [ ! -x "$base/bin/sh" ]; then
  debootstrap --variant=minbase bookworm "$base" http://deb.debian.org/debian >/dev/null
fi
cp -a "$base/." "$root/"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mount -t proc proc "$root/proc"
mount --bind /dev "$root/dev"
mount --bind /dev/pts "$root/dev/pts"
mkdir -p "$root/home/user/kesh_player"
git -C "$source_dir" archive HEAD | tar -x -C "$root/home/user/kesh_player"

# The first command line of README's first shell block.
command=$(awk '/^```sh/ {block = 1; next} block && !/^#/ {print; exit}' "$source_dir/README.md")
echo "README's first command: $command"
start=$(date +%s)
status=0
chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/home/user \
  sh -c "cd /home/user/kesh_player && $command" >"$root/readme.log" 2>&1 || status=$?
seconds=$(( $(date +%s) - start ))
tail -n 8 "$root/readme.log"
echo "status $status after ${seconds} s"
[ "$status" -eq 0 ] && [ "$(tail -n 1 "$root/readme.log")" = "Test pattern passed!!!" ]
