// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

#include "ImageFiles/AtomicFile.h"
#include "ImageFiles/ImageFile.h"
#include "ImageFiles/TiffHandle.h"

namespace QuillTool {

/// Writes the pages of a TIFF file, uncompressed and with the high byte first. Samples keep their values: those of 10
/// and 12 bits lie in words, and MaxSampleValue names their largest value. Every operation throws std::runtime_error,
/// or std::system_error with the reason of the operating system.
class TiffWriter {
public:
    /// @param file  open for random access; outlives this object, whose destructor ends the writing
    /// @param expectedBytes  of the pixels of all pages; chooses BigTIFF if they do not fit into the 4 GiB of a TIFF
    TiffWriter(AtomicFile& file, std::uint64_t expectedBytes);

    /// Adds one, three or four samples per pixel; a mosaic as grey.
    void add(const Imaging::Image& image, const ImageOrigin& origin);

    /// Adds a mosaic as a digital negative (DNG). Its colour matrix takes the sensor's colours for those of linear sRGB
    /// under daylight (D65), since the camera does not describe them; black is 0, white the largest value of the depth.
    void addNegative(const Imaging::Image& mosaic, const ImageOrigin& origin);

private:
    /// Lets libtiff read and write the file.
    class Bytes : public TiffBytes {
    public:
        explicit Bytes(AtomicFile& file) : m_File(file) {}
        std::size_t read(std::uint64_t position, void* bytes, std::size_t size) noexcept override;
        std::size_t write(std::uint64_t position, const void* bytes, std::size_t size) noexcept override;
        std::uint64_t size() const noexcept override { return m_File.size(); }

    private:
        AtomicFile& m_File;
    };

    template <typename... Values>
    void set(std::uint32_t tag, Values... values);
    template <typename Action>
    void withReason(Action action);
    void setLayout(const Imaging::Image& image, unsigned photometric);
    void setOrigin(const ImageOrigin& origin);
    void setColors(const Imaging::Image& mosaic, const ImageOrigin& origin);
    void writePixels(const Imaging::Image& image);

    AtomicFile& m_File;
    Bytes m_Bytes;
    std::optional<TiffHandle> m_Handle;
};

/// Writes a TIFF file of one page.
void writeTiff(const Imaging::Image& image, AtomicFile& file, const ImageOrigin& origin);

/// Writes a mosaic as a DNG file.
void writeDng(const Imaging::Image& mosaic, AtomicFile& file, const ImageOrigin& origin);

} // namespace QuillTool
