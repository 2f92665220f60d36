# SPDX-License-Identifier: Apache-2.0
"""Cameras, their properties and their functions."""

from __future__ import annotations

import contextlib
import functools
import json
import keyword
import re
from typing import Any, Callable, Dict, Iterator, List, Optional, Union

from . import _quillcamera as native
from ._errors import CameraGoneError, CameraStateError, Error
from ._quillcamera import Property
from ._streams import Stream
from ._types import (
    GigEDescription,
    GigESettings,
    Parameter,
    SettingDifference,
    SettingsReport,
    Value,
    WhenFull,
    XsvfReport,
)

Settings = Dict[str, Any]
"""What a camera is set to, in the form of its JSON document: {"format": 1, "camera": {...}, "properties": {...}}."""


@functools.lru_cache(maxsize=4096)
def attribute_name(name: str) -> str:
    """Returns the attribute of Camera.properties and Camera.functions for a name in the camera's list.

    Words are in lower case and joined by "_"; a word begins after a character that is neither letter nor digit, and at a
    capital letter that follows a small one or a digit, or precedes a small one: "X Offset" is x_offset, "FPGA2 Version"
    fpga2_version, "ExposureTime" exposure_time. Before a digit at the beginning, and after a word of Python, stands "_".
    """
    words = re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name)
    attribute = re.sub(r"[^A-Za-z0-9]+", "_", words).strip("_").lower()
    if not attribute or attribute[0].isdigit():
        return "_" + attribute
    return attribute + "_" if keyword.iskeyword(attribute) else attribute


class Properties:
    """The properties of a camera, by name in brackets and by attribute: see attribute_name().

    camera.properties["X Offset"] and camera.properties.x_offset are the same Property. Assigning to one writes its
    value. Of two names that give one attribute, the attribute stands for the first in byte-wise order.
    """

    __slots__ = ("_camera",)
    _camera: Camera

    def __init__(self, camera: Camera) -> None:
        object.__setattr__(self, "_camera", camera)

    def _name(self, attribute: str) -> str:
        if not attribute.startswith("__"):
            for name in self:
                if attribute_name(name) == attribute:
                    return name
        raise AttributeError(f"{self._camera!r} has no property {attribute!r}")

    def __getitem__(self, name: str) -> Property:
        return self._camera.get_property(name)

    def __setitem__(self, name: str, value: Value) -> None:
        self._camera[name] = value

    def __getattr__(self, attribute: str) -> Property:
        return self[self._name(attribute)]

    def __setattr__(self, attribute: str, value: Value) -> None:
        self[self._name(attribute)] = value

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and name in self._camera

    def __iter__(self) -> Iterator[str]:
        return iter(self._camera.get_supported_properties())

    def __len__(self) -> int:
        return len(self._camera.get_supported_properties())

    def __dir__(self) -> List[str]:
        return [*super().__dir__(), *(attribute_name(name) for name in self)]

    def __repr__(self) -> str:
        return f"<Properties of {self._camera!r}: {', '.join(self)}>"


class Function:
    """A function of a camera: a call performs it, as Camera.perform() does."""

    __slots__ = ("name", "_camera")

    def __init__(self, camera: Camera, name: str) -> None:
        self._camera = camera
        self.name = name

    def __call__(self, *parameters: Union[Value, bytes]) -> Any:
        return self._camera.perform(self.name, *parameters)

    @property
    def parameters(self) -> List[Parameter]:
        return [Parameter(*parameter) for parameter in self._camera._describe_function(self.name)[0]]

    @property
    def results(self) -> List[Parameter]:
        return [Parameter(*result) for result in self._camera._describe_function(self.name)[1]]

    @property
    def is_available(self) -> bool:
        """Whether it can be performed now."""
        return self._camera._describe_function(self.name)[2]

    def __repr__(self) -> str:
        with contextlib.suppress(Error):
            return f"<Function {self.name}({', '.join(f'{label}: {type}' for label, type in self.parameters)})>"
        return f"<Function {self.name}>"


