"""The panel as a tuning engineer uses it, in headless Chromium against `vek_master
serve` with two simulated daemons: device 0 serves Reverb and the flexible equaliser,
device 1 the fixed-band equaliser."""

import json
import os
import time

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

from conftest import TUNER, CabledDaemon, Page, Server, chromium, viewport

PAGES = ["devices", "common", "gain", "equaliser", "hfe", "vb", "reverb", "speaker", "tuning",
         "traffic"]


def test_assets_come_with_their_types_and_fit_the_budget(rig):
    total = 0
    for path, kind in (("/", "text/html"), ("/main.js", "text/javascript"),
                       ("/setting.js", "text/javascript"), ("/panel.css", "text/css"),
                       ("/icon.svg", "image/svg+xml")):
        status, headers, body = rig.server.call("GET", path)
        assert status == 200 and headers["Content-Type"].startswith(kind), path
    source = os.path.join(os.environ["VEK_SOURCE_DIR"], "pc", "panel", "www")
    for name in os.listdir(source):
        status, _, body = rig.server.call("GET", "/" + name)
        assert status == 200 and body == open(os.path.join(source, name), "rb").read(), name
        total += len(body)
    print(f"\npanel assets: {len(os.listdir(source))} files, {total} bytes")
    assert total < 150 * 1024


def test_pages_show_each_device_and_its_features(rig, browser):
    started = time.monotonic()
    browser.open()
    ready = browser.driver.execute_script("return window.vekPanelReady")
    print(f"\nopening the page to every value shown: {ready:.0f} ms in the page, "
          f"{(time.monotonic() - started) * 1000:.0f} ms with the driver")
    rows = browser.driver.find_elements(By.CSS_SELECTOR, "#device-table tbody tr")
    texts = [row.text for row in rows]
    assert len(texts) == 2
    assert rig.daemons[0].path in texts[0] and "Reverb" in texts[0] and "EqV2" in texts[0]
    assert rig.daemons[1].path in texts[1] and "Reverb" not in texts[1] and " Eq " in texts[1]
    for page in PAGES:
        browser.tab(page)
        browser.shot(f"{page}-1280x800")
    assert browser.driver.find_element(By.ID, "tab-reverb").is_displayed()
    equaliser = browser.tab("equaliser")
    assert "Flexible equaliser (EqV2)" in equaliser.text
    assert len(equaliser.find_elements(By.CSS_SELECTOR, "#band-table tbody tr")) == 10

    browser.open(device=1)
    assert not browser.driver.find_element(By.ID, "tab-reverb").is_displayed()
    equaliser = browser.tab("equaliser")
    assert "Fixed equaliser (Eq): 20 bands" in equaliser.text
    assert len(equaliser.find_elements(By.CSS_SELECTOR, "#band-table tbody tr")) == 20
    browser.shot("equaliser-fixed-1280x800")
    viewport(browser.driver, 800, 1280)
    for page in ("gain", "equaliser", "speaker"):
        browser.tab(page)
        browser.shot(f"{page}-800x1280")
        width = browser.driver.execute_script("return document.documentElement.scrollWidth")
        assert width <= 800, f"{page} is {width} px wide at tablet width"
    viewport(browser.driver, 1280, 800)


def test_every_control_has_a_name_and_the_tabs_work_from_the_keyboard(browser):
    browser.open()
    roles = {"button", "checkbox", "switch", "slider", "spinbutton", "textbox", "combobox",
             "ComboBoxSelect", "ComboBoxMenuButton", "radio", "tab", "link"}
    checked = 0
    for page in PAGES:
        browser.tab(page)
        # Chromium's own accessibility tree: the names a screen reader announces.
        tree = browser.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        for node in tree:
            role = node.get("role", {}).get("value")
            if node.get("ignored") or role not in roles:
                continue
            checked += 1
            name = node.get("name", {}).get("value", "").strip()
            assert name, f"{page}: a {role} without a name (DOM node {node.get('backendDOMNodeId')})"
    assert checked > 300
    tab = browser.driver.find_element(By.ID, "tab-gain")
    tab.click()
    tab.send_keys(Keys.ARROW_RIGHT)
    assert browser.driver.switch_to.active_element.get_attribute("id") == "tab-equaliser"
    assert browser.driver.find_element(By.ID, "page-equaliser").is_displayed()
    browser.driver.switch_to.active_element.send_keys(Keys.END)
    assert browser.driver.switch_to.active_element.get_attribute("id") == "tab-traffic"
    browser.driver.switch_to.active_element.send_keys(Keys.HOME)
    assert browser.driver.switch_to.active_element.get_attribute("id") == "tab-devices"


