"""The panel knows settings by the server's schema: what it asks of the server names
settings, never a protocol message."""

from conftest import Page, chromium

# Every fetch of the page, as [method, url, body], from before its first script runs.
RECORD = """
window.vekFetches = [];
const fetched = window.fetch;
window.fetch = (url, init = {}) => {
  window.vekFetches.push([init.method || 'GET', String(url), String(init.body || '')]);
  return fetched(url, init);
};
"""


def set_field(element, text):
    element.send_keys("\ue009a")  # Ctrl+A
    element.send_keys(text, "\ue007")  # Enter


def test_no_request_of_the_panel_names_a_protocol_message(rig):
    _, schema = rig.server.json("GET", "/api/schema")
    names = {m["name"] for m in schema["messages"]} | {m["response"] for m in schema["messages"]}
    driver = chromium()
    try:
        driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": RECORD})
        page = Page(driver, rig.server.url)
        before = len(rig.received(0, r"SetBandConfigRequest"))
        page.open(tab="gain")
        set_field(page.field("Master gain (dB)"), "-7.5")
        page.wait(lambda d: rig.received(0, r":Gain:SetMasterRequest:0:OK:<-7.5>:"))
        set_field(page.field("RS gain (dB)"), "-4")
        page.wait(lambda d: rig.received(0, r":Gain:SetChannelRequest:0:OK:<[^:]*:[^:]*:[^:]*:-4:"))
        page.tab("equaliser")
        page.wait(lambda d: page.field("LF band 2 Gain (dB) · value3") is not None)
        set_field(page.field("LF band 2 Gain (dB) · value3"), "4.5")
        page.wait(lambda d: len(rig.received(0, r"SetBandConfigRequest")) > before)
        assert rig.received(0, r"SetBandConfigRequest")[-1].split(":<")[1].startswith("LF:2:")
        # The fixed-band equaliser of the other device, whose counts cannot be set.
        loads = page.loads()
        driver.execute_script("window.vekPanel.open(1)")
        page.wait(lambda d: page.loads() > loads)
        fetches = driver.execute_script("return window.vekFetches")
    finally:
        driver.quit()
    writes = [f for f in fetches if f[0] == "PUT"]
    assert len(writes) == 3 and all("/settings/" in f[1] for f in writes), writes
    named = [f for f in fetches if any(name in f[1] or name in f[2] for name in names)]
    assert not named, named