class Camera(native.CameraBase):
    """A camera of the list.

    Camera("41500101") finds it, connect() opens it; quillcamera.open() does both. As a context manager, a camera is
    connected inside, and disconnected afterwards.

        camera["Exposure"] = 12.5               # by the name of a property
        camera.properties.exposure.value        # by attribute, with unit, range, choices, ...
        image = camera.capture()                # the next image
        for frame in camera.stream(count=10):   # every frame
            print(frame.number, frame.image.array.mean())

    All objects for one camera are equal. They may be used by several threads: each call waits for its turn, and other
    threads of Python run meanwhile. A camera that left the list, because it was unplugged or the workspace ended, raises
    CameraGoneError from then on; after its return, quillcamera.open() gives a new object. In a forked child, cameras of
    the parent do the same, and images may be used.
    """

    @property
    def properties(self) -> Properties:
        """The properties, by attribute and by name."""
        return Properties(self)

    @property
    def functions(self) -> Dict[str, Function]:
        """The functions, by name."""
        return {name: Function(self, name) for name in self.get_supported_functions()}

    def stream(
        self,
        queue: int = 8,
        *,
        when_full: WhenFull = "drop_oldest",
        timeout: Optional[float] = None,
        count: Optional[int] = None,
        name: str = "",
    ) -> Stream:
        """Returns every frame, for a loop: `for frame in camera.stream():`, or `async for`.

        The loop starts the stream if it does not run, and then stops it when it ends. Another thread that stops the
        stream, or Camera.suspend(), ends the loop.

        queue, when_full, name  as open_frame_queue(): what happens to frames for which the loop is too slow
        timeout                 seconds that a frame may take; None for any time
        count                   number of frames after which the loop ends; None for any number
        In the loop: StreamTimeoutError; CameraGoneError when the camera is unplugged; StreamStoppedError when the camera
        ends its capture by itself; what start_stream() and open_frame_queue() raise
        """
        return Stream(self, queue, when_full, timeout, count, name)

    def read_settings(self) -> Settings:
        """Returns the values of all properties that are not read-only, as a dict that JSON can hold.

        It has the form of the document that `quill settings save` writes: json.dump() and json.load() exchange it.
        CameraConnectionError: the camera is not connected
        """
        settings: Settings = json.loads(self._read_settings())
        return settings

    def write_settings(
        self,
        settings: Union[Settings, str],
        *,
        accept_other_models: bool = False,
        progress: Optional[Callable[[str], object]] = None,
    ) -> SettingsReport:
        """Writes the values that differ, in an order that works, and reads them back.

        settings  what read_settings() returned, or its JSON text
        progress  gets the name of each property before it is looked at; what it raises ends the writing and is in the
                  report
        A property that fails ends nothing: the report names it. CameraConnectionError: not connected; Error
        "SettingsModel": the settings of another model; "SettingsInvalid": no settings
        """
        written, different, failed, interruption = self._write_settings(_document(settings), accept_other_models, progress)
        if interruption is not None and not isinstance(interruption, Exception):
            raise interruption  # Ctrl-C
        return SettingsReport(written, different, failed, interruption)

    def compare_settings(self, settings: Union[Settings, str]) -> List[SettingDifference]:
        """Returns what differs between the camera and the settings, by name."""
        return self._compare_settings(_document(settings))

    def read_gige(self) -> Optional[GigEDescription]:
        """Reads network settings and counters of a connected GigE camera of the maker's SDK; None for any other camera.

        GigE Vision cameras of any maker: see quillcamera.network.
        """
        described = self._read_gige()
        if described is None:
            return None
        settings, statistics, failure = described
        return GigEDescription(settings and GigESettings(*settings), statistics, failure)

    def play_xsvf(self, data: bytes, progress: Optional[Callable[[float], object]] = None) -> XsvfReport:
        """Plays an XSVF file into the JTAG port. One play at a time in the process.

        progress  gets the fraction of the file that has been read; what it raises ends the play
        FunctionNotFoundError: the camera's JTAG port cannot be reached; a damaged file is in the report
        """
        return XsvfReport(**native.play_xsvf(self, data, progress))

    @property
    def can_play_xsvf(self) -> bool:
        """Whether the camera's JTAG port can be reached."""
        return native.can_play_xsvf(self)

    def __enter__(self) -> Camera:
        self.connect()
        return self

    def __exit__(self, *reason: object) -> None:
        with contextlib.suppress(CameraGoneError, CameraStateError):  # nothing is left to close; suspended on purpose
            self.disconnect()

    def __repr__(self) -> str:
        with contextlib.suppress(Error):
            return f"<Camera {self.serial_number}: {self.model_name}, {self.kind}, {self.state}>"
        return f"<Camera {self.serial_number}: {self.kind}, gone>"


def _document(settings: Union[Settings, str]) -> str:
    return settings if isinstance(settings, str) else json.dumps(settings)
