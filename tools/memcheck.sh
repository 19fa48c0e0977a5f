#!/usr/bin/env bash
# Runs the daemon under valgrind's memcheck through start, a request of every feature
# and an orderly stop, once per equaliser mode. Fails on any memory error, on any
# byte still allocated at exit, or when the daemon does not end with status 0.
# Usage: tools/memcheck.sh [BUILD_DIR]   (default: build, a non-sanitizer build)
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:-build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# vek_master starts whatever --launch names, so valgrind goes in a wrapper.
cat > "$work/daemon" <<WRAPPER
#!/bin/sh
exec valgrind --tool=memcheck --leak-check=full --show-leak-kinds=all \
    --errors-for-leak-kinds=all --error-exitcode=99 --log-file="$work/valgrind.%p" \
    "$PWD/$build/vek_tuner" "\$@"
WRAPPER
chmod +x "$work/daemon"

run() {
    local name=$1
    shift
    echo "--- memcheck: $name"
    rm -f "$work"/valgrind.*
    # Answers arrive slowly under valgrind: a generous timeout for the greeting too.
    "$build/vek_master" --timeout=30000 --launch="$work/daemon" --log="$work/daemon.log" \
        --script=- -- "$@" > "$work/master.out" || {
        cat "$work/master.out" "$work/daemon.log" "$work"/valgrind.* >&2
        return 1
    }
    cat "$work"/valgrind.* | grep -E "ERROR SUMMARY|in use at exit|All heap blocks"
    grep -q "ERROR SUMMARY: 0 errors" "$work"/valgrind.* &&
        grep -q "All heap blocks were freed" "$work"/valgrind.* || {
        cat "$work"/valgrind.* >&2
        return 1
    }
}

# EqV2 mode, with Reverb: the tour covers Common, Gain, EqV2, Hfe, Vb and Speaker.
{ cat tools/tour.vek; printf '%s\n' "Reverb GetEnable" "Reverb SetMode 3" "Reverb GetMode"; } |
    run "tour, EqV2 and Reverb" --reverb
# Fixed-band Eq mode.
printf '%s\n' "Eq GetEnable" "Eq SetEnable 1" "Eq GetBandCount" "Eq SetBandConfig CF 7 2 1000 -3.5 0.707 0 1" \
    "Eq GetBandConfig CF 7" | run "Eq" --eqMode=1
echo "memcheck: clean"
