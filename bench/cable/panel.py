#!/usr/bin/env python3
"""The panel opened on its Equaliser page through vek_master serve and vek_cable, in
headless Chromium: milliseconds until that page's values show and until every page's
do, with the server's window of 32 and one request at a time, at 115200 and 921600 baud
with 16 ms and 1 ms bridge timers. Prints a Markdown table (the median of RUNS runs).

    bench/cable/panel.py [BUILD_DIR] [--runs=N]   (default build, 3 runs)
"""

import os
import pathlib
import statistics
import sys
import tempfile

build = os.path.abspath(next((a for a in sys.argv[1:] if not a.startswith("--")), "build"))
runs = int(next((a.split("=", 1)[1] for a in sys.argv[1:] if a.startswith("--runs=")), "3"))
os.environ.setdefault("VEK_TUNER", os.path.join(build, "vek_tuner"))
os.environ.setdefault("VEK_MASTER", os.path.join(build, "vek_master"))
source = os.path.abspath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
os.environ.setdefault("VEK_SOURCE_DIR", source)
sys.path.insert(0, os.path.join(source, "tests", "browser"))

import test_cable  # noqa: E402

print("| line | Equaliser page, window 1 | every page, window 1 | Equaliser page, window 32 "
      "| every page, window 32 |")
print("|---|---|---|---|---|")
for baud in (115200, 921600):
    for latency in (16, 1):
        row = []
        for window in (1, 32):
            times = []
            for _ in range(runs):
                folder = pathlib.Path(tempfile.mkdtemp(prefix="vek-panel-bench-"))
                times.append(test_cable.load(folder, window, baud, latency))
            row += [statistics.median(t[0] for t in times), statistics.median(t[1] for t in times)]
        cells = " | ".join(f"{t:,.0f} ms" for t in row)
        print(f"| {baud} baud, {latency} ms bridges | {cells} |", flush=True)
