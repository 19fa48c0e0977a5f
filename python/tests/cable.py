"""A virtual serial cable: two pseudo-terminals joined back to back, as a USB-UART cable
joins a PC and a device. Each end has a path that a program opens like a serial port;
both slave ends stay open here, so a program that closes its end does not hang the
cable up. Run as a script it prints the two paths and relays until its standard input
closes (the benchmark keeps it in a process of its own)."""

import os
import select
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


if __name__ == "__main__":
    cable = Cable()
    print(*cable.ends, flush=True)
    sys.stdin.read()
    cable.close()
