#!/usr/bin/env bash
# Builds what is needed, starts two simulated devices (one serving Reverb, one with the
# fixed 20-band equaliser), each on a virtual serial cable of its own, and serves them
# with vek_master serve: open http://127.0.0.1:8741/ (or the port given as the first
# argument). Ctrl-C stops the server, the daemons and the cables.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
repo=$PWD
port=${1:-8741}

if [[ ! -f build/CMakeCache.txt ]]; then
    cmake --preset default
fi
cmake --build build --target vek_tuner vek_master

work=$(mktemp -d)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do
        kill -USR1 "$pid" 2>/dev/null || true
    done
    wait "${pids[@]}" 2>/dev/null || true
    exec 3>&- 4>&-
    wait
    rm -rf "$work"
}
trap cleanup EXIT

# A cable relays until its standard input closes: these descriptors hold them open.
for n in 0 1; do
    mkfifo "$work/hold$n"
    python3 python/tests/cable.py <"$work/hold$n" >"$work/ends$n" &
done
exec 3>"$work/hold0" 4>"$work/hold1"
for n in 0 1; do
    until [[ -s $work/ends$n ]]; do sleep 0.05; done
done
read -r device0 line0 <"$work/ends0"
read -r device1 line1 <"$work/ends1"

"$repo/build/vek_tuner" --device="$device0" --reverb >"$work/daemon0.log" 2>&1 &
pids+=($!)
"$repo/build/vek_tuner" --device="$device1" --eqMode=1 >"$work/daemon1.log" 2>&1 &
pids+=($!)
echo "daemons' logs: $work/daemon0.log, $work/daemon1.log"
echo "open http://127.0.0.1:$port/ in a browser; Ctrl-C ends it all"
"$repo/build/vek_master" serve --device="$line0" --device="$line1" --listen="127.0.0.1:$port" || true
