#!/usr/bin/env bash
# Builds the libFuzzer targets of tests/fuzz (preset "fuzz": clang, ASan + UBSan, no MuJoCo) and
# runs each for a while on a copy of its seed corpus, in a temporary directory removed at the end.
# Prints per target the executions, coverage (cov, ft) and corpus size libFuzzer reached; fails
# when a target crashes, leaks, times out or runs out of memory, and keeps that input.
#   scripts/fuzz.sh [--seconds N] [--jobs J] [TARGET...]
#     --seconds N   time per target (default 30)
#     --jobs J      targets run at the same time (default 2)
#     TARGET        capture, writers, display, mrd (default: all)
# Inputs that failed are kept in build/fuzz/failures/<target>/ (or $HX_FUZZ_FAILURES), where
# "build/fuzz/tests/fuzz/hx_fuzz_<target> <file>" replays one.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=30
jobs=2
targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    --seconds) seconds="$2"; shift 2 ;;
    --seconds=*) seconds="${1#*=}"; shift ;;
    --jobs) jobs="$2"; shift 2 ;;
    --jobs=*) jobs="${1#*=}"; shift ;;
    -h|--help) sed -n '2,11p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    -*) echo "fuzz.sh: unknown option $1" >&2; exit 2 ;;
    *) targets+=("$1"); shift ;;
  esac
done
[ "${#targets[@]}" -gt 0 ] || targets=(capture writers display mrd)
[[ "$seconds" =~ ^[1-9][0-9]*$ && "$jobs" =~ ^[1-9][0-9]*$ ]] || { echo "fuzz.sh: bad --seconds or --jobs" >&2; exit 2; }

launcher=()
if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
cmake --preset fuzz "${launcher[@]}" >/dev/null
cmake --build --preset fuzz -j "$(nproc)"

bin=build/fuzz/tests/fuzz
failures="${HX_FUZZ_FAILURES:-$PWD/build/fuzz/failures}"
work="$(mktemp -d "${TMPDIR:-/tmp}/hx-fuzz.XXXXXX")"
trap 'rm -rf "$work"' EXIT

# One target: its corpus copied into the work directory, where libFuzzer adds what it finds.
run() {
  local target="$1" dict=()
  mkdir -p "$work/$target/corpus" "$work/$target/failures"
  cp tests/fuzz/corpus/"$target"/* "$work/$target/corpus/"
  [ "$target" = mrd ] || dict=(-dict=tests/fuzz/xml.dict)
  "$bin/hx_fuzz_$target" "$work/$target/corpus" "${dict[@]}" -max_total_time="$seconds" -rss_limit_mb=2048 \
    -timeout=10 -print_final_stats=1 -artifact_prefix="$work/$target/failures/" >"$work/$target/log" 2>&1
}

status=0
pending=("${targets[@]}")
while [ "${#pending[@]}" -gt 0 ]; do
  batch=("${pending[@]:0:$jobs}")
  pending=("${pending[@]:$jobs}")
  pids=()
  for target in "${batch[@]}"; do
    [ -x "$bin/hx_fuzz_$target" ] || { echo "fuzz.sh: no target '$target'" >&2; exit 2; }
    run "$target" &
    pids+=($!)
  done
  for i in "${!batch[@]}"; do
    target="${batch[$i]}"
    result=0
    wait "${pids[$i]}" || result=$?
    log="$work/$target/log"
    # libFuzzer's last status line: "#<runs> DONE cov: <n> ft: <n> corp: <units>/<size> ...".
    line="$(grep -E '^#[0-9]+' "$log" | tail -n 1 || true)"
    runs="$(sed -nE 's/^#([0-9]+).*/\1/p' <<<"$line")"
    cov="$(sed -nE 's/.* cov: ([0-9]+).*/\1/p' <<<"$line")"
    ft="$(sed -nE 's/.* ft: ([0-9]+).*/\1/p' <<<"$line")"
    corp="$(sed -nE 's/.* corp: ([^ ]+).*/\1/p' <<<"$line")"
    printf 'fuzz %-8s %9s executions  cov: %-5s ft: %-6s corpus: %s\n' "$target" "${runs:-?}" "${cov:-?}" "${ft:-?}" \
      "${corp:-?}"
    if [ "$result" -ne 0 ] || [ -n "$(ls -A "$work/$target/failures")" ]; then
      status=1
      mkdir -p "$failures/$target"
      cp "$work/$target/failures/"* "$failures/$target/" 2>/dev/null || true
      echo "fuzz $target FAILED (exit status $result); inputs kept in $failures/$target:" >&2
      ls -1 "$failures/$target" | sed 's/^/  /' >&2
      # What broke, and where in the project's code (the frames of its sources).
      grep -E "ERROR|invariant broken|SUMMARY|^ +#[0-9]+ .* $PWD/[a-z]" "$log" | head -n 20 | sed 's/^/  /' >&2
    fi
  done
done
exit "$status"
