#!/usr/bin/env python3
"""Checks a built Debian package the way a device or a PC gets it: extracted with
dpkg-deb into a scratch folder, its programs run from there, its systemd unit, udev
rule and maintainer scripts tried against that tree. One subcommand per aspect; exit 0
when it holds, 1 with the reason when not, 77 when this machine cannot try it."""

import argparse
import os
import re
import select
import shutil
import signal
import struct
import subprocess
import glob
import sys
import tempfile
import time

SKIP = 77
TUNER_FILES = [
    "/usr/bin/vek_tuner",
    "/lib/systemd/system/vek_tuner@.service",
    "/lib/udev/rules.d/70-vek-tuner.rules",
    "/etc/default/vek_tuner",
    "/usr/share/doc/vek-tuner/examples/vek_tuner-platform.conf",
    "/usr/share/man/man8/vek_tuner.8.gz",
]
MASTER_FILES = [
    "/usr/bin/vek_master",
    "/usr/share/man/man1/vek_master.1.gz",
    "/usr/share/bash-completion/completions/vek_master",
]
# ELF e_machine of each Debian architecture we build for.
ELF_MACHINE = {"amd64": 62, "armhf": 40, "arm64": 183}
# Kept on purpose; every other lintian warning or error fails the check.
#   maintainer-script-calls-systemctl: device images often lack the helpers lintian
#     asks for; the scripts call systemctl only where systemd runs.
#   systemd-service-file-refers-to-unusual-wantedby-target: an enabled instance is
#     wanted by its serial line's device unit, which is the point of the template.
LINTIAN_KEPT = [
    "maintainer-script-calls-systemctl",
    "systemd-service-file-refers-to-unusual-wantedby-target",
]

GREETING = b"HELLO!\n"
REQUEST = b"AS:7:0:Gain:GetMasterRequest:0:OK:\n"
RESPONSE = b"AS:1:0:Gain:GetMasterResponse:0:OK:<-12>:\n"


class Failure(Exception):
    pass


def check(condition, message):
    if not condition:
        raise Failure(message)


def run(cmd, **kwargs):
    return subprocess.run(cmd, capture_output=True, text=True, **kwargs)


def extract(deb, root):
    result = run(["dpkg-deb", "-x", deb, root])
    check(result.returncode == 0, f"dpkg-deb -x {deb}: {result.stderr.strip()}")
    return root


def field(deb, name):
    return run(["dpkg-deb", "--field", deb, name]).stdout.strip()


def in_namespace(mounts, cmd, env=None):
    """Runs cmd (a shell line) in a private mount namespace after the given
    (source, target) bind mounts; a source of None mounts an empty tmpfs. Nothing
    it does to those paths reaches this machine."""
    mount = shutil.which("mount")
    lines = []
    for source, target in mounts:
        if source is None:
            lines.append(f"{mount} -t tmpfs tmpfs '{target}'")
        else:
            lines.append(f"{mount} --bind '{source}' '{target}'")
    script = " && ".join(lines + [cmd])
    return run([shutil.which("unshare"), "-m", "--propagation", "private", "/bin/sh", "-c",
                script], env=env)


def namespaces_work():
    return run(["unshare", "-m", "--propagation", "private", "true"]).returncode == 0


# --- contents ----------------------------------------------------------------------


def elf_machine(path):
    with open(path, "rb") as f:
        header = f.read(20)
    check(header[:4] == b"\x7fELF", f"{path} is not an ELF file")
    little = header[5] == 1
    return struct.unpack("<H" if little else ">H", header[18:20])[0]


