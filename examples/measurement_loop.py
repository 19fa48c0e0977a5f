#!/usr/bin/env python3
"""A measurement loop: steps one value of one equaliser band over a range (value3 of
EqV2 band CF/7 from -12 to 12 in steps of 3 by default), reads each value back, plays a
sine pattern at the band's frequency for the measurement, and prints one table row per
step. The band is put back as it was at the end.

Against a simulated device (vektuner.launch()) unless --device names a serial line:

    PYTHONPATH=build/python examples/measurement_loop.py
    examples/measurement_loop.py --device=/dev/ttyUSB0 --channel=CF --band=7 --start=-6 --stop=6 --step=1

Exit status 0 when every value read back as set, 1 when one did not."""

import argparse
import contextlib
import sys

import vektuner


def steps(start, stop, step):
    value = start
    while value <= stop + 1e-9:
        yield round(value, 6)
        value += step


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--device", help="serial line (default: a simulated device)")
    parser.add_argument("--channel", default="CF", choices=vektuner.CHANNELS)
    parser.add_argument("--band", type=int, default=7)
    parser.add_argument("--field", default="value3", help="the band value to step")
    parser.add_argument("--start", type=float, default=-12)
    parser.add_argument("--stop", type=float, default=12)
    parser.add_argument("--step", type=float, default=3)
    args = parser.parse_args()
    if args.step <= 0:
        parser.error("--step must be above 0")

    with contextlib.ExitStack() as stack:
        link = stack.enter_context(vektuner.Link(args.device) if args.device
                                   else vektuner.launch())
        eq = link.eqv2
        before = eq.band(args.channel, args.band)
        # The band is put back as it was, whatever happens in the loop.
        stack.callback(eq.set_band, args.channel, args.band, before)
        frequency = before["value2"]
        print(f"EqV2 band {args.channel}/{args.band} at {frequency} Hz on {link.device}")
        print(f"{'step':>4}  {args.field:>8}  {'read back':>9}")
        mismatches = 0
        for number, value in enumerate(steps(args.start, args.stop, args.step), 1):
            eq.set_band(args.channel, args.band, **{args.field: value})
            got = eq.band(args.channel, args.band)[args.field]
            link.speaker.set_sine_pattern(args.channel, frequency)
            # A real loop reads its analyser here.
            mismatches += got != value
            mark = "" if got == value else "  (did not take)"
            print(f"{number:>4}  {value:>8g}  {got:>9g}{mark}")
    print("OK: every value read back as set" if not mismatches
          else f"NG: {mismatches} values did not take")
    return 1 if mismatches else 0


if __name__ == "__main__":
    sys.exit(main())
