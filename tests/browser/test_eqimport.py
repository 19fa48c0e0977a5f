"""The Equaliser page's filter import: pasted text previewed over the channel's curve
with the clamps marked, then applied."""

from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select

FILTERS = "Filter 1: ON PK Fc 200 Hz Gain 15 dB Q 2\nFilter 2: ON HSC Fc 6000 Hz Gain -3 dB Q 0.7\n"


def notes(driver):
    return [li.text for li in driver.find_elements(By.CSS_SELECTOR, "#filter-notes li")]


def test_pasted_filters_are_previewed_with_their_clamps_and_applied(rig, browser):
    browser.open()
    page = browser.tab("equaliser")
    Select(page.find_element(By.CSS_SELECTOR, "select[aria-label='Channel']")).select_by_value("RS")
    page.find_element(By.ID, "filter-text").send_keys(FILTERS)
    # Looked up when used: the page may draw the box again after the channel is read.
    def apply():
        return page.find_element(By.ID, "filter-apply")

    # As it is, the file does not fit: every problem shown, nothing to apply.
    page.find_element(By.ID, "filter-preview").click()
    browser.wait(lambda d: notes(d) == [
        "text: line 1: Gain 15 dB is outside -24 to 12 dB (profile default)"])
    assert not apply().is_enabled()

    # Fitted: the gain clamped, marked on the plot at 200 Hz, and nothing sent yet.
    page.find_element(By.ID, "filter-fit").click()
    sets = len(rig.received(0, r"SetBand"))
    page.find_element(By.ID, "filter-preview").click()
    browser.wait(lambda d: "line 1: Gain 15 dB clamped to 12 dB" in notes(d))
    marks = page.find_elements(By.CSS_SELECTOR, ".eq-import .curve line.clamp")
    assert [m.find_element(By.TAG_NAME, "title").get_attribute("textContent") for m in marks] == [
        "line 1: Gain 15 dB clamped to 12 dB"]
    assert notes(browser.driver)[0] == "2 EqV2 bands; 3 requests to send"
    assert len(rig.received(0, r"SetBand")) == sets
    browser.shot("equaliser-import-preview-1280x800")
    # What the page previewed, as the plan route answers it.
    status, plan = rig.server.json("POST", "/api/devices/0/eq/plan", {
        "text": FILTERS, "channels": "RS", "fit": True, "points": 256})
    assert status == 200

    apply().click()
    browser.wait(lambda d: notes(d) == ["Applied: 3 values set, the device matches"])
    browser.wait(lambda d: len(d.find_elements(By.CSS_SELECTOR, "#band-table tbody tr")) == 2)
    assert rig.received(0, r"EqV2:SetBandConfigRequest")[-2].endswith(":<RS:0:2:200:12:2:0:1>:")
    status, device = rig.server.json("GET", "/api/devices/0/eq/RS/curve?points=256")
    assert status == 200
    assert device["total"] == plan["channels"][0]["curves"]["after"]
