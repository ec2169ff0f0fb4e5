# examples/host, configured outside the tree against the installed prefix with find_package
# only, records its pendulum through all five writers.
source "$(dirname "$0")/common.sh"
work="$HX_WORK/find_package_host"
work_dir "$work"
# shellcheck disable=SC2046
build_host "$work/src" "$work/build" "$HX_PREFIX" $(host_cmake_flags)
"$work/build/pendulum_host" "$work/out/pendulum"
check_recording "$work/out/pendulum"

# A host of the engine, through the package's "mujoco" component, on the example model (installed
# with the tools).
if [ "$HX_MUJOCO" = 1 ]; then
  engine="$work/engine_host"
  # shellcheck disable=SC2046
  cmake -S "$HX_SOURCE_DIR/tests/install/engine_host" -B "$engine" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$HX_PREFIX" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF $(host_cmake_flags) >/dev/null
  cmake --build "$engine" >/dev/null
  model="$HX_PREFIX/share/hxSimulationAnalysis/examples/models/two_arms_table.xml"
  [ "$HX_TOOLS" = 1 ] || model="$HX_SOURCE_DIR/examples/models/two_arms_table.xml"
  "$engine/engine_host" "$model"
fi

# A host of the HDF5 writer, through the package's "hdf5" component, with no HDF5 of its own.
if [ "$HX_HDF5" = 1 ]; then
  hdf5="$work/hdf5_host"
  # shellcheck disable=SC2046
  cmake -S "$HX_SOURCE_DIR/tests/install/hdf5_host" -B "$hdf5" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$HX_PREFIX" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
    $(host_cmake_flags) >/dev/null
  cmake --build "$hdf5" >/dev/null
  if grep -q "hdf5/serial\|-lhdf5" "$hdf5/compile_commands.json" "$hdf5/build.ninja"; then
    fail "the HDF5 writer's host is given HDF5's headers or library"
  fi
  "$hdf5/hdf5_host" "$work/out/hdf5"
fi
