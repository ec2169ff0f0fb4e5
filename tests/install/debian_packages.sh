# Builds the Debian packages from a build of their own (Release, prefix /usr), checks them with
# lintian and their dependencies, unpacks them into a scratch root (never installing them on
# this machine) and builds and runs examples/host, the tools and the Python package against that root.
source "$(dirname "$0")/common.sh"
work="$HX_WORK/debian_packages"
work_dir "$work"
step "building the packages"
cmake -S "$HX_SOURCE_DIR" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DHX_INSTALL=ON -DHX_BUILD_TESTS=OFF -DHX_BUILD_BENCHMARKS=OFF -DHX_BUILD_EXAMPLES=OFF \
  -DHX_BUILD_TOOLS="$HX_TOOLS" -DHX_BUILD_MUJOCO="$HX_MUJOCO" -DHX_BUILD_HDF5="$HX_HDF5" \
  -DHX_WARNINGS_AS_ERRORS="${HX_WARNINGS_AS_ERRORS:-OFF}" >/dev/null
cmake --build "$work/build" >/dev/null
(cd "$work/build" && cpack -G DEB >/dev/null)

arch=$(dpkg --print-architecture)
runtime="$work/build/libhxsimulationanalysis3_3.0.0_$arch.deb"
dev="$work/build/libhxsimulationanalysis-dev_3.0.0_$arch.deb"
mujoco="$work/build/libhxsimulationmujoco3_3.0.0_$arch.deb"
hdf5="$work/build/libhxsimulationhdf5-3_3.0.0_$arch.deb"
tools="$work/build/hxsimulationanalysis-tools_3.0.0_$arch.deb"
pydeb="$work/build/python3-hxsim_3.0.0_all.deb"
packages=("$runtime" "$dev")
[ "$HX_MUJOCO" = 1 ] && packages+=("$mujoco")
[ "$HX_HDF5" = 1 ] && packages+=("$hdf5")
[ "$HX_TOOLS" = 1 ] && [ "$HX_MUJOCO" = 1 ] && packages+=("$tools")
[ "$HX_TOOLS" = 1 ] && packages+=("$pydeb")
for deb in "${packages[@]}"; do
  [ -f "$deb" ] || fail "no package $(basename "$deb"); built: $(ls "$work/build"/*.deb)"
done

# lintian: no error on any package (its warnings and notes are printed for the record).
step "lintian"
lintian --fail-on error --no-tag-display-limit "${packages[@]}" || fail "lintian reports errors"

# Dependencies: computed from the binaries, exact between the packages, MuJoCo and HDF5 only where
# needed.
depends() { dpkg-deb -f "$1" Depends; }
depends "$runtime" | grep -q "libxml2" || fail "the runtime package does not depend on libxml2"
if depends "$runtime" | grep -qi mujoco; then fail "the runtime package depends on MuJoCo"; fi
if depends "$runtime" | grep -qi hdf5; then fail "the runtime package depends on HDF5"; fi
depends "$dev" | grep -qF "libhxsimulationanalysis3 (= 3.0.0)" || fail "the -dev package does not depend on the runtime"
if [ "$HX_MUJOCO" = 1 ]; then
  depends "$mujoco" | grep -q "libmujoco" || fail "the engine package does not depend on MuJoCo: $(depends "$mujoco")"
fi
if [ "$HX_HDF5" = 1 ]; then
  depends "$hdf5" | grep -q "libhdf5" || fail "the HDF5 writer's package does not depend on HDF5: $(depends "$hdf5")"
  depends "$hdf5" | grep -qF "libhxsimulationanalysis3 (= 3.0.0)" || fail "the HDF5 writer's package does not depend on the runtime"
fi
if [ "$HX_TOOLS" = 1 ] && [ "$HX_MUJOCO" = 1 ]; then
  depends "$tools" | grep -qF "libhxsimulationmujoco3 (= 3.0.0)" || fail "the tools package does not depend on the engine"
  depends "$tools" | grep -qF "libhxsimulationhdf5-3 (= 3.0.0)" || fail "the tools package does not depend on the HDF5 writer"
fi
if [ "$HX_TOOLS" = 1 ]; then
  [ "$(dpkg-deb -f "$pydeb" Architecture)" = all ] || fail "the Python package is not Architecture: all"
  [ "$(depends "$pydeb")" = "python3, python3-numpy, python3-pandas, python3-matplotlib, python3-yaml, python3-jinja2" ] ||
    fail "the Python package depends on: $(depends "$pydeb")"
  [ "$(dpkg-deb -f "$pydeb" Suggests)" = "python3-h5py, python3-distributed, slurm-client" ] ||
    fail "the Python package suggests: $(dpkg-deb -f "$pydeb" Suggests)"
