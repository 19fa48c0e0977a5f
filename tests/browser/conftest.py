"""The rig of the panel's browser tests: two simulated daemons on virtual cables (one
with Reverb, one with the fixed-band equaliser), `vek_master serve` on both, and
headless Chromium driven by Selenium. Paths come from CTest's environment."""

import json
import os
import re
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request

import pytest
from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.support.ui import WebDriverWait

sys.path.insert(0, os.path.join(os.environ["VEK_SOURCE_DIR"], "python", "tests"))
from cable import CabledDaemon  # noqa: E402

TUNER = os.environ["VEK_TUNER"]
MASTER = os.environ["VEK_MASTER"]
SHOTS = os.environ.get("VEK_SCREENSHOT_DIR", tempfile.gettempdir())


class Server:
    """vek_master serve on the given lines, on a free loopback port."""

    def __init__(self, paths, log, token=None, token_file=None, options=()):
        self.log = log
        self.token = token
        extra = [f"--token-file={token_file}"] if token_file else []
        # The journal's reads around each change would show in the traffic the tests
        # count; a test that wants it names where it goes.
        if not any(o.startswith("--state-dir=") for o in options):
            extra.append("--no-journal")
        with open(log, "wb") as out:
            self.process = subprocess.Popen(
                [MASTER, "serve", *[f"--device={p}" for p in paths], "--listen=127.0.0.1:0",
                 "--timeout=700", *extra, *options], stdout=out, stderr=subprocess.STDOUT)
        deadline = time.monotonic() + 20
        self.url = None
        while self.url is None and time.monotonic() < deadline:
            found = re.search(r"listening on (http://\S+)", open(log).read())
            self.url = found.group(1) if found else None
            time.sleep(0.05)
        assert self.url, open(log).read()

    def call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.url + path, data=data, method=method)
        if self.token:
            request.add_header("Authorization", f"Bearer {self.token}")
        try:
            with urllib.request.urlopen(request, timeout=20) as answer:
                return answer.status, answer.headers, answer.read()
        except urllib.error.HTTPError as refused:
            return refused.code, refused.headers, refused.read()

    def json(self, method, path, body=None):
        status, _, data = self.call(method, path, body)
        return status, json.loads(data)

    def await_state(self, index, state, limit=20):
        deadline = time.monotonic() + limit
        while time.monotonic() < deadline:
            if self.json("GET", "/api/devices")[1]["devices"][index]["state"] == state:
                return True
            time.sleep(0.05)
        return False

    def close(self):
        self.process.terminate()
        assert self.process.wait(timeout=20) == 0


class Rig:
    def __init__(self, folder):
        self.folder = folder
        self.logs = [os.path.join(folder, f"daemon{i}.log") for i in range(2)]
        self.daemons = [CabledDaemon(TUNER, ["--reverb"], self.logs[0]),
                        CabledDaemon(TUNER, ["--eqMode=1"], self.logs[1])]
        self.server = Server([d.path for d in self.daemons], os.path.join(folder, "serve.log"))
        for index in range(2):
            assert self.server.await_state(index, "connected"), open(self.server.log).read()

    def received(self, index, pattern):
        """The request frames daemon index logged that match pattern."""
        with open(self.logs[index], errors="replace") as log:
            frames = [part.split("\n-RECV")[0] for part in log.read().split("+RECV-")[1:]]
        return [frame for frame in frames if re.search(pattern, frame)]

    def close(self):
        self.server.close()
        for daemon in self.daemons:
            assert daemon.close() == 0


@pytest.fixture(scope="session")
def rig():
    with tempfile.TemporaryDirectory(prefix="vek-browser-") as folder:
        made = Rig(folder)
        yield made
        made.close()


def chromium(width=1280, height=800):
    options = webdriver.ChromeOptions()
    options.binary_location = os.environ.get("VEK_CHROMIUM", "/usr/bin/chromium")
    for flag in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                 "--disable-background-networking", "--disable-component-update",
                 "--disable-sync", "--no-first-run", "--disable-extensions",
                 f"--window-size={width},{height}",
                 f"--user-data-dir={tempfile.mkdtemp(prefix='vek-chromium-')}"):
        options.add_argument(flag)
    service = Service(os.environ.get("VEK_CHROMEDRIVER", "/usr/bin/chromedriver"))
    driver = webdriver.Chrome(service=service, options=options)
    viewport(driver, width, height)
    return driver


def viewport(driver, width, height):
    """The page's own area at exactly this size, whatever the window's frame takes."""
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": width, "height": height, "deviceScaleFactor": 1,
                            "mobile": False})


class Page:
    """A browser window on the panel."""

    def __init__(self, driver, url):
        self.driver = driver
        self.url = url

    def open(self, device=0, tab="devices"):
        # A query of its own each time: a URL that differs only in its fragment would
        # not load the page again.
        self.opened = getattr(self, "opened", 0) + 1
        self.driver.get(f"{self.url}/?load={self.opened}#{tab}")
        self.wait(lambda d: d.execute_script("return document.body.dataset.loads") is not None)
        if device != 0:
            loads = self.loads()
            self.driver.execute_script(f"window.vekPanel.open({device})")
            self.wait(lambda d: self.loads() > loads)

    def loads(self):
        return int(self.driver.execute_script("return document.body.dataset.loads || '0'"))

    def tab(self, name):
        self.driver.find_element("id", f"tab-{name}").click()
        return self.driver.find_element("id", f"page-{name}")

    def wait(self, condition, timeout=10):
        # A condition that read an element the page has just drawn again is asked again:
        # between finding a list's items and reading their text, an answer may replace them.
        return WebDriverWait(self.driver, timeout, poll_frequency=0.02,
                             ignored_exceptions=(StaleElementReferenceException,)).until(condition)

    def field(self, label):
        """The input a label names (its accessible name)."""
        return self.driver.execute_script(
            "return [...document.querySelectorAll('input, select')].find((e) =>"
            " (e.labels && [...e.labels].some((l) => l.textContent.trim() === arguments[0])) ||"
            " e.getAttribute('aria-label') === arguments[0])", label)

    def shot(self, name):
        os.makedirs(SHOTS, exist_ok=True)
        self.driver.save_screenshot(os.path.join(SHOTS, f"{name}.png"))


@pytest.fixture(scope="session")
def browser(rig):
    driver = chromium()
    yield Page(driver, rig.server.url)
    driver.quit()


@pytest.fixture
def second_browser(rig):
    driver = chromium()
    yield Page(driver, rig.server.url)
    driver.quit()
