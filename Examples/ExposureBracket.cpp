// SPDX-License-Identifier: Apache-2.0

// Takes an image at each of several exposures, from short to long, and prints how bright it is. Argument: serial
// number.

#include <algorithm>
#include <iostream>
#include <numeric>
#include <string>

#include <Quill.h>

using CameraInterface::Camera;

int main(int argumentCount, char* arguments[]) try {
    const std::string serialNumber = argumentCount > 1 ? arguments[1] : "41500101";
    constexpr double kShortestMs = 0.5;
    constexpr int kSteps = 5; // of one stop: each image gets twice the light of the one before

    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(serialNumber);
    camera.connect();
    // Cameras with an exposure for each mode of the stream also have one that stands for that of the present mode.
    CameraInterface::Property& exposure = camera.getProperty("Exposure");
    const std::string before = exposure.getValue();
    double wantedMs = kShortestMs;
    for (int step = 0; step < kSteps; ++step, wantedMs *= 2) {
        exposure.setValue(std::to_string(wantedMs));
        const auto grey = camera.convertImage(camera.getImage(), Imaging::IMAGE_FORMAT::MONO);
        const auto samples = grey->get8bitImageData();
        const auto sum = std::accumulate(samples.begin(), samples.end(), 0.0);
        const auto saturated = std::count(samples.begin(), samples.end(), 255);
        std::cout << exposure.getValue() << " ms: mean " << sum / static_cast<double>(samples.size()) << ", "
                  << saturated << " pixels at the top\n";
    }
    exposure.setValue(before);
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
