#!/bin/bash
# The manual pages render without a warning and name every option --help names, and
# vek_master's page every message: pages_test.sh VEK_TUNER VEK_MASTER PAGE_DIR
set -u
tuner=$1 master=$2 pages=$3
if ! command -v man >/dev/null; then
    echo "SKIP: no man here (install man-db to check the manual pages)"
    exit 77
fi
failed=0

# The plain text a reader sees at 80 columns; warnings go to $2.
render() {
    LC_ALL=C MANWIDTH=80 man --warnings -l "$1" 2>"$2" | col -bx
}

# Every --option a text names, once each, sorted.
options() {
    grep -o -- '--[A-Za-z][A-Za-z-]*' | sort -u
}

check() {
    local name=$1 page=$2 help=$3 warnings
    warnings=$(mktemp)
    local text
    text=$(render "$page" "$warnings")
    if [[ -s $warnings ]]; then
        echo "FAIL: $name renders with warnings:"
        cat "$warnings"
        failed=1
    fi
    rm -f "$warnings"
    local missing
    missing=$(comm -3 <(options <<<"$help") <(options <<<"$text"))
    if [[ -n $missing ]]; then
        echo "FAIL: $name and its --help differ in these options (left: --help only):"
        echo "$missing"
        failed=1
    fi
    if [[ $text != *"SYNOPSIS"* || $text != *"OPTIONS"* ]]; then
        echo "FAIL: $name has no SYNOPSIS or OPTIONS section"
        failed=1
    fi
    page_text=$text
}

page_text=
check vek_tuner.8 "$pages/vek_tuner.8" "$("$tuner" --help | grep -v '^\[AST\]\[INF\]Args:')"
master_help=$("$master" --help)
check vek_master.1 "$pages/vek_master.1" "$master_help"
# The catalogue's lines, "  Gain SetMaster masterGain:float", each in the page.
while read -r line; do
    if ! grep -qxF -- "$line" <(sed 's/^ *//' <<<"$page_text"); then
        echo "FAIL: vek_master.1 lacks the message line: $line"
        failed=1
    fi
done < <(sed -n '/^Messages and their ARGs/,/^$/p' <<<"$master_help" | sed '1d;/^$/d;s/^ *//')

((failed == 0)) && echo "pages agree with --help"
exit $failed