# Moves a slider as a drag does, one input event per value, and reports when the last
# value's set request was answered and when its read-back was shown (ms from the start).
DRAG = """
    const [slider, values, done] = arguments;
    const started = performance.now();
    const times = {};
    const fetched = window.fetch;
    window.fetch = async (...call) => {
      const answer = await fetched(...call);
      if (call[1] && call[1].method === 'PUT' && String(call[0]).endsWith('/settings/Gain/master')) {
        times.answered = performance.now() - started;
      }
      return answer;
    };
    for (const value of values) {
      slider.value = String(value);
      slider.dispatchEvent(new Event('input', { bubbles: true }));
    }
    const watch = () => {
      if (!window.vekPanel.settings.some((s) => s.busy)) {
        window.fetch = fetched;
        times.shown = performance.now() - started;
        done(times);
      } else {
        setTimeout(watch, 1);
      }
    };
    watch();
"""


def test_the_master_gain_slider_sends_its_value_and_shows_the_read_back(rig, browser):
    browser.open()
    browser.tab("gain")
    slider = browser.field("Master gain slider (dB)")
    field = browser.field("Master gain (dB)")
    before = len(rig.received(0, r":Gain:SetMasterRequest:"))
    # A drag over a hundred steps: the first value goes out at once, the others wait,
    # and only the last of them is sent once the first has its read-back.
    drag = browser.driver.execute_async_script(DRAG, slider, [(s * 3 - 400) / 10 for s in range(101)])
    sent = rig.received(0, r":Gain:SetMasterRequest:")[before:]
    assert len(sent) == 2 and sent[0].endswith(":<-40>:") and sent[1].endswith(":<-10>:"), sent
    assert field.get_attribute("value") == "-10"
    # One step from the keyboard.
    slider.send_keys(Keys.ARROW_RIGHT)
    browser.wait(lambda d: rig.received(0, r":Gain:SetMasterRequest:")[-1].endswith(":<-9.9>:"))
    browser.wait(lambda d: field.get_attribute("value") == "-9.9")
    step = browser.driver.execute_async_script(DRAG, slider, [-3.5])
    assert rig.received(0, r":Gain:SetMasterRequest:")[-1].endswith(":<-3.5>:")
    assert rig.received(0, r"Gain:GetMasterRequest")
    assert field.get_attribute("value") == "-3.5"
    # The traffic page shows the requests and answers, a feature's alone when asked.
    browser.tab("traffic")
    Select(browser.field("Show the traffic of feature")).select_by_value("Gain")
    shown = browser.driver.execute_script(
        "return [...document.querySelectorAll('#traffic-log tbody tr')].filter((r) => !r.hidden)"
        ".map((r) => r.dataset.feature + ' ' + r.textContent)")
    assert all(row.startswith("Gain ") for row in shown)
    assert any("Gain SetMasterResponse OK" in row for row in shown)
    assert any("Gain GetMasterResponse OK masterGain=-3.5" in row for row in shown)
    assert any("Gain SetMaster -3.5" in row for row in shown)
    print(f"\nslider move to the device's answer: {step['answered']:.1f} ms, to its read-back "
          f"shown: {step['shown']:.1f} ms; a hundred-step drag: {drag['shown']:.1f} ms to the "
          f"last value's read-back")


def set_field(element, text):
    """Types a value into a number field as a person does: select, type, Enter."""
    element.send_keys(Keys.CONTROL, "a")
    element.send_keys(text, Keys.ENTER)


def drawn(driver):
    """The sum's path as drawn now (the plot is replaced whole at each redraw)."""
    return driver.execute_script(
        "const total = document.querySelector('.curve path.total');"
        "return total ? total.getAttribute('d') : null")


def caption(driver):
    return driver.execute_script(
        "const c = document.querySelector('.curve + p'); return c ? c.textContent : ''")


def test_editing_a_band_redraws_the_curve(rig, browser):
    browser.open()
    browser.tab("equaliser")
    browser.wait(drawn)
    assert len(browser.driver.find_elements(By.CSS_SELECTOR, ".curve path.band")) == 10
    before = drawn(browser.driver)
    gain = browser.field("LF band 3 Gain (dB) · value3")
    # Typed but not yet entered: the curve it would give is previewed, nothing is sent.
    sent = len(rig.received(0, r"SetBandConfigRequest"))
    gain.send_keys(Keys.CONTROL, "a")
    gain.send_keys("9")
    browser.wait(lambda d: caption(d).startswith("LF preview, not sent: 10 bands"))
    previewed = drawn(browser.driver)
    assert previewed != before
    assert len(rig.received(0, r"SetBandConfigRequest")) == sent
    gain.send_keys(Keys.ENTER)
    browser.wait(lambda d: rig.received(0, r"EqV2:SetBandConfigRequest:0:OK:<LF:3:"))
    assert rig.received(0, r"SetBandConfigRequest")[-1].endswith(":<LF:3:2:250:9:0.707:0:1>:")
    # The device's curve after the read-back is the one previewed.
    browser.wait(lambda d: caption(d).startswith("LF: 10 bands"))
    assert drawn(browser.driver) == previewed
    # A cut lower up: the sum shows both, each band faint behind it.
    before = drawn(browser.driver)
    set_field(browser.field("LF band 7 Gain (dB) · value3"), "-6")
    browser.wait(lambda d: drawn(d) != before)
    browser.driver.execute_script("document.activeElement.blur(); window.scrollTo(0, 0)")
    browser.shot("equaliser-edited-1280x800")


