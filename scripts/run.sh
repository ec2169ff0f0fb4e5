#!/usr/bin/env bash
# Installs what is needed, builds hxrecord (and only what it needs) and records the built-in
# default scene. The recording lands in ./hxrecord-out/ (CSV, XML, MRD, MATLAB and Mathematica
# files, the manifest recording.json and the plot recording.png of the example display
# description); arguments, when given, are passed on to hxrecord instead.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh run
cmake --preset release >/dev/null
cmake --build --preset release --target hxrecord
if [ "$#" -eq 0 ]; then set -- --plot examples/config/display_description.xml; fi
build/release/tools/hxrecord "$@"
