# SPDX-License-Identifier: Apache-2.0
import numpy as np

import quillcamera

for camera in quillcamera.cameras():
    print(camera.serial_number, camera.model_name)

with quillcamera.open("41500101") as camera:
    camera["Exposure"] = 12.5
    exposure = camera.properties.exposure
    print(f"{exposure.name} is {exposure.value} {exposure.unit}, at most {exposure.range[1]}")

    # Every frame, and what became of those that came.
    for frame in camera.stream(count=3):
        mosaic = frame.image.array  # no copy: the memory of the frame itself
        print(f"frame {frame.number}: {mosaic.shape}, {mosaic.dtype}, mean {mosaic.mean():.1f}")
    print({name: int(count) for name, count in camera.counters.items() if count})

    # One image, in colour.
    image = camera.capture().convert("RGB")
    with open("scene.png", "wb") as picture:
        picture.write(image.to_png())
    brightest = np.unravel_index(image.array.sum(axis=2).argmax(), image.array.shape[:2])
    print(f"brightest at row {brightest[0]}, column {brightest[1]}")
