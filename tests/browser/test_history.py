"""History, undo, checkpoints and A/B in the panel, on a device made from a document."""

import json
import os
import tempfile

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.support.ui import Select

from conftest import TUNER, Page, Server, chromium

DOCUMENT = {"format": "vek-tuning/1", "settings": {"Gain": {"master": -7}}}


def test_edit_undo_with_the_keyboard_flip_ab_and_save():
    with tempfile.TemporaryDirectory(prefix="vek-history-") as folder:
        path = os.path.join(folder, "tuning.json")
        with open(path, "w") as f:
            json.dump(DOCUMENT, f)
        server = Server([], os.path.join(folder, "serve.log"),
                        options=(f"--virtual={path}", f"--state-dir={folder}/state",
                                 f"--launch={TUNER}"))
        driver = chromium()
        try:
            assert server.await_state(0, "connected"), open(server.log).read()
            page = Page(driver, server.url)
            page.open(tab="gain")
            master = page.field("Master gain")
            page.wait(lambda d: master.get_attribute("value") == "-7")
            master.clear()
            master.send_keys("-3", Keys.ENTER)
            page.wait(lambda d: server.json("GET", "/api/devices/0/snapshot")[1]
                      ["settings"]["Gain"]["master"] == -3)

            history = page.tab("history")
            page.wait(lambda d: "Gain.master: -7 → -3" in history.text)
            # Undo from the keyboard, away from any text field.
            driver.find_element(By.TAG_NAME, "body").click()
            ActionChains(driver).key_down(Keys.CONTROL).send_keys("z").key_up(Keys.CONTROL).perform()
            page.wait(lambda d: server.json("GET", "/api/devices/0/snapshot")[1]
                      ["settings"]["Gain"]["master"] == -7)
            page.wait(lambda d: "undo" in driver.find_element(By.ID, "history-list").text)

            name = driver.find_element(By.ID, "checkpoint-name")
            name.clear()
            name.send_keys("A")
            driver.find_element(By.ID, "checkpoint-keep").click()
            page.wait(lambda d: "Checkpoint A kept" in d.find_element(By.ID, "history-status").text)
            server.json("POST", "/api/devices/0/request",
                        {"feature": "Gain", "message": "SetMaster", "args": [-1]})
            name.clear()
            name.send_keys("B")
            driver.find_element(By.ID, "checkpoint-keep").click()
            page.wait(lambda d: len(d.find_elements(By.CSS_SELECTOR, "#ab-b option")) == 2)
            assert Select(driver.find_element(By.ID, "ab-b")).first_selected_option.text == "B"

            driver.find_element(By.TAG_NAME, "body").click()
            ActionChains(driver).send_keys("b").perform()
            playing = driver.find_element(By.ID, "ab-playing")
            page.wait(lambda d: playing.text.startswith("Playing A (A): 1 request sent"))
            assert server.json("GET", "/api/devices/0/snapshot")[1]["settings"]["Gain"]["master"] == -7
            ActionChains(driver).send_keys("b").perform()
            page.wait(lambda d: playing.text.startswith("Playing B (B): 1 request sent"))
            page.shot("history-1280x800")

            driver.find_element(By.ID, "history-save").click()
            page.wait(lambda d: "Saved to" in d.find_element(By.ID, "history-status").text)
            with open(path) as f:
                assert json.load(f)["settings"]["Gain"]["master"] == -1
            with open(path + ".bak") as f:
                assert json.load(f) == DOCUMENT
        finally:
            driver.quit()
            server.close()
