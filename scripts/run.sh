#!/usr/bin/env bash
# Installs what is needed, builds, and records the built-in default scene with hxrecord.
# The recording lands in ./hxrecord-out/ (CSV, XML, MRD, MATLAB and Mathematica files).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default -j "$(nproc)"
if [ -x build/default/tools/hxrecord ]; then
  build/default/tools/hxrecord "$@"
else
  build/default/examples/hx_config_roundtrip
fi
