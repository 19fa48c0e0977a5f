#!/usr/bin/env bash
# Builds the `bench` preset's vek_serve_bench and runs it: vek_master serve against the
# line it serves (see README, Sharing a device). --smoke runs every part briefly.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset bench >/dev/null
cmake --build --preset bench --target vek_serve_bench
build-bench/vek_serve_bench "$@"
