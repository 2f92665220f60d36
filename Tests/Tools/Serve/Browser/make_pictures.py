# SPDX-License-Identifier: Apache-2.0
"""Takes pictures of the page in colours for day and night, and on a phone. make_pictures.py FOLDER"""

import base64
import io
import pathlib
import sys
import tempfile

from PIL import Image

from browsing import Page, browsing, wait_until
from client import serving

PICTURES = {"light": ("light", 1440, 900, "properties"), "dark": ("dark", 1440, 900, "statistics"),
            "narrow": ("light", 390, 844, "properties")}
MOST_BYTES = 300_000


def save(png, file):
    """Writes a picture with as many colours as the size allows."""
    picture = Image.open(io.BytesIO(png)).convert("RGB")
    for colours in (256, 128, 64, 32):
        picture.quantize(colours, dither=Image.Dither.NONE).save(file, optimize=True)
        if file.stat().st_size < MOST_BYTES:
            return
    raise SystemExit(f"{file} is too large")


def main(folder):
    with tempfile.TemporaryDirectory() as scratch, serving(pathlib.Path(scratch)) as server, browsing() as driver:
        camera = server.api("GET", "/cameras")["cameras"][0]["serialNumber"]
        server.api("POST", f"/cameras/{camera}/connect", {})
        server.api("POST", f"/cameras/{camera}/stream/start", {})
        server.api("PUT", f"/cameras/{camera}/properties/Gain", {"value": 1.25})
        for name, (colours, width, height, tab) in PICTURES.items():
            driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": colours}]})
            driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                   {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
            page = Page(driver, server, camera)
            page.wait_pictures(5)
            page.click(f"tab-{tab}")
            driver.execute_script("scrollTo(0, 0)")
            page.point(30, 20)
            page.wait_text("pixel-values", "raw")
            if tab == "statistics":
                begin = page.frame()
                wait_until(lambda: page.frame() > begin + 300)  # so that the plots have lines
            save(base64.b64decode(driver.execute_cdp_cmd("Page.captureScreenshot", {})["data"]), folder / f"page-{name}.png")


main(pathlib.Path(sys.argv[1]))
