# SPDX-License-Identifier: Apache-2.0
"""Work on a camera's memory, and the files for it."""

from __future__ import annotations

from typing import TYPE_CHECKING, Callable, Optional

from . import _quillcamera as native
from ._types import BootImage, BootImageSection, XsvfReport

if TYPE_CHECKING:
    from ._cameras import Camera

Progress = Optional[Callable[[float], object]]

_CHUNK_SIZE = 4096
_MAXIMUM_SIZE = 0xFFFFFFFF


class Programmer:
    """Programs a camera through its functions.

    Addresses and sizes count bytes. `progress` gets the fraction that is done, after each chunk, on the calling thread;
    what it raises ends the operation, as Ctrl-C does: the flash stays partly erased or written, and nothing is retried.
    FunctionError: the camera refuses; FunctionNotFoundError: it cannot be programmed; ValueError: the data, and the camera
    is untouched.
    """

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def __repr__(self) -> str:
        return f"<Programmer of {self._camera!r}>"

    def compare_flash(self, data: bytes, address: int, *, chunk_size: int = _CHUNK_SIZE, progress: Progress = None) -> bool:
        """Whether the flash from `address` on holds `data`. Ends at the first chunk that differs."""
        return native.compare_flash(self._camera, data, address, chunk_size, progress)

    def write_buffer_to_flash(
        self,
        data: bytes,
        address: int,
        *,
        maximum_size: int = _MAXIMUM_SIZE,
        chunk_size: int = _CHUNK_SIZE,
        progress: Progress = None,
    ) -> None:
        """Erases as many bytes of flash as `data` has, and writes the data in chunks.

        ValueError: no data, or more than `maximum_size`
        """
        native.write_buffer_to_flash(self._camera, data, address, maximum_size, chunk_size, progress)

    def write_firmware_to_flash(
        self,
        data: bytes,
        address: int = 0,
        *,
        maximum_size: int = _MAXIMUM_SIZE,
        chunk_size: int = _CHUNK_SIZE,
        progress: Progress = None,
    ) -> None:
        """The same for a boot image, whose header is written last: what was interrupted is no image that starts."""
        native.write_firmware_to_flash(self._camera, data, address, maximum_size, chunk_size, progress)

    def write_firmware_to_ram(self, data: bytes, *, progress: Progress = None) -> None:
        """Loads a boot image into RAM and starts it."""
        native.write_firmware_to_ram(self._camera, data, progress)

    def read_flash_status(self, address: int) -> int:
        return native.read_flash_status(self._camera, address)

    def write_flash_status(self, address: int, status: int) -> None:
        native.write_flash_status(self._camera, address, status)

    @staticmethod
    def flip_bit_order(data: bytes) -> bytes:
        """Reverses the bits of every byte."""
        return native.flip_bit_order(data)


def read_boot_image(data: bytes) -> BootImage:
    """Returns the structure of a boot image. ValueError: it is none, or not complete."""
    sections, entry_address, size = native.read_boot_image(data)
    return BootImage([BootImageSection(*section) for section in sections], entry_address, size)


def check_xsvf(data: bytes) -> XsvfReport:
    """Reads an XSVF file to its end without a device; every comparison counts as fulfilled."""
    return XsvfReport(**native.check_xsvf(data))
