# SPDX-License-Identifier: Apache-2.0
"""Eight threads use cameras in every way while these come and go. Argument: seconds."""

import contextlib
import faulthandler
import itertools
import random
import sys
import threading
import time
import traceback

import _quill_devices as devices
import quillcamera

THREADS = 8
DEVICES = range(71, 75)


def read(camera, _):
    camera.properties[random.choice(list(camera.properties))].value


def write(camera, _):
    camera["Exposure"] = random.uniform(1, 20)
    camera.properties.width.reset()


def capture(camera, images):
    images.append(camera.capture().convert("BGR").array)


def loop(camera, images):
    for frame in camera.stream(queue=random.randint(1, 4), count=5, when_full=random.choice(["drop_oldest", "hold_back"]), timeout=2):
        images.append(frame.image.array)


def call_back(camera, images):
    camera.set_frame_callback(lambda frame: images.append(frame.image.array))
    camera.start_stream()
    camera.set_frame_callback(None)


def perform(camera, _):
    camera.perform("Write Flash", 0, bytes(64))
    quillcamera.Programmer(camera).compare_flash(bytes(64), 0, progress=lambda fraction: None)


def observe(camera, _):
    camera.register_property_change_callback(lambda change: change.value)
    repr(camera), camera.counters, camera.statistics, camera.read_settings()


def close(camera, _):
    camera.stop_stream()
    camera.disconnect()


def use_cameras(until, tally):
    images = []
    while time.monotonic() < until:
        try:
            camera = quillcamera.open(str(random.choice(DEVICES)))
            for step in random.choices([read, write, capture, loop, call_back, perform, observe, close], k=5):
                step(camera, images)
                tally[step.__name__] = tally.get(step.__name__, 0) + 1
        except (quillcamera.Error, ValueError) as failure:  # ValueError: a frame rate between two clock speeds
            tally[type(failure).__name__] = tally.get(type(failure).__name__, 0) + 1
            time.sleep(0.001)  # while the workspace ends, every call fails at once
        assert all(image.sum() >= 0 for image in images)
        del images[:-4]


def list_cameras(model, serial):
    with contextlib.suppress(quillcamera.CameraGoneError):  # the workspace ends
        quillcamera.cameras()


def plug_and_unplug(until):
    for number in itertools.count():
        if time.monotonic() >= until:
            return
        device = random.choice(DEVICES)
        devices.unplug(device)
        time.sleep(random.uniform(0, 0.02))
        devices.replug(device)
        quillcamera.search_for_new_cameras()
        quillcamera.register_disconnect_callback(list_cameras)
        if number % 20 == 19:
            quillcamera.end_workspace()
        quillcamera.events().close()


def main(seconds):
    faulthandler.dump_traceback_later(600, exit=True)
    failures, tally = [], {}
    devices.start_empty()
    for serial in DEVICES:
        devices.plug(serial, like=serial % 3)
    until = time.monotonic() + seconds


    def guarded(function, *arguments):
        try:
            function(*arguments)
        except BaseException:
            failures.append(traceback.format_exc())

    threads = [threading.Thread(target=guarded, args=(use_cameras, until, tally)) for _ in range(THREADS)]
    threads.append(threading.Thread(target=guarded, args=(plug_and_unplug, until)))
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    print(dict(sorted(tally.items())))
    sys.exit("\n".join(failures) or None if tally else "Nothing was done.")


if __name__ == "__main__":
    main(float(sys.argv[1]))
