# SPDX-License-Identifier: Apache-2.0
"""A browser, and the page in it as somebody uses it."""

import contextlib
import os
import pathlib
import sys

from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from client import PATIENCE, wait_until  # noqa: E402, F401


@contextlib.contextmanager
def browsing(downloads=None, width=1440, height=900):
    options = webdriver.ChromeOptions()
    options.binary_location = os.environ.get("QUILL_CHROMIUM", "/usr/bin/chromium")
    for argument in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", f"--window-size={width},{height}"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    if downloads:
        options.add_experimental_option("prefs", {"download.default_directory": str(downloads)})
    service = webdriver.chrome.service.Service(os.environ.get("QUILL_CHROMEDRIVER", "/usr/bin/chromedriver"))
    driver = webdriver.Chrome(options=options, service=service)
    try:
        yield driver
    finally:
        driver.quit()


class Page:
    """The page of a server, with one camera selected."""

    def __init__(self, driver, server, camera, token=""):
        self.driver, self.server, self.camera = driver, server, camera
        driver.get("about:blank")
        driver.get(f"http://127.0.0.1:{server.port}/#camera={camera}{token}")

    def element(self, identifier):
        return self.driver.find_element(By.ID, identifier)

    def text(self, identifier):
        return self.element(identifier).text

    def wait(self, condition):
        return WebDriverWait(self.driver, PATIENCE, poll_frequency=0.05).until(lambda _: condition())

    def wait_text(self, identifier, part):
        self.wait(lambda: part in self.text(identifier))

    def click(self, identifier):
        self.wait(lambda: self.element(identifier).is_displayed() and self.element(identifier).is_enabled())
        self.element(identifier).click()

    def press(self, *keys):
        """Presses keys at the picture."""
        self.element("stage").send_keys(*keys)

    def drag(self, begin, end):
        """Drags over the picture, from and to parts of its width and height, 0 at its centre."""
        stage = self.element("stage")
        size = stage.size
        (x1, y1), (x2, y2) = [(int(x * size["width"]), int(y * size["height"])) for x, y in (begin, end)]
        ActionChains(self.driver).move_to_element_with_offset(stage, x1, y1).click_and_hold() \
            .move_by_offset((x2 - x1) // 2, (y2 - y1) // 2).move_by_offset(x2 - x1 - (x2 - x1) // 2, y2 - y1 - (y2 - y1) // 2) \
            .release().perform()

    def point(self, x, y):
        stage = self.element("stage")
        ActionChains(self.driver).move_to_element_with_offset(stage, int(x), int(y)).perform()

    def field(self, name):
        """The row of a property, once it is there."""
        find = lambda: self.driver.find_elements(By.CSS_SELECTOR, f'#property-list [data-property="{name}"]')
        return self.wait(find)[0]

    def input(self, name, kind="input[type=text]"):
        element = self.field(name).find_element(By.CSS_SELECTOR, kind)
        self.driver.execute_script("arguments[0].scrollIntoView({block: 'center'})", element)
        return element

    def type(self, name, text):
        element = self.input(name)
        element.send_keys(Keys.CONTROL + "a")
        element.send_keys(text + Keys.ENTER)

    def shown(self, name):
        return self.input(name).get_attribute("value")

    def note(self, name):
        return self.field(name).find_element(By.CSS_SELECTOR, ".note").text

    def value(self, name):
        return self.server.api("GET", f"/cameras/{self.camera}/properties/{name.replace(' ', '%20')}")["property"]["value"]

    def zoom(self):
        return float(self.text("zoom-value").split()[0])

    def frame(self):
        """The number of the frame that is shown."""
        text = self.text("frame-text")
        return int(text.split()[0][1:]) if text.startswith("#") else 0

    def wait_pictures(self, more=2):
        begin = self.frame()
        self.wait(lambda: self.frame() >= begin + more)

    def is_drawn(self):
        """Whether the picture has more than one colour at its centre."""
        return self.driver.execute_script("""
            const stage = document.getElementById("stage");
            const {data} = stage.getContext("2d").getImageData(stage.width / 2 - 20, stage.height / 2 - 20, 40, 40);
            return new Set(new Uint32Array(data.buffer)).size > 1;""")

    def complaints(self):
        """What the browser complained of, without requests that failed while a server was away or refused."""
        return [entry["message"] for entry in self.driver.get_log("browser")
                if entry["level"] == "SEVERE" and entry["source"] not in ("network", "other")
                and "WebSocket connection" not in entry["message"]]


__all__ = ["ActionChains", "By", "Keys", "Page", "Select", "browsing", "wait_until"]
