#!/usr/bin/env bash
# Configures and builds into BUILD_DIR (default: build). Extra arguments go to cmake;
# BUILD_TARGETS names the targets to build (default: all).
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${BUILD_DIR:-build}
launcher=()
if command -v ccache >/dev/null 2>&1; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
cmake -S . -B "$BUILD_DIR" -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} "${launcher[@]}" "$@" >/dev/null
targets=()
for target in ${BUILD_TARGETS:-}; do targets+=(--target "$target"); done
cmake --build "$BUILD_DIR" -j"$(nproc)" "${targets[@]}"
