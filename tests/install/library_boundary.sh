# What a host gets when it links the library: versioned shared objects that need neither MuJoCo
# nor HDF5, and none of the project's own build flags, whether installed or added as a
# subdirectory.
source "$(dirname "$0")/common.sh"
lib="$HX_PREFIX/$HX_LIBDIR"

# Each library carries its SONAME, and the host's libraries need no MuJoCo and no HDF5.
for name in hxXmlFramework hxSimulation hxSimulationAnalysis; do
  dynamic=$(readelf -d "$lib/lib$name.so.3")
  grep -qF "Library soname: [lib$name.so.3]" <<<"$dynamic" || fail "lib$name.so.3 has no SONAME lib$name.so.3"
  if grep -qi "NEEDED.*mujoco" <<<"$dynamic"; then fail "lib$name.so.3 needs MuJoCo"; fi
  if grep -qi "NEEDED.*hdf5" <<<"$dynamic"; then fail "lib$name.so.3 needs HDF5"; fi
  [ "$(readlink "$lib/lib$name.so")" = "lib$name.so.3" ] || fail "lib$name.so does not link to lib$name.so.3"
done
if [ "$HX_MUJOCO" = 1 ]; then
  readelf -d "$lib/libhxSimulationMujoco.so.3" | grep -q "NEEDED.*libmujoco" \
    || fail "the engine's library does not need MuJoCo"
fi
if [ "$HX_HDF5" = 1 ]; then
  dynamic=$(readelf -d "$lib/libhxSimulationHdf5.so.3")
  grep -qF "Library soname: [libhxSimulationHdf5.so.3]" <<<"$dynamic" || fail "libhxSimulationHdf5.so.3 has no SONAME"
  grep -q "NEEDED.*libhdf5" <<<"$dynamic" || fail "the HDF5 writer's library does not need HDF5"
  # A host linking hx::analysis alone is given no HDF5 (nor the HDF5 writer's library).
  if grep -n "hdf5" "$lib/cmake/hxSimulationAnalysis/hxSimulationAnalysisTargets.cmake"; then
    fail "hx::analysis passes HDF5 on to its hosts"
  fi
fi

# The exported package and the pkg-config files pass on no project flag.
flags='-Werror|-pedantic|-fsanitize|-Wall|-Wextra|-Wshadow'
if grep -nE -- "$flags" "$lib"/cmake/hxSimulationAnalysis/*.cmake "$lib"/pkgconfig/*.pc; then
  fail "the installed package passes on the project's build flags"
fi

# A consumer added beside the source tree with add_subdirectory, with -Werror and the
# sanitizers on for the project, compiles with none of them and without the repository root
# on its include path.
work="$HX_WORK/library_boundary"
work_dir "$work"
cmake -S "$HX_SOURCE_DIR/tests/install/consumer" -B "$work/build" -G Ninja \
  -DHX_LIBRARY_SOURCE_DIR="$HX_SOURCE_DIR" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
"$python" - "$work/build/compile_commands.json" "$HX_SOURCE_DIR" <<'PY'
import json, shlex, sys
commands, source_root = json.load(open(sys.argv[1])), sys.argv[2].rstrip("/")
consumer = [c for c in commands if c["file"].endswith("consumer.cpp")]
library = [c for c in commands if c["file"].endswith("HxSystemStoredData.cpp")]
assert consumer and library, "compile commands of the consumer and of the library expected"
words = shlex.split(consumer[0]["command"])
leaked = [w for w in words if w.startswith(("-Werror", "-pedantic", "-fsanitize", "-Wall", "-Wextra", "-Wshadow"))]
assert not leaked, f"the consumer inherits the project's flags {leaked}"
includes = [w[2:] for w in words if w.startswith("-I")] + [words[i + 1] for i, w in enumerate(words) if w == "-isystem"]
assert source_root not in [i.rstrip("/") for i in includes], f"the consumer's include path holds the source root: {includes}"
# The project's own targets keep their flags: the check above is not vacuous.
own = shlex.split(library[0]["command"])
assert "-Werror" in own and any(w.startswith("-fsanitize") for w in own), "the library's own flags are missing"
PY
step "library boundary holds"
