#!/usr/bin/env bash
# Builds the `bench` preset's vek_serve_bench and runs it: vek_master serve against the
# line it serves (see README, Sharing a device). --smoke runs every part briefly.
set -euo pipefail
cd "$(dirname "$0")/../.."
# VEK_BENCH_BUILD: another build folder with the benchmarks, as for bench/run.sh.
build=${VEK_BENCH_BUILD:-build-bench}
if [ -z "${VEK_BENCH_BUILD:-}" ]; then
    cmake --preset bench >/dev/null
fi
cmake --build "$build" --target vek_serve_bench
"$build/vek_serve_bench" "$@"
