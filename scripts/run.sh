#!/usr/bin/env bash
# Installs what is needed, builds hxrecord (and only what it needs) and records the built-in
# default scene. The recording lands in ./hxrecord-out/ (CSV, XML, MRD, MATLAB and Mathematica
# files); arguments are passed on to hxrecord.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh run
cmake --preset release >/dev/null
cmake --build --preset release --target hxrecord
build/release/tools/hxrecord "$@"