def test_a_change_in_one_window_appears_in_another(rig, browser, second_browser):
    browser.open()
    second_browser.open()
    browser.tab("gain")
    second_browser.tab("gain")
    seen = second_browser.field("RS gain (dB)")
    started = time.monotonic()
    set_field(browser.field("RS gain (dB)"), "-6.5")
    second_browser.wait(lambda d: seen.get_attribute("value") == "-6.5")
    print(f"\nanother window shows the change after {(time.monotonic() - started) * 1000:.0f} ms")
    # A script's change through the API appears as well.
    status, _ = rig.server.json("POST", "/api/devices/0/request",
                                {"feature": "Speaker", "message": "SetDelay", "args": [0, 0, 2, 2, 1, 0]})
    assert status == 200
    second_browser.tab("speaker")
    delay = second_browser.field("LS delay (ms)")
    second_browser.wait(lambda d: delay.get_attribute("value") == "2")


def test_a_document_shows_its_differences_then_applies_on_both_devices(rig, browser, tmp_path):
    status, document = rig.server.json("GET", "/api/devices/0/snapshot")
    assert status == 200
    settings = document["settings"]
    # What both devices serve, with three values changed from device 0's.
    tuning = {"format": "vek-tuning/1", "settings": {"Gain": settings["Gain"], "Speaker": settings["Speaker"]}}
    tuning["settings"]["Gain"]["master"] = -20
    tuning["settings"]["Gain"]["channel"]["CF"] = -3
    tuning["settings"]["Speaker"]["delay"]["L1"] = 4.5
    path = tmp_path / "reference.json"
    path.write_text(json.dumps(tuning))
    expected = [rig.server.json("POST", "/api/diff", {"a": tuning, "b": "device", "device": i})[1]["differences"]
                for i in range(2)]
    assert [d["setting"] for d in expected[0]] == ["Gain.master", "Gain.channel[CF]", "Speaker.delay[L1]"]

    browser.open()
    browser.tab("devices")
    browser.field("Include device 1 in tuning actions").click()
    page = browser.tab("tuning")
    page.find_element(By.ID, "tuning-file").send_keys(str(path))
    browser.wait(lambda d: len(d.find_elements(By.CSS_SELECTOR, "table.diff")) == 2)
    for index in range(2):
        rows = page.find_elements(By.CSS_SELECTOR, f"table.diff[data-device='{index}'] tbody tr")
        assert [r.text for r in rows] == [f"{e['setting']} {e['a']} {e['b']}" for e in expected[index]]
    browser.shot("tuning-diff-1280x800")
    page.find_element(By.ID, "tuning-bypass").click()
    page.find_element(By.XPATH, "//button[text()='Apply']").click()
    browser.wait(lambda d: len(d.find_elements(By.CSS_SELECTOR, ".apply-status")) == 2)
    verdicts = [e.text for e in page.find_elements(By.CSS_SELECTOR, ".apply-status")]
    assert all(v.startswith("OK: ") and v.endswith("the device matches") for v in verdicts), verdicts
    assert "read back: took" in page.text
    browser.shot("tuning-applied-1280x800")
    for index in range(2):
        assert rig.server.json("POST", "/api/diff", {"a": tuning, "b": "device", "device": index})[1]["equal"]
    # The open pages follow: the apply's set messages are re-read.
    browser.tab("gain")
    browser.wait(lambda d: browser.field("Master gain (dB)").get_attribute("value") == "-20")


def test_an_out_of_range_value_is_refused_in_the_page_with_nothing_sent(rig, browser):
    browser.open()
    browser.tab("gain")
    before = len(rig.received(0, r"SetMasterRequest"))
    field = browser.field("Master gain (dB)")
    set_field(field, "60")
    error = browser.driver.find_element(By.ID, field.get_attribute("aria-describedby"))
    browser.wait(lambda d: "outside" in error.text)
    assert "60 dB is outside -60 to 12 dB" in error.text and "profile" in error.text
    assert field.get_attribute("aria-invalid") == "true"
    browser.tab("equaliser")
    set_field(browser.field("LF band 0 Frequency (Hz) · value2"), "30000")
    assert "outside" in browser.driver.find_element(By.CSS_SELECTOR, "#page-equaliser p.error").text
    time.sleep(0.3)
    assert len(rig.received(0, r"SetMasterRequest")) == before
    assert not rig.received(0, r"SetBandConfigRequest:0:OK:<LF:0:")
    # The server refuses it too.
    status, body = rig.server.json("POST", "/api/devices/0/request",
                                   {"feature": "Gain", "message": "SetMaster", "args": [60]})
    assert status == 400 and body["field"] == "masterGain"
    assert len(rig.received(0, r"SetMasterRequest")) == before


