# SPDX-License-Identifier: Apache-2.0
import asyncio
import json
import locale
import pickle
import threading
import time

import numpy as np
import pytest

import _quill_devices as devices
import quillcamera
from conftest import PATIENCE, Thread, wait_until, withhold_frames


def test_values_have_the_types_of_their_properties(camera):
    for name, written, read in [
        ("Exposure", 12.5, 12.5),
        ("Exposure", np.float32(0.25), 0.25),
        ("Exposure", "20", 20.0),
        ("Exposure", 1e9, 2000.0),  # limited to the range
        ("Width", 32, 32),
        ("Width", np.uint16(48), 48),
        ("Width", np.array(56), 56),  # its bytes are the text "8"
        ("Auto Exposure Target", 111, 111),  # its text is "111.000000"
        ("Strobe", True, True),
        ("Strobe", np.bool_(False), False),
        ("Power Mode", "Y-Cable", "Y-Cable"),  # a switch with names of its own
        ("Pixel Format", 16, "16"),
        ("Framerate", 7.5, 7.5),
    ]:
        camera[name] = written
        assert camera[name] == read and type(camera[name]) is type(read), name
    exposure = camera.properties.exposure
    assert (exposure.name, exposure.unit, exposure.range, exposure.choices) == ("Exposure", "ms", (0.02, 2000.0), ())
    assert exposure.text == "2000.000000" and exposure.writable and not exposure.read_only
    exposure.reset()
    assert exposure.value == exposure.default
    assert camera.properties.width.step == 8 and exposure.step is None
    assert camera.properties.framerate.choices == (3.75, 7.5, 15.0)
    assert camera.properties.usb3_vision_mode.choices == (False, True)
    assert camera.properties.model_name.read_only
    for none in ([1], np.array([56])):
        with pytest.raises(TypeError):
            camera["Exposure"] = none


def test_attributes_are_names_by_one_rule(camera):
    for name, attribute in [
        ("X Offset", "x_offset"),
        ("FPGA2 Version", "fpga2_version"),
        ("ExposureTime", "exposure_time"),
        ("GevSCPSPacketSize", "gev_scps_packet_size"),
        ("2nd (Gain)", "_2nd_gain"),
        ("Class", "class_"),
    ]:
        assert quillcamera.attribute_name(name) == attribute
    assert {"x_offset", "exposure"} <= set(dir(camera.properties))
    camera.properties.exposure = 5
    assert camera.properties["Exposure"].value == 5 and "Exposure" in camera.properties
    for missing in ("exposures", "Exposure"):
        with pytest.raises(AttributeError):
            getattr(camera.properties, missing)
        with pytest.raises(AttributeError):
            setattr(camera.properties, missing, 1)


def test_failures_are_those_that_programs_expect(camera):
    for call, errors, word in [
        (lambda: camera["Iris Diaphragm"], (quillcamera.PropertyError, KeyError), "PropertyUnsupported"),
        (lambda: camera.perform("Fly"), (quillcamera.FunctionNotFoundError, KeyError), "FunctionUnsupported"),
        (lambda: quillcamera.open("7"), (quillcamera.CameraNotFoundError, KeyError), "CameraNotFound"),
        (lambda: camera.properties.shutter.__setattr__("value", "x"), (quillcamera.Error, ValueError), "PropertyValueConversion"),
        (lambda: camera.properties.exposure.__setattr__("value", "x"), (ValueError,), None),
        (lambda: camera.properties.exposure.__setattr__("value", "1e400"), (ValueError,), None),
        (lambda: camera.perform("Read Flash"), (quillcamera.InvalidArgumentError, ValueError), "ArgumentEmpty"),
        (lambda: camera.open_frame_queue(0), (quillcamera.InvalidArgumentError, ValueError), "ArgumentUnhandled"),
        (lambda: camera.write_settings("{"), (quillcamera.Error,), "SettingsInvalid"),
        (lambda: quillcamera.read_boot_image(b"x"), (ValueError,), None),
    ]:
        with pytest.raises(errors[0]) as raised:
            call()
        assert all(isinstance(raised.value, error) for error in errors)
        if word:
            copy = pickle.loads(pickle.dumps(raised.value))
            assert copy.word == word and str(copy) == raised.value.sentence and type(copy) is type(raised.value)
            assert "line #" in copy.where


