// SPDX-License-Identifier: Apache-2.0

// Makes colour pictures, PPM files, of all raw frames (*.raw) of a folder. Arguments: folder, width, height, bits per
// sample, pixel format such as BAYER_RGGB.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include <Quill.h>

namespace {

void convert(const std::filesystem::path& path, unsigned width, unsigned height, unsigned bits,
             Imaging::IMAGE_FORMAT format) {
    std::ifstream file(path, std::ios::binary);
    std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(file), {}};
    const auto frame = Imaging::createImage(width, height, std::move(bytes), bits, true, format);
    const auto color = Imaging::convertImage(frame, Imaging::IMAGE_FORMAT::BGR);
    auto samples = color->get8bitImageData(); // blue, green, red
    for (std::size_t pixel = 0; pixel + 2 < samples.size(); pixel += 3) {
        std::swap(samples[pixel], samples[pixel + 2]);
    }
    auto target = path;
    std::ofstream picture(target.replace_extension(".ppm"), std::ios::binary);
    picture << "P6 " << width << ' ' << height << " 255\n";
    picture.write(reinterpret_cast<const char*>(samples.data()), static_cast<std::streamsize>(samples.size()));
    std::cout << target.string() << (picture.flush() ? "" : ": cannot be written") << '\n';
}

} // namespace

int main(int argumentCount, char* arguments[]) try {
    const auto format = argumentCount == 6 ? Imaging::findFormat(arguments[5]) : std::nullopt;
    if (!format) {
        throw std::invalid_argument("Arguments: folder, width, height, bits per sample, pixel format");
    }
    const auto number = [&](int index) { return static_cast<unsigned>(std::stoul(arguments[index])); };
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        if (entry.path().extension() == ".raw") {
            convert(entry.path(), number(2), number(3), number(4), *format);
        }
    }
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
