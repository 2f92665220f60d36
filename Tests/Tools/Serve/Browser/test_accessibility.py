# SPDX-License-Identifier: Apache-2.0
"""Rules of accessibility, keyboard and small screens."""

import os
import pathlib
import subprocess

import pytest

from browsing import Keys


@pytest.fixture(scope="module")
def axe():
    folder = pathlib.Path(os.environ["QUILL_AXE_FOLDER"])
    installed = subprocess.run([str(pathlib.Path(__file__).parent / "install-axe.sh"), str(folder)], check=False)
    if installed.returncode != 0:
        pytest.skip("axe-core cannot be installed: npm reaches no registry")
    return (folder / "node_modules/axe-core/axe.min.js").read_text()


def emulate(driver, colours, width, height):
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": colours}]})
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})


@pytest.mark.parametrize("colours, width, height", [("light", 1440, 900), ("dark", 1440, 900), ("light", 360, 740)])
def test_breaks_no_rule_and_never_scrolls_sideways(page, axe, colours, width, height):
    emulate(page.driver, colours, width, height)
    page.driver.execute_script(axe)
    for tab in ("statistics", "settings", "log", "properties"):
        page.click(f"tab-{tab}")
        found = page.driver.execute_async_script("axe.run().then(arguments[arguments.length - 1])")
        assert [(one["id"], [node["html"] for node in one["nodes"]]) for one in found["violations"]] == []
        assert page.driver.execute_script("return document.documentElement.scrollWidth <= innerWidth")
    page.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def test_keyboard_reaches_everything_and_is_never_trapped(page):
    focused = "return document.activeElement.id || document.activeElement.dataset.property || document.activeElement.tagName"
    seen = []
    body = page.driver.switch_to.active_element
    for _ in range(400):
        page.driver.switch_to.active_element.send_keys(Keys.TAB)
        seen.append(page.driver.execute_script(focused))
        if seen.count(seen[0]) > 1:
            break
    assert body is not None
    assert {"theme", "action-suspend", "stream", "freeze", "capture", "stage", "tab-properties", "search", "list-contrast"} <= set(seen)
