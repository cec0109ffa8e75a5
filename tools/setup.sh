#!/usr/bin/env bash
# Installs the Debian packages needed to build, run and test the project.
set -euo pipefail
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends \
  build-essential cmake git tar \
  qtbase5-dev libqt5opengl5-dev \
  libboost-dev libboost-thread-dev \
  libgl1-mesa-dev libglu1-mesa-dev libgl1-mesa-dri \
  libassimp-dev assimp-testmodels \
  libgtest-dev libbenchmark-dev \
  xvfb xauth >/dev/null
