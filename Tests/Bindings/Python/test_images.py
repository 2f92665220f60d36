# SPDX-License-Identifier: Apache-2.0
import numpy as np
import pytest

import quillcamera
from quillcamera import Image


def shape_of(format, height=5, width=4):
    channels = len(format.split("_")[0])
    if format == "MONO" or format.startswith("BAYER"):
        return height, width
    return (channels, height, width) if "PLANAR" in format else (height, width, channels)


def expected_pixel(format, array, row, column):
    """What the library returns for a pixel, from the array alone."""
    pixel = [0.0] * 4
    if format == "MONO":
        pixel[0] = array[row, column]
    elif format.startswith("BAYER_"):
        letter = format[6 + 2 * (row % 2) + column % 2]
        pixel[{"R": 0, "G": 1 + row % 2, "B": 3}[letter]] = array[row, column]
    else:
        samples = array[:, row, column] if "PLANAR" in format else array[row, column]
        for letter, sample in zip(format.split("_")[0], samples):
            pixel["RGBA".index(letter)] = sample
    return tuple(pixel)


@pytest.mark.parametrize("dtype", ["u1", "<u2", ">u2"])
@pytest.mark.parametrize("format", quillcamera.FORMATS)
def test_arrays_have_the_pixels_of_the_library_in_every_format(format, dtype):
    values = np.random.default_rng(1).integers(0, 256 if dtype == "u1" else 4096, shape_of(format)).astype(dtype)
    image = Image.from_array(values, format, 8 if dtype == "u1" else 12)
    assert image.array.dtype == np.dtype(dtype)
    assert np.array_equal(image.array, values)
    for row in range(image.height):
        for column in range(image.width):
            assert image.get_pixel(row, column) == expected_pixel(format, values, row, column)
    # One memory, seen by array, buffer protocol and image.
    address = image.array.__array_interface__["data"][0]
    assert np.asarray(image).__array_interface__["data"][0] == address
    image.array[...] = 1
    assert memoryview(image).tobytes() == np.ones_like(values).tobytes()


def test_only_arrays_that_fit_become_images():
    for array, format, depth, error in [
        (np.zeros((4, 5, 3), "u1"), "MONO", 0, ValueError),
        (np.zeros((4, 5), "u1"), "RGB", 0, ValueError),
        (np.zeros((3, 4, 5), "u1"), "RGB", 0, ValueError),
        (np.zeros((4, 5, 3), "u1"), "RGB_PLANAR", 0, ValueError),
        (np.zeros((0, 5), "u1"), "MONO", 0, ValueError),
        (np.zeros((4, 5), "u1"), "MONO", 12, ValueError),
        (np.zeros((4, 5), "u2"), "MONO", 8, ValueError),
        (np.zeros((4, 5), "i2"), "MONO", 0, TypeError),
        (np.zeros((4, 5), "u1"), "GREY", 0, ValueError),
    ]:
        with pytest.raises(error):
            Image.from_array(array, format, depth)
    # Neither memory nor order of the caller's array matters.
    turned = np.arange(24, dtype="u1").reshape(4, 6).T[::-1]
    assert np.array_equal(Image.from_array(turned, "MONO").array, turned)


def test_an_array_keeps_its_image_alive_and_a_picture_has_its_colours():
    image = Image.from_array(np.full((8, 8, 3), (1, 2, 250), "u1"), "BGR")
    array = image.convert("RGB").array
    picture = image.to_png()
    del image
    assert (array == (250, 2, 1)).all()
    pyplot = pytest.importorskip("matplotlib.image")
    import io

    assert (pyplot.imread(io.BytesIO(picture)) * 255 == (250, 2, 1)).all()
    deep = Image.from_array(np.full((8, 8), 0xFFF, "u2"), "MONO", 12)
    assert (pyplot.imread(io.BytesIO(deep.to_png())) == 1).all()
