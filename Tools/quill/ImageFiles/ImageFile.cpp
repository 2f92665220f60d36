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
#include "ImageFiles/MemoryFile.h"
#include "ImageFiles/PngFile.h"
#include "ImageFiles/PnmFile.h"
#include "ImageFiles/RawFile.h"
#include "ImageFiles/TiffReader.h"
#include "ImageFiles/TiffWriter.h"

namespace QuillTool {

namespace {

using Reader = std::unique_ptr<Imaging::Image> (*)(const std::vector<unsigned char>& bytes);
using Writer = void (*)(const Imaging::Image& image, AtomicFile& file, const ImageOrigin& origin);
using Access = AtomicFile::Access;

/// Bits of FileType::holds: mosaics, and the samples per pixel.
constexpr unsigned kMosaic = 1U << 0;
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
    Access access = Access::Sequential;
    bool series = false;
};

/// Adapts the writers of files that record nothing about the camera.
template <auto write>
void writePixels(const Imaging::Image& image, AtomicFile& file, const ImageOrigin& /*origin*/) {
    write(image, file);
}

constexpr std::array<FileType, 9> kFileTypes{{
    {".png", readPng, writePixels<writePng>, kGrey | kColor | kAlpha, true},
    {".pgm", readPnm, writePixels<writePnm>, kGrey, true},
    {".ppm", readPnm, writePixels<writePnm>, kColor, true},
    {".pnm", readPnm, writePixels<writePnm>, kGrey | kColor, true},
    {".pam", readPnm, writePixels<writePam>, kGrey | kColor | kAlpha, true},
    {".raw", nullptr, writePixels<writeRaw>, kGrey | kColor | kAlpha, false},
    {".tif", readTiff, writeTiff, kGrey | kColor | kAlpha, true, Access::Random, true},
    {".tiff", readTiff, writeTiff, kGrey | kColor | kAlpha, true, Access::Random, true},
    {".dng", readTiff, writeDng, kMosaic, true, Access::Random},
}};

/// How files begin that describe themselves.
struct Beginning {
    std::string_view bytes;
    Reader read;
};
constexpr std::array<Beginning, 4> kBeginnings{
    {{"\x89PNG", readPng}, {"P", readPnm}, {"II", readTiff}, {"MM", readTiff}}};

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

/// Returns the file type of an extension with its dot; null if unknown.
const FileType* findFileType(std::string extension) {
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const auto* const type = std::find_if(kFileTypes.begin(), kFileTypes.end(),
                                          [&](const FileType& row) { return row.extension == extension; });
    return type == kFileTypes.end() ? nullptr : type;
}

std::string extensionOf(const std::string& path) {
    return std::filesystem::u8path(path).extension().u8string();
}

const FileType* findFileType(const ImageTarget& target) {
    return findFileType(target.type.empty() ? extensionOf(target.path) : '.' + target.type);
}

const FileType& writableType(const ImageTarget& target) {
    const FileType* type = findFileType(target);
    if (type == nullptr && !target.type.empty()) {
        throw std::runtime_error(fmt::format("'{}' is not one of the types {}", target.type, writableTypes()));
    }
    if (type == nullptr) {
        throw std::runtime_error(fmt::format("its extension is not one of {}", extensions([](auto&) { return true; })));
    }
    return *type;
}

void requireHolding(const FileType& type, const Imaging::Image& image) {
    const unsigned samples = samplesPerPixel(image);
    const bool mosaic = samples == 1 && image.getFormat() != Imaging::IMAGE_FORMAT::MONO;
    const unsigned suitable = 1U << samples | (mosaic ? kMosaic : 0);
    if ((type.holds & suitable) == 0) {
        throw std::runtime_error(fmt::format("{} pixels do not fit into a {} file, but into {}",
                                             Imaging::getFormatName(image.getFormat()), type.extension,
                                             extensions([&](auto& other) { return (other.holds & suitable) != 0; })));
    }
}

/// Converts the image to a layout of image files; null if it has such a layout or is a mosaic, which is stored as grey.
std::unique_ptr<Imaging::Image> toFileLayout(const std::unique_ptr<Imaging::Image>& image) {
    const unsigned samples = samplesPerPixel(*image);
    return samples == 1 || image->getFormat() == fileLayout(samples) ? nullptr
                                                                     : convertImage(image, fileLayout(samples));
}

/// Returns the image in the form of the type's files: itself, or a copy that @p copy holds.
const Imaging::Image& asHeld(const FileType& type, const std::unique_ptr<Imaging::Image>& image,
                             std::unique_ptr<Imaging::Image>& copy) {
    if (!image) {
        throw std::invalid_argument("the image is null");
    }
    requireHolding(type, *image);
    copy = type.ordered ? toFileLayout(image) : nullptr;
    return copy ? *copy : *image;
}

std::unique_ptr<AtomicFile> openFile(const std::string& path, Access access) {
    return path == kStandardStream ? std::make_unique<AtomicFile>(access) : std::make_unique<AtomicFile>(path, access);
}

std::unique_ptr<Imaging::Image> readStandardImage(const std::optional<RawDescription>& raw) {
    std::vector<unsigned char> bytes = readStandardInput();
    if (raw) {
        return readRaw(std::move(bytes), *raw);
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const Beginning& beginning : kBeginnings) {
        if (text.substr(0, beginning.bytes.size()) == beginning.bytes) {
            return beginning.read(bytes);
        }
    }
    throw std::runtime_error("it is no PNG, PNM or TIFF file, and a raw frame needs its format, width and height");
}

/// Runs @p action. Turns its exceptions into an ImageFileError that names the failed action.
template <typename Action>
auto explained(std::string_view verb, std::string path, Action action) {
    if (path == kStandardStream) {
        path = verb == "read" ? "standard input" : "standard output";
    }
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
        if (path == kStandardStream) {
            return readStandardImage(raw);
        }
        const FileType* type = findFileType(extensionOf(path));
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

void writeImageFile(const std::unique_ptr<Imaging::Image>& image, const ImageTarget& target) {
    explained("write", target.path, [&] {
        const FileType& type = writableType(target);
        std::unique_ptr<Imaging::Image> copy;
        const Imaging::Image& held = asHeld(type, image, copy);
        const std::unique_ptr<AtomicFile> file = openFile(target.path, type.access);
        type.write(held, *file, target.origin);
        file->commit();
    });
}

std::string encodeImageFile(const std::unique_ptr<Imaging::Image>& image, const std::string& type,
                            const ImageOrigin& origin) {
    return explained("encode", type, [&] {
        const FileType& fileType = writableType({"", type});
        std::unique_ptr<Imaging::Image> copy;
        const Imaging::Image& held = asHeld(fileType, image, copy);
        const MemoryFile memory;
        AtomicFile file(memory.duplicate());
        fileType.write(held, file, origin);
        file.commit();
        return memory.content();
    });
}

void requireWritableType(const ImageTarget& target) {
    explained("write", target.path, [&] { writableType(target); });
}

bool holdsSeries(const ImageTarget& target) {
    const FileType* type = findFileType(target);
    return type != nullptr && type->series;
}

std::string writableTypes() {
    std::vector<std::string_view> names(kFileTypes.size());
    std::transform(kFileTypes.begin(), kFileTypes.end(), names.begin(),
                   [](const FileType& type) { return type.extension.substr(1); });
    return fmt::format("{}", fmt::join(names, ", "));
}

ImageSeries::ImageSeries(ImageTarget target, unsigned images) : m_Target(std::move(target)), m_Images(images) {
    explained("write", m_Target.path, [&] { m_File = openFile(m_Target.path, writableType(m_Target).access); });
}

ImageSeries::~ImageSeries() = default;

void ImageSeries::add(const std::unique_ptr<Imaging::Image>& image) {
    explained("write", m_Target.path, [&] {
        std::unique_ptr<Imaging::Image> copy;
        const Imaging::Image& held = asHeld(writableType(m_Target), image, copy);
        if (!m_Writer) {
            m_Writer = std::make_unique<TiffWriter>(*m_File, m_Images * std::uint64_t{held.getImageSize()});
        }
        m_Writer->add(held, m_Target.origin);
    });
}

void ImageSeries::commit() {
    explained("write", m_Target.path, [&] {
        m_Writer.reset();
        m_File->commit();
    });
}

} // namespace QuillTool
