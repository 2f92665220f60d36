// SPDX-License-Identifier: Apache-2.0

// A module of an application that uses the library and stops nothing.

#include <Quill.h>

extern "C" QUILL_API bool useQuill(const char* serialNumber) {
    using CameraInterface::Camera;
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(serialNumber);
    camera.connect();
    camera.startStream();
    // Large enough for several threads.
    return camera.convertImage(camera.getImage(), Imaging::IMAGE_FORMAT::RGBA)->getWidth() > 0;
}
