#!/usr/bin/env bash
# Builds qel and runs the bundled sample: in a window when a display is at hand, otherwise
# offscreen, saving the picture to demo.png.
set -euo pipefail
cd "$(dirname "$0")/.."
# Only the host and what it loads: the cache's options stay as the test script left them.
BUILD_DIR=build BUILD_TARGETS=qel tools/build.sh
if [ -n "${DISPLAY:-}" ] && [ -z "${CI:-}" ] && [ "${QEL_DEMO_OFFSCREEN:-0}" != "1" ]; then
  exec build/bin/qel --run samples/demo.qel
fi
build/bin/qel --offscreen --run samples/demo.qel --size 800x600 --screenshot demo.png --dump-scene demo.json
echo "saved demo.png (and the scene as demo.json)"
