# SPDX-License-Identifier: Apache-2.0
"""What the page says and does when the server or a camera goes, comes back, or allows little."""

import json
import socket

from browsing import By, Page
from client import SIMULATED, serving


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def test_goes_on_after_a_restart_of_the_server(driver, tmp_path):
    port = free_port()
    with serving(tmp_path, port=port) as server:
        server.api("POST", f"/cameras/{SIMULATED}/connect", {})
        page = Page(driver, server, SIMULATED)
        page.field("Gain")
    page.wait(lambda: page.element("away").is_displayed())
    page.wait_text("stage-text", "goes on by itself")
    assert not page.element("action-disconnect").is_enabled()
    with serving(tmp_path, port=port):
        page.wait(lambda: not page.element("away").is_displayed())
        page.wait_text("camera-state", "disconnected")
        page.click("action-connect")
        page.wait(lambda: page.shown("Gain") == "1.5")
        page.click("tab-log")
        page.wait_text("log", "The server is back.")
        page.click("tab-properties")


def test_says_that_a_camera_left_and_goes_on_once_it_is_back(driver, tmp_path):
    with serving(tmp_path) as server:
        page = Page(driver, server, SIMULATED)
        page.wait_text("camera-state", "disconnected")
        description = server.cameras.read_text()
        cameras = json.loads(description)
        cameras["Cameras"] = [one for one in cameras["Cameras"] if one["Identification"]["Serial Number"] != SIMULATED]
        server.cameras.write_text(json.dumps(cameras))
        page.wait_text("camera-state", "gone")
        page.wait_text("stage-text", "is gone")
        server.cameras.write_text(description)
        page.wait_text("camera-state", "disconnected")
        page.click("action-connect")
        page.field("Gain")


def test_takes_the_token_out_of_the_address_or_asks_for_it(driver, tmp_path):
    (tmp_path / "token").write_text("0123456789abcdefTOKEN")
    with serving(tmp_path, "--token-file", str(tmp_path / "token")) as server:
        driver.delete_all_cookies()
        page = Page(driver, server, SIMULATED)
        page.wait(lambda: page.element("token-dialog").is_displayed())
        page.element("token").send_keys("wrong token wrong token\n")
        page.wait(lambda: page.text("token-problem") != "")
        page.element("token").clear()
        page.element("token").send_keys("0123456789abcdefTOKEN\n")
        page.wait_text("link-text", "Connected")
        driver.delete_all_cookies()
        page = Page(driver, server, SIMULATED, "&token=0123456789abcdefTOKEN")
        page.wait_text("link-text", "Connected")
        assert "token" not in driver.current_url and f"camera={SIMULATED}" in driver.current_url
    driver.delete_all_cookies()


def test_disables_what_a_view_only_server_refuses(driver, tmp_path):
    with serving(tmp_path, "--view-only") as server:
        page = Page(driver, server, SIMULATED)
        page.wait_text("camera-state", "disconnected")
        assert page.element("view-only").is_displayed()
        for identifier in ("action-connect", "stream", "settings-load"):
            button = page.element(identifier)
            assert not button.is_enabled() and "View only" in button.get_attribute("title"), identifier


def test_lets_a_device_be_pulled_while_it_is_viewed(driver, tmp_path):
    with serving(tmp_path, device="leaving later") as server:
        camera = next(one["serialNumber"] for one in server.api("GET", "/cameras")["cameras"] if "software" in one["kind"])
        server.api("POST", f"/cameras/{camera}/connect", {})
        page = Page(driver, server, camera)
        page.wait_text("camera-state", "connected")
        page.click("stream")
        page.wait_text("camera-state", "gone")
        page.wait_text("stage-text", "gone")
        assert page.driver.find_elements(By.CSS_SELECTOR, f"[data-serial='{camera}']") == []
