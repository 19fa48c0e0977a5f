"""The panel on a device behind vek_cable at 115200 baud with 16 ms bridges, as on a real
USB-to-UART cable: the first page load, with the server's window and with one request
on the line at a time."""

import os
import subprocess
import time

from selenium.webdriver.common.by import By

from conftest import MASTER, TUNER, Page, Server, chromium

CABLE = os.path.join(os.path.dirname(MASTER), "vek_cable")


class PacedDevice:
    """A daemon at the device end of a vek_cable; path is the PC's end."""

    def __init__(self, folder, baud=115200, latency=16):
        self.path = os.path.join(folder, "pc")
        device = os.path.join(folder, "device")
        self.cable = subprocess.Popen([CABLE, f"--baud={baud}", f"--latency={latency}",
                                       f"--device-end={device}", f"--master-end={self.path}"],
                                      stdout=subprocess.DEVNULL)
        deadline = time.monotonic() + 10
        while not os.path.exists(self.path) and time.monotonic() < deadline:
            time.sleep(0.02)
        self.daemon = subprocess.Popen([TUNER, f"--device={device}"],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.STDOUT)

    def close(self):
        self.daemon.send_signal(10)  # SIGUSR1: the daemon's orderly stop
        status = self.daemon.wait(timeout=10)
        self.cable.terminate()
        self.cable.wait(timeout=10)
        return status


def load(tmp_path, window, baud=115200, latency=16):
    """Milliseconds from opening the panel on the Equaliser page until its values show,
    and until every page has its device's values."""
    folder = tmp_path / f"window{window}-{baud}-{latency}"
    folder.mkdir()
    device = PacedDevice(str(folder), baud, latency)
    server = Server([device.path], str(folder / "serve.log"), options=[f"--window={window}"])
    driver = chromium()
    try:
        assert server.await_state(0, "connected"), open(server.log).read()
        page = Page(driver, server.url)
        page.open(0, "equaliser")
        rows = driver.find_elements(By.CSS_SELECTOR, "#band-table tbody tr")
        assert len(rows) == 10
        values = [e.get_attribute("value") for e in rows[0].find_elements(By.TAG_NAME, "input")]
        assert "31" in values, values  # band 0's frequency, read from the device
        return driver.execute_script("return [window.vekPageReady, window.vekPanelReady]")
    finally:
        driver.quit()
        server.close()
        assert device.close() == 0


def test_the_panel_loads_over_a_slow_cable(tmp_path):
    windowed = load(tmp_path, 32)
    alone = load(tmp_path, 1)
    print(f"\npanel at 115200 baud, 16 ms bridges: the Equaliser page in {windowed[0]:.0f} ms, "
          f"every page in {windowed[1]:.0f} ms with the server's window of 32; "
          f"{alone[0]:.0f} ms and {alone[1]:.0f} ms one request at a time")
    assert 0 < windowed[0] <= windowed[1] and 0 < alone[0] <= alone[1]
