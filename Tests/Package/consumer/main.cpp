// SPDX-License-Identifier: Apache-2.0

#include <iostream>
#include <string>

#include <Quill.h>

namespace {

/// An exception of the library is caught by its own class and by its base, on this side of the shared library.
bool catchesExceptions() {
    try {
        CameraInterface::Camera::getCamera("no such camera");
    } catch (const KestrelExceptions::KestrelException_Camera& failure) {
        const KestrelExceptions::KestrelException& base = failure;
        return base.who() == std::string("CameraNotFound") &&
               std::string(base.where()).find("Shared/src/Cameras/") != std::string::npos;
    }
    return false;
}

/// A red pixel stays red when its samples are reordered.
bool convertsImages() {
    const auto image = Imaging::createImage(1, 1, {200, 30, 10}, 8, true, Imaging::IMAGE_FORMAT::RGB);
    return Imaging::convertImage(image, Imaging::IMAGE_FORMAT::BGRA)->getData() ==
           std::vector<unsigned char>{10, 30, 200, 255};
}

/// The template of in-memory properties is instantiated only in the library.
bool makesProperties() {
    using namespace CameraInterface;
    MemoryProperty<double> property("Gamma", PROPERTY_TYPE::Float, 0, 4, 1, false, false, {});
    property.setValue("2.2");
    return property.getValue() == "2.20" && dynamic_cast<Property&>(property).getName() == "Gamma";
}

/// Functions on the SDK's version record need only the package.
bool knowsVersions() {
    ORVEX_VERSION version{};
    version.firmware = 0x100;
    const bool without = QuillInternal::Orvex::isFpga2Available(version);
    version.fpga = 1;
    return !without && QuillInternal::Orvex::isFpga2Available(version);
}

} // namespace

int main() {
    struct Check {
        const char* name;
        bool (*passes)();
    };
    constexpr Check kChecks[] = {{"exceptions", catchesExceptions},
                                 {"conversion", convertsImages},
                                 {"properties", makesProperties},
                                 {"versions", knowsVersions}};
    int failures = 0;
    for (const Check& check : kChecks) {
        if (!check.passes()) {
            std::cerr << check.name << " failed\n";
            ++failures;
        }
    }
    return failures;
}
