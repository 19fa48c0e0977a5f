"""The example scripts, run to completion against simulated devices."""

import os
import re
import subprocess
import sys

import pytest

EXAMPLES = os.path.join(os.environ.get("VEK_SOURCE_DIR", "."), "examples")


def run(script, *args):
    return subprocess.run([sys.executable, os.path.join(EXAMPLES, script), *args],
                          capture_output=True, text=True, timeout=120)


def test_measurement_loop():
    result = run("measurement_loop.py", "--start=-1", "--stop=1", "--step=0.5")
    assert result.returncode == 0, result.stderr
    lines = result.stdout.splitlines()
    assert re.fullmatch(r"EqV2 band CF/7 at 4000 Hz on /dev/pts/\d+", lines[0])
    assert [line.split() for line in lines[2:-1]] == [
        ["1", "-1", "-1"], ["2", "-0.5", "-0.5"], ["3", "0", "0"], ["4", "0.5", "0.5"],
        ["5", "1", "1"]]
    assert lines[-1] == "OK: every value read back as set"


@pytest.mark.parametrize("args", [(), ("--simulated=2",)])
def test_production_line(args):
    result = run("production_line.py", *args)
    assert result.returncode == 0, result.stderr
    lines = result.stdout.splitlines()
    assert len(lines) == (2 if args else 3)
    for line in lines:
        assert re.fullmatch(r"/dev/pts/\d+: OK: 3 values set, the device matches", line)


def test_production_line_reports_a_refused_document_once_per_device(tmp_path):
    document = tmp_path / "loud.json"
    document.write_text('{"format": "vek-tuning/1", "settings": {"Gain": {"master": 60}}}')
    result = run("production_line.py", str(document), "--simulated=2")
    assert (result.returncode, result.stderr) == (1, "")
    lines = result.stdout.splitlines()
    assert len(lines) == 2
    for line in lines:
        assert re.fullmatch(r"/dev/pts/\d+: Gain\.master: Gain SetMaster masterGain 60 is outside "
                            r"-60 to 12 dB \(profile default\)", line)