def cmd_contents(args):
    package = field(args.deb, "Package")
    arch = field(args.deb, "Architecture")
    depends = field(args.deb, "Depends")
    print(f"{package} {field(args.deb, 'Version')} {arch}, "
          f"{os.path.getsize(args.deb)} bytes, installed {field(args.deb, 'Installed-Size')} KiB")
    print(f"Depends: {depends}")
    check(field(args.deb, "Version") == args.version, f"Version is not {args.version}")
    check(arch == args.arch, f"Architecture {arch}, expected {args.arch}")
    names = [re.split(r"[\s(]", d.strip())[0] for d in depends.split(",") if d.strip()]
    for wanted in ("libc6", "libstdc++6"):
        check(wanted in names, f"Depends lacks {wanted}")
    check(not [n for n in names if n.endswith("-cross")], "Depends names a cross package")
    with tempfile.TemporaryDirectory() as scratch:
        root = extract(args.deb, os.path.join(scratch, "root"))
        files = TUNER_FILES if package == "vek-tuner" else MASTER_FILES
        for path in files + [f"/usr/share/doc/{package}/copyright",
                             f"/usr/share/doc/{package}/changelog.gz"]:
            check(os.path.isfile(root + path), f"{path} missing")
        binary = root + files[0]
        check(elf_machine(binary) == ELF_MACHINE[args.arch],
              f"{files[0]} is not built for {args.arch}")
        check(b".symtab" not in open(binary, "rb").read(), f"{files[0]} is not stripped")
        if package == "vek-tuner":
            control = os.path.join(scratch, "control")
            run(["dpkg-deb", "-e", args.deb, control])
            with open(os.path.join(control, "conffiles")) as f:
                check(f.read().split() == ["/etc/default/vek_tuner"],
                      "conffiles must list /etc/default/vek_tuner")
        else:
            # Where Wireshark looks for Lua plugins of every version (tshark -G folders).
            check(glob.glob(root + "/usr/lib/*/wireshark/plugins/vek_tuner.lua"),
                  "the dissector /usr/lib/<triple>/wireshark/plugins/vek_tuner.lua is missing")


# --- running the extracted programs --------------------------------------------------


def read_until(fd, wanted, timeout):
    data = b""
    deadline = time.monotonic() + timeout
    while wanted not in data:
        left = deadline - time.monotonic()
        if left <= 0 or not select.select([fd], [], [], left)[0]:
            break
        data += os.read(fd, 4096)
    return data


def cmd_daemon(args):
    """The extracted daemon on a pseudo-terminal: greeting, one request, orderly stop."""
    with tempfile.TemporaryDirectory() as scratch:
        root = extract(args.deb, os.path.join(scratch, "root"))
        master, slave = os.openpty()
        log_path = os.path.join(scratch, "daemon.log")
        cmd = args.emulator + [root + "/usr/bin/vek_tuner", f"--device={os.ttyname(slave)}"]
        with open(log_path, "wb") as log:
            daemon = subprocess.Popen(cmd, stdout=log, stderr=subprocess.STDOUT)
        try:
            greeting = read_until(master, GREETING, 20)
            check(greeting == GREETING, f"greeting {greeting!r}")
            os.write(master, REQUEST)
            answer = read_until(master, b"\n", 10)
            check(answer == RESPONSE, f"answer {answer!r}, expected {RESPONSE!r}")
            daemon.send_signal(signal.SIGUSR1)
            status = daemon.wait(timeout=10)
        finally:
            if daemon.poll() is None:
                daemon.kill()
                daemon.wait()
            os.close(master)
            os.close(slave)
        with open(log_path, errors="replace") as log:
            lines = log.read().splitlines()
        print("\n".join(lines))
        check(status == 0, f"exit status {status} after SIGUSR1")
        check(lines[0] == "[AST][INF]Starting vek_tuner." and
              lines[-1] == "[AST][INF]Ending vek_tuner.", "start or end line missing")


def cmd_master(args):
    """The extracted vek_master launching the extracted daemon for one request."""
    with tempfile.TemporaryDirectory() as scratch:
        root = os.path.join(scratch, "root")
        extract(args.tuner, root)
        extract(args.master, root)
        log = os.path.join(scratch, "daemon.log")
        result = run([root + "/usr/bin/vek_master", f"--launch={root}/usr/bin/vek_tuner",
                      f"--log={log}", "Gain", "GetMaster"], timeout=60)
        print(result.stdout + result.stderr)
        check(result.returncode == 0, f"vek_master exited with {result.returncode}")
        check(result.stdout == "masterGain=-12\nOK\n", "unexpected answer")
        check("daemon exited with status 0" in result.stderr, "no orderly stop reported")
        with open(log) as f:
            check("\n+SEND-HELLO!\n-SEND\n" in f.read(), "no greeting in the daemon's log")


PYTHON_TRY = """
import os, sys, vektuner
print(vektuner.__file__, vektuner.default_daemon())
assert vektuner.__file__.startswith(sys.argv[1]), "imported from elsewhere"
with vektuner.launch(sys.argv[2], log=sys.argv[3]) as link:
    print("gain.master", link.gain.master)
"""


