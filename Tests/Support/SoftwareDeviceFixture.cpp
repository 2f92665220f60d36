#include "Support/SoftwareDeviceFixture.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Internal/SharedLibrary.h"

namespace TestSupport {

using CameraInterface::Camera;

SoftwareDeviceFixture::SoftwareDeviceFixture() {
    SoftwareDevices::startEmpty();
    useAdapters({{"SDK cameras", OrvexAdapter::OrvexCamera::getListOfCameras}});
}

SoftwareDeviceFixture::~SoftwareDeviceFixture() {
    useAdapters({});
    SoftwareDevices::startEmpty();
}

Camera& SoftwareDeviceFixture::open(const SoftwareDevices::DeviceDescription& description) {
    const std::string serial = std::to_string(SoftwareDevices::plug(description));
    Camera::searchForNewCameras();
    Camera& camera = Camera::getCamera(serial);
    camera.connect();
    return camera;
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

// What the library itself defines in a file that the tests leave out.
std::string Internal::getLibraryFolder() {
    return QUILL_TEST_LIBRARY_FOLDER;
}
