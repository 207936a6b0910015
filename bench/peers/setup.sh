#!/usr/bin/env bash
# Installs the libraries the peer benchmark measures against. They are needed by
# nothing else: the tool, the host library and the tests build without them, and
# CMake builds the peer benchmark only when all of them are found.
set -euo pipefail
need=()
for pkg in libopencv-dev libdnnl-dev libgemmlowp-dev; do
  dpkg -s "$pkg" >/dev/null 2>&1 || need+=("$pkg")
done
if [ ${#need[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
