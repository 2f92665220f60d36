// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include <Quill.h>

using CameraInterface::Camera;

int main(int argumentCount, char* arguments[]) try {
    Camera::initialiseWorkspace();
    for (const auto& [serialNumber, modelName] : Camera::getCamerasList()) {
        std::cout << serialNumber << "  " << modelName << '\n';
    }

    // A simulated camera, unless an argument names another one, of any kind.
    Camera& camera = Camera::getCamera(argumentCount > 2 ? arguments[2] : "90001");
    camera.connect();
    const bool hasOneExposure = camera.isPropertySupported("Exposure"); // otherwise one for each mode of the stream
    CameraInterface::Property& exposure = camera.getProperty(hasOneExposure ? "Exposure" : "Video Exposure");
    exposure.setValue("12.5");
    std::cout << exposure.getName() << " is " << exposure.getValue() << ", at most " << exposure.getMaximum() << '\n';

    // A frame as the sensor delivers it becomes a colour picture.
    std::ifstream file(argumentCount > 1 ? arguments[1] : "Data/coffee-bayer-rggb-600x400.raw", std::ios::binary);
    if (!file) {
        throw std::runtime_error("The frame cannot be read.");
    }
    std::vector<unsigned char> mosaic{std::istreambuf_iterator<char>(file), {}};
    const auto frame = Imaging::createImage(600, 400, mosaic, 8, true, Imaging::IMAGE_FORMAT::BAYER_RGGB);
    const auto pixels = camera.convertImage(frame, Imaging::IMAGE_FORMAT::RGB)->getData();
    std::ofstream picture("coffee.ppm", std::ios::binary);
    picture << "P6 600 400 255\n";
    std::copy(pixels.begin(), pixels.end(), std::ostreambuf_iterator<char>(picture));

    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
