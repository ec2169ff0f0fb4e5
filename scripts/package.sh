#!/usr/bin/env bash
# Builds the Debian packages into build/package/: libhxsimulationanalysis3,
# libhxsimulationanalysis-dev, libhxsimulationmujoco3, libhxsimulationhdf5-3,
# hxsimulationanalysis-tools and python3-hxsim.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset package >/dev/null
cmake --build --preset package
(cd build/package && cpack -G DEB)
lintian --fail-on error build/package/*.deb
