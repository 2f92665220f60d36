# SPDX-License-Identifier: Apache-2.0
"""What happens when processes end and fork, each in a process of its own: nothing is printed, and nothing crashes."""

import subprocess
import sys
import textwrap

import pytest

from conftest import PATIENCE, without_sanitizer

BEGIN = """
import os, sys, threading, time
import _quill_devices as devices
import quillcamera
devices.start_empty()
devices.plug(71)
camera = quillcamera.open("71")
"""

WAYS_TO_EXIT = {
    "live_stream": "camera.start_stream()",
    "live_loop": "loop = iter(camera.stream()); next(loop)",
    "frame_callback": "camera.set_frame_callback(lambda frame: frame.image.array.sum()); camera.start_stream()",
    "daemon_threads": """
        def loop():
            while True:
                for frame in camera.stream(): frame.image.convert("RGB")
        def capture():
            while True:
                camera.capture()
        for target in (loop, loop, capture): threading.Thread(target=target, daemon=True).start()
        sys.unraisablehook = threading.excepthook = lambda failure: None  # these threads end by an exception
        time.sleep(0.1)""",
    "events": "events = quillcamera.events(); threading.Thread(target=list, args=(events,), daemon=True).start()",
    "callbacks": """
        quillcamera.register_disconnect_callback(lambda model, serial: camera.stop_stream())
        camera.register_property_change_callback(lambda change: camera)
        devices.unplug(71)""",
    "array": "array = camera.capture().array; quillcamera.end_workspace(); assert array.sum() > 0",
    "interrupt_at_exit": """
        import atexit, signal
        def interrupt(*ignored):
            assert not camera.is_listed, "the end was given up"
        signal.signal(signal.SIGALRM, interrupt)
        devices.delay(71, "sdkGetProperty", 1000)
        threading.excepthook = lambda failure: None
        threading.Thread(target=lambda: camera["Exposure"], daemon=True).start()
        time.sleep(0.1)
        atexit.register(lambda: signal.setitimer(signal.ITIMER_REAL, 0.3))""",
    "late_use": "import atexit; atexit.register(lambda: print(camera))",
}


def run(code):
    program = BEGIN + textwrap.dedent(code)
    process = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=10 * PATIENCE)
    assert process.stderr == "" and process.returncode == 0
    return process.stdout


@pytest.mark.parametrize("way", WAYS_TO_EXIT)
def test_exit_is_clean_with(way):
    run(WAYS_TO_EXIT[way])


@without_sanitizer
def test_a_forked_child_has_images_and_cameras_of_its_own():
    assert (
        run(
            """
        devices.plug(72)
        frame = next(iter(camera.stream(queue=2)))
        queue = camera.open_frame_queue()
        camera.start_stream()
        threading.Thread(target=camera.capture).start()
        children = []
        for _ in range(5):
            child = os.fork()
            if child:
                children.append(child)
                camera["Exposure"]
                continue
            frame.image.convert("RGB").array.sum()
            for use in (lambda: camera["Exposure"], camera.stop_stream, queue.pop, camera.capture):
                try:
                    use()
                except quillcamera.CameraGoneError as failure:
                    assert "parent" in str(failure)
                else:
                    os._exit(2)
            del camera, queue, frame
            devices.plug(72)
            with quillcamera.open("72") as own:
                assert own.capture().width == 64
            sys.exit(0)
        for child in children:
            assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
        queue.pop()
        print("done")
        """
        )
        == "done\n"
    )


def test_control_c_ends_the_process_within_a_loop():
    code = """
        camera["Streaming Mode"] = "Still"
        camera["Hardware Trigger"] = True
        import signal
        threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()
        try:
            for frame in camera.stream(): pass
        except KeyboardInterrupt:
            print("interrupted", camera.is_streaming)"""
    assert run(code) == "interrupted False\n"
