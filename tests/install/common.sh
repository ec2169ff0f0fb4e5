# Shared by the install checks: strict mode, messages, and the recording check.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
python=/usr/bin/python3

fail() { echo "FAILED: $*" >&2; exit 1; }
step() { echo "-- $*"; }

# fresh_dir DIR: an empty directory DIR.
fresh_dir() { rm -rf "$1"; mkdir -p "$1"; }

# work_dir DIR: an empty directory DIR for this check alone, removed when the check ends, passed
# or failed (kept when HX_KEEP_CHECKS=1, to look into a failure), and with it the checks' common
# directory once no other check uses it. Programs the check starts keep their temporary files in it
# too (lintian leaves some behind).
work_dir() {
  fresh_dir "$1"
  mkdir -p "$1/tmp"
  export TMPDIR="$1/tmp"
  if [ "${HX_KEEP_CHECKS:-0}" != 1 ]; then
    # shellcheck disable=SC2064
    trap "rm -rf '$1'; rmdir '$HX_WORK' 2>/dev/null || true" EXIT
  fi
}

# check_recording BASE: the five files a host recorded, read back as users read them.
check_recording() { "$python" "$here/check_recording.py" "$1"; }

# host_cmake_flags: the extra flags a host built against this build's libraries needs.
host_cmake_flags() {
  if [ -n "${HX_HOST_FLAGS:-}" ]; then
    echo "-DCMAKE_CXX_FLAGS=$HX_HOST_FLAGS" "-DCMAKE_EXE_LINKER_FLAGS=$HX_HOST_FLAGS"
  fi
}

# build_host SOURCE BUILD PREFIX [FLAGS...]: configures and builds a copy of examples/host
# against the package installed under PREFIX, with nothing but CMAKE_PREFIX_PATH to find it.
build_host() {
  local source="$1" build="$2" prefix="$3"
  shift 3
  fresh_dir "$source"
  cp -r "$HX_SOURCE_DIR/examples/host/." "$source/"
  cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@" >/dev/null
  cmake --build "$build" >/dev/null
  # The host saw the installed copy only, never the source tree.
  if grep -rqF "$HX_SOURCE_DIR/" "$build/compile_commands.json" "$build/build.ninja" "$build/CMakeCache.txt"; then
    fail "the host's build refers to the source tree $HX_SOURCE_DIR"
  fi
}
