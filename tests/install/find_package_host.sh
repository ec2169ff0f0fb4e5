# examples/host, configured outside the tree against the installed prefix with find_package
# only, records its pendulum through all five writers.
source "$(dirname "$0")/common.sh"
work="$HX_WORK/find_package_host"
fresh_dir "$work"
# shellcheck disable=SC2046
build_host "$work/src" "$work/build" "$HX_PREFIX" $(host_cmake_flags)
"$work/build/pendulum_host" "$work/out/pendulum"
check_recording "$work/out/pendulum"
