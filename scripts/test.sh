#!/usr/bin/env bash
# Installs what is needed, checks the layout of the C++ files, builds with warnings as errors,
# runs every test, then runs the fuzz targets for 30 s each (scripts/fuzz.sh; skipped without clang).
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
if command -v clang++ >/dev/null && [ -f "$(clang++ -print-file-name="libclang_rt.fuzzer-$(uname -m).a")" ]; then
  bash scripts/fuzz.sh --seconds 30
else
  echo "test.sh: fuzzing skipped: clang++ or its libFuzzer runtime (libclang-rt-14-dev) is not installed"
fi
