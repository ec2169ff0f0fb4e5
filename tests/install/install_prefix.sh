# Installs the build into a fresh prefix that the other checks use, and checks its layout.
source "$(dirname "$0")/common.sh"
fresh_dir "$HX_PREFIX"
cmake --install "$HX_BUILD_DIR" --prefix "$HX_PREFIX" >/dev/null

lib="$HX_PREFIX/$HX_LIBDIR"
expected=(
  "$lib/libhxXmlFramework.so.3.0.0" "$lib/libhxSimulation.so.3.0.0" "$lib/libhxSimulationAnalysis.so.3.0.0"
  "$lib/libhxSimulationAnalysis.so.3" "$lib/libhxSimulationAnalysis.so"
  "$lib/cmake/hxSimulationAnalysis/hxSimulationAnalysisConfig.cmake"
  "$lib/cmake/hxSimulationAnalysis/hxSimulationAnalysisConfigVersion.cmake"
  "$lib/cmake/hxSimulationAnalysis/hxSimulationAnalysisTargets.cmake"
  "$lib/pkgconfig/hxSimulationAnalysis.pc" "$lib/pkgconfig/hxSimulation.pc" "$lib/pkgconfig/hxXmlFramework.pc"
  "$HX_PREFIX/include/hxSimulationAnalysis/framework/HxXmlObject.h"
  "$HX_PREFIX/include/hxSimulationAnalysis/simulation/HxSystemSimulation.h"
  "$HX_PREFIX/include/hxSimulationAnalysis/analysis/storage/HxSystemStoredData.h"
  "$HX_PREFIX/share/hxSimulationAnalysis/examples/host/CMakeLists.txt")
if [ "$HX_MUJOCO" = 1 ]; then
  expected+=("$lib/libhxSimulationMujoco.so.3" "$lib/pkgconfig/hxSimulationMujoco.pc"
    "$HX_PREFIX/include/hxSimulationAnalysis/simulation/mujoco/HxMujocoSimulation.h")
fi
if [ "$HX_HDF5" = 1 ]; then
  expected+=("$lib/libhxSimulationHdf5.so.3" "$lib/pkgconfig/hxSimulationHdf5.pc"
    "$lib/cmake/hxSimulationAnalysis/hxSimulationAnalysisHdf5Targets.cmake"
    "$HX_PREFIX/include/hxSimulationAnalysis/analysis/hdf5/HxHdf5OutputWriter.h")
fi
if [ "$HX_TOOLS" = 1 ]; then
  expected+=("$HX_PREFIX/bin/hxmrd" "$HX_PREFIX/bin/hxrepair" "$HX_PREFIX/bin/hxinfo" "$HX_PREFIX/share/hxSimulationAnalysis/examples/config/default_capture.xml"
    "$HX_PREFIX/bin/hxplot" "$HX_PREFIX/bin/hxsweep" "$HX_PREFIX/lib/python3/dist-packages/hxsim/sweep/__init__.py")
  [ "$HX_MUJOCO" = 1 ] && expected+=("$HX_PREFIX/bin/hxrecord" "$HX_PREFIX/share/hxSimulationAnalysis/examples/models/two_arms_table.xml")
fi
for file in "${expected[@]}"; do
  [ -e "$file" ] || fail "not installed: ${file#"$HX_PREFIX"/}"
done

# Neither the test double nor anything of the engine's or the HDF5 library's internals is installed.
leaked=$(find "$HX_PREFIX" \( -iname '*scripted*' -o -name 'HxMujocoKinematics.h' -o -name 'HxMujocoLayout.h' \
  -o -name 'mujoco.h' -o -name 'HxHdf5Support.h' -o -name 'hdf5.h' -o -name '*.cpp' -a ! -path '*/examples/host/*' \))
[ -z "$leaked" ] || fail "installed but internal: $leaked"

# The installed tools run from the prefix, finding the libraries beside them.
if [ "$HX_TOOLS" = 1 ]; then
  "$HX_PREFIX/bin/hxmrd" --help >/dev/null || fail "installed hxmrd does not run"
  PYTHONDONTWRITEBYTECODE=1 "$HX_PREFIX/bin/hxplot" --help >/dev/null || fail "installed hxplot does not run"
  PYTHONDONTWRITEBYTECODE=1 "$HX_PREFIX/bin/hxsweep" --help >/dev/null || fail "installed hxsweep does not run"
  if [ "$HX_MUJOCO" = 1 ]; then
    out="$HX_WORK/installed-hxrecord"
    work_dir "$out"
    "$HX_PREFIX/bin/hxrecord" --quiet --duration 0.2 --output "$out/rec" || fail "installed hxrecord does not record"
    [ -s "$out/rec.csv" ] || fail "installed hxrecord wrote no CSV"
  fi
fi
step "installed into $HX_PREFIX"
