# The host example compiled as one file with the flags pkg-config gives for the installed prefix.
source "$(dirname "$0")/common.sh"
work="$HX_WORK/pkg_config_host"
work_dir "$work"
export PKG_CONFIG_PATH="$HX_PREFIX/$HX_LIBDIR/pkgconfig"
[ "$(pkg-config --modversion hxSimulationAnalysis)" = "3.0.0" ] || fail "pkg-config gives the wrong version"
cp "$HX_SOURCE_DIR/examples/host/pendulum_host.cpp" "$work/"
# shellcheck disable=SC2046,SC2086
g++ -std=c++17 $HX_HOST_FLAGS "$work/pendulum_host.cpp" $(pkg-config --cflags --libs hxSimulationAnalysis) \
  -o "$work/pendulum_host"
LD_LIBRARY_PATH="$HX_PREFIX/$HX_LIBDIR" "$work/pendulum_host" "$work/out/pendulum"
check_recording "$work/out/pendulum"
