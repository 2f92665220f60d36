# SPDX-License-Identifier: Apache-2.0
"""Pictures for notebooks."""

from __future__ import annotations

import struct
import zlib
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from ._quillcamera import Image


def to_png(image: Image) -> bytes:
    """Returns the image as a PNG of 8 bits per sample: grey for MONO, otherwise RGB, with alpha where the image has it."""
    if image.bit_depth > 16:  # colour that the camera computed: BGR, BGRA
        samples = image.array
        samples = samples[:, :, [2, 1, 0, 3][: samples.shape[2]]]
    elif image.format == "MONO":
        samples = image.array[:, :, None]
    else:
        samples = image.convert("RGBA" if image.format.startswith(("RGBA", "BGRA")) else "RGB").array
    if samples.dtype.itemsize > 1:
        samples = samples >> (min(image.bit_depth, 16) - 8)
    height, width, channels = samples.shape
    lines = samples.astype("u1", copy=False).reshape(height, width * channels)
    rows = b"".join(b"\0" + line.tobytes() for line in lines)  # each begins with the number of its filter: none

    def chunk(name: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    header = struct.pack(">IIBBBBB", width, height, 8, {1: 0, 3: 2, 4: 6}[channels], 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 1)) + chunk(b"IEND", b"")
