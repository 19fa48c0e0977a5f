"""A virtual serial cable: two pseudo-terminals joined back to back, as a USB-UART cable
joins a PC and a device. Each end has a path that a program opens like a serial port;
both slave ends stay open here, so a program that closes its end does not hang the
cable up. Run as a script it prints the two paths and relays until its standard input
closes (the benchmark keeps it in a process of its own)."""

import os
import select
import signal
import subprocess
import sys
import termios
import threading
import tty


class Cable:
    def __init__(self):
        self._masters, self._slaves, self.ends = [], [], []
        for _ in range(2):
            master, slave = os.openpty()
            tty.setraw(slave, termios.TCSANOW)
            self._masters.append(master)
            self._slaves.append(slave)
            self.ends.append(os.ttyname(slave))
        self._stop = os.pipe()
        self._thread = threading.Thread(target=self._relay, daemon=True)
        self._thread.start()

    def _relay(self):
        peer = {self._masters[0]: self._masters[1], self._masters[1]: self._masters[0]}
        while True:
            ready = select.select(self._masters + [self._stop[0]], [], [])[0]
            if self._stop[0] in ready:
                return
            for fd in ready:
                try:
                    data = os.read(fd, 65536)
                except OSError:
                    continue
                while data:
                    data = data[os.write(peer[fd], data):]

    def close(self):
        os.write(self._stop[1], b"x")
        self._thread.join()
        for fd in self._masters + self._slaves + list(self._stop):
            os.close(fd)


class CabledDaemon:
    """A daemon at the device end of a cable of its own, its output appended to log; the
    other end (path) is the PC's. The cable stays, so the daemon can be stopped and
    started again on the same line, as a device restarts while the PC keeps its end open."""

    def __init__(self, daemon, args=(), log=os.devnull):
        self.cable = Cable()
        self.command = [str(daemon), f"--device={self.cable.ends[0]}", *args]
        self.log = log
        self.process = None
        self.start()

    @property
    def path(self):
        return self.cable.ends[1]

    def start(self):
        with open(self.log, "ab") as log:
            self.process = subprocess.Popen(self.command, stdout=log, stderr=subprocess.STDOUT)

    def stop(self):
        """SIGUSR1, and the daemon's exit status."""
        self.process.send_signal(signal.SIGUSR1)
        status = self.process.wait(timeout=10)
        self.process = None
        return status

    def close(self):
        status = self.stop() if self.process else 0
        self.cable.close()
        return status


if __name__ == "__main__":
    cable = Cable()
    print(*cable.ends, flush=True)
    sys.stdin.read()
    cable.close()
