# Every combination of the HX_BUILD_* options configures, and its build graph is complete
# (ninja's dry run: every target's inputs exist or are built). The full builds of the test
# command (everything on) and of the Debian packages (tests, benchmarks, examples off) compile
# the two ends.
source "$(dirname "$0")/common.sh"
work="$HX_WORK/build_options"
work_dir "$work"
options=(HX_BUILD_MUJOCO HX_BUILD_HDF5 HX_BUILD_TOOLS HX_BUILD_EXAMPLES HX_BUILD_TESTS HX_BUILD_BENCHMARKS)
combinations=$(( 1 << ${#options[@]} ))
failed=()
for (( combination = 0; combination < combinations; combination++ )); do
  arguments=()
  for index in "${!options[@]}"; do
    arguments+=("-D${options[$index]}=$(( (combination >> index) & 1 ))")
  done
  build="$work/$combination"
  if cmake -S "$HX_SOURCE_DIR" -B "$build" -G Ninja -DHX_INSTALL=ON "${arguments[@]}" >"$build.log" 2>&1 \
     && ninja -C "$build" -n >>"$build.log" 2>&1; then
    rm -rf "$build"
  else
    echo "FAILED: ${arguments[*]}" >&2
    tail -n 20 "$build.log" >&2
    failed+=("${arguments[*]}")
  fi
done
[ "${#failed[@]}" = 0 ] || fail "${#failed[@]} of $combinations combinations do not configure"
step "all $combinations combinations of ${options[*]} configure"
