#!/usr/bin/env bash
# Installs the libraries the peer benchmark measures against. Nothing else needs them: CMake builds the
# peer benchmark only when all of them are found.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq && apt-get install -y -qq --no-install-recommends libopencv-dev libdnnl-dev libgemmlowp-dev