def test_texts_are_independent_of_locale_and_encoding(camera):
    try:
        locale.setlocale(locale.LC_ALL, "de_DE.UTF-8")
    except locale.Error:
        pass
    try:
        camera["Exposure"] = 12.5
        assert camera["Exposure"] == 12.5
    finally:
        locale.setlocale(locale.LC_ALL, "C")
    camera.perform("Write Flash", 0, "\udcfb\u00e4")  # a text is UTF-8, and may hold any other byte
    assert camera.perform("Read Flash", 0, 3) == b"\xfb\xc3\xa4"


def test_functions_take_and_return_bytes(camera):
    assert camera.perform("Write Flash", 0x100, bytes(range(251, 256)) + b"\0\1") is None
    assert camera.functions["Read Flash"](0x100, 8) == bytes(range(251, 256)) + b"\0\1\xff"
    camera.perform("Write Flash", "0x200", np.arange(3, dtype="u1"))
    assert camera.perform("Read Flash", "0x200", 3) == b"\0\1\2"
    function = camera.functions["Read Flash"]
    assert function.parameters[1] == ("Length", "Integer") and function.results == [("Data", "String")]
    assert function.is_available


def test_a_progress_function_cancels_by_an_exception(camera):
    programmer = quillcamera.Programmer(camera)
    data = bytes(range(256)) * 64
    seen = []
    programmer.write_buffer_to_flash(data, 0x10000, progress=seen.append)
    assert seen[-1] == 1 and seen == sorted(seen) and programmer.compare_flash(data, 0x10000)

    def cancel(fraction):
        if fraction >= 0.5:
            raise InterruptedError

    with pytest.raises(InterruptedError):
        programmer.write_buffer_to_flash(bytes(len(data)), 0x10000, progress=cancel)
    assert not programmer.compare_flash(data, 0x10000)
    report = camera.play_xsvf(b"\0", seen.append)
    assert report.succeeded and camera.can_play_xsvf
    assert quillcamera.check_xsvf(b"\xfe").error == 4


def test_settings_are_a_document(camera, tmp_path):
    camera["Exposure"], camera["Width"] = 12.5, 32
    saved = json.loads(json.dumps(camera.read_settings()))
    camera["Exposure"], camera["Width"] = 30, 64
    assert {difference.name for difference in camera.compare_settings(saved)} >= {"Exposure", "Width"}
    names = []
    assert camera.write_settings(saved, progress=names.append).is_complete
    assert camera["Exposure"] == 12.5 and not camera.compare_settings(saved) and "Exposure" in names
    camera["Width"] = 64

    def end(name):
        raise LookupError(name)

    report = camera.write_settings(saved, progress=end)
    assert isinstance(report.interruption, LookupError) and not report.is_complete

    def stop(name):
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        camera.write_settings(saved, progress=stop)


def test_changes_of_properties_reach_a_function_that_may_use_the_camera(camera):
    seen = []
    camera.register_property_change_callback(lambda change: seen.append((change.name, camera[change.name])))
    camera["Video Exposure"] = 20
    assert ("Video Exposure", 20.0) in seen

    def fail(change):
        raise LookupError

    camera.register_property_change_callback(fail)
    with pytest.raises(LookupError):
        camera["Video Exposure"] = 30
    camera.register_property_change_callback(lambda change: quillcamera.end_workspace())
    with pytest.raises(quillcamera.Error) as raised:
        camera["Video Exposure"] = 40
    assert raised.value.word == "WouldWaitForItself"
    camera.register_property_change_callback(None)
    camera.properties.video_gain.register_on_change_callback(lambda change: seen.append(change.name))
    seen.clear()
    camera["Video Exposure"], camera["Video Gain"] = 50, 2
    assert seen == ["Video Gain"]
    camera.properties.video_gain.register_on_change_callback(None)
    camera["Video Gain"] = 1
    assert seen == ["Video Gain"]


