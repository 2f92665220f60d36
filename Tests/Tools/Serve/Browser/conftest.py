# SPDX-License-Identifier: Apache-2.0
import pytest

from browsing import Page, browsing
from client import serving


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    with serving(tmp_path_factory.mktemp("server"), device="small") as running:
        yield running


@pytest.fixture(scope="module")
def downloads(tmp_path_factory):
    return tmp_path_factory.mktemp("downloads")


@pytest.fixture(scope="module")
def driver(downloads):
    with browsing(downloads) as running:
        yield running


@pytest.fixture(scope="module")
def device(server):
    """The serial number of the device in software."""
    return next(one["serialNumber"] for one in server.api("GET", "/cameras")["cameras"] if "software" in one["kind"])


@pytest.fixture
def page(driver, server, device):
    """The page with the streaming device."""
    server.api("POST", f"/cameras/{device}/connect", {})
    server.api("POST", f"/cameras/{device}/stream/start", {})
    opened = Page(driver, server, device)
    opened.wait_text("link-text", "Connected")
    opened.wait_pictures()
    opened.field("Contrast")
    yield opened
    assert opened.complaints() == []
