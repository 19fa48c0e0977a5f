#!/usr/bin/env bash
# Builds the daemon and vek_master if needed, starts the daemon on a pseudo-terminal
# with the simulated audio platform, and tours every feature with tools/tour.vek.
# Prints what the master sees and, last, how the daemon ended.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ ! -f build/CMakeCache.txt ]]; then
    cmake --preset default
fi
cmake --build build --target vek_tuner vek_master

build/vek_master --launch=build/vek_tuner --script=tools/tour.vek
