#!/usr/bin/env python3
"""Runs the examples of README.md and docs/*.md and compares what they print with the text.

    examples.py SOURCE_DIR BUILD_DIR [PAGE...]

Which blocks run and how their output is written: docs/build.md, "Manual pages,
completion and the examples of these pages". Exit status 0 when every example prints what
its page shows, 1 otherwise, 77 (skipped) when the build lacks a program they need.
"""

import glob
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SKIP = 77
TIMEOUT = 30
FENCE = re.compile(r"^```(.*)$")
PORT = "8741"


def blocks(path):
    """(line, info, text) of every fenced block of a page."""
    found = []
    info = None
    start = 0
    lines = []
    with open(path, encoding="utf-8") as f:
        for number, line in enumerate(f, 1):
            fence = FENCE.match(line.rstrip("\n"))
            if info is None and fence:
                info, start, lines = fence.group(1).strip(), number, []
            elif info is not None and line.rstrip("\n") == "```":
                found.append((start, info, "".join(lines)))
                info = None
            elif info is not None:
                lines.append(line)
    return found


def examples(path):
    """(line, words of the info string, code, expected output or None) to run, and the
    files to write as (line, ["file", NAME], text, None)."""
    found = blocks(path)
    runs = []
    for i, (line, info, text) in enumerate(found):
        words = info.split()
        named = [w[len("file="):] for w in words if w.startswith("file=")]
        if named:
            runs.append((line, ["file", named[0]], text, None))
            continue
        if len(words) < 2 or words[1] != "run":
            continue
        expected = None
        if i + 1 < len(found) and found[i + 1][1] == "output":
            expected = found[i + 1][2]
        runs.append((line, words, text, expected))
    return runs


def pattern(expected):
    """A regular expression for an output block, with its placeholders."""
    parts = []
    for line in expected.splitlines():
        if line == "…":
            parts.append(r"(?:[^\n]*\n)*?")
        else:
            parts.append(".*?".join(re.escape(piece) for piece in line.split("…")) + r"\n")
    # No trailing space on a placeholder line is lost when a page is saved.
    return re.compile("".join(parts) + r"\Z")


class Server:
    """vek_master serve with two simulated daemons on cables of their own."""

    def __init__(self, build, work):
        self.procs = []
        ends = []
        for n, options in enumerate((["--reverb"], [])):
            device, line = f"{work}/.device{n}", f"{work}/.line{n}"
            self.start([f"{build}/vek_cable", "--baud=0", "--latency=0",
                        f"--device-end={device}", f"--master-end={line}"])
            ends.append((device, line, options))
        for device, line, options in ends:
            self.wait_for(line)
            self.start([f"{build}/vek_tuner", f"--device={device}"] + options,
                       stop=signal.SIGUSR1)
        self.serve = self.start([f"{build}/vek_master", "serve", "--listen=127.0.0.1:0"] +
                                [f"--device={line}" for _, line, _ in ends],
                                stdout=subprocess.PIPE)
        self.port = None
        deadline = time.monotonic() + 10
        while self.port is None and time.monotonic() < deadline:
            found = re.search(r"listening on http://127\.0\.0\.1:(\d+)",
                              self.serve.stdout.readline())
            self.port = found and found.group(1)
        # Both devices connected before the first example asks for them.
        connected = 0
        while connected < 2 and time.monotonic() < deadline:
            connected += ": connected (" in self.serve.stdout.readline()
        if self.port is None or connected < 2:
            self.stop()
            raise RuntimeError("vek_master serve did not come up with both devices")

    def start(self, cmd, stop=signal.SIGTERM, stdout=subprocess.DEVNULL):
        proc = subprocess.Popen(cmd, stdout=stdout, stderr=subprocess.DEVNULL, text=True)
        proc.stop_signal = stop
        self.procs.append(proc)
        return proc

    @staticmethod
    def wait_for(path):
        deadline = time.monotonic() + 10
        while not os.path.exists(path) and time.monotonic() < deadline:
            time.sleep(0.02)

    def stop(self):
        # The server first, then the daemons, then their cables.
        for proc in reversed(self.procs):
            if proc.poll() is None:
                proc.send_signal(proc.stop_signal)
                try:
                    proc.wait(timeout=5)
                except subprocess.TimeoutExpired:
                    proc.kill()
                    proc.wait()


def run_page(page, source, build):
    runs = examples(page)
    if not any(words[0] != "file" for _, words, _, _ in runs):
        return 0, 0
    failures = 0
    runs_counted = sum(words[0] != "file" for _, words, _, _ in runs)
    name = os.path.relpath(page, source)
    with tempfile.TemporaryDirectory(prefix="vek-examples-") as work:
        os.symlink(build, f"{work}/build")
        for folder in ("tools", "examples", "python"):
            os.symlink(f"{source}/{folder}", f"{work}/{folder}")
        env = dict(os.environ)
        env.pop("AUDIO_SETTING_SIM", None)
        env["PATH"] = f"{build}:{env.get('PATH', '/usr/bin:/bin')}"
        env["PYTHONPATH"] = f"{build}/python"
        env["PYTHONDONTWRITEBYTECODE"] = "1"
        env["TMPDIR"] = work
        env["LC_ALL"] = "C.UTF-8"
        server = None
        try:
            for line, words, code, expected in runs:
                if words[0] == "file":
                    with open(f"{work}/{words[1]}", "w", encoding="utf-8") as f:
                        f.write(code)
                    continue
                if words[0] == "python" and not glob.glob(f"{build}/python/vektuner/_vektuner*"):
                    print(f"SKIP {name}:{line}: the Python module is not built (it needs "
                          "pybind11-dev and python3-dev)")
                    continue
                if "serve" in words[2:] and server is None:
                    server = Server(build, work)
                if server is not None:
                    code = code.replace(PORT, server.port)
                interpreter = (["/usr/bin/python3", "-c", code] if words[0] == "python"
                               else ["bash", "-e", "-o", "pipefail", "-c", code])
                try:
                    result = subprocess.run(interpreter, cwd=work, env=env, text=True,
                                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                            timeout=TIMEOUT)
                    printed, status = result.stdout, result.returncode
                except subprocess.TimeoutExpired as timeout:
                    printed, status = (timeout.stdout or b"").decode(errors="replace"), "timeout"
                if expected is None and status == 0:
                    continue
                if expected is not None and pattern(expected).match(printed):
                    continue
                failures += 1
                print(f"FAIL {name}:{line} (status {status})\n--- the page shows\n"
                      f"{expected if expected is not None else '(nothing: it must succeed)'}"
                      f"--- it printed\n{printed}---")
        finally:
            if server is not None:
                server.stop()
    return runs_counted, failures


def main():
    if len(sys.argv) < 3:
        print(__doc__)
        return 2
    source, build = (os.path.abspath(p) for p in sys.argv[1:3])
    for program in ("vek_master", "vek_tuner", "vek_cable"):
        if not os.access(f"{build}/{program}", os.X_OK):
            print(f"SKIP: {build}/{program} is not built (build it to run the examples)")
            return SKIP
    if not shutil.which("curl"):
        print("SKIP: no curl here (install curl to run the examples)")
        return SKIP
    pages = sys.argv[3:] or ([f"{source}/README.md"] + sorted(
        f"{source}/docs/{p}" for p in os.listdir(f"{source}/docs") if p.endswith(".md")))
    total = failed = 0
    for page in pages:
        ran, failures = run_page(page, source, build)
        total += ran
        failed += failures
    print(f"{total - failed} of {total} examples print what their pages show")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