def cmd_python(args):
    """The extracted Python package: its files, its module built for this machine and
    stripped, a Depends on the Python it was built for, and, with the extracted daemon,
    one request from Python."""
    depends = field(args.master, "Depends")
    check(re.search(r"python3 \(>= 3\.\d+~\), python3 \(<< 3\.\d+\)", depends),
          f"Depends does not bound python3: {depends}")
    with tempfile.TemporaryDirectory() as scratch:
        root = os.path.join(scratch, "root")
        extract(args.tuner, root)
        extract(args.master, root)
        package = root + args.site + "/vektuner"
        names = sorted(os.listdir(package))
        print(f"{args.site}/vektuner: {' '.join(names)}")
        for wanted in ("__init__.py", "__init__.pyi", "py.typed", "_config.py"):
            check(wanted in names, f"{wanted} missing")
        check("__pycache__" not in names, "__pycache__ installed")
        modules = [n for n in names if n.startswith("_vektuner.") and n.endswith(".so")]
        check(len(modules) == 1, "no extension module")
        module = os.path.join(package, modules[0])
        check(b".symtab" not in open(module, "rb").read(), f"{modules[0]} is not stripped")
        log = os.path.join(scratch, "daemon.log")
        env = dict(os.environ, PYTHONPATH=root + args.site, PYTHONDONTWRITEBYTECODE="1")
        result = run([args.python, "-c", PYTHON_TRY, root + args.site,
                      root + "/usr/bin/vek_tuner", log], env=env, timeout=60)
        print(result.stdout + result.stderr)
        check(result.returncode == 0, "the package did not run")
        check(result.stdout.splitlines()[-1] == "gain.master -12.0", "unexpected answer")
        check(" /usr/bin/vek_tuner\n" in result.stdout, "default daemon is not /usr/bin/vek_tuner")


# --- systemd unit, udev rule, maintainer scripts --------------------------------------


# The unit's sandbox, as systemd-analyze security scores it (0 safe to 10 exposed).
EXPOSURE_LIMIT = 3.0


def verify_instances(root, what):
    for instance in ("ttyUSB0", "ttyS1"):
        unit = f"vek_tuner@{instance}.service"
        result = run(["systemd-analyze", "verify", f"--root={root}", unit])
        out = (result.stdout + result.stderr).strip()
        print(f"{unit}{what}: status {result.returncode}{', ' + out if out else ''}")
        check(result.returncode == 0 and not out, f"{unit}{what} does not verify")


def cmd_unit(args):
    """systemd-analyze verify on an instance, with the extracted tree as root, alone and
    with every line of the example drop-in taken; and its exposure score. The machine's
    own units are copied in first so that the instance's default dependencies
    (sysinit.target and the like) resolve; the package's files win."""
    with tempfile.TemporaryDirectory() as scratch:
        root = os.path.join(scratch, "root")
        shutil.copytree("/lib/systemd/system", root + "/lib/systemd/system", symlinks=True)
        extract(args.deb, root)
        verify_instances(root, "")
        result = run(["systemd-analyze", "security", "--offline=true", f"--root={root}",
                      "--no-pager", "vek_tuner@ttyUSB0.service"])
        score = re.search(r"Overall exposure level for \S+: ([0-9.]+)", result.stdout)
        if score is None:
            print(f"no exposure score (systemd-analyze security --offline needs systemd 252): "
                  f"{(result.stdout + result.stderr).strip()[-200:]}")
        else:
            print(f"exposure {score.group(1)} (at most {EXPOSURE_LIMIT})")
            check(float(score.group(1)) <= EXPOSURE_LIMIT,
                  f"the unit's exposure is {score.group(1)}, over {EXPOSURE_LIMIT}")
        example = root + "/usr/share/doc/vek-tuner/examples/vek_tuner-platform.conf"
        dropins = root + "/etc/systemd/system/vek_tuner@.service.d"
        os.makedirs(dropins)
        with open(example) as source, open(dropins + "/platform.conf", "w") as taken:
            taken.write(re.sub(r"^#(?=[A-Z])", "", source.read(), flags=re.M))
        verify_instances(root, " with the example drop-in")


# A synthetic sysfs: USB devices with a tty below their first interface, as the
# kernel shows a USB-to-UART bridge.
BRIDGES = [
    # tty, idVendor, idProduct, serial, wanted: (instance, links) or None
    ("ttyUSB0", "0403", "6001", "A10K1234",
     ("vek_tuner@ttyUSB0.service", ["/dev/vek-link", "/dev/vek-link-A10K1234"])),
    ("ttyUSB1", "067b", "2303", "PL0001", None),
    ("ttyUSB2", "0403", "6015", None, ("vek_tuner@ttyUSB2.service", ["/dev/vek-link"])),
    ("ttyUSB3", "0403", "6014", "FTH00042",
     ("vek_tuner@ttyUSB3.service", ["/dev/vek-link", "/dev/vek-link-FTH00042"])),
]


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as f:
        f.write(text)


