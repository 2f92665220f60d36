# SPDX-License-Identifier: Apache-2.0
"""Plots the histogram of an image, and how its mean grows with the exposure. Argument: file for the picture."""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

import quillcamera

EXPOSURES = [1, 2, 4, 6, 8, 10, 12, 15, 18, 22]  # milliseconds
# A pixel of the mosaic is red where row and column are even, and so on.
SITES = {"red": (0, 0), "green": (0, 1), "blue": (1, 1)}

with quillcamera.open("41500101") as camera:
    camera["Width"], camera["Height"] = 640, 480
    figure, (histogram, series) = plt.subplots(1, 2, figsize=(9, 3.2), constrained_layout=True)

    camera["Exposure"] = 10
    image = camera.capture()
    assert image.format == "BAYER_RGGB"
    for color, (row, column) in SITES.items():
        samples = image.array[row::2, column::2]
        histogram.hist(samples.ravel(), bins=range(0, 257, 4), histtype="step", color=color, label=color)
    histogram.set(title=f"{camera['Exposure']:g} ms", xlabel="sample", ylabel="pixels")
    histogram.legend()

    means = []
    for exposure in EXPOSURES:
        camera["Exposure"] = exposure
        means.append(camera.capture().array.mean())
    series.plot(EXPOSURES, means, "o-", color="black")
    series.set(title="Exposure series", xlabel="exposure in ms", ylabel="mean of the samples", ylim=(0, 255))

figure.savefig(sys.argv[1] if len(sys.argv) > 1 else "exposure-series.png", dpi=80)
