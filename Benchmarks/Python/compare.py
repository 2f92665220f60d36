# SPDX-License-Identifier: Apache-2.0
"""Compares what Python costs with C++, in one run. With --short, ends with 1 only beyond twice the limits."""

import statistics
import sys
import time

import numpy as np

import _quill_reference as reference
import quillcamera

SERIAL = "41500101"
ROUNDS = 11


def take_frames(camera, count):
    total = 0
    with camera.open_frame_queue(8, "hold_back") as frames:
        begin = time.perf_counter()
        for _ in range(count):
            total += int(frames.pop().image.array[0, 0])
        seconds = time.perf_counter() - begin
    assert total > 0
    return seconds


def read_property(camera, name, count):
    total = 0.0
    begin = time.perf_counter()
    for _ in range(count):
        total += camera[name]
    seconds = time.perf_counter() - begin
    assert total > 0
    return seconds


def compare(what, limit, in_cpp, in_python, count, rounds):
    """Prints times in turn, and the median of their ratios; returns how far the limit is exceeded."""
    pairs = [(in_cpp(), in_python()) for _ in range(rounds)]
    ratio = statistics.median(python / cpp for cpp, python in pairs)
    cpp, python = (statistics.median(times) / count * 1e6 for times in zip(*pairs))
    print(f"{what:<44} C++ {cpp:9.2f} us   Python {python:9.2f} us   ratio {ratio:5.2f}   limit {limit}")
    return ratio / limit


def main(is_short):
    rounds = 3 if is_short else ROUNDS
    with quillcamera.open(SERIAL) as camera:
        reference.set_as_fast_as_asked(int(SERIAL))
        frame = next(iter(camera.stream()))
        address = frame.image.array.ctypes.data
        assert address == np.frombuffer(frame.image, "u1").ctypes.data == frame.image.array.ctypes.data, "a copy"
        camera.start_stream()
        excess = [
            compare(
                "a frame of 2592 x 1944 into a NumPy array",
                1.1,
                lambda: reference.take_frames(SERIAL, 100),
                lambda: take_frames(camera, 100),
                100,
                rounds,
            )
        ]
        camera.stop_stream()
        excess.append(
            compare(
                '"Exposure" read as a number',
                10,
                lambda: reference.read_property(SERIAL, "Exposure", 5000),
                lambda: read_property(camera, "Exposure", 5000),
                5000,
                rounds,
            )
        )
    sys.exit(max(excess) > (2 if is_short else 1))


if __name__ == "__main__":
    main("--short" in sys.argv)
