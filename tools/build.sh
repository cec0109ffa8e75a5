#!/usr/bin/env bash
# Configures and builds into BUILD_DIR (default: build). Extra arguments go to cmake.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${BUILD_DIR:-build}
cmake -S . -B "$BUILD_DIR" -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} "$@" >/dev/null
cmake --build "$BUILD_DIR" -j"$(nproc)"
