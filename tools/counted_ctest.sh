#!/usr/bin/env bash
# Runs ctest in the current build directory and fails unless it executed every test of the
# manifest that matches the label: a run of no test, or of fewer than the suite holds (a test
# binary that was not built or lists nothing), is a failure, not a pass.
#   tools/counted_ctest.sh [-L LABEL] [more ctest arguments]
set -uo pipefail
label=""
if [ "${1:-}" = "-L" ]; then label=$2; shift 2; fi
manifest=test-manifest.txt
if [ ! -s "$manifest" ]; then
  echo "counted_ctest: no $manifest here: the build was configured without tests" >&2
  exit 1
fi

expected=0
while read -r kind suite_label what; do
  [ -n "$label" ] && [ "$suite_label" != "$label" ] && continue
  if [ "$kind" = plain ]; then
    expected=$((expected + 1))
    continue
  fi
  if [ ! -x "$what" ]; then
    echo "counted_ctest: test binary $what is missing" >&2
    exit 1
  fi
  listed=$("$what" --gtest_list_tests 2>/dev/null | grep -c '^  [^ ]' || true)
  disabled=$("$what" --gtest_list_tests 2>/dev/null | grep -c '^  DISABLED_' || true)
  expected=$((expected + listed - disabled))
done < "$manifest"
if [ "$expected" -eq 0 ]; then
  echo "counted_ctest: the manifest holds no test${label:+ labelled $label}" >&2
  exit 1
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
ctest --no-tests=error ${label:+-L "$label"} "$@" 2>&1 | tee "$log"
status=${PIPESTATUS[0]}
ran=$(sed -n 's/.*tests failed out of \([0-9]\+\).*/\1/p' "$log" | tail -n 1)
echo "counted_ctest: the suite${label:+ labelled $label} holds $expected tests; ctest ran ${ran:-none}"
if [ "${ran:-0}" -ne "$expected" ]; then
  echo "counted_ctest: ran ${ran:-no} tests where the suite holds $expected: failing the run" >&2
  exit 1
fi
exit "$status"
