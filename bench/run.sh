#!/usr/bin/env bash
# Builds the `bench` preset, runs every benchmark and prints one table: each figure
# beside its budget, the ratio figure/budget, and pass or FAIL.
#   bench/run.sh          the full run (about 2 minutes, 60 s of it the idle window);
#                         exits 1 when a budget is missed
#   bench/run.sh --smoke  every benchmark briefly (2 s idle window, 1,000 requests);
#                         fails only when something does not run, never on a budget
#   --compare=VEK_TUNER   also measures the real-path figure with another daemon binary
#                         (an earlier commit's build) and prints it beside ours
set -euo pipefail
cd "$(dirname "$0")/.."

smoke=0
compare=""
for arg in "$@"; do
    case "$arg" in
        --smoke) smoke=1 ;;
        --compare=?*) compare=$(realpath "${arg#--compare=}") ;;
        *) echo "usage: bench/run.sh [--smoke] [--compare=VEK_TUNER]" >&2; exit 64 ;;
    esac
done

# VEK_BENCH_BUILD names a build folder configured with VEK_BUILD_BENCH=ON to use
# instead of the bench preset: CI's smoke run takes its default build, whose figures
# (RelWithDebInfo) are not the ones the budgets are for.
build=${VEK_BENCH_BUILD:-build-bench}
if [ -z "${VEK_BENCH_BUILD:-}" ]; then
    cmake --preset bench >/dev/null
fi
cmake --build "$build" --target vek_bench vek_tuner

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
args=(--benchmark_out="$out/bench.json" --benchmark_out_format=json)
if [ $smoke = 1 ]; then
    export VEK_BENCH_SMOKE=1
    args+=(--benchmark_min_time=0.01)
fi
"$build/vek_bench" "${args[@]}"
strip -o "$out/vek_tuner" "$build/vek_tuner"
echo '{"benchmarks": []}' >"$out/other.json"
if [ -n "$compare" ]; then
    VEK_BENCH_DAEMON="$compare" "$build/vek_bench" "${args[@]/bench.json/other.json}" \
        --benchmark_filter=RealPath
fi

python3 - "$out/bench.json" "$(stat -c %s "$out/vek_tuner")" "$smoke" "$out/other.json" "$compare" <<'EOF'
import json, sys

report, stripped, smoke = json.load(open(sys.argv[1])), int(sys.argv[2]), sys.argv[3] == "1"
other, compare = json.load(open(sys.argv[4])), sys.argv[5]
runs = {}
for b in report["benchmarks"]:
    if b.get("aggregate_name", "median") == "median":
        runs[b["run_name"]] = b
for b in other["benchmarks"]:
    runs["other " + b["run_name"]] = b

