// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "../Export.h"
#include "OrvexVersion.h"

/// The data that cameras keep in their flash for their own use, and its validation. For updaters that call the camera
/// SDK directly. As thread-safe as the SDK's handle.
/// What cameras keep in their flash for themselves.
namespace QuillInternal {

/// Size of the flash in bytes; addresses have 24 bits.
inline constexpr std::uint32_t kFlashSize = 0x1000000;

// Byte addresses in the flash.
inline constexpr std::uint32_t kUsb3VisionInfoAddress = 0x1B0000;
inline constexpr std::uint32_t kUsb3VisionFileAddress = 0x1B8000;
/// Up to the end of the flash.
inline constexpr std::uint32_t kUsb3VisionFileMaximumSize = kFlashSize - kUsb3VisionFileAddress;

/// The block that decides whether a camera starts as a USB3 Vision device, and describes the file that it needs then.
/// Reserved bytes are written back as they were read.
struct Usb3VisionInfo {
    std::uint8_t mode; ///< 0: starts as a USB3 Vision device; anything else, such as erased flash: does not
    std::uint8_t reserved1[3];
    std::uint32_t fileSize; ///< bytes
    std::uint8_t reserved2[4];
    std::uint8_t fileHash[20]; ///< SHA-1 digest of the file
    std::uint8_t reserved3[64];
};
static_assert(sizeof(Usb3VisionInfo) == 96);

/// The 20 bytes of a SHA-1 digest.
QUILL_API std::vector<unsigned char> calculateSha1Hash(const std::vector<unsigned char>& data);

/// Whether a block can describe a file: one that is not empty and ends within the flash.
QUILL_API bool isUsb3VisionInfoValid(const Usb3VisionInfo& info);
/// Whether a file matches the block that describes it.
QUILL_API bool isUsb3VisionFileValid(const std::vector<unsigned char>& file, const Usb3VisionInfo& info);

/// The same through the SDK's handle of an open camera. Every operation returns false if the SDK fails or the handle is
/// not open.
/// The same, of cameras of the maker's SDK.
namespace Orvex {

QUILL_API bool OrvexReadUsb3VisionInfo(void* handle, Usb3VisionInfo& info);
QUILL_API bool OrvexWriteUsb3VisionInfo(void* handle, Usb3VisionInfo& info);
/// Reads the file that a block describes. Also returns false if the file would reach beyond the flash.
QUILL_API bool OrvexReadUsb3VisionFile(void* handle, Usb3VisionInfo& info, std::vector<unsigned char>& file);
/// Whether the flash holds a valid block and the file that it describes.
QUILL_API bool OrvexHasValidUsb3VisionFile(void* handle);

QUILL_API bool OrvexReadAfeMetadata(void* handle, std::vector<unsigned char>& data);
/// Reads the two hexadecimal numbers, joined by ".", in front of the four-character extension of the AFE timing file's
/// name. Also returns false if the flash names no such file.
QUILL_API bool OrvexGetAfeTimingVersion(void* handle, std::string& version);

QUILL_API bool OrvexGetFpga2Version(void* handle, unsigned short& version);
/// Whether a camera of these versions has a second FPGA.
QUILL_API bool isFpga2Available(const ORVEX_VERSION& version);

} // namespace Orvex

} // namespace QuillInternal
