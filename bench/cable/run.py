#!/usr/bin/env python3
"""vek_master on vek_cable: one request's round trip, snapshot (EqV2 and Eq) and an apply
where every value differs, one request at a time (window 1) and with a window, at 115200
and 921600 baud with 16 ms and 1 ms bridge timers, beside a pseudo-terminal pair. Prints
a Markdown table; the line times count ten bits a byte in the larger direction.

    bench/cable/run.py [BUILD_DIR] [--window=N[,M...]]   (default 8,16,32)
"""

import json
import os
import re
import subprocess
import sys
import tempfile
import time

build = next((a for a in sys.argv[1:] if not a.startswith("--")), "build")
windows = next((a.split("=", 1)[1] for a in sys.argv[1:] if a.startswith("--window=")),
               "8,16,32").split(",")
CABLE = os.path.join(build, "vek_cable")
DAEMON = os.path.join(build, "vek_tuner")
MASTER = os.path.join(build, "vek_master")
STATS = re.compile(r"stats: (\d+) requests, (\d+) bytes sent, (\d+) bytes received, (\d+) ms")


def master(line, *args, stdin=None):
    run = subprocess.run([MASTER, "--device=" + line, "--stats", *args], input=stdin,
                         capture_output=True, text=True, timeout=120)
    found = STATS.search(run.stderr)
    if not found:
        raise RuntimeError(f"vek_master {' '.join(args)}: {run.stderr}")
    return [int(x) for x in found.groups()]


class Rig:
    """A daemon at the device end of a cable (baud 0: no pacing, a pseudo-terminal)."""

    def __init__(self, work, baud, latency, daemon_args=()):
        self.dir = tempfile.mkdtemp(dir=work)
        self.line = os.path.join(self.dir, "pc")
        device = os.path.join(self.dir, "dev")
        self.cable = subprocess.Popen([CABLE, f"--baud={baud}", f"--latency={latency}",
                                       "--device-end=" + device, "--master-end=" + self.line],
                                      stdout=subprocess.DEVNULL)
        while not os.path.exists(self.line):
            time.sleep(0.02)
        self.daemon = subprocess.Popen([DAEMON, "--device=" + device, *daemon_args],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                       env={k: v for k, v in os.environ.items()
                                            if k != "AUDIO_SETTING_SIM"})
        time.sleep(0.5)

    def close(self):
        self.daemon.send_signal(10)  # SIGUSR1
        self.daemon.wait(10)
        self.cable.terminate()
        self.cable.wait(10)


def differing(document):
    """Every value changed a little, within what the profile allows."""
    def change(value, key):
        if isinstance(value, bool):
            return value if key in ("bypass", "enable") else not value
        if isinstance(value, int):
            return value + 10 if key == "value2" else value
        if isinstance(value, float) or isinstance(value, int):
            return value
        return value

    def walk(node, key=""):
        if isinstance(node, dict):
            if "missing" in node:
                return node
            return {k: walk(v, k) for k, v in node.items()}
        if isinstance(node, list):
            return [walk(v, key) for v in node]
        if isinstance(node, float):
            return round(node + 0.5, 3) if key not in ("value4",) else round(node + 0.1, 3)
        return change(node, key)
    settings = {k: v for k, v in document["settings"].items() if k != "Common"}
    settings = walk(settings)
    settings.get("EqV2", {}).pop("bandCount", None)
    settings.get("Gain", {}).pop("fadeBalance", None)
    settings["Gain"]["master"] = document["settings"]["Gain"]["master"] + 1
    return {"format": "vek-tuning/1", "settings": settings}


def wire(stats, baud):
    return max(stats[1], stats[2]) * 10 / baud if baud else 0


def main():
    rows = []
    configs = [(0, 0), (115200, 16), (115200, 1), (921600, 16), (921600, 1)]
    with tempfile.TemporaryDirectory() as work:
        for baud, latency in configs:
            name = "pseudo-terminal" if baud == 0 else f"{baud} baud, {latency} ms bridges"
            rig = Rig(work, baud, latency)
            try:
                trip = master(rig.line, "--script=-", stdin="Gain GetMaster\n" * 20)
                rows.append((name, "one request's round trip", [trip[3] / 20], None))
                snap = os.path.join(rig.dir, "snap.json")
                runs = [master(rig.line, "--window=" + w, "snapshot", "--output=" + snap)
                        for w in ["1"] + windows]
                rows.append((name, "snapshot, EqV2", [r[3] for r in runs], wire(runs[-1], baud)))
                original = json.load(open(snap))
                changed = os.path.join(rig.dir, "changed.json")
                json.dump(differing(original), open(changed, "w"))
                runs = []
                for w in ["1"] + windows:
                    runs.append(master(rig.line, "--window=" + w, "apply", changed))
                    master(rig.line, "apply", snap)
                rows.append((name, f"apply, every value differs ({runs[-1][0]} requests)",
                             [r[3] for r in runs], wire(runs[-1], baud)))
            finally:
                rig.close()
            rig = Rig(work, baud, latency, ["--eqMode=1"])
            try:
                snap = os.path.join(rig.dir, "snap.json")
                runs = [master(rig.line, "--window=" + w, "snapshot", "--output=" + snap)
                        for w in ["1"] + windows]
                rows.append((name, "snapshot, Eq", [r[3] for r in runs], wire(runs[-1], baud)))
            finally:
                rig.close()
    heads = " | ".join(f"window {w}" for w in ["1"] + windows)
    print(f"| line | run | {heads} | wire time | ratios to the wire |")
    print("|---|---|" + "---|" * (len(windows) + 3))
    for name, run, times, wire_s in rows:
        cells = " | ".join(f"{t:.0f} ms" for t in times) + " |" * (len(windows) + 1 - len(times))
        ratio = " / ".join(f"{t / 1000 / wire_s:.2f}x" for t in times[1:]) if wire_s else ""
        wire_text = f"{wire_s * 1000:.0f} ms" if wire_s else ""
        print(f"| {name} | {run} | {cells} | {wire_text} | {ratio} |")


if __name__ == "__main__":
    main()
