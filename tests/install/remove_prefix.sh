# Removes the installed prefix once every check that uses it has run (kept when HX_KEEP_CHECKS=1).
source "$(dirname "$0")/common.sh"
[ "${HX_KEEP_CHECKS:-0}" = 1 ] && exit 0
rm -rf "$HX_PREFIX"
rmdir "$HX_WORK" 2>/dev/null || true
