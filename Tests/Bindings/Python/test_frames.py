# SPDX-License-Identifier: Apache-2.0
import asyncio
import gc
import os
import signal
import sys
import threading
import time

import numpy as np
import pytest

import _quill_devices as devices
import quillcamera
from conftest import PATIENCE, Thread, wait_until, withhold_frames, without_sanitizer


def test_a_loop_gets_every_frame_and_leaves_the_stream_as_it_was(camera):
    frames = list(camera.stream(queue=100, count=20, when_full="hold_back"))
    assert [frame.number for frame in frames] == list(range(1, 21))
    assert not camera.is_streaming
    camera.start_stream()
    for _ in camera.stream():
        break
    assert camera.is_streaming
    camera["Exposure"] = 33.0
    exposures = (frame.exposure for frame in camera.stream(queue=1))
    assert 33.0 in exposures
    frame = next(iter(camera.stream()))
    assert frame.run == 2 and abs(time.monotonic_ns() - frame.arrival) < PATIENCE * 1e9


def test_a_frame_is_seen_without_a_copy_and_outlives_its_camera_and_workspace(camera):
    frame = next(iter(camera.stream()))
    array = frame.image.array
    assert array.shape == (48, 64) and not array.flags.writeable and not array.flags.owndata
    assert array.ctypes.data == frame.image.array.ctypes.data == np.asarray(memoryview(frame.image)).ctypes.data
    with pytest.raises(ValueError):
        array.flags.writeable = True
    pixels = [[max(frame.image.get_pixel(row, column)) for column in range(64)] for row in range(48)]
    del frame
    quillcamera.end_workspace()
    gc.collect()
    assert np.array_equal(array, pixels)


def test_frames_of_the_other_byte_order_say_so(camera):
    devices.plug(72, big_endian=True)
    quillcamera.search_for_new_cameras()
    with quillcamera.open("72") as other:
        other["Pixel Format"] = 16
        image = other.capture()
        assert image.array.dtype == np.dtype(">u2") and not image.is_little_endian
        assert image.array[3, 5] == max(image.get_pixel(3, 5))
        other["Pixel Format"] = 24
        image = other.capture()
        assert image.array.shape == (48, 64, 3) and image.nbytes == 48 * 64 * 3


def test_the_end_of_a_loop_has_its_reason(camera):
    frames = camera.stream()
    for number, _ in enumerate(frames):
        if number == 2:
            camera.stop_stream()  # an ordinary end
    withhold_frames(camera)
    with pytest.raises(TimeoutError) as timeout:
        list(camera.stream(timeout=0.01))
    assert isinstance(timeout.value, quillcamera.StreamTimeoutError) and timeout.value.word == "StreamTimeout"
    waiting = Thread(list, camera.stream())
    wait_until(lambda: devices.is_streaming(71))
    devices.unplug(71)
    with pytest.raises(ConnectionError, match="The camera is gone.") as gone:
        waiting.result()
    assert isinstance(gone.value, quillcamera.CameraGoneError)
    with pytest.raises(quillcamera.CameraGoneError):
        camera["Exposure"]
    assert "gone" in repr(camera)


def test_workspace_end_ends_waits_of_other_threads(camera):
    queue = camera.open_frame_queue()
    withhold_frames(camera)
    waits = [Thread(camera.capture), Thread(list, camera.stream()), Thread(queue.wait_for_run)]
    wait_until(lambda: devices.is_streaming(71))
    quillcamera.end_workspace()
    for wait in waits:
        try:
            wait.result()
        except quillcamera.StreamError:
            pass
    with pytest.raises(quillcamera.CameraGoneError):
        camera.connect()
    with quillcamera.open("71") as again:
        assert again != camera