def subsystem_link(sysfs, device, target):
    os.symlink(os.path.relpath(os.path.join(sysfs, target), device),
               os.path.join(device, "subsystem"))


def make_sysfs(sysfs):
    for d in ("bus/usb", "bus/usb-serial", "class/tty"):
        os.makedirs(os.path.join(sysfs, d), exist_ok=True)
    for n, (tty, vendor, product, serial, _) in enumerate(BRIDGES):
        usb = os.path.join(sysfs, f"devices/pci0000:00/0000:00:14.0/usb1/1-{n + 1}")
        write(usb + "/idVendor", vendor + "\n")
        write(usb + "/idProduct", product + "\n")
        if serial:
            write(usb + "/serial", serial + "\n")
        write(usb + "/uevent", f"DEVTYPE=usb_device\nPRODUCT={vendor}/{product}/600\n")
        subsystem_link(sysfs, usb, "bus/usb")
        interface = f"{usb}/1-{n + 1}:1.0"
        write(interface + "/uevent", "DEVTYPE=usb_interface\n")
        subsystem_link(sysfs, interface, "bus/usb")
        port = f"{interface}/{tty}"
        write(port + "/uevent", "")
        subsystem_link(sysfs, port, "bus/usb-serial")
        node = f"{port}/tty/{tty}"
        write(node + "/uevent", f"MAJOR=188\nMINOR={n}\nDEVNAME={tty}\n")
        write(node + "/dev", f"188:{n}\n")
        subsystem_link(sysfs, node, "class/tty")
        os.symlink(os.path.relpath(node, os.path.join(sysfs, "class/tty")),
                   os.path.join(sysfs, "class/tty", tty))


def cmd_udev(args):
    """udevadm test with the package's rules alone, on synthetic FT232 and other
    bridges; /sys, /dev and /run are replaced in a private mount namespace."""
    if not shutil.which("udevadm") or not namespaces_work():
        print("needs udevadm and a private mount namespace (unshare -m, as root)")
        return SKIP
    with tempfile.TemporaryDirectory() as scratch:
        root = extract(args.deb, os.path.join(scratch, "root"))
        sysfs = os.path.join(scratch, "sys")
        make_sysfs(sysfs)
        empty = os.path.join(scratch, "empty")
        os.makedirs(empty)
        mounts = [(sysfs, "/sys"), (None, "/dev"), (None, "/run"),
                  (root + "/lib/udev/rules.d", "/lib/udev/rules.d"),
                  (empty, "/etc/udev/rules.d")]
        # udev refuses a /sys that is not sysfs unless told this is a test.
        env = dict(os.environ, SYSTEMD_DEVICE_VERIFY_SYSFS="0", SYSTEMD_LOG_LEVEL="debug")
        for tty, vendor, product, _, wanted in BRIDGES:
            result = in_namespace(mounts, f"udevadm test --action=add /sys/class/tty/{tty}", env)
            output = result.stdout + result.stderr
            problems = [line for line in output.splitlines()
                        if "70-vek-tuner.rules" in line and
                        re.search(r"invalid|ignor|error|fail", line, re.I)]
            check(result.returncode == 0, f"udevadm test {tty} failed:\n{output}")
            check(not problems, "the rule does not parse:\n" + "\n".join(problems))
            properties = dict(line.split("=", 1) for line in output.split("\n\n")[-1].splitlines()
                              if "=" in line)
            got = properties.get("SYSTEMD_WANTS")
            links = sorted(properties.get("DEVLINKS", "").split())
            print(f"{tty} ({vendor}:{product}): SYSTEMD_WANTS={got} DEVLINKS={' '.join(links)}")
            if wanted:
                check(got == wanted[0], f"{tty}: SYSTEMD_WANTS {got}, expected {wanted[0]}")
                check(links == sorted(wanted[1]), f"{tty}: links {links}")
                check(":systemd:" in properties.get("TAGS", ""), f"{tty}: not tagged for systemd")
            else:
                check(got is None and not links, f"{tty}: matched a bridge that is not an FT232")


# What each script calls where systemd and udev run, by script, action and old version.
SCRIPT_CALLS = {
    ("postinst", "configure", ""): [
        "systemctl daemon-reload", "udevadm control --reload-rules",
        "udevadm trigger --action=add --subsystem-match=tty --sysname-match=ttyUSB*"],
    ("postinst", "configure", "2.0"): [
        "systemctl daemon-reload", "systemctl try-restart vek_tuner@*.service",
        "udevadm control --reload-rules",
        "udevadm trigger --action=add --subsystem-match=tty --sysname-match=ttyUSB*"],
    ("prerm", "remove", ""): ["systemctl stop vek_tuner@*.service"],
    ("prerm", "upgrade", "2.2"): [],
    ("postrm", "remove", ""): ["systemctl daemon-reload", "udevadm control --reload-rules"],
    ("postrm", "purge", ""): ["systemctl daemon-reload", "udevadm control --reload-rules"],
}