fi
for deb in "${packages[@]}"; do echo "$(basename "$deb"): Depends: $(depends "$deb")"; done

# Unpacked into a scratch root, the packages serve a host with find_package alone.
step "a host built against the unpacked packages"
root="$work/root"
for deb in "${packages[@]}"; do dpkg-deb -x "$deb" "$root"; done
build_host "$work/host-src" "$work/host-build" "$root/usr"
"$work/host-build/pendulum_host" "$work/out/pendulum"
check_recording "$work/out/pendulum"
if [ "$HX_HDF5" = 1 ]; then
  cmake -S "$HX_SOURCE_DIR/tests/install/hdf5_host" -B "$work/hdf5-host-build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >/dev/null
  cmake --build "$work/hdf5-host-build" >/dev/null
  LD_LIBRARY_PATH="$(dirname "$(find "$root" -name 'libhxSimulationHdf5.so.3')")" \
    "$work/hdf5-host-build/hdf5_host" "$work/out/hdf5" >/dev/null
fi

# The -dev package serves a host without the engine's package: the engine's targets are not loaded.
if [ "$HX_MUJOCO" = 1 ]; then
  step "a host built against the library packages alone"
  bare="$work/root-without-engine"
  for deb in "$runtime" "$dev"; do dpkg-deb -x "$deb" "$bare"; done
  build_host "$work/host-src" "$work/host-build-without-engine" "$bare/usr"
  "$work/host-build-without-engine/pendulum_host" "$work/out-without-engine/pendulum" >/dev/null
  check_recording "$work/out-without-engine/pendulum"
fi

# The packaged tools record and read back, with the libraries of the root.
if [ "$HX_TOOLS" = 1 ] && [ "$HX_MUJOCO" = 1 ]; then
  step "the packaged tools"
  libdir=$(dirname "$(find "$root" -name 'libhxSimulationAnalysis.so.3')")
  LD_LIBRARY_PATH="$libdir" "$root/usr/bin/hxrecord" --quiet --duration 0.5 \
    --model "$root/usr/share/hxSimulationAnalysis/examples/models/two_arms_table.xml" --output "$work/rec/run"
  LD_LIBRARY_PATH="$libdir" "$root/usr/bin/hxmrd" --header "$work/rec/run.mrd" >/dev/null
  info=$(LD_LIBRARY_PATH="$libdir" "$root/usr/bin/hxinfo" --json "$work/rec/run.json")
  [[ "$info" == *'"status": "finished"'* ]] || fail "the packaged hxinfo does not read the packaged hxrecord's manifest"
  check_recording "$work/rec/run"
fi

# The packaged Python package imports from the root (outside the source tree), its hxplot runs
# and draws the packaged tools' recording, and its hxsweep runs the packaged example sweep.
if [ "$HX_TOOLS" = 1 ]; then
  step "the packaged Python package"
  (cd "$work" && PYTHONPATH="$root/usr/lib/python3/dist-packages" PYTHONDONTWRITEBYTECODE=1 "$python" -c \
    'import sys, hxsim; assert hxsim.__file__.startswith(sys.argv[1]), hxsim.__file__' "$root/") ||
    fail "hxsim does not import from the unpacked package"
  PYTHONDONTWRITEBYTECODE=1 "$root/usr/bin/hxplot" --help >/dev/null || fail "the packaged hxplot does not run"
  PYTHONDONTWRITEBYTECODE=1 "$root/usr/bin/hxsweep" --help >/dev/null || fail "the packaged hxsweep does not run"
  if [ "$HX_MUJOCO" = 1 ]; then
    PYTHONDONTWRITEBYTECODE=1 MPLBACKEND=Agg "$root/usr/bin/hxplot" \
      "$root/usr/share/hxSimulationAnalysis/examples/config/display_description.xml" "$work/rec/run.csv" \
      -o "$work/rec/run.png"
    [ -s "$work/rec/run.png" ] || fail "the packaged hxplot drew no plot"
    # The packaged example sweep, with the packaged hxrecord beside hxsweep: 24 runs and one invalid case.
    status=0
    LD_LIBRARY_PATH="$libdir" PYTHONDONTWRITEBYTECODE=1 "$root/usr/bin/hxsweep" run --quiet --jobs 2 \
      "$root/usr/share/hxSimulationAnalysis/examples/sweep/arm_sweep.yaml" --out "$work/sweep" || status=$?
    [ "$status" = 1 ] || fail "the packaged hxsweep ran the example sweep with status $status (expected 1)"
    summary=$(PYTHONDONTWRITEBYTECODE=1 "$root/usr/bin/hxsweep" summary "$work/sweep" | tail -n 1)
    [[ "$summary" == "25 runs (24 finished, 1 failed)"* ]] || fail "the packaged example sweep gives: $summary"
  fi
fi
