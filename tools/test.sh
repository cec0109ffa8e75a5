#!/usr/bin/env bash
# Builds and runs the whole test suite: every test under a private X server (GL tests
# need one, Mesa's software renderer draws), then the tests without GL again under
# AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."

# Tests on, whatever an earlier configuration of build/ (the demo's, say) chose.
BUILD_DIR=build tools/build.sh -DQEL_BUILD_TESTS=ON -DQEL_BUILD_BENCH=ON
# A test that fails is run once more before it counts: software GL under a virtual X
# server on a loaded machine now and then loses its display connection.
# Fewer tests run than the suite holds fails the script (tools/counted_ctest.sh).
(cd build && xvfb-run -a -s "-screen 0 1600x1200x24" ../tools/counted_ctest.sh --output-on-failure -j2 --repeat until-pass:2)

if [ "${QEL_SKIP_SANITIZERS:-0}" != "1" ]; then
  BUILD_DIR=build-sanitize BUILD_TYPE=Debug tools/build.sh -DQEL_BUILD_TESTS=ON -DQEL_SANITIZE=ON -DQEL_BUILD_BENCH=OFF
  (cd build-sanitize && ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 \
     UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
     ../tools/counted_ctest.sh -L nogl --output-on-failure -j2)
fi
