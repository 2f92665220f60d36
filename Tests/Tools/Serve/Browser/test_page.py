# SPDX-License-Identifier: Apache-2.0
"""What somebody does on the page, each once."""

import json
import tarfile

from selenium.webdriver.common.actions.wheel_input import ScrollOrigin

from browsing import ActionChains, By, Keys, Page, Select, wait_until


def test_suspends_disconnects_and_connects_the_camera(page):
    for action, state in (("suspend", "suspended"), ("connect", "connected"), ("disconnect", "disconnected")):
        page.click(f"action-{action}")
        page.wait_text("camera-state", state)
        assert page.server.api("GET", f"/cameras/{page.camera}")["state"] == state
    page.wait_text("stage-text", "not connected")
    assert not page.element("capture").is_enabled() and "Connect" in page.element("capture").get_attribute("title")
    page.click("stage-connect")
    page.wait_text("camera-state", "connected")
    page.wait_text("stage-text", "does not run")
    page.click("stream")
    page.wait_pictures()
    page.click("stream")
    page.wait_text("stage-text", "does not run")


def test_selects_another_camera_and_keeps_it_over_a_reload(page):
    page.driver.find_element(By.CSS_SELECTOR, "[data-serial='90001']").click()
    page.wait_text("camera-number", "90001")
    page.driver.refresh()
    page.wait(lambda: page.text("camera-number") == "90001")
    assert "camera=90001" in page.driver.current_url


def test_zooms_pans_and_reads_pixels(page):
    page.wait(page.is_drawn)
    fit = page.zoom()
    page.click("one-to-one")
    page.wait(lambda: page.zoom() == 100 != fit)
    page.press("0")
    page.wait(lambda: page.zoom() == fit)
    ActionChains(page.driver).scroll_from_origin(ScrollOrigin.from_element(page.element("stage")), 0, -400).perform()
    page.wait(lambda: page.zoom() > 2 * fit)
    page.point(7, 5)
    page.wait_text("pixel-values", "RGB")
    before = page.text("pixel-place")
    page.drag((0, 0), (0.2, 0.1))
    page.point(0, 0)
    page.wait(lambda: "raw" in page.text("pixel-values") and page.text("pixel-place") != before)
    page.press(*["+"] * 30)  # to single pixels
    page.wait(lambda: page.zoom() > 5000)
    at = page.text("pixel-place")
    page.press(Keys.SHIFT + Keys.ARROW_RIGHT)
    page.wait(lambda: page.text("pixel-place") not in ("", at))
    page.click("grid")
    assert page.element("grid").get_attribute("aria-pressed") == "true"


def test_freezes_a_frame_whose_values_stay(page):
    page.press(" ")
    page.wait(lambda: page.element("frozen").is_displayed())
    page.point(3, 3)
    page.wait_text("pixel-values", "raw")
    held = page.frame()
    begin = counted(page)
    wait_until(lambda: counted(page) > begin + 5)  # the stream goes on, and the held frame can still be read
    page.point(9, 3)
    page.wait(lambda: "raw" in page.text("pixel-values") and "gone" not in page.text("pixel-values"))
    assert page.frame() == held
    page.click("freeze")
    page.wait_pictures()


def counted(page):
    """Frames that the stream has delivered or lost."""
    return sum(one["value"] for one in page.server.api("GET", f"/cameras/{page.camera}/statistics")["counters"])


def test_shows_histogram_and_focus(page):
    page.wait(lambda: "median" in page.element("histogram").get_attribute("aria-label"))
    assert page.text("focus-value") not in ("–", "") and page.text("saturated-value").endswith("%")


