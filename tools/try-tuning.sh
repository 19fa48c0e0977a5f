#!/usr/bin/env bash
# Builds the daemon and vek_master if needed, starts the daemon on a pseudo-terminal with
# the simulated audio platform and runs the tuning session tools/tuning.vek against it:
# snapshot, change, diff, re-apply, diff again. The documents are written to a scratch
# folder, and the first one is shown at the end.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
repo=$PWD

if [[ ! -f build/CMakeCache.txt ]]; then
    cmake --preset default
fi
cmake --build build --target vek_tuner vek_master

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
# --keep-going: the first diff finds differences (status 1), as it should.
status=0
"$repo/build/vek_master" --launch="$repo/build/vek_tuner" --keep-going \
    --script="$repo/tools/tuning.vek" || status=$?
if [[ $status -ne 1 ]]; then
    echo "unexpected exit status $status" >&2
    exit "$status"
fi
echo
echo "first.json, the first 24 lines of $(wc -l <first.json):"
head -n 24 first.json
