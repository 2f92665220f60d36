// SPDX-License-Identifier: Apache-2.0

#include "Support/SoftwareDeviceFixture.h"

#include "Base/SharedLibrary.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"
#include "Internal/QuillInternal.h"

namespace TestSupport {

using CameraInterface::Camera;

namespace {

Camera& findAndConnect(std::uint32_t serial) {
    Camera::searchForNewCameras();
    Camera& camera = Camera::getCamera(std::to_string(serial));
    camera.connect();
    return camera;
}

} // namespace

SoftwareDeviceFixture::SoftwareDeviceFixture() {
    SoftwareDevices::startEmpty();
    useAdapters({{"SDK cameras", OrvexAdapter::OrvexCamera::getListOfCameras},
                 {"USB3 Vision cameras", Usb3VisionAdapter::Usb3VisionCamera::getListOfCameras}});
}

SoftwareDeviceFixture::~SoftwareDeviceFixture() {
    useAdapters({});
    SoftwareDevices::startEmpty();
}

Camera& SoftwareDeviceFixture::open(const SoftwareDevices::DeviceDescription& description) {
    return findAndConnect(SoftwareDevices::plug(description));
}

Camera& SoftwareDeviceFixture::openUsb3Vision(const SoftwareDevices::DeviceDescription& description) {
    const std::uint32_t serial = SoftwareDevices::plug(description);
    SoftwareDevices::writeFlash(serial, QuillInternal::kUsb3VisionInfoAddress, {0});
    SoftwareDevices::unplug(serial);
    SoftwareDevices::replug(serial);
    return findAndConnect(serial);
}

std::string SoftwareDeviceFixture::value(Camera& camera, const std::string& property) {
    return camera.getProperty(property).getValue();
}

void SoftwareDeviceFixture::set(Camera& camera, const std::string& property, const std::string& text) {
    camera.getProperty(property).setValue(text);
}

void SoftwareDeviceFixture::setRegion(Camera& camera, unsigned width, unsigned height) {
    set(camera, "Width", std::to_string(width));
    set(camera, "Height", std::to_string(height));
}

} // namespace TestSupport

// Replaces the definition of a library file that is not linked here.
std::string Base::getLibraryFolder() {
    return QUILL_TEST_LIBRARY_FOLDER;
}
