#!/usr/bin/env bash
# Checks that every C++ file of the tree is laid out as .clang-format says; exits 1 and names the
# files that are not. With --fix, rewrites them instead.
set -euo pipefail
cd "$(dirname "$0")/.."

formatter=${CLANG_FORMAT:-clang-format}
if ! command -v "$formatter" >/dev/null; then
  echo "check-format: $formatter not found (scripts/install-deps.sh installs it)" >&2
  exit 2
fi

if [ -d .git ] && command -v git >/dev/null; then
  mapfile -t files < <(git ls-files -co --exclude-standard -- '*.cpp' '*.h' | while read -r f; do [ -f "$f" ] && echo "$f"; done)
else
  mapfile -t files < <(find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print | sed 's|^\./||')
fi

if [ "${1:-}" = "--fix" ]; then
  "$formatter" -i --style=file "${files[@]}"
  exit 0
fi

bad=()
for f in "${files[@]}"; do
  if ! "$formatter" --style=file --dry-run --Werror "$f" >/dev/null 2>&1; then bad+=("$f"); fi
done
if [ "${#bad[@]}" -gt 0 ]; then
  echo "check-format: ${#bad[@]} file(s) not laid out as .clang-format says (fix: scripts/check-format.sh --fix):" >&2
  printf '  %s\n' "${bad[@]}" >&2
  exit 1
fi
echo "check-format: ${#files[@]} files laid out as .clang-format says"
