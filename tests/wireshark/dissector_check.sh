#!/bin/sh
# tshark with the dissector (vek_tuner.lua) decodes every message of every feature: one
# request of each (sample_requests.vek) against the flexible equaliser's daemon with
# Reverb, and the fixed equaliser's. Every request and answer must come out with its
# feature, message and named fields, each answer paired with its request; an answer in
# a trace made from a log with no request before it must be marked.
# Usage: dissector_check.sh VEK_MASTER VEK_TUNER DISSECTOR SAMPLE_REQUESTS
set -eu
master=$1 tuner=$2 dissector=$3 samples=$4
if ! command -v tshark > /dev/null 2>&1; then
    echo "tshark is not installed: skipped (Debian: apt install tshark)"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work"  # no personal Wireshark settings or plugins
failed=0
fail() {
    echo "FAIL: $*"
    failed=1
}

printf 'a setting file\n' > "$work/file"
sed "s|FILE|$work/file|" "$samples" | grep -v '^Eq ' > "$work/flexible.vek"
grep '^Eq ' "$samples" > "$work/fixed.vek"
"$master" --launch="$tuner" --log="$work/flexible.log" --trace="$work/flexible.pcapng" \
    --script="$work/flexible.vek" -- --reverb > "$work/flexible.out" 2>&1 ||
    fail "the flexible run: $(tail -3 "$work/flexible.out")"
"$master" --launch="$tuner" --log="$work/fixed.log" --trace="$work/fixed.pcapng" \
    --script="$work/fixed.vek" -- --eqMode=1 > "$work/fixed.out" 2>&1 ||
    fail "the fixed run: $(tail -3 "$work/fixed.out")"

tshark_fields() {
    tshark -X lua_script:"$dissector" -r "$1" -T fields -E separator=' ' \
        -e vek.feature -e vek.message -e vek.status -e vek.no_request -e vek.field 2> /dev/null
}
for run in flexible fixed; do
    tshark_fields "$work/$run.pcapng" > "$work/$run.fields"
    tshark -X lua_script:"$dissector" -r "$work/$run.pcapng" -V > "$work/$run.tree" 2>&1
    grep -n 'Lua Error\|Message unknown\|Malformed' "$work/$run.tree" && fail "$run: not decoded"
    grep -E '(^| |,)field[0-9]+=' "$work/$run.fields" && fail "$run: payload fields without names"
    packets=$("$master" trace show "$work/$run.pcapng" | wc -l)
    decoded=$(wc -l < "$work/$run.fields")
    [ "$packets" = "$decoded" ] || fail "$run: $packets packets, $decoded decoded"
    # An answer that answers no request has vek.no_request set (field 4).
    awk '$4 == "1" || $4 == "True"' "$work/$run.fields" | grep . && fail "$run: answers taken for unrequested"
done
cat "$work/flexible.fields" "$work/fixed.fields" > "$work/all.fields"
grep -v '^#' "$samples" | while read -r feature message rest; do
    [ -n "$feature" ] || continue
    for name in "${message}Request" "${message}Response"; do
        grep -q "^$feature $name " "$work/all.fields" || fail "$feature $name was not decoded"
    done
done > "$work/missing"
if [ -s "$work/missing" ]; then
    cat "$work/missing"
    failed=1
fi
grep -q '^Gain SetChannelRequest OK  channelGain\[0\]=0,channelGain\[1\]=0,channelGain\[2\]=-3,channelGain\[3\]=-3,channelGain\[4\]=1.5,channelGain\[5\]=0$' \
    "$work/all.fields" || fail "SetChannel's fields by name"
grep -q '^    \[Raw data bytes: 15\]$' "$work/flexible.tree" || fail "FileContent's raw data length"

# A log whose answer has no request before it (the log began mid-session).
printf '\n+SEND-AS:9:0:Gain:GetMasterResponse:0:OK:<-3>:\n-SEND\n\n' > "$work/late.log"
"$master" trace from-log "$work/late.log" --output="$work/late.pcapng" > /dev/null
tshark -X lua_script:"$dissector" -r "$work/late.pcapng" 2> /dev/null > "$work/late.list"
grep -q 'Gain GetMasterResponse OK masterGain=-3 \[answers no request\]' "$work/late.list" ||
    fail "the unrequested answer is not marked: $(cat "$work/late.list")"

[ "$failed" = 0 ] && echo "every message of every feature decoded"
exit "$failed"