def test_what_only_some_cameras_and_computers_have(camera):
    assert camera.read_gige() is None
    serial = devices.plug_gige()
    quillcamera.search_for_new_cameras()
    with quillcamera.open(str(serial)) as gige:
        settings, statistics, failure = gige.read_gige()
        assert (settings.camera_mac_address, settings.host_ip_address) == ("00:A:1B:3:4:F5", "192.168.1.2")
        assert "\n" in statistics and failure is None
        devices.fail_next(serial, "sdkGetStreamStats", 7)
        settings, statistics, failure = gige.read_gige()
        assert settings and statistics is None and failure.word == "GigEError"
    if quillcamera.is_zeph_installed():
        assert quillcamera.zeph_version()
    else:
        with pytest.raises(quillcamera.RegistryError) as missing:
            quillcamera.zeph_version()
        assert pickle.loads(pickle.dumps(missing.value)).code == 2


def test_rates_are_averaged_over_a_time_that_can_be_set(camera):
    camera.set_desired_interval_time("received", 0.25)
    statistics = camera.statistics
    assert (statistics["received_interval_time"], statistics["delivered_interval_time"]) == (0.25, 1.0)
    with pytest.raises(ValueError):
        camera.set_desired_interval_time("lost", 1)


def test_cameras_that_come_and_go_are_events(camera):
    gone = threading.Event()
    quillcamera.register_disconnect_callback(lambda model, serial: serial == "71" and gone.set())
    with quillcamera.events() as events:
        devices.unplug(71)
        event = next(events)
        assert (event.kind, event.serial_number, event.model_name) == ("disconnected", "71", "Model 613")
        assert gone.wait(PATIENCE)
        devices.replug(71)
        assert next(events)[:2] == ("connected", "71")
    assert list(events) == []
    assert quillcamera.open("71") != camera and not camera.is_listed and not camera.is_alive


def test_events_of_a_task_are_lost_neither_when_it_ends_nor_at_the_end(camera):
    async def watch(events, count=None):
        seen = []
        async for event in events:
            seen.append(event.kind)
            if len(seen) == count:
                break
        return seen

    with quillcamera.events() as events:
        for change in (devices.unplug, devices.replug):
            change(71)
            wait_until(lambda: events._queue.qsize() == (1 if change == devices.unplug else 2))
        assert asyncio.run(watch(events, 1)) == ["disconnected"]
        assert asyncio.run(watch(events, 1)) == ["connected"]
    assert asyncio.run(watch(events)) == asyncio.run(watch(events)) == []


def test_a_camera_that_is_used_is_not_destroyed_however_many_leave(camera):
    for serial in range(7100, 7170):
        devices.plug(serial)
    quillcamera.search_for_new_cameras()
    others = [quillcamera.Camera(str(serial)) for serial in range(7100, 7170)]
    begun = threading.Event()
    kept = []

    def hold(fraction):  # the call until the others are gone, if they go
        begun.set()
        end = time.monotonic() + 1
        while time.monotonic() < end and any(other.is_listed for other in others):
            time.sleep(0.01)
        kept.append(any(other.is_listed for other in others))

    writing = Thread(lambda: quillcamera.Programmer(camera).write_buffer_to_flash(bytes(65536), 0, progress=hold))
    assert begun.wait(PATIENCE)
    for serial in (71, *range(7100, 7170)):
        devices.unplug(serial)
    with pytest.raises(quillcamera.Error):
        writing.result()
    assert kept[0]  # the 64th to leave waits for the call
    wait_until(lambda: not any(other.is_listed for other in others))


def test_threads_take_turns_with_a_camera(camera):
    """One waits for an image that does not come: another one may only stop it."""
    withhold_frames(camera)
    waiting = Thread(camera.capture)
    reading = Thread(camera.__getitem__, "Exposure")
    while not devices.is_streaming(71):
        pass
    camera.stop_stream()
    with pytest.raises(quillcamera.StreamStoppedError):
        waiting.result()
    assert reading.result() == 10.0
