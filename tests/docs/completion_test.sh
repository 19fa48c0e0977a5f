#!/bin/bash
# vek_master's bash completion answers a few prefixes as a user pressing Tab would get:
# completion_test.sh COMPLETION_FILE
set -u
script=$1
helpers=/usr/share/bash-completion/bash_completion
if [[ ! -r $helpers ]]; then
    echo "SKIP: no $helpers (install bash-completion to check the completion)"
    exit 77
fi
# shellcheck source=/dev/null
source "$helpers"
# shellcheck source=/dev/null
source "$script"
# Outside a real completion compopt has nothing to set.
compopt() { :; }
failed=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
touch tuning.json dump.pcapng
mkdir scripts
touch scripts/tour.vek

# expect LINE WANT: the candidates for the last word of LINE, sorted, one line.
expect() {
    local line=$1 want=$2 got
    COMP_LINE=$line
    COMP_POINT=${#line}
    read -ra COMP_WORDS <<<"$line"
    [[ $line == *' ' ]] && COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _vek_master vek_master "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
    got=$(printf '%s\n' "${COMPREPLY[@]}" | sort | xargs)
    if [[ $got != "$want" ]]; then
        echo "FAIL: '$line': got '$got', want '$want'"
        failed=1
    fi
}

# Commands and features, then a feature's messages and a message's channel operand.
expect "vek_master s" "serve snapshot"
expect "vek_master Eq" "Eq EqV2"
expect "vek_master EqV2 GetB" "GetBandConfig GetBandCount"
expect "vek_master EqV2 GetBandConfig L" "L1 LF LS"
expect "vek_master Hfe SetChannelConfig LF " ""
expect "vek_master Common FileList G" "Gain"
expect "vek_master curve R" "RF RS"
expect "vek_master trace " "from-log replay show"
# Options, their files and their one value; a command's files.
expect "vek_master --dev" "--device-index= --device= --devices="
expect "vek_master --json --script=scr" "scripts"
expect "vek_master --timing=" "original"
expect "vek_master --window=" ""
expect "vek_master apply t" "tuning.json"
expect "vek_master diff tuning.json d" "device dump.pcapng"
expect "vek_master trace show d" "dump.pcapng"
expect "vek_master --launch=x -- --" ""

((failed == 0)) && echo "completion answers as expected"
exit $failed
