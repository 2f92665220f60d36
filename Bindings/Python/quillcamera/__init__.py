# SPDX-License-Identifier: Apache-2.0
"""Cameras, however they are connected, through one model: named properties, named functions, images.

    import quillcamera

    with quillcamera.open("41500101") as camera:
        camera["Exposure"] = 12.5
        for frame in camera.stream(count=10):
            print(frame.number, frame.image.array.mean())

The list of cameras is filled when it is first asked for, and kept up to date. When Python exits, streams are stopped and
cameras closed. What fails raises a subclass of quillcamera.Error, or ValueError, OSError or RuntimeError.
"""

from __future__ import annotations

import atexit as _atexit
import contextlib as _contextlib
from typing import Any, Dict, List, Optional, Sequence

from . import _errors, _hotplug, network
from . import _quillcamera as _native
from ._cameras import Camera, Function, Properties, Settings, attribute_name
from ._errors import *
from ._hotplug import Events, events, register_disconnect_callback, register_new_connect_callback
from ._programmer import Programmer, check_xsvf, read_boot_image
from ._quillcamera import FORMATS, Frame, FrameQueue, Image, Property
from ._streams import Stream
from ._types import (
    BootImage,
    BootImageSection,
    Counter,
    Event,
    GigEDescription,
    GigESettings,
    Parameter,
    SettingDifference,
    SettingsReport,
    XsvfReport,
)


def open(serial_number: str) -> Camera:
    """Finds a camera by its serial number and connects it.

    CameraNotFoundError, CameraConnectionError
    """
    camera = Camera(serial_number)
    camera.connect()
    return camera


def cameras() -> List[Camera]:
    """Returns the listed cameras, by serial number."""
    found = []
    for serial_number in _native.get_cameras_list():
        with _contextlib.suppress(CameraNotFoundError):  # it left meanwhile
            found.append(Camera(serial_number))
    return found


def search_for_new_cameras() -> int:
    """Searches for cameras now; otherwise a thread does every five seconds. Returns how many were added."""
    return _native.search_for_new_cameras()


def enumeration_failures() -> Dict[str, str]:
    """Returns why whole kinds of cameras could not be looked for, by kind; empty if all could."""
    return _native.get_enumeration_failures()


def initialise_workspace() -> None:
    """Fills the list of cameras and starts to watch it, as the first use of the list does by itself."""
    _native.initialise_workspace()


def end_workspace() -> None:
    """Ends all loops and waits, closes all cameras and stops watching, as the end of Python does by itself.

    Waits for calls of other threads. Cameras that were found before raise CameraGoneError; the next use of the list fills
    it again. Error "WouldWaitForItself": called by a callback
    """
    _native.end_workspace(False)
    _hotplug._list.end()


def use_genicam(
    cards: Sequence[str] = (),
    addresses: Sequence[str] = (),
    *,
    usb: bool = True,
    packet_socket: bool = False,
    heartbeat_ms: int = 0,
) -> None:
    """Says where GigE Vision and USB3 Vision cameras of any maker are looked for; the next search uses it.

    cards          network cards, such as "eth1", on which a broadcast goes out twice a second
    addresses      IPv4 addresses of cameras
    usb            whether USB3 Vision cameras are looked for
    packet_socket  whether frames are received through a packet socket, for which the process needs CAP_NET_RAW
    heartbeat_ms   time without a sign of life after which a camera becomes free, 500 to 3,600,000; 0: the camera's own
    Until the first call, /etc/quillcamera/genicam.conf and the environment variable QUILL_GENICAM say it.
    InvalidArgumentError: what is not a card's name, address or time
    """
    _native.use_genicam(list(cards), list(addresses), usb, packet_socket, heartbeat_ms)


def genicam_settings() -> Dict[str, Any]:
    """Returns what use_genicam() was last called with, by parameter. Error "SettingsInvalid": the file cannot be read"""
    return _native.genicam_settings()


def zeph_version() -> str:
    """Returns the version of the maker's driver kit. RegistryError: it is not installed, or its record cannot be read"""
    return _native.zeph_version()


def is_zeph_installed() -> bool:
    """Whether the maker's driver kit is installed."""
    return _native.is_zeph_installed()


def _end_at_exit() -> None:
    _native.end_workspace(True)
    _hotplug._list.end()


_atexit.register(_end_at_exit)
