// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <tiffio.h>

namespace QuillTool {

/// The bytes of a TIFF file, for libtiff. Its operations return how many bytes were transferred.
class TiffBytes {
public:
    TiffBytes() = default;
    TiffBytes(const TiffBytes&) = delete;
    TiffBytes& operator=(const TiffBytes&) = delete;
    virtual ~TiffBytes() = default;

    virtual std::size_t read(std::uint64_t position, void* bytes, std::size_t size) noexcept = 0;
    virtual std::size_t write(std::uint64_t position, const void* bytes, std::size_t size) noexcept = 0;
    virtual std::uint64_t size() const noexcept = 0;
};

/// Owns libtiff's handle and turns its errors into exceptions. Suppresses warnings. Touches no setting of the process.
class TiffHandle {
public:
    /// @param bytes  outlives this object
    /// @param mode  of TIFFOpen()
    /// @param largestBlock  bytes that libtiff may allocate at once; 0 for no limit
    /// @throws std::runtime_error  message of libtiff
    TiffHandle(TiffBytes& bytes, const char* mode, std::uint64_t largestBlock = 0);
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    TIFF* get() const { return m_Tiff.get(); }

    /// Takes the result of a call of libtiff.
    /// @throws std::runtime_error  @p done is false: the first message of libtiff
    void require(bool done) const;

private:
    static tmsize_t onRead(thandle_t self, void* bytes, tmsize_t size);
    static tmsize_t onWrite(thandle_t self, void* bytes, tmsize_t size);
    static toff_t onSeek(thandle_t self, toff_t offset, int origin);
    static toff_t onSize(thandle_t self);
    static int onClose(thandle_t self);
    static int onError(TIFF* tiff, void* self, const char* module, const char* format, va_list values);
    static int onWarning(TIFF* tiff, void* self, const char* module, const char* format, va_list values);

    TiffBytes& m_Bytes;
    std::uint64_t m_Position = 0;
    std::array<char, 256> m_Message{};
    std::unique_ptr<TIFF, void (*)(TIFF*)> m_Tiff;
};

} // namespace QuillTool
