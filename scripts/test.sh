#!/usr/bin/env bash
# Installs what is needed, checks the layout of the C++ files, builds with warnings as errors and
# runs every test.
#   scripts/test.sh           the CI build (preset "ci")
#   scripts/test.sh --asan    the same tests under AddressSanitizer + UndefinedBehaviorSanitizer
set -euo pipefail
cd "$(dirname "$0")/.."

preset=ci
if [ "${1:-}" = "--asan" ]; then preset=asan; fi

bash scripts/install-deps.sh
bash scripts/check-format.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -j "$(nproc)"
ctest --preset "$preset"
