// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/ImageFile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <new>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "ImageFiles/AtomicFile.h"
#include "ImageFiles/FileSamples.h"
#include "ImageFiles/InputFile.h"
#include "ImageFiles/PngFile.h"
#include "ImageFiles/PnmFile.h"
#include "ImageFiles/RawFile.h"

namespace QuillTool {

namespace {

using Reader = std::unique_ptr<Imaging::Image> (*)(const std::vector<unsigned char>& bytes);
using Writer = void (*)(const Imaging::Image& image, AtomicFile& file);

/// Bits of FileType::holds for the samples per pixel.
constexpr unsigned kGrey = 1U << 1;
constexpr unsigned kColor = 1U << 3;
constexpr unsigned kAlpha = 1U << 4;

struct FileType {
    std::string_view extension;
    /// Null if the file does not describe its pixels.
    Reader read;
    Writer write;
    unsigned holds;
    /// Whether pixels are converted to the layouts of image files, or written unchanged.
    bool ordered;
};
constexpr std::array<FileType, 6> kFileTypes{{
    {".png", readPng, writePng, kGrey | kColor | kAlpha, true},
    {".pgm", readPnm, writePnm, kGrey, true},
    {".ppm", readPnm, writePnm, kColor, true},
    {".pnm", readPnm, writePnm, kGrey | kColor, true},
    {".pam", readPnm, writePam, kGrey | kColor | kAlpha, true},
    {".raw", nullptr, writeRaw, kGrey | kColor | kAlpha, false},
}};

/// Lists the extensions of the file types that @p suits accepts.
template <typename Predicate>
std::string extensions(Predicate suits) {
    std::vector<std::string_view> names;
    for (const FileType& type : kFileTypes) {
        if (suits(type)) {
            names.push_back(type.extension);
        }
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

/// Returns the file type of a path's extension; null if unknown.
const FileType* findFileType(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const auto* const type = std::find_if(kFileTypes.begin(), kFileTypes.end(),
                                          [&](const FileType& row) { return row.extension == extension; });
    return type == kFileTypes.end() ? nullptr : type;
}

const FileType& writableType(const std::string& path) {
    const FileType* type = findFileType(path);
    if (type == nullptr) {
        throw std::runtime_error(fmt::format("its extension is not one of {}", extensions([](auto&) { return true; })));
    }
    return *type;
}

void requireHolding(const FileType& type, const Imaging::Image& image) {
    const unsigned needed = 1U << samplesPerPixel(image);
    if ((type.holds & needed) == 0) {
        throw std::runtime_error(fmt::format("{} pixels do not fit into a {} file, but into {}",
                                             Imaging::getFormatName(image.getFormat()), type.extension,
                                             extensions([&](auto& other) { return (other.holds & needed) != 0; })));
    }
}

/// Converts the image to a layout of image files; null if it has such a layout or is a mosaic, which is stored as grey.
std::unique_ptr<Imaging::Image> toFileLayout(const std::unique_ptr<Imaging::Image>& image) {
    const unsigned samples = samplesPerPixel(*image);
    return samples == 1 || image->getFormat() == fileLayout(samples) ? nullptr
                                                                     : convertImage(image, fileLayout(samples));
}

/// Runs @p action. Turns its exceptions into an ImageFileError that names the failed action.
template <typename Action>
auto explained(std::string_view verb, const std::string& path, Action action) {
    try {
        return action();
    } catch (const std::bad_alloc&) {
        throw ImageFileError(fmt::format("Cannot {} {}: not enough memory", verb, path));
    } catch (const std::exception& exception) {
        throw ImageFileError(fmt::format("Cannot {} {}: {}", verb, path, exception.what()));
    }
}

} // namespace

std::unique_ptr<Imaging::Image> readImageFile(const std::string& path, const std::optional<RawDescription>& raw) {
    return explained("read", path, [&] {
        const FileType* type = findFileType(path);
        if (type != nullptr && type->read != nullptr) {
            return type->read(readInputFile(path));
        }
        if (!raw) {
            throw std::runtime_error(
                fmt::format("only {} files describe themselves, a raw frame needs its format, width and height",
                            extensions([](auto& other) { return other.read != nullptr; })));
        }
        return readRaw(readInputFile(path), *raw);
    });
}

void writeImageFile(const std::unique_ptr<Imaging::Image>& image, const std::string& path) {
    explained("write", path, [&] {
        if (!image) {
            throw std::invalid_argument("the image is null");
        }
        const FileType& type = writableType(path);
        requireHolding(type, *image);
        const std::unique_ptr<Imaging::Image> reordered = type.ordered ? toFileLayout(image) : nullptr;
        AtomicFile file(path);
        type.write(reordered ? *reordered : *image, file);
        file.commit();
    });
}

void requireWritableExtension(const std::string& path) {
    explained("write", path, [&] { writableType(path); });
}

} // namespace QuillTool
