#!/usr/bin/env python3
"""Requests per second with one outstanding: from Python (vektuner), through one
`vek_master --script` run, and with one vek_master process per request. Each way once
on the pseudo-terminal of a launched daemon, and once over a virtual cable (two ptys
relayed by a process of their own) where a separate process opens the line by path.

    PYTHONPATH=build/python nice -n 10 /usr/bin/python3 bench/python_requests.py [--requests=N]

Prints a Markdown table, as README shows it."""

import argparse
import os
import signal
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "python", "tests"))

import vektuner  # noqa: E402

BUILD = os.path.dirname(os.path.dirname(os.path.dirname(vektuner.__file__)))
MASTER = os.path.join(BUILD, "vek_master")
DAEMON = vektuner.default_daemon()


def rate(count, seconds):
    return count / seconds if seconds > 0 else float("inf")


def python_requests(link, count, typed):
    start = time.perf_counter()
    for _ in range(count):
        if typed:
            link.gain.master
        else:
            link.request("Gain", "GetMaster")
    return rate(count, time.perf_counter() - start)


def script_run(line_args, count, scratch):
    """vek_master --script with count requests, less a run of one request (start-up,
    line opening and, when launched, the daemon's start and stop)."""
    def timed(n):
        path = os.path.join(scratch, f"script{n}.vek")
        with open(path, "w") as f:
            f.write("Gain GetMaster\n" * n)
        start = time.perf_counter()
        subprocess.run([MASTER, *line_args, f"--script={path}"], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return time.perf_counter() - start
    return rate(count - 1, timed(count) - timed(1))


def process_per_request(device, count):
    start = time.perf_counter()
    for _ in range(count):
        subprocess.run([MASTER, f"--device={device}", "Gain", "GetMaster"], check=True,
                       stdout=subprocess.DEVNULL)
    return rate(count, time.perf_counter() - start)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--requests", type=int, default=5000)
    parser.add_argument("--processes", type=int, default=300,
                        help="requests for the process-per-request runs")
    parser.add_argument("--repeat", type=int, default=3, help="runs of each; the median counts")
    args = parser.parse_args()
    rows = []

    def measure(name, run):
        rows.append((name, statistics.median(run() for _ in range(args.repeat))))

    with tempfile.TemporaryDirectory() as scratch:
        log = os.path.join(scratch, "daemon.log")
        with vektuner.launch(log=log) as link:
            measure("Python request(), launched pty",
                    lambda: python_requests(link, args.requests, False))
            measure("Python link.gain.master, launched pty",
                    lambda: python_requests(link, args.requests, True))
        measure("vek_master --script, launched pty",
                lambda: script_run([f"--launch={DAEMON}", f"--log={log}"], args.requests, scratch))

        cable = subprocess.Popen([sys.executable, os.path.join(HERE, "..", "python", "tests",
                                                               "cable.py")],
                                 stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        device_end, master_end = cable.stdout.readline().split()
        daemon = subprocess.Popen([DAEMON, f"--device={device_end}"],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            time.sleep(0.5)  # its greeting goes to whoever reads the other end first
            with vektuner.Link(master_end) as link:
                measure("Python request(), cable",
                        lambda: python_requests(link, args.requests, False))
            measure("vek_master --script, cable",
                    lambda: script_run([f"--device={master_end}"], args.requests, scratch))
            measure("vek_master per request, cable",
                    lambda: process_per_request(master_end, args.processes))
        finally:
            daemon.send_signal(signal.SIGUSR1)
            daemon.wait(timeout=10)
            cable.stdin.close()
            cable.wait(timeout=10)
    print("| how | requests/s (median of %d) |\n|---|---|" % args.repeat)
    for name, value in rows:
        print(f"| {name} | {value:,.0f} |")


if __name__ == "__main__":
    main()