# label, benchmark run, value from the run, unit, budget, "min" (at least) or "max"
per_request = lambda b: b["cpu_time"] * {"ns": 1e-3, "us": 1, "ms": 1e3, "s": 1e6}[b["time_unit"]]
MB = lambda b: b["bytes_per_second"] / 1e6
rows = [
    ("hub: small request fed whole", "BM_HubSmallWhole", MB, "MB/s", None, None),
    ("hub: small request fed whole", "BM_HubSmallWhole", lambda b: b["frames_per_s"], "frames/s", None, None),
    ("hub: small request byte by byte", "BM_HubSmallByteByByte", MB, "MB/s", None, None),
    ("hub: small request byte by byte", "BM_HubSmallByteByByte", lambda b: b["frames_per_s"], "frames/s", None, None),
    ("hub: 40 KB raw-data frame (1 KiB reads)", "BM_HubRaw40K", MB, "MB/s", None, None),
    ("hub: 40 KB raw-data frame (1 KiB reads)", "BM_HubRaw40K", lambda b: b["frames_per_s"], "frames/s", None, None),
    ("request: Gain GetMaster", "serveOne/GainGetMaster", per_request, "us", None, None),
    ("request: EqV2 SetBandConfig", "serveOne/EqV2SetBandConfig", per_request, "us", None, None),
    ("request: Vb SetChannelConfig", "serveOne/VbSetChannelConfig", per_request, "us", None, None),
    ("request: Common FileContent 40 KB", "serveOne/FileContent40K", per_request, "us", None, None),
    ("request: all-features mix (capacity)", "BM_ServeAllFeatures", MB, "MB/s", 100 * 92160 / 1e6, "min"),
    ("request: all-features mix", "BM_ServeAllFeatures", lambda b: b["items_per_second"], "req/s", None, None),
    ("pty: round trips, 1 outstanding", "BM_RoundTrips/outstanding:1/real_time", lambda b: b["items_per_second"], "/s", None, None),
    ("pty: round trips, 32 outstanding", "BM_RoundTrips/outstanding:32/real_time", lambda b: b["items_per_second"], "/s", None, None),
    ("process: start to greeting (median)", "BM_StartToGreeting/iterations:1/repeats:%d/manual_time" % (5 if smoke else 20),
     lambda b: b["real_time"], "ms", 20, "max"),
    ("process: idle CPU", "BM_IdleCpu/iterations:1/manual_time", lambda b: b["cpu_percent"], "% core", 0.1, "max"),
    ("process: peak RSS, %s requests" % ("1,000" if smoke else "10,000"), "BM_PeakRss/iterations:1/manual_time",
     lambda b: b["peak_rss_kib"] / 1024, "MiB", 4, "max"),
    ("process: anonymous RSS after the run", "BM_PeakRss/iterations:1/manual_time", lambda b: b["rss_anon_kib"], "KiB", None, None),
    ("real path: CPU per served request", "BM_RealPath/iterations:1/manual_time", lambda b: b["cpu_us_per_request"], "us", None, None),
    ("real path: writes per served request", "BM_RealPath/iterations:1/manual_time", lambda b: b["writes_per_request"], "", 5, "max"),
]
if compare:
    rows += [
        ("real path, %s: CPU per served request" % compare, "other BM_RealPath/iterations:1/manual_time", lambda b: b["cpu_us_per_request"], "us", None, None),
        ("real path, %s: writes per served request" % compare, "other BM_RealPath/iterations:1/manual_time", lambda b: b["writes_per_request"], "", None, None),
    ]

def fmt(x):
    return "%.3g" % x if abs(x) < 100 else "{:,.0f}".format(x)

table, missing, missed = [], [], []
for label, run, value, unit, budget, kind in rows:
    b = runs.get(run)
    if b is None or b.get("error_occurred"):
        missing.append(run)
        table.append((label, "did not run", "", "", "FAIL"))
        continue
    v = value(b)
    if budget is None:
        table.append((label, "%s %s" % (fmt(v), unit), "-", "-", "-"))
        continue
    ok = v >= budget if kind == "min" else v <= budget
    if not ok:
        missed.append(label)
    table.append((label, "%s %s" % (fmt(v), unit), "%s %s %s" % (">=" if kind == "min" else "<=", fmt(budget), unit),
                  "%.2f" % (v / budget), "pass" if ok else ("miss" if smoke else "FAIL")))
table.append(("process: stripped vek_tuner", "%s KiB" % fmt(stripped / 1024), "-", "-", "-"))

head = ("figure", "value", "budget", "ratio", "result")
widths = [max(len(r[i]) for r in table + [head]) for i in range(5)]
line = lambda r: "| " + " | ".join(c.ljust(w) for c, w in zip(r, widths)) + " |"
print()
print(line(head))
print("|" + "|".join("-" * (w + 2) for w in widths) + "|")
for r in table:
    print(line(r))
if smoke:
    print("\nsmoke run: short windows, budgets not enforced")
if missing:
    print("did not run: " + ", ".join(missing))
    sys.exit(1)
if missed and not smoke:
    print("budget missed: " + ", ".join(missed))
    sys.exit(1)
EOF
