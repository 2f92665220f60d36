# SPDX-License-Identifier: Apache-2.0
"""Measures what `quill serve` achieves with a browser, and with ten viewers of which two are slow: rates, latency, CPU.

measure.py [SECONDS]; QUILL_UNDER_TEST names the tool. Needs chromium, chromedriver and python3-selenium.
"""

import os
import pathlib
import statistics
import sys
import tempfile
import threading
import time

TESTS = pathlib.Path(__file__).resolve().parents[2] / "Tests/Tools/Serve"
sys.path += [str(TESTS), str(TESTS / "Browser")]
from browsing import Page, browsing  # noqa: E402
from client import Viewer, serving  # noqa: E402

SECONDS = float(sys.argv[1]) if len(sys.argv) > 1 else 20
GREY = "41500102"
COLOUR = "41500101"  # 5 MP
VGA = {"x": 0, "y": 0, "width": 640, "height": 480}
CLOCK_TICKS = os.sysconf("SC_CLK_TCK")

# Notes how long after its arrival at the server each frame is on the canvas: once the browser has drawn it.
NOTE_LATENCIES = """
const done = arguments[0];
import("./bus.js").then(({ on }) => {
    window.latencies = [];
    on("frame", (frame) => frame && requestAnimationFrame(() => requestAnimationFrame(
        () => window.latencies.push(Date.now() - frame.arrival))));
    done();
});"""


def cpu_seconds(process):
    fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / CLOCK_TICKS


def frames_captured(server, camera):
    counters = server.api("GET", f"/cameras/{camera}/statistics")["counters"]
    return next(one["value"] for one in counters if one["name"] == "Captured")


def over_a_while(server, camera, count):
    """Returns per second: frames of the camera, what count() counts, and CPU time of the server, devices in software included."""
    values = lambda: [time.monotonic(), frames_captured(server, camera), count(), cpu_seconds(server.process)]
    before = values()
    time.sleep(SECONDS)
    seconds, *sums = [now - then for now, then in zip(values(), before)]
    return [each / seconds for each in sums]


def stream(server, camera, rate, region=None):
    server.api("POST", f"/cameras/{camera}/connect", {})
    if region:
        server.api("PUT", f"/cameras/{camera}/region", region)
    server.api("PUT", f"/cameras/{camera}/properties/Framerate", {"value": str(rate)})
    server.api("POST", f"/cameras/{camera}/stream/start", {})


def view_in_browser(server, driver, camera, name):
    page = Page(driver, server, camera)
    page.wait_pictures(10)
    driver.execute_async_script(NOTE_LATENCIES)
    frames, shown, cpu = over_a_while(server, camera, lambda: driver.execute_script("return window.latencies.length"))
    latencies = sorted(driver.execute_script("return window.latencies"))
    print(f"{name:24} camera {frames:5.1f}/s  shown {shown:5.1f}/s  server {100 * cpu:4.0f} % of a core  "
          f"arrival to canvas {statistics.median(latencies):4.0f} ms, 95 %: {latencies[len(latencies) * 95 // 100]:4.0f} ms")


def view_by_ten(server, camera):
    slow = [Viewer(server, camera, receive_buffer=2048) for _ in range(2)]
    fast = [Viewer(server, camera) for _ in range(8)]
    for viewer in slow:  # they ask, and never read
        for _ in range(100):
            viewer.say({"type": "ready", "credits": 2})
    counts = [0] * len(fast)
    is_over = False

    def view(index):
        while not is_over:
            fast[index].say({"type": "ready"})
            fast[index].hear_picture()
            counts[index] += 1

    threads = [threading.Thread(target=view, args=(index,)) for index in range(len(fast))]
    for thread in threads:
        thread.start()
    frames, pictures, cpu = over_a_while(server, camera, lambda: sum(counts))
    is_over = True
    for thread in threads:
        thread.join()
    for viewer in slow + fast:
        viewer.close()
    print(f"{'VGA grey, ten viewers':24} camera {frames:5.1f}/s  eight quick ones {pictures / len(fast):5.1f}/s each  "
          f"server {100 * cpu:4.0f} % of a core")


with tempfile.TemporaryDirectory() as scratch, serving(pathlib.Path(scratch)) as server:
    stream(server, GREY, 30, VGA)
    with browsing() as driver:
        view_in_browser(server, driver, GREY, "VGA grey, 30 frames/s")
    view_by_ten(server, GREY)
    server.api("POST", f"/cameras/{GREY}/disconnect", {})
    stream(server, COLOUR, 15)
    with browsing() as driver:
        view_in_browser(server, driver, COLOUR, "5 MP colour, 15 frames/s")
