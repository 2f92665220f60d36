// SPDX-License-Identifier: Apache-2.0

// Takes one image and writes it as a PPM file. Arguments: serial number, file.

#include <fstream>
#include <iostream>

#include <Quill.h>

using CameraInterface::Camera;

int main(int argumentCount, char* arguments[]) try {
    const std::string serialNumber = argumentCount > 1 ? arguments[1] : "41500101";
    const std::string file = argumentCount > 2 ? arguments[2] : "image.ppm";

    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(serialNumber);
    camera.connect();
    if (camera.isPropertySupported("Pixel Format")) {
        camera.getProperty("Pixel Format").setValue("8"); // bits per pixel: what a PPM file holds
    }
    const auto image = camera.getImage();
    const auto color = camera.convertImage(image, Imaging::IMAGE_FORMAT::RGB);

    std::ofstream picture(file, std::ios::binary);
    picture << "P6 " << color->getWidth() << ' ' << color->getHeight() << " 255\n";
    picture.write(reinterpret_cast<const char*>(color->getDataAddress()),
                  static_cast<std::streamsize>(color->getImageSize()));
    if (!picture.flush()) {
        throw std::runtime_error(file + " cannot be written.");
    }
    std::cout << file << ": " << color->getWidth() << " x " << color->getHeight() << '\n';
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