@pytest.mark.parametrize("wait", ["pop", "capture", "events"])
def test_control_c_ends_a_wait_at_once(camera, wait):
    withhold_frames(camera)
    queue = camera.open_frame_queue()
    events = quillcamera.events()
    sent = []

    def interrupt():
        wait_until(lambda: wait != "capture" or devices.is_streaming(71))
        sent.append(time.monotonic())
        os.kill(os.getpid(), signal.SIGINT)

    if wait == "pop":
        camera.start_stream()
    threading.Timer(0.2, interrupt).start()
    with pytest.raises(KeyboardInterrupt):
        {"pop": queue.pop, "capture": camera.capture, "events": lambda: next(events)}[wait]()
    assert time.monotonic() - sent[0] < PATIENCE / 2
    camera.stop_stream()
    camera["Hardware Trigger"] = False
    assert camera.capture().width == 64  # the camera is free again


def test_a_frame_callback_gets_frames_until_it_is_replaced(camera, monkeypatch):
    numbers, dropped = [], []
    monkeypatch.setattr(sys, "unraisablehook", lambda failure: dropped.append(failure.exc_type))
    enough = threading.Event()

    def see(frame):
        numbers.append(frame.number)
        if len(numbers) == 5:
            enough.set()
            raise ZeroDivisionError

    camera.set_frame_callback(see, capacity=50)
    camera.start_stream()
    assert enough.wait(PATIENCE)
    camera.set_frame_callback(None)
    count = len(numbers)
    camera.stop_stream()
    assert len(numbers) == count and numbers == sorted(numbers)
    assert dropped == [ZeroDivisionError]


def test_a_frame_callback_that_waits_for_its_turn_can_be_replaced(camera):
    begun = threading.Event()
    words = []

    def see(frame):
        begun.set()
        for _ in range(200):
            camera["Exposure"]
        try:
            camera.set_frame_callback(None)
        except quillcamera.Error as failure:
            words.append(failure.word)

    camera.start_stream()
    for successor in (see, see, None):
        camera.set_frame_callback(see)
        with pytest.raises(quillcamera.InvalidArgumentError):
            camera.set_frame_callback(see, capacity=0)
        begun.clear()
        assert begun.wait(PATIENCE)  # the former one stays after a failure
        Thread(camera.set_frame_callback, successor).result()
    assert set(words) == {"WouldWaitForItself"}


def test_tasks_go_on_beside_a_loop_that_always_has_a_frame(camera):
    async def consume(numbers):
        async for frame in camera.stream():
            numbers.append(frame.number)
            assert len(numbers) < 50
            wait_until(lambda: camera.counters["Delivered"] > frame.number + 1)

    async def main():
        numbers = []
        task = asyncio.create_task(consume(numbers))
        while not numbers and not task.done():
            await asyncio.sleep(0)
        task.cancel()
        with pytest.raises(asyncio.CancelledError):
            await task

    asyncio.run(main())
    assert not camera.is_streaming


def test_tasks_share_an_event_loop_with_frames(camera):
    async def main():
        numbers = []
        async for frame in camera.stream(count=5):
            numbers.append(frame.number)
        withhold_frames(camera)
        waiting = asyncio.create_task(consume())
        await begin()  # the event loop goes on
        waiting.cancel()
        with pytest.raises(asyncio.CancelledError):
            await waiting
        waiting = asyncio.create_task(consume())
        await begin()
        devices.unplug(71)
        with pytest.raises(quillcamera.CameraGoneError):
            await waiting
        return numbers

    async def begin():
        while not camera.is_streaming:
            await asyncio.sleep(0.001)

    async def consume():
        async for _ in camera.stream():
            pass

    assert len(asyncio.run(main())) == 5


@without_sanitizer
def test_ten_thousand_frames_leave_nothing_behind(camera):
    def resident():
        with open("/proc/self/statm") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")

    def run(count):
        total = 0
        for frame in camera.stream(queue=4, count=count, when_full="hold_back"):
            total += int(frame.image.array[0, 0]) + frame.image.convert("RGB").width
        gc.collect()
        return total

    run(500)
    objects, memory = len(gc.get_objects()), resident()
    run(10000)
    assert len(gc.get_objects()) - objects < 50
    assert resident() - memory < 4 << 20  # less than 420 bytes for each of the frames, which have 3072
