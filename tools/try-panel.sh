#!/usr/bin/env bash
# Builds what is needed, starts two simulated devices (one serving Reverb, one with the
# fixed 20-band equaliser), each on a virtual serial cable of its own, and serves them
# with vek_master serve: open http://127.0.0.1:8741/ (or the port given as the first
# argument). Ctrl-C stops the server, the daemons and the cables.
#
# --cable (before the port): the cables are vek_cable at 115200 baud with 16 ms bridge
# timers, so the panel feels as it would on a real USB-to-UART cable.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
repo=$PWD
paced=0
if [[ ${1:-} == --cable ]]; then
    paced=1
    shift
fi
port=${1:-8741}

if ! grep -qE '^VEK_MASTER_SERVE:[A-Z]+=ON$' build/CMakeCache.txt 2>/dev/null; then
    cmake --preset default
fi
cmake --build build --target vek_tuner vek_master vek_cable

work=$(mktemp -d)
pids=()
cables=()
cleanup() {
    for pid in "${pids[@]}"; do
        kill -USR1 "$pid" 2>/dev/null || true
    done
    wait "${pids[@]}" 2>/dev/null || true
    for pid in "${cables[@]}"; do
        kill -TERM "$pid" 2>/dev/null || true
    done
    exec 3>&- 4>&-
    wait
    rm -rf "$work"
}
trap cleanup EXIT

if ((paced)); then
    for n in 0 1; do
        "$repo/build/vek_cable" --baud=115200 --device-end="$work/device$n" \
            --master-end="$work/line$n" >"$work/cable$n.log" &
        cables+=($!)
    done
    for n in 0 1; do
        until [[ -e $work/line$n ]]; do sleep 0.05; done
    done
    device0=$work/device0 line0=$work/line0 device1=$work/device1 line1=$work/line1
    exec 3>/dev/null 4>/dev/null
else
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
fi

"$repo/build/vek_tuner" --device="$device0" --reverb >"$work/daemon0.log" 2>&1 &
pids+=($!)
"$repo/build/vek_tuner" --device="$device1" --eqMode=1 >"$work/daemon1.log" 2>&1 &
pids+=($!)
echo "daemons' logs: $work/daemon0.log, $work/daemon1.log"
echo "open http://127.0.0.1:$port/ in a browser; Ctrl-C ends it all"
"$repo/build/vek_master" serve --device="$line0" --device="$line1" --listen="127.0.0.1:$port" || true
