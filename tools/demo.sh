#!/usr/bin/env bash
# Builds qel and runs the bundled sample: in a window when a display is at hand, otherwise
# offscreen, saving the picture to demo.png.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=build tools/build.sh -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_BENCH=OFF
if [ -n "${DISPLAY:-}" ] && [ -z "${CI:-}" ] && [ "${QEL_DEMO_OFFSCREEN:-0}" != "1" ]; then
  exec build/bin/qel --run samples/demo.qel
fi
build/bin/qel --offscreen --run samples/demo.qel --size 800x600 --screenshot demo.png --dump-scene demo.json
echo "saved demo.png (and the scene as demo.json)"
