# SPDX-License-Identifier: Apache-2.0
import os
import threading
import time

import pytest

import _quill_devices as devices
import quillcamera

PATIENCE = 60  # seconds; only a failure takes so long
without_sanitizer = pytest.mark.skipif(
    "ASAN_OPTIONS" in os.environ,
    reason="sanitizers keep freed memory, and their locks when a process forks while threads allocate",
)


@pytest.fixture
def camera():
    """A connected colour camera of 64 x 48 pixels, the only device in software."""
    quillcamera.end_workspace()
    devices.start_empty()
    devices.plug(71)
    with quillcamera.open("71") as camera:
        yield camera
    quillcamera.end_workspace()
    devices.start_empty()


def withhold_frames(camera):
    """From the next start on, frames wait for a trigger that does not come."""
    camera["Streaming Mode"] = "Still"
    camera["Hardware Trigger"] = True
    camera["Timeout"] = 1000 * PATIENCE


def wait_until(condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.001)


class Thread(threading.Thread):
    """A thread whose end gives its result, or raises its exception."""

    def __init__(self, function, *arguments):
        super().__init__(daemon=True)
        self.function, self.arguments = function, arguments
        self.outcome, self.failure = None, None
        self.start()

    def run(self):
        try:
            self.outcome = self.function(*self.arguments)
        except BaseException as failure:
            self.failure = failure

    def result(self):
        self.join(PATIENCE)
        assert not self.is_alive()
        if self.failure is not None:
            raise self.failure
        return self.outcome
