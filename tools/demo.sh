#!/usr/bin/env bash
# Builds qel and runs the bundled sample script offscreen, saving the picture to demo.png
# where the loaded modules can render the scene.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=build tools/build.sh -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_BENCH=OFF
build/bin/qel --offscreen --list-commands
build/bin/qel --offscreen --run samples/demo.qel --dump-scene demo.json --screenshot demo.png \
  && echo "saved demo.png" || echo "(the scene could not be rendered yet: see the message above)"
