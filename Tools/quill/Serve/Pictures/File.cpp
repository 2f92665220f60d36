// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/File.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

#include "Camera/ComputedColor.h"
#include "Serve/Cameras/Refusal.h"
#include "Serve/Pictures/JpegEncoder.h"
#include "Serve/Pictures/PictureMaker.h"

namespace QuillTool::Serve {

namespace {

using Imaging::Image;

constexpr unsigned kFileQuality = 95;

std::string encodeJpeg(const std::unique_ptr<Image>& image, const std::string& /*format*/,
                       const ImageOrigin& /*origin*/) {
    PictureMaker maker;
    return JpegEncoder().encode(maker.make(*image, 1), kFileQuality);
}

/// A format of files, and its encoder.
struct FileFormat {
    std::string_view name;
    const char* mediaType;
    std::string (*encode)(const std::unique_ptr<Image>& image, const std::string& format, const ImageOrigin& origin);
};

constexpr FileFormat kFileFormats[] = {
    {"png", "image/png", encodeImageFile},
    {"tiff", "image/tiff", encodeImageFile},
    {"dng", "image/x-adobe-dng", encodeImageFile},
    {"jpeg", "image/jpeg", encodeJpeg},
};

constexpr std::size_t kTarBlock = 512;

/// A field of a tar archive's header.
struct TarField {
    std::size_t offset;
    std::size_t size;
};
constexpr TarField kTarName{0, 100};
constexpr TarField kTarMode{100, 8};
constexpr TarField kTarUser{108, 8};
constexpr TarField kTarGroup{116, 8};
constexpr TarField kTarSize{124, 12};
constexpr TarField kTarTime{136, 12};
constexpr TarField kTarChecksum{148, 8};
constexpr TarField kTarType{156, 1};
constexpr TarField kTarMagic{257, 8};

void put(std::string& header, const TarField& field, std::string_view text) {
    if (text.size() > field.size) {
        throw std::invalid_argument(fmt::format("'{}' does not fit into a tar archive", text));
    }
    std::copy(text.begin(), text.end(), header.begin() + static_cast<std::ptrdiff_t>(field.offset));
}

/// Writes octal digits, and the zero byte that ends them.
void putNumber(std::string& header, const TarField& field, std::uint64_t number) {
    put(header, field, fmt::format("{:0{}o}{:c}", number, field.size - 1, '\0'));
}

} // namespace

File encodeFile(const std::unique_ptr<Image>& image, const std::string& format, const std::string& name,
                const ImageOrigin& origin) {
    const auto* const type = std::find_if(std::begin(kFileFormats), std::end(kFileFormats),
                                          [&](const FileFormat& row) { return row.name == format; });
    if (type == std::end(kFileFormats)) {
        std::string names;
        for (const FileFormat& row : kFileFormats) {
            names += fmt::format("{}{}", names.empty() ? "" : ", ", row.name);
        }
        throw Refusal(400, "UnknownFormat", fmt::format("'{}' is no format of files.", format),
                      fmt::format("Take one of {}.", names));
    }
    try {
        const auto computed = findComputedColor(image->getBitDepth());
        const auto declared = computed ? withComputedColor(Imaging::cloneImage(image)) : nullptr;
        return {fmt::format("{}.{}", name, format), type->mediaType,
                type->encode(declared ? declared : image, format, origin)};
    } catch (const std::runtime_error& failure) {
        throw Refusal(422, "FormatNotSuitable", failure.what(),
                      format == "png" ? "Choose another pixel format of the camera." : "Take PNG.");
    }
}

std::string tarHeader(const std::string& name, std::uint64_t size, std::int64_t modificationTime) {
    std::string header(kTarBlock, '\0');
    put(header, kTarName, name);
    putNumber(header, kTarMode, 0644);
    putNumber(header, kTarUser, 0);
    putNumber(header, kTarGroup, 0);
    putNumber(header, kTarSize, size);
    putNumber(header, kTarTime, static_cast<std::uint64_t>(std::max<std::int64_t>(modificationTime, 0)));
    put(header, kTarType, "0");
    put(header, kTarMagic,
        std::string_view("ustar\0"
                         "00",
                         kTarMagic.size));
    put(header, kTarChecksum, std::string(kTarChecksum.size, ' '));
    const unsigned sum = std::accumulate(header.begin(), header.end(), 0U,
                                         [](unsigned total, char c) { return total + static_cast<unsigned char>(c); });
    put(header, kTarChecksum, fmt::format("{:06o}{:c} ", sum, '\0'));
    return header;
}

std::string tarPadding(std::uint64_t size) {
    std::string zeros((kTarBlock - size % kTarBlock) % kTarBlock, '\0');
    return zeros;
}

} // namespace QuillTool::Serve