RECORDER = """#!/bin/sh
echo "${{0##*/}} $*" >> "{log}"
exit {status}
"""


def cmd_scripts(args):
    """The maintainer scripts with systemd and udev running or not (/run/systemd/system
    and /run/udev in a private /run) and their tools absent, working or failing
    (replaced by recorders): the calls made, and success every time."""
    if not namespaces_work():
        print("needs a private mount namespace (unshare -m, as root)")
        return SKIP
    with tempfile.TemporaryDirectory() as scratch:
        control = os.path.join(scratch, "control")
        check(run(["dpkg-deb", "-e", args.deb, control]).returncode == 0, "dpkg-deb -e failed")
        log = os.path.join(scratch, "calls")
        for tools in ("absent", "working", "failing"):
            bin_dir = os.path.join(scratch, tools)
            os.makedirs(bin_dir)
            if tools != "absent":
                for tool in ("systemctl", "udevadm"):
                    write(os.path.join(bin_dir, tool), RECORDER.format(
                        log=log, status=1 if tools == "failing" else 0))
                    os.chmod(os.path.join(bin_dir, tool), 0o755)
            # Only the recorders: the scripts need nothing else on PATH.
            env = dict(os.environ, PATH=bin_dir)
            for running in (False, True):
                for (script, action, version), wanted in SCRIPT_CALLS.items():
                    if os.path.exists(log):
                        os.remove(log)
                    line = f"{control}/{script} {action} {version}"
                    if running:
                        line = f"/bin/mkdir -p /run/systemd/system /run/udev && {line}"
                    result = in_namespace([(None, "/run")], line, env)
                    case = f"{script} {action} {version} (tools {tools}, running {running})"
                    check(result.returncode == 0, f"{case}: status {result.returncode} "
                                                  f"{result.stderr}")
                    got = open(log).read().splitlines() if os.path.exists(log) else []
                    check(got == (wanted if running and tools != "absent" else []),
                          f"{case}: called {got}")
        print("nothing called where systemd and udev do not run; reloads where they do; "
              "a failing tool fails no script")


def cmd_lintian(args):
    if not shutil.which("lintian"):
        print("needs lintian")
        return SKIP
    result = run(["lintian", "--fail-on", "error,warning",
                  "--suppress-tags", ",".join(LINTIAN_KEPT)] + args.debs)
    # With the kept warnings shown, for the record.
    shown = run(["lintian"] + args.debs)
    print(shown.stdout + shown.stderr)
    check(result.returncode == 0, "lintian: errors or warnings beyond the kept ones")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    sub = parser.add_subparsers(dest="command", required=True)
    p = sub.add_parser("contents")
    p.add_argument("deb")
    p.add_argument("--arch", required=True)
    p.add_argument("--version", required=True)
    p = sub.add_parser("daemon")
    p.add_argument("deb")
    p.add_argument("--emulator", nargs="*", default=[])
    p = sub.add_parser("master")
    p.add_argument("tuner")
    p.add_argument("master")
    p = sub.add_parser("python")
    p.add_argument("tuner")
    p.add_argument("master")
    p.add_argument("--site", required=True)
    p.add_argument("--python", required=True)
    for name in ("unit", "udev", "scripts"):
        sub.add_parser(name).add_argument("deb")
    sub.add_parser("lintian").add_argument("debs", nargs="+")
    args = parser.parse_args()
    try:
        debs = getattr(args, "debs", []) + [getattr(args, name) for name in
                                            ("deb", "tuner", "master") if hasattr(args, name)]
        missing = [deb for deb in debs if not os.path.isfile(deb)]
        # A plain ctest after a build has no packages to check: skipped, unless the
        # package presets ask for them (they run after cpack).
        if missing and not os.environ.get("VEK_REQUIRE_PACKAGES"):
            print(f"skipped: {missing[0]} is not made; cpack --preset <preset> makes it "
                  "(cmake --workflow --preset package makes and checks them)")
            return SKIP
        check(not missing, f"{' '.join(missing)} not found: make it with cpack --preset ...")
        return globals()["cmd_" + args.command](args) or 0
    except Failure as failure:
        print(f"FAILED: {failure}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