def test_writes_properties_and_says_what_the_camera_made_of_them(page):
    page.type("Contrast", "2,5")
    page.wait(lambda: float(page.value("Contrast")) == 2.5 and page.shown("Contrast") == "2.5")
    page.type("Contrast", "999")
    page.wait(lambda: page.note("Contrast") != "")
    assert page.input("Contrast").get_attribute("aria-invalid") == "true" and float(page.value("Contrast")) == 2.5
    page.type("Contrast", "much")
    page.wait(lambda: "no number" in page.note("Contrast"))
    page.field("Contrast").find_element(By.CSS_SELECTOR, ".reset").click()
    page.wait(lambda: page.shown("Contrast") == "1" and page.note("Contrast") == "")
    slider = page.input("Contrast", "input[type=range]")
    ActionChains(page.driver).drag_and_drop_by_offset(slider, slider.size["width"] // 4, 0).perform()
    page.wait(lambda: float(page.shown("Contrast")) > 1.2 and float(page.value("Contrast")) == float(page.shown("Contrast")))
    slider.send_keys(Keys.HOME)
    page.wait(lambda: float(page.value("Contrast")) == 0)
    page.input("Auto Exposure", "input[role=switch]").click()
    page.wait(lambda: page.value("Auto Exposure") == "Enabled")
    Select(page.input("Shutter", "select")).select_by_visible_text("Rolling")
    page.wait(lambda: page.value("Shutter") == "Rolling" or page.note("Shutter") != "")
    for name in ("Auto Exposure", "Shutter"):
        page.server.api("POST", f"/cameras/{page.camera}/properties/{name.replace(' ', '%20')}/reset", {})


def test_two_tabs_follow_each_other(page):
    first = page.driver.current_window_handle
    page.driver.switch_to.new_window("tab")
    second = Page(page.driver, page.server, page.camera)
    second.type("Contrast", "2.75")
    second.wait(lambda: second.shown("Contrast") == "2.75")
    page.driver.close()
    page.driver.switch_to.window(first)
    page.wait(lambda: page.shown("Contrast") == "2.75")
    page.server.api("PUT", f"/cameras/{page.camera}/properties/Contrast", {"value": 1})
    page.wait(lambda: page.shown("Contrast") == "1")


def test_searches_properties(page):
    page.element("search").send_keys("iris latency")
    page.wait(lambda: page.field("Iris Latency").is_displayed() and not page.field("Contrast").is_displayed())
    assert page.text("property-count").startswith("1 of ")
    Select(page.element("visibility")).select_by_visible_text("Guru")
    assert not page.field("Contrast").is_displayed()


def test_draws_and_types_a_region(page):
    region = lambda: page.server.api("GET", f"/cameras/{page.camera}/region")["region"]
    page.click("region-open")
    page.click("region-draw")
    page.drag((-0.2, -0.2), (0.2, 0.2))
    page.wait(lambda: 0 < region()["width"] < 64 and 0 < region()["x"])
    page.wait(lambda: page.element("region-width").get_attribute("value") == str(region()["width"]))
    page.wait_text("frame-text", f"{region()['width']} × {region()['height']}")
    for name, text in (("x", "0"), ("width", "37")):
        page.element(f"region-{name}").send_keys(Keys.CONTROL + "a" + Keys.NULL + text)
    page.click("region-apply")
    page.wait(lambda: region()["x"] == 0 and region()["width"] == 40)
    page.wait_text("region-note", "The camera took 40")
    page.click("region-full")
    page.wait(lambda: region() == {"x": 0, "y": 0, "width": 64, "height": 48})


def test_captures_images_and_series(page, downloads):
    files = lambda pattern: [one for one in downloads.glob(pattern) if one.stat().st_size > 0]
    for name, start in (("PNG", b"\x89PNG"), ("TIFF", (b"II", b"MM")), ("JPEG", b"\xff\xd8")):
        Select(page.element("capture-format")).select_by_visible_text(name)
        page.click("capture")
        page.wait_text("capture-note", "Saved")
        suffix = {"TIFF": "tif*", "JPEG": "jp*"}.get(name, name.lower())
        assert wait_until(lambda: files(f"{page.camera}*.{suffix}"))[0].read_bytes().startswith(start)
        page.wait(lambda: page.element("capture").is_enabled())
    page.element("series-frames").send_keys(Keys.CONTROL + "a" + Keys.NULL + "4")
    page.click("record")
    page.wait_text("capture-note", ".tar")
    with tarfile.open(wait_until(lambda: files("*.tar"))[0]) as archive:
        assert len(archive.getnames()) == 4
    page.element("series-frames").send_keys(Keys.CONTROL + "a" + Keys.NULL + "0")
    page.click("record")
    page.wait_text("capture-note", "1 to 1000")


def test_saves_compares_and_loads_settings(page, downloads):
    page.click("tab-settings")
    page.click("settings-save")
    page.wait_text("settings-note", "Saved")
    file = wait_until(lambda: list(downloads.glob("*.json")))[0]
    json.loads(file.read_text())
    page.server.api("PUT", f"/cameras/{page.camera}/properties/Contrast", {"value": 2})
    page.element("settings-file").send_keys(str(file))
    page.wait_text("settings-chosen", file.name)
    page.click("settings-compare")
    page.wait_text("settings-results", "Contrast")
    page.click("settings-load")
    page.wait_text("settings-note", "written")
    assert float(page.value("Contrast")) == 1
    (downloads / "wrong.json").write_text("{")
    page.element("settings-file").send_keys(str(downloads / "wrong.json"))
    page.wait_text("settings-note", "no settings file")
    page.click("tab-properties")


def test_plots_statistics_and_says_them_in_words(page):
    page.click("tab-statistics")
    plot = lambda: page.driver.find_element(By.CSS_SELECTOR, "canvas.plot").get_attribute("aria-label")
    page.wait(lambda: "Received" in plot() and "Received 0 " not in plot())
    page.wait(lambda: page.driver.find_elements(By.CSS_SELECTOR, "#counters tr"))
    page.click("tab-log")
    page.click("tab-properties")


def test_switches_colours_and_keeps_them(page):
    back = lambda: page.driver.execute_script("return getComputedStyle(document.body).backgroundColor")
    seen = {back()}
    for _ in range(2):
        page.click("theme")
        seen.add(back())
    assert len(seen) == 2
    theme = page.element("theme").get_attribute("aria-label")
    page.driver.refresh()
    page.wait(lambda: page.element("theme").get_attribute("aria-label") == theme)
    page.click("theme")
