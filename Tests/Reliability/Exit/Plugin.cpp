// SPDX-License-Identifier: Apache-2.0

// A module of an application that uses the library and stops nothing.

#include <Quill.h>

#if defined(_WIN32)
#    define PLUGIN_EXPORT __declspec(dllexport)
#else
#    define PLUGIN_EXPORT __attribute__((visibility("default")))
#endif

extern "C" PLUGIN_EXPORT bool useQuill(const char* serialNumber) {
    using CameraInterface::Camera;
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(serialNumber);
    camera.connect();
    camera.startStream();
    // Large enough for several threads.
    return camera.convertImage(camera.getImage(), Imaging::IMAGE_FORMAT::RGBA)->getWidth() > 0;
}
