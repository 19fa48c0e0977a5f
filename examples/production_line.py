#!/usr/bin/env python3
"""A production-line station: brings several devices to one tuning document at once (one
thread per line; the waits on the lines run in parallel) and prints one line per device,
its path first, as vek_master does for several devices.

    examples/production_line.py reference.json --device=/dev/ttyUSB0 --device=/dev/ttyUSB1
    PYTHONPATH=build/python examples/production_line.py --simulated=3

Without devices it launches simulated ones; without a document it makes one: a snapshot
of the first device with the master gain, one channel gain and one band changed.
Exit status 0 when every device matches the document afterwards, 1 when one does not."""

import argparse
import concurrent.futures
import contextlib
import sys

import vektuner


def reference_from(link):
    document = link.snapshot()
    settings = document["settings"]
    settings["Gain"]["master"] = -6
    settings["Gain"]["channel"]["CF"] = -2.5
    settings["EqV2"]["band"]["CF"][7]["value3"] = -3.5
    return document


def tune(link, document):
    """One device: apply, then the line to print."""
    try:
        result = link.apply(document)
    except (vektuner.Error, ValueError, OSError) as e:
        # ValueError: a document the device profile refuses (nothing was sent);
        # OSError: one that cannot be read.
        return False, f"{link.device}: {e}"
    if "error" in result:
        return False, f"{link.device}: {result['error']}"
    if result["failures"]:
        failed = ", ".join(f["setting"] for f in result["failures"])
        return False, f"{link.device}: NG: {len(result['failures'])} values did not take ({failed})"
    return True, f"{link.device}: OK: {len(result['changes'])} values set, the device matches"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("document", nargs="?", help="the tuning (vek_master snapshot's format)")
    parser.add_argument("--device", action="append", default=[], help="a serial line (repeat)")
    parser.add_argument("--simulated", type=int, default=3,
                        help="simulated devices to launch when no --device is given")
    args = parser.parse_args()

    with contextlib.ExitStack() as stack:
        if args.device:
            links = [stack.enter_context(vektuner.Link(path)) for path in args.device]
        else:
            # Launched from this thread: a daemon ends with the thread that started it.
            links = [stack.enter_context(vektuner.launch()) for _ in range(args.simulated)]
        document = args.document or reference_from(links[0])
        with concurrent.futures.ThreadPoolExecutor(len(links)) as pool:
            results = list(pool.map(lambda link: tune(link, document), links))
        for _, line in results:
            print(line)
    return 0 if all(ok for ok, _ in results) else 1


if __name__ == "__main__":
    sys.exit(main())
