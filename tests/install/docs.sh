# The docs target builds the HTML API reference of the public headers with no Doxygen warning.
source "$(dirname "$0")/common.sh"
log="$HX_BUILD_DIR/docs/doxygen-warnings.log"
rm -f "$log"
cmake --build "$HX_BUILD_DIR" --target docs >/dev/null
[ -f "$log" ] || fail "Doxygen wrote no warning log"
if [ -s "$log" ]; then cat "$log"; fail "Doxygen warns ($(wc -l <"$log") lines)"; fi
for page in index.html classHxSystemStoredData.html classHxSystemDataCapture.html classHxSystemSimulation.html; do
  [ -f "$HX_BUILD_DIR/docs/html/$page" ] || fail "the reference has no $page"
done
step "API reference in $HX_BUILD_DIR/docs/html/index.html"