def test_the_traffic_page_downloads_the_lines_trace(rig, browser):
    browser.open(device=1)  # reads device 1's gains, among others
    browser.tab("traffic")
    Select(browser.driver.find_element(By.ID, "trace-device")).select_by_index(1)
    # The file the page hands to the browser, caught as it is made.
    browser.driver.execute_script(
        "window.vekTrace = null; const make = URL.createObjectURL;"
        "URL.createObjectURL = (blob) => { blob.arrayBuffer().then((b) => {"
        " window.vekTrace = Array.from(new Uint8Array(b)); }); return make(blob); };")
    browser.driver.find_element(By.ID, "trace-download").click()
    browser.wait(lambda d: d.execute_script("return window.vekTrace") is not None)
    trace = bytes(browser.driver.execute_script("return window.vekTrace"))
    # A pcapng section header, and device 1's line named in its interface.
    assert trace[:4] == bytes([0x0A, 0x0D, 0x0D, 0x0A])
    assert rig.daemons[1].path.encode() in trace
    assert b"GetMasterResponse" in trace


def test_a_lost_line_greys_the_controls_and_a_new_greeting_brings_the_values_back(rig, browser):
    browser.open(device=1)
    browser.tab("gain")
    assert rig.daemons[1].stop() == 0
    # The server learns of the stop from the next request that goes unanswered.
    set_field(browser.field("LF gain (dB)"), "-1")
    banner = browser.driver.find_element(By.ID, "banner")
    browser.wait(lambda d: banner.is_displayed(), timeout=15)
    assert rig.daemons[1].path in banner.text
    assert browser.driver.find_element(By.CSS_SELECTOR, "#page-gain fieldset").get_attribute("disabled")
    browser.shot("lost-line-1280x800")
    loads = browser.loads()
    rig.daemons[1].start()
    browser.wait(lambda d: browser.loads() > loads, timeout=15)
    assert not banner.is_displayed()
    assert not browser.driver.find_element(By.CSS_SELECTOR, "#page-gain fieldset").get_attribute("disabled")
    # A restarted simulator starts from its tuned state again.
    assert browser.field("Master gain (dB)").get_attribute("value") == "-12"


def test_a_server_with_a_token_asks_for_it_then_shows_the_devices(tmp_path):
    token = "a-token-for-the-browser-test"
    (tmp_path / "token").write_text(token + "\n")
    daemon = CabledDaemon(TUNER, [], str(tmp_path / "daemon.log"))
    server = Server([daemon.path], str(tmp_path / "serve.log"), token, str(tmp_path / "token"))
    driver = chromium()
    try:
        assert server.await_state(0, "connected"), open(server.log).read()
        page = Page(driver, server.url)
        driver.get(server.url + "/#devices")
        box = driver.find_element(By.ID, "token-box")
        page.wait(lambda d: box.is_displayed())
        assert driver.title == "vek_tuner panel"
        assert "needs a token" in driver.find_element(By.ID, "banner").text
        # Said once: the box beside it only asks for the token.
        assert driver.find_element(By.TAG_NAME, "body").text.count("needs a token") == 1
        assert not driver.find_elements(By.CSS_SELECTOR, "#device-table tbody tr")
        page.shot("token-asked-1280x800")
        field = driver.find_element(By.ID, "token")
        field.send_keys(token)
        field.send_keys(Keys.ENTER)
        page.wait(lambda d: d.execute_script("return document.body.dataset.loads") is not None)
        rows = driver.find_elements(By.CSS_SELECTOR, "#device-table tbody tr")
        assert len(rows) == 1 and daemon.path in rows[0].text
        assert not driver.find_element(By.ID, "token-box").is_displayed()
        # The tab keeps it; the page is never given it in its address.
        assert driver.execute_script("return sessionStorage.getItem('vek-token')") == token
        assert token not in driver.current_url
        driver.refresh()
        page.wait(lambda d: d.execute_script("return document.body.dataset.loads") is not None)
        assert len(driver.find_elements(By.CSS_SELECTOR, "#device-table tbody tr")) == 1
    finally:
        driver.quit()
        server.close()
        assert daemon.close() == 0
